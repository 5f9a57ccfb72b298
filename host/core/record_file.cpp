#include "record_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "virtual-tv/model/error.h"
#include "virtual-tv/model/text_file.h"

namespace host {

namespace {

// Enough for any step: a disk that is full is found out before anything is done.
constexpr off_t kReserve = off_t{256} * 1024;

[[noreturn]] void FailToWrite(const std::string& file, const std::string& after) {
    const std::string reason = std::strerror(errno);
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     file + ": the recording cannot be written: " + reason + "." + after);
}

}  // namespace

std::string RecordFile::PathOf(const std::string& file) {
    if (file == "-") {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "-: a recording is added to, which the standard output cannot be: name a "
                         "file. One that has this name: ./-");
    }
    return std::filesystem::absolute(file).lexically_normal().string();
}

RecordFile::RecordFile(const std::string& file) : file_(file) {
    Open();
    try {
        ReadMarked();
        Reserve();
    } catch (...) {
        Close();
        throw;
    }
}

RecordFile::~RecordFile() {
    // The reserve is given back.
    [[maybe_unused]] const int cut = ftruncate(fd_, static_cast<off_t>(text_.size()));
    Close();
}

// No link is followed: it would lead to a file that nobody has named.
void RecordFile::Open() {
    constexpr int kFlags = O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    fd_ = open(file_.c_str(), kFlags | O_CREAT | O_EXCL, 0666);
    isNew_ = fd_ >= 0;
    if (!isNew_ && errno == EEXIST) {
        struct stat status = {};
        if (lstat(file_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             file_ + ": this is no file that a scenario could be written to.");
        }
        fd_ = open(file_.c_str(), kFlags);
    }
    if (fd_ < 0 || flock(fd_, LOCK_EX) != 0) {
        FailToWrite(file_, " Nothing was done.");
    }
}

void RecordFile::ReadMarked() {
    text_ = vtv::ReadTextFile(file_);
    if (!text_.empty() && text_.rfind(kMark, 0) != 0) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         file_ +
                             ": this was not recorded by vtv, and nothing was done: only a "
                             "recording is added to. If it is a scenario of yours, begin it with "
                             "this line: " +
                             std::string(kMark, std::strlen(kMark) - 1));
    }
}

// Where a file system cannot reserve, the write itself tells.
void RecordFile::Reserve() {
    const auto size = static_cast<off_t>(text_.size());
    if (fallocate(fd_, FALLOC_FL_KEEP_SIZE, size, kReserve) != 0 && errno == ENOSPC) {
        FailToWrite(file_, " Nothing was done.");
    }
}

void RecordFile::Append(const std::string& text) {
    // Some file systems tell only when it is synced, or closed, that it could not be written.
    if (write(fd_, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        fsync(fd_) != 0) {
        const int reason = errno;
        [[maybe_unused]] const int cut = ftruncate(fd_, static_cast<off_t>(text_.size()));
        errno = reason;
        FailToWrite(file_, " It was done all the same.");
    }
    text_ += text;
}

void RecordFile::Close() {
    if (isNew_ && text_.empty()) {
        unlink(file_.c_str());
    }
    close(fd_);
}

}  // namespace host
