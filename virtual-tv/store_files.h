// The system calls with which the store writes. Tests replace them to fail, to kill, or to lose
// what was not synced; nothing else does but SyncNothing().
#pragma once

#include <sys/types.h>

namespace vtv {

struct StoreFileCalls {
    int (*openat)(int dir, const char* name, int flags, mode_t mode);
    ssize_t (*write)(int fd, const void* data, size_t size);
    int (*fsync)(int fd);
    int (*close)(int fd);
    int (*renameat)(int fromDir, const char* from, int toDir, const char* to);
    int (*unlinkat)(int dir, const char* name, int flags);
};

extern StoreFileCalls store_file_calls;

}  // namespace vtv
