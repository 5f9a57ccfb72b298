#include "tv_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <memory>

#include "folder_names.h"
#include "store.h"
#include "store_files.h"
#include "virtual-tv/model/error.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

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

// Where something lies that is named below the TV's folder: the folder that holds it, and its name
// there. One step of the way at a time: the kernel follows a link in any but the last, whatever the
// flags.
class Place {
  public:
    Place(const std::string& tvDir, const fs::path& path, bool isMade = false)
        : name(path.empty() ? "." : path.filename().string()),
          dir(open(tvDir.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        for (const fs::path& step : path.parent_path()) {
            if (dir >= 0) {
                Enter(step.c_str(), isMade);
            }
        }
    }
    ~Place() {
        if (dir >= 0) {
            Close(dir);
        }
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    const std::string name;
    int dir;  // negative when there is none, and errno tells why

  private:
    void Enter(const char* step, bool isMade) {
        constexpr int kFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        int next = openat(dir, step, kFlags);
        if (next < 0 && errno == ENOENT && isMade &&
            (mkdirat(dir, step, kFolderMode) == 0 || errno == EEXIST)) {
            next = openat(dir, step, kFlags);
        }
        Close(dir);
        dir = next;
    }
};

int OpenInFolder(const std::string& tvDir, const fs::path& name, int flags) {
    const Place place(tvDir, name);
    return place.dir < 0
               ? -1
               : openat(place.dir, place.name.c_str(),
                        flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kFileMode);
}

int OpenPlainFile(const std::string& tvDir, const std::string& name, int flags, struct stat* info) {
    const int fd = OpenInFolder(tvDir, name, flags);
    if (fd < 0) {
        return -1;
    }
    if (fstat(fd, info) != 0) {
        return Refuse(fd, errno);
    }
    return S_ISREG(info->st_mode) ? fd : Refuse(fd, EINVAL);
}

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Takes the descriptor. Calls back with each name and returns the errno of what could not be read.
int ForEachName(int folder, const std::function<void(int folder, const char* name)>& tell) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(OpenListing(folder), closedir);
    if (entries == nullptr) {
        return errno;
    }
    for (errno = 0; const dirent* entry = readdir(entries.get()); errno = 0) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            tell(folder, entry->d_name);
        }
    }
    return errno;
}

// Returns the errno of what stays, or 0.
int RemoveAllOf(int dir, const char* name, int depth = 0) {
    if (unlinkat(dir, name, 0) == 0 || errno == ENOENT) {
        return 0;
    }
    if (errno != EISDIR) {
        return errno;
    }
    if (depth >= PATH_MAX / 2) {
        return ENAMETOOLONG;
    }
    int problem = 0;
    ForEachName(openat(dir, name, kFolderFlags), [&](int folder, const char* entry) {
        const int error = RemoveAllOf(folder, entry, depth + 1);
        problem = problem != 0 ? problem : error;
    });
    if (problem != 0) {
        return problem;
    }
    return unlinkat(dir, name, AT_REMOVEDIR) == 0 || errno == ENOENT ? 0 : errno;
}

// Takes the descriptor.
int Walk(int folder, const std::string& prefix, const TvEntry& tell) {
    if (prefix.size() >= PATH_MAX) {  // nothing of a TV lies so deep
        if (folder >= 0) {
            close(folder);
        }
        return ENAMETOOLONG;
    }
    int problem = 0;
    const int error = ForEachName(folder, [&](int from, const char* name) {
        struct stat info{};
        if (fstatat(from, name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
            problem = errno == ENOENT ? problem : errno;  // or gone meanwhile
            return;
        }
        if (tell(prefix + name, info) && S_ISDIR(info.st_mode)) {
            const int below = openat(from, name, kFolderFlags);
            const bool isGone = below < 0 && (errno == ENOENT || errno == ENOTDIR);
            const int failed = isGone ? 0 : Walk(below, prefix + name + "/", tell);
            problem = problem != 0 ? problem : failed;
        }
    });
    return problem != 0 ? problem : error;
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

}  // namespace

void FailToRead(const std::string& path, int error) {
    const char* advice = error == EFBIG ? " It is larger than any file of a TV. Remove it." : "";
    throw Error(ErrorKind::kPlatform,
                path + ": cannot be read: " + std::strerror(error) + "." + advice);
}

int OpenTvFile(const std::string& tvDir, const std::string& name, int flags) {
    // Emptied only once it is known to be a plain file.
    struct stat info{};
    const int fd = OpenPlainFile(tvDir, name, flags & ~O_TRUNC, &info);
    if (fd < 0) {
        return -1;
    }
    if ((info.st_uid != geteuid() && info.st_uid != 0) ||
        (info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Refuse(fd, EPERM);
    }
    if (info.st_size > kLargestTvFile) {
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
    if (fd >= 0 && close(fd) != 0 && written) {
        *error = errno;
        return false;
    }
    return written;
}

void MakeTvFolder(const std::string& tvDir, const std::string& name) {
    const Place place(tvDir, fs::path(name) / ".", true);
    if (place.dir < 0) {
        throw Error(ErrorKind::kPlatform, tvDir + "/" + name + ": cannot make this folder: " +
                                              std::strerror(errno) + ".");
    }
}

bool RenameInTv(const std::string& tvDir, const std::string& from, const std::string& to) {
    const Place source(tvDir, from);
    if (source.dir < 0) {
        return false;
    }
    const Place goal(tvDir, to);
    return goal.dir >= 0 && store_file_calls.renameat(source.dir, source.name.c_str(), goal.dir,
                                                      goal.name.c_str()) == 0;
}

bool RemoveTvFile(const std::string& tvDir, const std::string& name) {
    const Place place(tvDir, name);
    return place.dir >= 0 && store_file_calls.unlinkat(place.dir, place.name.c_str(), 0) == 0;
}

bool RemoveEmptyTvFolder(const std::string& tvDir, const std::string& name) {
    const Place place(tvDir, name);
    return place.dir >= 0 && unlinkat(place.dir, place.name.c_str(), AT_REMOVEDIR) == 0;
}

bool RemoveTvTree(const std::string& tvDir, const std::string& name) {
    const Place place(tvDir, name);
    const int error = place.dir >= 0 ? RemoveAllOf(place.dir, place.name.c_str()) : errno;
    errno = error;
    return error == 0 || error == ENOENT;
}

int WalkTvFolder(const std::string& tvDir, const std::string& name, const TvEntry& tell) {
    const int folder = OpenTvFolder(tvDir, name);
    return folder >= 0 ? Walk(folder, "", tell) : errno;
}

std::vector<std::string> NamesInTv(const std::string& tvDir, const std::string& name) {
    return NamesIn(OpenTvFolder(tvDir, name), tvDir + "/" + name);
}

FileLock::FileLock(const std::string& folder, const std::string& name) {
    struct stat ignored{};
    fd_ = OpenPlainFile(folder, name, O_RDWR | O_CREAT, &ignored);
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
