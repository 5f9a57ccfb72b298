#include "temporary_folder.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>

#include "virtual-tv/model/error.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kEnoughRoom = std::uint64_t{32} * 1024 * 1024;  // of a hundred TVs

bool IsRoomInMemory(const std::string& folder) {
    struct stat info{};
    struct statfs system{};
    return stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
           (info.st_uid == geteuid() || info.st_uid == 0) &&
           access(folder.c_str(), W_OK | X_OK) == 0 && statfs(folder.c_str(), &system) == 0 &&
           system.f_type == TMPFS_MAGIC &&
           std::uint64_t{system.f_bavail} * static_cast<std::uint64_t>(system.f_bsize) >=
               kEnoughRoom;
}

std::string PlaceOfThrowaways() {
    const char* const chosen = std::getenv("TMPDIR");
    if (chosen != nullptr && *chosen != '\0') {
        return fs::absolute(chosen).string();
    }
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    for (const std::string& folder :
         {std::string(runtime != nullptr ? runtime : ""), std::string("/dev/shm")}) {
        if (fs::path(folder).is_absolute() && IsRoomInMemory(folder)) {
            return folder;
        }
    }
    return "/tmp";
}

std::string RandomName() {
    std::random_device random;
    char text[20];
    std::snprintf(text, sizeof text, "%08x%08x", random(), random());
    return text;
}

void Remove(const std::string& path) {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

// Outlives every signal that ends the others, and holds nothing of theirs open.
[[noreturn]] void Watch(const std::string& path, int lifeline) {
    setsid();
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    dup2(lifeline, STDIN_FILENO);
    close_range(STDIN_FILENO + 1, ~0U, 0);
    char nothing = 0;
    while (read(STDIN_FILENO, &nothing, 1) < 0 && errno == EINTR) {
    }
    Remove(path);
    _exit(0);
}

}  // namespace

TemporaryFolder::TemporaryFolder(const std::string& name)
    : path_(PlaceOfThrowaways() + "/" + name + "-" + RandomName()) {
    int lifeline[2] = {-1, -1};
    if (pipe2(lifeline, O_CLOEXEC) == 0) {
        watcher_ = fork();
        if (watcher_ == 0) {
            close(lifeline[1]);
            Watch(path_, lifeline[0]);
        }
        close(lifeline[0]);
        alive_ = lifeline[1];
    }
    if (mkdir(path_.c_str(), 0700) != 0) {
        const int reason = errno;
        close(alive_);
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         path_ + ": cannot be made: " + std::strerror(reason));
    }
}

TemporaryFolder::~TemporaryFolder() {
    Remove(path_);
    close(alive_);
    if (watcher_ > 0) {
        waitpid(watcher_, nullptr, 0);
    }
}

}  // namespace host
