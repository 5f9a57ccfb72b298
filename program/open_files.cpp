#include "open_files.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace program {

namespace {

// What keeps one more file from being opened; 0 when all could be opened at once.
int WhatRunsOut() {
    std::array<int, kOpenFiles> files{};
    int error = 0;
    auto* const end = std::find_if(files.begin(), files.end(), [&error](int& file) {
        file = open("/", O_PATH | O_CLOEXEC);
        error = file < 0 ? errno : 0;
        return error != 0;
    });
    std::for_each(files.begin(), end, close);
    return error;
}

}  // namespace

std::string OpenFilesProblem() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        // A low soft limit keeps nobody from more; descriptors above 1024 are of no use to
        // select().
        limit.rlim_cur = std::max(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, 1024));
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    const std::string needed = " This program needs " + std::to_string(kOpenFiles) + " at a time.";
    switch (WhatRunsOut()) {
        case EMFILE:
            return "too many files are open, or too few may be: this process may have " +
                   std::to_string(limit.rlim_cur) + " (ulimit -n)." + needed +
                   " Raise the limit: ulimit -n 1024";
        case ENFILE:
            return "too many files are open on this machine (fs.file-max)." + needed +
                   " End some programs, or raise it: sysctl fs.file-max";
        default:
            return "";  // another reason, of which whoever opens a file tells
    }
}

}  // namespace program
