// The system calls that change a TV's folder, failing or killing the process when they are told to.
#pragma once

#include <cerrno>
#include <csignal>

#include "virtual-tv/store_files.h"

namespace vtv {

// What the next calls do: the nth fails, with all that follow or alone, or kills the process.
struct Plan {
    int countdown = 0;  // 0: nothing happens
    bool fromThenOn = false;
    bool kill = false;
    int calls = 0;
};
inline Plan plan;
inline StoreFileCalls systemCalls;

inline bool Fails() {
    ++plan.calls;
    const bool isIt = plan.calls == plan.countdown;
    const bool isBehindIt = plan.fromThenOn && plan.calls > plan.countdown;
    if (plan.countdown == 0 || (!isIt && !isBehindIt)) {
        return false;
    }
    if (plan.kill) {
        raise(SIGKILL);
    }
    errno = ENOSPC;
    return true;
}

inline constexpr StoreFileCalls kPlanned = {
    [](int dir, const char* name, int flags, mode_t mode) {
        return Fails() ? -1 : systemCalls.openat(dir, name, flags, mode);
    },
    [](int fd, const void* data, size_t size) {
        return Fails() ? ssize_t{-1} : systemCalls.write(fd, data, size);
    },
    [](int fd) { return Fails() ? -1 : systemCalls.fsync(fd); },
    [](int fd) { return systemCalls.close(fd); },
    [](int fromDir, const char* from, int toDir, const char* to) {
        return Fails() ? -1 : systemCalls.renameat(fromDir, from, toDir, to);
    },
    [](int dir, const char* name, int flags) {
        return Fails() ? -1 : systemCalls.unlinkat(dir, name, flags);
    },
};

}  // namespace vtv
