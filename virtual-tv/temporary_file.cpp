#include "temporary_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "store_files.h"

namespace vtv {

namespace {

constexpr char kTemporaryPrefix[] = ".tmp-";

// Unique among the processes and threads that share the folder.
std::string TemporaryName() {
    static std::atomic<unsigned> count{0};
    char name[64];
    std::snprintf(name, sizeof name, "%s%d-%d-%u", kTemporaryPrefix, static_cast<int>(getpid()),
                  static_cast<int>(gettid()), count.fetch_add(1));
    return name;
}

}  // namespace

TemporaryFile::TemporaryFile(int dir) {
    for (;;) {
        name = TemporaryName();
        fd = store_file_calls.openat(dir, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                     0644);
        if (fd < 0 && errno == EEXIST) {  // left by a killed process of the same number
            continue;
        }
        if (fd < 0 || Guard()) {
            return;
        }
        store_file_calls.close(fd);
    }
}

TemporaryFile::~TemporaryFile() {
    if (guard_ >= 0) {
        close(guard_);
    }
}

bool TemporaryFile::Guard() {
    guard_ = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    while (guard_ >= 0 && flock(guard_, LOCK_EX) != 0 && errno == EINTR) {
    }
    struct stat info{};
    if (fstat(fd, &info) != 0 || info.st_nlink > 0) {
        return true;
    }
    if (guard_ >= 0) {
        close(guard_);
    }
    guard_ = -1;
    return false;
}

void RemoveLeftTemporaryFiles(int dir) {
    const int listed = openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* entries = listed >= 0 ? fdopendir(listed) : nullptr;
    if (entries == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(entries)) {
        if (std::strncmp(entry->d_name, kTemporaryPrefix, sizeof kTemporaryPrefix - 1) != 0) {
            continue;
        }
        const int fd = openat(dir, entry->d_name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) {
            unlinkat(dir, entry->d_name, 0);
        }
        if (fd >= 0) {
            close(fd);
        }
    }
    closedir(entries);
}

}  // namespace vtv
