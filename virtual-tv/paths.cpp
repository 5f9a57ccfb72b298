// Where things lie: on this machine, and in a TV's folder.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

std::string HomeDir() {
    if (const std::string home = Environment("VTV_HOME"); !home.empty()) {
        return home;
    }
    if (const std::string data = Environment("XDG_DATA_HOME"); !data.empty()) {
        return data + "/vtv";
    }
    const std::string home = Environment("HOME");
    return (home.empty() ? std::string("/tmp") : home) + "/.local/share/vtv";
}

std::string AppProgram() {
    const std::string program = Environment("VTV_APP");
    return program.empty() ? FindProgram("vtv-app") : program;
}

TimePoint Now() {
    return std::chrono::time_point_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now());
}

void EnsureDir(const std::string& dir) {
    std::error_code ignored;
    if (fs::is_directory(dir, ignored)) {
        return;
    }
    const std::string parent = fs::path(dir).parent_path().string();
    if (!parent.empty() && parent != dir) {
        EnsureDir(parent);
    }
    if (mkdir(dir.c_str(), kFolderMode) != 0 && errno != EEXIST) {
        throw Error(ErrorKind::kPlatform,
                    dir + ": cannot make this folder: " + std::strerror(errno) + ".");
    }
}

std::string BootId() {
    constexpr const char* kFile = "/proc/sys/kernel/random/boot_id";
    char text[64] = "";
    const int fd = open(kFile, O_RDONLY | O_CLOEXEC);
    const ssize_t size = fd >= 0 ? read(fd, text, sizeof text - 1) : -1;
    const int reason = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (size <= 0) {
        throw Error(ErrorKind::kPlatform,
                    std::string(kFile) +
                        ": cannot be read: " + std::strerror(size < 0 ? reason : EIO) +
                        ". It tells whether the machine has been off, which a TV has to know.");
    }
    return {text, static_cast<size_t>(size)};
}

}  // namespace vtv
