#include "trusted_tv.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "growing_file.h"
#include "tv_files.h"
#include "virtual-tv/model/error.h"
#include "virtual-tv/model/limits.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

std::string UserName(uid_t user) {
    const passwd* const entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : "#" + std::to_string(user);
}

std::string FolderOrFile(const struct stat& info) {
    return S_ISDIR(info.st_mode) ? "folder" : "file";
}

[[noreturn]] void FailAsForeign(const std::string& path, const struct stat& info,
                                const std::string& remedy) {
    throw Error(ErrorKind::kPlatform, path + ": this " + FolderOrFile(info) + " belongs to " +
                                          UserName(info.st_uid) +
                                          ", who can change the TV at any time, and not to you (" +
                                          UserName(geteuid()) + "). " + remedy);
}

[[noreturn]] void FailAsWritable(const std::string& path, const struct stat& info,
                                 const std::string& remedy) {
    std::array<char, 8> mode{};
    std::snprintf(mode.data(), mode.size(), "%04o", info.st_mode & 07777U);
    throw Error(ErrorKind::kPlatform, path + ": others can write into this " + FolderOrFile(info) +
                                          " (its mode is " + mode.data() +
                                          "), and change the TV at any time. Look at what is in "
                                          "it, then: " +
                                          remedy);
}

bool IsForeign(const struct stat& info) {
    return info.st_uid != geteuid() && info.st_uid != 0;
}

// ---------------------------------------------------------------------------------------------
// The way to the TV
// ---------------------------------------------------------------------------------------------

// As root, what is written into the TV would be root's, and out of its owner's reach.
std::string RemedyOf(const std::string& folder, uid_t owner) {
    return geteuid() == 0
               ? "Use it as its owner: sudo -u '" + UserName(owner) + "' vtv ..., or without sudo"
               : "Take a copy: cp -r, or make it yours: sudo chown -R '" + UserName(geteuid()) +
                     "' " + folder;
}

void RequireTrustedFolder(const std::string& folder, bool mayBeSticky) {
    struct stat info{};
    if (stat(folder.c_str(), &info) != 0) {
        return;  // whoever opens it next tells why
    }
    if (IsForeign(info)) {
        FailAsForeign(folder, info, RemedyOf(folder, info.st_uid));
    }
    // In a folder such as /tmp others can make files, but nobody can replace another's.
    const bool isSticky = mayBeSticky && (info.st_mode & S_ISVTX) != 0;
    if ((info.st_mode & kOthersWrite) != 0 && !isSticky) {
        FailAsWritable(folder, info, "chmod go-w " + folder);
    }
}

// Nobody who has a name here, as root has none in a container of another user's.
bool IsOutsideOfNamespace(uid_t user) {
    uid_t nobody = 0;
    std::ifstream("/proc/sys/kernel/overflowuid") >> nobody;
    unsigned long first = 0;
    unsigned long outside = 0;
    unsigned long count = 0;
    std::ifstream("/proc/self/uid_map") >> first >> outside >> count;
    return user == nobody && count != 0xffffffffUL;
}

// A group that was made for the user alone, as many systems do.
bool IsOwnGroup(gid_t id) {
    const passwd* const user = getpwuid(geteuid());
    const group* const found = user != nullptr && user->pw_gid == id ? getgrgid(id) : nullptr;
    return found != nullptr && std::string(found->gr_name) == user->pw_name &&
           found->gr_mem[0] == nullptr;
}

// Further up: who could replace a folder there could put another TV in the place of this one.
void RequireTrustedAbove(const std::string& folder) {
    struct stat info{};
    if (stat(folder.c_str(), &info) != 0) {
        return;
    }
    const std::string elsewhere =
        "Keep your TVs where only you can write: set VTV_HOME to a folder there.";
    if (IsForeign(info) && !IsOutsideOfNamespace(info.st_uid)) {
        FailAsForeign(folder, info, elsewhere);
    }
    const mode_t writing = info.st_mode & kOthersWrite;
    const bool isFine = writing == 0 || (info.st_mode & S_ISVTX) != 0 ||
                        (writing == S_IWGRP && IsOwnGroup(info.st_gid));
    if (!isFine) {
        FailAsWritable(folder, info, "chmod go-w " + folder + ". Or: " + elsewhere);
    }
}

void RequireTrustedWay(const std::string& dir) {
    RequireTrustedFolder(dir, false);
    const std::string parent = fs::path(dir).parent_path().string();
    RequireTrustedFolder(parent, true);
    // The links in its name lie in folders, too; where they lead to is what counts.
    std::error_code error;
    const fs::path whole = fs::canonical(dir, error);
    for (fs::path folder = error ? fs::path(dir) : whole; folder.has_relative_path();) {
        folder = folder.parent_path();
        if (folder != parent) {
            RequireTrustedAbove(folder.string());
        }
    }
}

// ---------------------------------------------------------------------------------------------
// What is in it
// ---------------------------------------------------------------------------------------------

// What grows while the TV is used is set aside in time, and refused only to who reads it.
bool IsGrowing(std::string_view name) {
    for (const GrowingFile& file : {kLogFile, kApplicationsLog, kTraceFile, kLaunchesFile}) {
        if (name.substr(0, std::strlen(file.name)) == file.name) {
            return true;
        }
    }
    return false;
}

[[noreturn]] void FailAsCrowded(const std::string& dir) {
    throw Error(ErrorKind::kUsage,
                dir + ": this holds more files and folders than any TV: at most " +
                    std::to_string(kMostTvFiles) +
                    ". Remove those that are none of the TV's, or make the TV anew.");
}

void RequireTrustedEntry(const std::string& tvDir, const std::string& name,
                         const struct stat& info) {
    const std::string path = tvDir + "/" + name;
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
        throw Error(ErrorKind::kUsage,
                    path +
                        ": this is no plain file and no folder. A TV that somebody sent could "
                        "change other files of yours by it: remove it, or make the TV anew.");
    }
    if (S_ISREG(info.st_mode) && info.st_size > kLargestTvFile && !IsGrowing(name)) {
        throw Error(ErrorKind::kUsage, path +
                                           ": this is larger than any file of a TV. Remove it, "
                                           "or make the TV anew.");
    }
    if (IsForeign(info)) {
        const std::string own = "chown -R '" + UserName(geteuid()) + "' " + tvDir;
        FailAsForeign(path, info,
                      "Take a copy: cp -r, or make it yours: " +
                          std::string(geteuid() == 0 ? "" : "sudo ") + own);
    }
    if ((info.st_mode & kOthersWrite) != 0) {
        FailAsWritable(path, info, "chmod -R go-w " + tvDir);
    }
}

}  // namespace

void RequireTrustedTv(const std::string& dir) {
    RequireTrustedWay(dir);
    size_t count = 0;
    const int error = WalkTvFolder(dir, "", [&](const std::string& name, const struct stat& info) {
        if (++count > kMostTvFiles) {
            FailAsCrowded(dir);
        }
        if (name.rfind("apps/", 0) != 0) {  // read with care, file by file
            RequireTrustedEntry(dir, name, info);
        }
        return true;
    });
    if (error != 0 && error != ENOENT) {
        FailToRead(dir, error);
    }
}

}  // namespace vtv
