// Where things lie: on this machine, and in a TV's folder.
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
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

namespace {

std::string UserName(uid_t user) {
    const passwd* const entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : "#" + std::to_string(user);
}

[[noreturn]] void FailAsForeign(const std::string& dir, uid_t owner) {
    const std::string text = dir + ": this folder belongs to " + UserName(owner) +
                             ", who can change the TV at any time, and not to you (" +
                             UserName(geteuid()) + "). ";
    // As root, what is written into the TV would be root's, and out of its owner's reach.
    throw Error(ErrorKind::kPlatform,
                text + (geteuid() == 0 ? "Use it as its owner: sudo -u '" + UserName(owner) +
                                             "' vtv ..., or without sudo"
                                       : "Take a copy: cp -r, or make it yours: sudo chown -R '" +
                                             UserName(geteuid()) + "' " + dir));
}

}  // namespace

void RequireTrustedFolders(const std::string& dir) {
    const std::string parent = fs::path(dir).parent_path().string();
    for (const std::string& folder : {dir, parent}) {
        struct stat info{};
        if (stat(folder.c_str(), &info) != 0) {
            continue;  // whoever opens it next tells why
        }
        if (info.st_uid != geteuid() && info.st_uid != 0) {
            FailAsForeign(folder, info.st_uid);
        }
        // In a folder such as /tmp others can make files, but nobody can replace another's.
        const bool sticky = folder == parent && (info.st_mode & S_ISVTX) != 0;
        if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && !sticky) {
            std::array<char, 8> mode{};
            std::snprintf(mode.data(), mode.size(), "%04o", info.st_mode & 07777U);
            throw Error(ErrorKind::kPlatform,
                        folder + ": others can write into this folder (its mode is " + mode.data() +
                            "), and change the TV at any time. Look at what is in "
                            "it, then: chmod go-w " +
                            folder);
        }
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
