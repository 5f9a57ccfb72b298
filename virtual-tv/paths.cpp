// Where things lie: on this machine, and in a TV's folder.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
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

// The folder of this library, which knows neither where it was built nor where it was installed.
fs::path LibraryDir() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&LibraryDir), &info) == 0 || info.dli_fname == nullptr) {
        return ".";
    }
    std::error_code error;
    const fs::path file = fs::canonical(info.dli_fname, error);
    return error ? fs::path(info.dli_fname).parent_path() : file.parent_path();
}

// lib/ next to it, or lib/x86_64-linux-gnu/.
std::string FindBelowPrefix(const std::string& relative) {
    const fs::path lib = LibraryDir();
    std::error_code error;
    for (const fs::path& prefix : {lib.parent_path(), lib.parent_path().parent_path()}) {
        if (fs::exists(prefix / relative, error)) {
            return (prefix / relative).string();
        }
    }
    return (lib.parent_path() / relative).string();
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

std::string DataDir() {
    const std::string data = Environment("VTV_DATA");
    return data.empty() ? FindBelowPrefix("share/vtv") : data;
}

std::string AppProgram() {
    const std::string program = Environment("VTV_APP");
    return program.empty() ? FindBelowPrefix("bin/vtv-app") : program;
}

TimePoint Now() {
    return std::chrono::time_point_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now());
}

void EnsureDir(const std::string& dir) {
    std::error_code error;
    fs::create_directories(dir, error);
    if (error) {
        throw Error(ErrorKind::kPlatform,
                    dir + ": cannot make this folder: " + error.message() + ".");
    }
}

bool WriteNewFile(const std::string& file, std::string_view content, int* error) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        *error = errno;
        return false;
    }
    bool good = true;
    while (good && !content.empty()) {
        const ssize_t size = write(fd, content.data(), content.size());
        good = size >= 0 || errno == EINTR;
        content.remove_prefix(size > 0 ? static_cast<size_t>(size) : 0);
    }
    // A pipe or a terminal has nothing to be made durable.
    good = good && (fsync(fd) == 0 || errno == EINVAL);
    *error = errno;
    return close(fd) == 0 && good;
}

std::string BootId() {
    char text[64] = "";
    const int fd = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return "";
    }
    const ssize_t size = read(fd, text, sizeof text - 1);
    close(fd);
    return size > 0 ? std::string(text, static_cast<size_t>(size)) : std::string();
}

void RequirePlainFiles(const std::string& dir) {
    std::error_code error;
    fs::recursive_directory_iterator entries(dir, error);
    for (; entries != fs::recursive_directory_iterator(); entries.increment(error)) {
        if (entries.depth() == 0 && entries->path().filename() == "apps" &&
            fs::is_directory(entries->symlink_status(error))) {
            entries.disable_recursion_pending();  // read with care, file by file
            continue;
        }
        const fs::file_type type = entries->symlink_status(error).type();
        if (type != fs::file_type::regular && type != fs::file_type::directory &&
            type != fs::file_type::not_found) {
            throw Error(ErrorKind::kUsage,
                        entries->path().string() +
                            ": this is no plain file and no folder. A TV that somebody sent could "
                            "change other files of yours by it: remove it, or make the TV anew.");
        }
    }
}

FileLock::FileLock(const std::string& file) {
    fd_ = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

FileLock::~FileLock() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

}  // namespace vtv
