// Where the files of a TV's folder are opened. What a TV is opened with is looked at as a whole
// (RequirePlainFiles); what lies there later, in a process that goes on for long, is judged here.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace vtv {

// Whatever the umask, nobody else writes into a TV.
inline constexpr mode_t kFolderMode = 0755;
inline constexpr mode_t kFileMode = 0644;

// As open(), of a plain file that is named below the TV's folder: by no link on the way from there,
// without waiting for whoever has the other end of a pipe, and not larger than any file of a TV.
// The name goes down only. -1, and errno tells why: ELOOP or ENOTDIR for a link, EINVAL for what is
// no plain file, EFBIG.
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

// Throws kUsage for a link, a pipe or a device in a TV's folder, because the TV writes into its
// files, and for one that is too large to be a TV's, because the TV reads them. Throws kPlatform
// when the folder cannot be read.
void RequirePlainFiles(const std::string& tvDir);

// An advisory lock on a file, held while the object lives. Where the file must not be made (a
// read-only folder) nothing is locked: nothing can be written there either. Throws kPlatform for
// every other lock that cannot be had.
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
