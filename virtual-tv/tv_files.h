// Where the files of a TV's folder are opened, made, renamed and removed: nothing that lies in it
// leads out of it. What a TV is opened with is looked at as a whole (RequireTrustedTv); what lies
// there later, in a process that goes on for long, is judged here.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vtv {

// Whatever the umask, nobody else writes into a TV.
inline constexpr mode_t kFolderMode = 0755;
inline constexpr mode_t kFileMode = 0644;

// As open(), of a plain file that is named below the TV's folder: by no link on the way from there,
// without waiting for whoever has the other end of a pipe, and not larger than any file of a TV.
// The name goes down only. -1, and errno tells why: ELOOP or ENOTDIR for a link, EINVAL for what is
// no plain file, EFBIG, EPERM for what others can write.
int OpenTvFile(const std::string& tvDir, const std::string& name, int flags);
// The same for a folder, to be read or to name files in. "" is the TV's own.
int OpenTvFolder(const std::string& tvDir, const std::string& name);

// Throws kPlatform: why a file of a TV cannot be read.
[[noreturn]] void FailToRead(const std::string& path, int error);
// What an open file holds from an offset on. False, and errno tells why.
bool ReadToEnd(int fd, off_t from, std::string* text);
// What a file holds from an offset on; absent when there is no such file. Throws kPlatform.
std::optional<std::string> ReadTvFile(const std::string& tvDir, const std::string& name,
                                      off_t from = 0);
// Writes a file, in place of one that is there, and makes it durable. False, and why.
bool WriteTvFile(const std::string& tvDir, const std::string& name, std::string_view content,
                 int* error);

// Below the TV's folder as above. Makes a folder, with those that it lies in; throws kPlatform.
void MakeTvFolder(const std::string& tvDir, const std::string& name);
// As rename(), unlink() and rmdir(); false, and errno tells why.
bool RenameInTv(const std::string& tvDir, const std::string& from, const std::string& to);
bool RemoveTvFile(const std::string& tvDir, const std::string& name);
bool RemoveEmptyTvFolder(const std::string& tvDir, const std::string& name);
// Whatever has this name, with all that it holds; true also when there is nothing.
bool RemoveTvTree(const std::string& tvDir, const std::string& name);

// Tells of each entry below a folder, named relative to it, a folder before what it holds. False
// keeps it from going down. Returns the errno of what could not be read, ENAMETOOLONG for what lies
// deeper than anything of a TV, or 0.
using TvEntry = std::function<bool(const std::string& name, const struct stat& info)>;
int WalkTvFolder(const std::string& tvDir, const std::string& name, const TvEntry& tell);
// As NamesIn(), of a folder of the TV.
std::vector<std::string> NamesInTv(const std::string& tvDir, const std::string& name);

// The largest file that a TV has.
inline constexpr off_t kLargestTvFile = off_t{256} * 1024 * 1024;

// An advisory lock on a plain file, whoever can write it, held while the object lives. Where the
// file must not be made (a read-only folder) nothing is locked: nothing can be written there
// either. Throws kPlatform for every other lock that cannot be had.
class FileLock {
  public:
    FileLock(const std::string& folder, const std::string& name);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    int fd_;
};

}  // namespace vtv
