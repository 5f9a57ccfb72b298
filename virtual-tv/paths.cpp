// Where things lie: on this machine, and in a TV's folder.
#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "store_files.h"
#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{256} * 1024 * 1024;

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

bool WriteNewFile(const std::string& file, std::string_view content, int* error) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode);
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
    good = good && (store_file_calls.fsync(fd) == 0 || errno == EINVAL);
    *error = errno;
    return close(fd) == 0 && good;
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

void RequirePlainFiles(const std::string& dir) {
    std::error_code error;
    fs::recursive_directory_iterator entries(dir, error);
    for (; !error && entries != fs::recursive_directory_iterator(); entries.increment(error)) {
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
        if (type == fs::file_type::regular && entries->file_size(error) > kLargestFile && !error) {
            throw Error(ErrorKind::kUsage, entries->path().string() +
                                               ": this is larger than any file of a TV. Remove it, "
                                               "or make the TV anew.");
        }
        error.clear();  // of one file, which may have gone meanwhile
    }
    Unreadable::ThrowIf(error.value(), dir);
}

FileLock::FileLock(const std::string& file) {
    fd_ = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode);
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
    throw Error(ErrorKind::kPlatform, file + ": cannot be locked: " + std::strerror(error) + ".");
}

FileLock::~FileLock() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

}  // namespace vtv
