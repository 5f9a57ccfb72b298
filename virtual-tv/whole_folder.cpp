#include "whole_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <regex>

#include "folder_names.h"
#include "store_files.h"
#include "tv_impl.h"
#include "virtual-tv/model/text_file.h"
#include "whole_tvs.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void FailOn(const std::string& path, const char* what, int error) {
    std::string text = path + ": " + what + ": " + std::strerror(error) + ".";
    if (error == EXDEV) {
        text += " It would have to go to another disk: vtv copy, then vtv remove.";
    }
    throw Error(ErrorKind::kPlatform, text);
}

// Unique among the processes that share the folder, but for what a killed one has left.
std::string AsideName(const std::string& place, const char* what) {
    static std::atomic<unsigned> count{0};
    return (fs::path(place).parent_path() /
            (std::string(".vtv-") + what + "-" + std::to_string(getpid()) + "-" +
             std::to_string(count.fetch_add(1))))
        .string();
}

int OpenFolder(const std::string& dir) {
    return open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

void LockFolder(int fd) {
    while (flock(fd, LOCK_EX) != 0 && errno == EINTR) {
    }
}

bool IsStillThere(int fd, const std::string& dir) {
    struct stat mine{};
    struct stat there{};
    return fstat(fd, &mine) == 0 && lstat(dir.c_str(), &there) == 0 &&
           mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

[[noreturn]] void FailAsTaken(const std::string& path) {
    throw Error(ErrorKind::kUsage,
                path + ": there is something already. Name a folder that does not exist yet.");
}

int RenameFolder(const std::string& from, const std::string& to) {
    return store_file_calls.renameat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()) == 0 ? 0 : errno;
}

std::string ParentOf(const std::string& path) {
    return fs::path(path).parent_path().string();
}

}  // namespace

bool IsAsideName(const std::string& name) {
    static const std::regex aside(R"(\.vtv-(new|removed)-\d+-\d+)");
    return std::regex_match(name, aside);
}

void SyncFolder(const std::string& dir) {
    const int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool good = fd >= 0 && store_file_calls.fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (!good) {
        FailOn(dir, "cannot be made durable", error);
    }
}

std::string RequireFreePlace(const std::string& place) {
    if (IsAsideName(fs::path(place).filename().string())) {
        throw Error(ErrorKind::kUsage,
                    place +
                        ": names that begin with \".vtv-\" are kept for TVs that are being "
                        "made or removed. Choose another.");
    }
    std::error_code error;
    const fs::file_type there = KindOf(place);
    if (there != fs::file_type::not_found &&
        (there != fs::file_type::directory || !fs::is_empty(place, error))) {
        FailAsTaken(place);
    }
    return place;
}

NewParents::NewParents(const std::string& place) {
    for (std::string dir = ParentOf(place); !IsThere(dir); dir = ParentOf(dir)) {
        made_.push_back(dir);
    }
    EnsureDir(ParentOf(place));
}

NewParents::~NewParents() {
    for (const std::string& dir : made_) {
        rmdir(dir.c_str());  // where nobody has put anything meanwhile
    }
}

NewFolder::NewFolder(const std::string& place) : place_(place), parents_(RequireFreePlace(place)) {
    RemoveLeftFolders(ParentOf(place));
    for (;;) {
        aside_ = AsideName(place, "new");
        if (mkdir(aside_.c_str(), kFolderMode) != 0) {
            if (errno == EEXIST) {
                continue;
            }
            FailOn(aside_, "cannot make this folder", errno);
        }
        lock_ = OpenFolder(aside_);
        if (lock_ < 0 && errno == ENOENT) {
            continue;  // somebody took it for a leftover before it was opened
        }
        if (lock_ < 0) {
            const int error = errno;
            rmdir(aside_.c_str());
            FailOn(aside_, "cannot be opened", error);
        }
        LockFolder(lock_);
        if (IsStillThere(lock_, aside_)) {
            return;
        }
        close(lock_);  // or before it was locked
    }
}

NewFolder::~NewFolder() {
    if (!aside_.empty()) {
        std::error_code ignored;
        fs::remove_all(aside_, ignored);
    }
    close(lock_);
}

void NewFolder::PutInPlace() {
    const int error = RenameFolder(aside_, place_);
    if (error == ENOTEMPTY || error == EEXIST) {
        FailAsTaken(place_);  // another process has made one meanwhile
    }
    if (error != 0) {
        FailOn(place_, "cannot be made", error);
    }
    aside_.clear();
    parents_.Keep();
    SyncFolder(ParentOf(place_));
}

void MoveFolder(const std::string& from, const std::string& place) {
    NewParents parents(RequireFreePlace(place));
    const int error = RenameFolder(from, place);
    if (error == ENOTEMPTY || error == EEXIST) {
        FailAsTaken(place);
    }
    if (error != 0) {
        FailOn(place, "cannot be made", error);
    }
    parents.Keep();
    SyncFolder(ParentOf(place));
    if (ParentOf(from) != ParentOf(place)) {
        SyncFolder(ParentOf(from));
    }
}

void RemoveFolder(const std::string& dir) {
    const int lock = OpenFolder(dir);
    if (lock < 0) {
        FailOn(dir, "cannot be removed", errno);
    }
    LockFolder(lock);
    std::string aside = AsideName(dir, "removed");
    int error = RenameFolder(dir, aside);
    while (error == ENOTEMPTY || error == EEXIST) {
        aside = AsideName(dir, "removed");
        error = RenameFolder(dir, aside);
    }
    if (error != 0) {
        close(lock);
        FailOn(dir, "cannot be removed", error);
    }
    try {
        SyncFolder(ParentOf(dir));  // before anything is deleted: half of it must not come back
    } catch (const Error&) {
        RenameFolder(aside, dir);
        close(lock);
        throw;
    }
    std::error_code problem;
    fs::remove_all(aside, problem);
    close(lock);
    if (problem) {
        throw Error(ErrorKind::kPlatform, dir + ": removed, but " + aside +
                                              ", which is left of it, cannot be deleted: " +
                                              problem.message() + ". Delete it by hand.");
    }
}

void RemoveLeftFolders(const std::string& folder) {
    for (const std::string& name : NamesIn(folder)) {
        if (!IsAsideName(name)) {
            continue;
        }
        const std::string path = folder + "/" + name;
        const int fd = OpenFolder(path);
        struct stat info{};
        if (fd >= 0 && fstat(fd, &info) == 0 && info.st_uid == geteuid() &&
            flock(fd, LOCK_EX | LOCK_NB) == 0 && IsStillThere(fd, path)) {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
        if (fd >= 0) {
            close(fd);
        }
    }
}

}  // namespace vtv
