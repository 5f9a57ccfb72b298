#include "own_files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr off_t kLargestOwnFile = off_t{4} * 1024 * 1024;

[[noreturn]] void FailOwn(const std::string& path, const std::string& text) {
    throw Error(ErrorKind::kPlatform, path + ": " + text);
}

void RequireOwn(const std::string& path, const struct stat& info) {
    if (info.st_uid != geteuid()) {
        FailOwn(path, "belongs to another user, so that what it says does not count. Remove it.");
    }
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        FailOwn(path,
                "can be written by others, so that what it says does not count. Look at what "
                "it holds, then: chmod go-w " +
                    path);
    }
}

}  // namespace

std::string OwnFolder() {
    const auto absolute = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string(value != nullptr && value[0] == '/' ? value : "");
    };
    if (const std::string config = absolute("XDG_CONFIG_HOME"); !config.empty()) {
        return config + "/vtv";
    }
    const std::string home = absolute("HOME");
    return home.empty() ? "" : home + "/.config/vtv";
}

void MakeOwnFolder(const std::string& dir) {
    EnsureDir(fs::path(OwnFolder()).parent_path().string());
    for (const std::string& folder : {OwnFolder(), dir}) {
        if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            FailOwn(folder, std::string("cannot be made: ") + std::strerror(errno) + ".");
        }
        struct stat info{};
        if (stat(folder.c_str(), &info) == 0) {
            RequireOwn(folder, info);
        }
    }
}

std::optional<std::string> ReadOwnFile(const std::string& file, const std::string& otherwise) {
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0 && errno == ENOENT) {
        return std::nullopt;
    }
    struct stat info{};
    const bool plain = fd >= 0 && fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
                       info.st_size <= kLargestOwnFile;
    if (!plain) {
        const std::string reason =
            fd < 0 && errno != ELOOP ? std::strerror(errno) : "it must be a plain file, no link";
        if (fd >= 0) {
            close(fd);
        }
        FailOwn(file, "cannot be read: " + reason + ". " + otherwise);
    }
    std::string text(static_cast<size_t>(info.st_size), '\0');
    const ssize_t size = pread(fd, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    close(fd);
    RequireOwn(file, info);
    const std::string parent = fs::path(file).parent_path().string();
    for (const std::string& dir : {OwnFolder(), parent}) {
        if (stat(dir.c_str(), &info) == 0) {
            RequireOwn(dir, info);
        }
    }
    return text;
}

void WriteOwnFile(const std::string& file, const std::string& text) {
    std::string temporary = file + ".XXXXXX";
    const int fd = mkostemp(temporary.data(), O_CLOEXEC);  // 0600
    bool good = fd >= 0 &&
                write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                fsync(fd) == 0;
    int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (good && rename(temporary.c_str(), file.c_str()) != 0) {
        error = errno;
        good = false;
    }
    if (!good) {
        unlink(temporary.c_str());
        FailOwn(file, std::string("cannot be written: ") + std::strerror(error) + ".");
    }
}

}  // namespace vtv
