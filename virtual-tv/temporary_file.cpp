#include "temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "folder_names.h"
#include "store_files.h"

namespace vtv {

namespace {

constexpr char kTemporaryPrefix[] = ".tmp-";

// By chance: numbers of processes mean something else in each namespace that shares the folder.
std::string TemporaryName() {
    static std::atomic<uint64_t> count{0};
    uint64_t number = ++count;  // where chance has nothing
    while (getrandom(&number, sizeof number, 0) < 0 && errno == EINTR) {
    }
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%s%016" PRIx64, kTemporaryPrefix, number);
    return name.data();
}

// A lock says nothing of a name that has come to mean another file before it was held. otherwise:
// what is taken for true when the machine does not tell.
bool IsStillNamed(int dir, const char* name, int fd, bool otherwise) {
    struct stat mine{};
    struct stat there{};
    if (fstat(fd, &mine) != 0) {
        return otherwise;
    }
    if (fstatat(dir, name, &there, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno != ENOENT && otherwise;
    }
    return mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

}  // namespace

TemporaryFile::TemporaryFile(int dir) {
    for (;;) {
        name = TemporaryName();
        fd = store_file_calls.openat(dir, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                     0644);
        if (fd < 0 && errno == EEXIST) {
            continue;
        }
        if (fd < 0 || Guard(dir)) {
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

bool TemporaryFile::Guard(int dir) {
    guard_ = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    while (guard_ >= 0 && flock(guard_, LOCK_EX) != 0 && errno == EINTR) {
    }
    if (IsStillNamed(dir, name.c_str(), fd, true)) {
        return true;
    }
    if (guard_ >= 0) {
        close(guard_);
    }
    guard_ = -1;
    return false;
}

void RemoveLeftTemporaryFiles(int dir) {
    DIR* entries = OpenListing(openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (entries == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(entries)) {
        if (std::strncmp(entry->d_name, kTemporaryPrefix, sizeof kTemporaryPrefix - 1) != 0) {
            continue;
        }
        const int fd = store_file_calls.openat(dir, entry->d_name,
                                               O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0);
        if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0 &&
            IsStillNamed(dir, entry->d_name, fd, false)) {
            unlinkat(dir, entry->d_name, 0);
        }
        if (fd >= 0) {
            close(fd);
        }
    }
    closedir(entries);
}

}  // namespace vtv
