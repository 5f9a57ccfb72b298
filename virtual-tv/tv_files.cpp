#include "tv_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "growing_file.h"
#include "store_files.h"
#include "virtual-tv/model/error.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{256} * 1024 * 1024;

// Leaves errno as it was.
void Close(int fd) {
    const int error = errno;
    close(fd);
    errno = error;
}

int Refuse(int fd, int error) {
    close(fd);
    errno = error;
    return -1;
}

// One step of the way at a time: the kernel follows a link in any but the last, whatever the flags.
int OpenInFolder(const std::string& folder, const fs::path& name, int flags) {
    int dir = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    for (const fs::path& step : name.parent_path()) {
        if (dir < 0) {
            return -1;
        }
        const int next = openat(dir, step.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        Close(dir);
        dir = next;
    }
    if (dir < 0) {
        return -1;
    }
    const std::string last = name.empty() ? "." : name.filename().string();
    const int fd = openat(dir, last.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                          kFileMode);
    Close(dir);
    return fd;
}

bool WriteDurably(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t size = write(fd, content.data(), content.size());
        if (size < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    return store_file_calls.fsync(fd) == 0;
}

// What grows while the TV is used is set aside in time, and refused only to who reads it.
bool IsGrowing(std::string_view name) {
    for (const GrowingFile& file : {kLogFile, kApplicationsLog, kTraceFile, kLaunchesFile}) {
        if (name.substr(0, std::strlen(file.name)) == file.name) {
            return true;
        }
    }
    return false;
}

}  // namespace

void FailToRead(const std::string& path, int error) {
    const char* advice = error == EFBIG ? " It is larger than any file of a TV. Remove it." : "";
    throw Error(ErrorKind::kPlatform,
                path + ": cannot be read: " + std::strerror(error) + "." + advice);
}

int OpenTvFile(const std::string& tvDir, const std::string& name, int flags) {
    // Emptied only once it is known to be a plain file.
    const int fd = OpenInFolder(tvDir, name, flags & ~O_TRUNC);
    struct stat info{};
    if (fd < 0) {
        return -1;
    }
    if (fstat(fd, &info) != 0) {
        return Refuse(fd, errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return Refuse(fd, EINVAL);
    }
    if (static_cast<std::uintmax_t>(info.st_size) > kLargestFile) {
        return Refuse(fd, EFBIG);
    }
    if ((flags & O_TRUNC) != 0 && info.st_size > 0 && ftruncate(fd, 0) != 0) {
        return Refuse(fd, errno);
    }
    return fd;
}

int OpenTvFolder(const std::string& tvDir, const std::string& name) {
    return OpenInFolder(tvDir, name, O_RDONLY | O_DIRECTORY);
}

bool ReadToEnd(int fd, off_t from, std::string* text) {
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t size = pread(fd, buffer, sizeof buffer, from);
        if (size == 0) {
            return true;
        }
        if (size < 0 && errno != EINTR) {
            return false;
        }
        text->append(buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
        from += size > 0 ? size : 0;
    }
}

std::optional<std::string> ReadTvFile(const std::string& tvDir, const std::string& name,
                                      off_t from) {
    const int fd = OpenTvFile(tvDir, name, O_RDONLY);
    if (fd < 0 && errno == ENOENT) {
        return std::nullopt;
    }
    std::string text;
    const bool good = fd >= 0 && ReadToEnd(fd, from, &text);
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (!good) {
        FailToRead(tvDir + "/" + name, error);
    }
    return text;
}

bool WriteTvFile(const std::string& tvDir, const std::string& name, std::string_view content,
                 int* error) {
    const int fd = OpenTvFile(tvDir, name, O_WRONLY | O_CREAT | O_TRUNC);
    const bool written = fd >= 0 && WriteDurably(fd, content);
    *error = errno;
    return (fd < 0 || close(fd) == 0) && written;
}

void RequirePlainFiles(const std::string& tvDir) {
    std::error_code error;
    fs::recursive_directory_iterator entries(tvDir, error);
    for (; !error && entries != fs::recursive_directory_iterator(); entries.increment(error)) {
        const std::string path = entries->path().string();
        struct stat info{};
        if (lstat(path.c_str(), &info) != 0) {
            if (errno != ENOENT) {  // it may have gone meanwhile
                FailToRead(path, errno);
            }
            continue;
        }
        if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
            throw Error(ErrorKind::kUsage,
                        path +
                            ": this is no plain file and no folder. A TV that somebody sent could "
                            "change other files of yours by it: remove it, or make the TV anew.");
        }
        const bool isTooLarge =
            S_ISREG(info.st_mode) && static_cast<std::uintmax_t>(info.st_size) > kLargestFile;
        if (isTooLarge && !IsGrowing(path.substr(tvDir.size() + 1))) {
            throw Error(ErrorKind::kUsage,
                        path +
                            ": this is larger than any file of a TV. Remove it, or make the TV "
                            "anew.");
        }
        if (S_ISDIR(info.st_mode) && entries.depth() == 0 && entries->path().filename() == "apps") {
            entries.disable_recursion_pending();  // read with care, file by file
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        FailToRead(tvDir, error.value());
    }
}

FileLock::FileLock(const std::string& folder, const std::string& name)
    : fd_(OpenTvFile(folder, name, O_RDWR | O_CREAT)) {
    int error = fd_ >= 0 ? EINTR : errno;
    while (fd_ >= 0 && error == EINTR) {
        error = flock(fd_, LOCK_EX) == 0 ? 0 : errno;
    }
    // A link is nobody's lock, and no TV that is opened has one.
    const bool isReadOnly = error == EACCES || error == EPERM || error == EROFS || error == ELOOP;
    if (error == 0 || (fd_ < 0 && (isReadOnly || error == ENOENT))) {
        return;
    }
    if (fd_ >= 0) {
        close(fd_);
    }
    throw Error(ErrorKind::kPlatform,
                folder + "/" + name + ": cannot be locked: " + std::strerror(error) + ".");
}

FileLock::~FileLock() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

}  // namespace vtv
