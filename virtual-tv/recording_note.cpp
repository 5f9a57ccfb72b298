#include "recording_note.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "own_files.h"
#include "tv_files.h"

namespace vtv {

namespace {

constexpr char kNotes[] = "/recordings";
constexpr char kUntilRemoved[] =
    "Remove it, and nothing is recorded; until then nothing is done to the TV.";

// Another for each folder that there ever was, where the file system tells when it was made: the
// number of one that is gone is given to a new one. Empty when there is no such folder.
std::string IdentityOf(const std::string& dir) {
    struct statx info{};
    if (statx(AT_FDCWD, dir.c_str(), 0, STATX_INO | STATX_BTIME, &info) != 0) {
        return "";
    }
    const std::string inode = std::to_string(info.stx_ino);
    // The number of a device may be another one after each start of the machine.
    return (info.stx_mask & STATX_BTIME) != 0
               ? inode + "-" + std::to_string(info.stx_btime.tv_sec) + "." +
                     std::to_string(info.stx_btime.tv_nsec)
               : inode + "-on-" + std::to_string(info.stx_dev_major) + "." +
                     std::to_string(info.stx_dev_minor);
}

}  // namespace

RecordingNote::RecordingNote(const std::string& tvDir) {
    const std::string folder = OwnFolder();
    const std::string identity = folder.empty() ? "" : IdentityOf(tvDir);
    if (!identity.empty()) {
        path_ = folder + kNotes + "/" + identity;
    }
}

std::string RecordingNote::Read() const {
    if (path_.empty()) {
        return "";
    }
    const std::optional<std::string> file = ReadOwnFile(path_, kUntilRemoved);
    if (!file) {
        return "";
    }
    const bool isName =
        !file->empty() && file->front() == '/' &&
        std::none_of(file->begin(), file->end(), [](char c) { return c == '\0' || c == '\n'; });
    if (!isName) {
        throw Error(ErrorKind::kPlatform,
                    path_ +
                        ": this should name the file that the TV is being recorded into, and "
                        "does not. " +
                        kUntilRemoved);
    }
    return *file;
}

void RecordingNote::Write(const std::string& file, const std::function<void()>& begin) const {
    if (path_.empty()) {
        throw Error(ErrorKind::kPlatform,
                    "There is no place for what is recorded: set HOME or XDG_CONFIG_HOME to a "
                    "folder of yours, as a whole path.");
    }
    if (file.find('\n') != std::string::npos) {
        throw Error(ErrorKind::kUsage, file + ": a recording's name cannot have several lines.");
    }
    const std::string folder = OwnFolder() + kNotes;
    MakeOwnFolder(folder);
    const FileLock lock(OwnFolder(), ".lock");
    if (const std::string other = Read(); !other.empty()) {
        throw Error(ErrorKind::kNo,
                    "The TV is being recorded into " + other + ". End that: vtv record stop");
    }
    begin();
    WriteOwnFile(path_, file);
}

void RecordingNote::Remove() const {
    if (!path_.empty() && unlink(path_.c_str()) != 0 && errno != ENOENT) {
        throw Error(ErrorKind::kPlatform,
                    path_ + ": cannot be removed: " + std::strerror(errno) + ".");
    }
}

}  // namespace vtv
