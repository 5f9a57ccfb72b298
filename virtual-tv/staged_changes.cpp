#include "staged_changes.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "store_files.h"
#include "virtual-tv/model/text_file.h"
#include "whole_folder.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

std::string ChangesOf(const std::string& tvDir) {
    return tvDir + "/.changes";
}
constexpr char kStaged[] = ".changes/staged";
std::string StagedOf(const std::string& tvDir) {
    return tvDir + "/" + kStaged;
}
std::string DecidedOf(const std::string& tvDir) {
    return ChangesOf(tvDir) + "/decided";
}

// Below both: the new files, and an empty file for each that shall go.
constexpr char kWritten[] = "/written/";
constexpr char kRemoved[] = "/removed/";

[[noreturn]] void Fail(const std::string& path, const char* what, const std::string& why) {
    throw Error(ErrorKind::kPlatform, path + ": " + what + ": " + why + ".");
}

bool Exists(const std::string& path) {
    return KindOf(path) != fs::file_type::not_found;
}

void Rename(const std::string& from, const std::string& to) {
    if (store_file_calls.renameat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()) != 0) {
        Fail(to, "cannot be changed", std::strerror(errno));
    }
}

void RemoveTree(const std::string& dir) {
    std::error_code error;
    fs::remove_all(dir, error);
    if (error) {
        Fail(dir, "cannot be removed", error.message());
    }
}

enum class Kind { kFile, kFolder };

// What of a kind lies below a folder, relative to it.
std::vector<fs::path> Below(const std::string& dir, Kind kind) {
    std::vector<fs::path> found;
    std::error_code error;
    fs::recursive_directory_iterator entry(dir, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if ((entry->symlink_status(error).type() == fs::file_type::directory) ==
            (kind == Kind::kFolder)) {
            found.push_back(entry->path().lexically_relative(dir));
        }
    }
    if (error) {
        Fail(dir, "cannot be read", error.message());
    }
    return found;
}

// As Below(), but for what a store keeps for itself.
std::vector<std::string> FilesBelow(const std::string& dir) {
    std::vector<std::string> files;
    for (const fs::path& file : Below(dir, Kind::kFile)) {
        if (*file.begin() == "owner" || file.filename().string().front() != '.') {
            files.push_back(file.string());
        }
    }
    return files;
}

// Below the TV's folder.
void MakeEmptyFile(const std::string& tvDir, const std::string& name) {
    const std::string path = tvDir + "/" + name;
    EnsureDir(fs::path(path).parent_path().string());
    int error = 0;
    if (!WriteTvFile(tvDir, name, "", &error)) {
        Fail(path, "cannot be made", std::strerror(error));
    }
}

void DoDecided(const std::string& tvDir) {
    const std::string decided = DecidedOf(tvDir);
    for (const std::string& file : FilesBelow(decided + kRemoved)) {
        const std::string path = tvDir + "/" + file;
        if (store_file_calls.unlinkat(AT_FDCWD, path.c_str(), 0) != 0 && errno != ENOENT &&
            errno != ENOTDIR) {
            Fail(path, "cannot be removed", std::strerror(errno));
        }
    }
    for (const std::string& file : FilesBelow(decided + kWritten)) {
        EnsureDir(fs::path(tvDir + "/" + file).parent_path().string());
        rmdir((tvDir + "/" + file).c_str());  // a folder that only held what has gone
        Rename(decided + kWritten + file, tvDir + "/" + file);
    }
    for (const char* folder : {"/settings", "/state", "/owner"}) {
        SyncFolder(tvDir + folder);
    }
    // Done in one step, too: nothing of a folder that is half removed may be done again.
    Rename(decided, StagedOf(tvDir));
    std::error_code ignored;
    fs::remove_all(ChangesOf(tvDir), ignored);
}

// What was staged, and not what was decided and is not done yet.
void Discard(const std::string& tvDir) {
    std::error_code ignored;
    fs::remove_all(StagedOf(tvDir), ignored);
    fs::remove(ChangesOf(tvDir), ignored);
}

}  // namespace

StagedChanges::StagedChanges(const std::string& tvDir) : tvDir_(tvDir), lock_(tvDir, kLock) {
    if (Exists(DecidedOf(tvDir))) {
        DoDecided(tvDir);
    }
    RemoveTree(ChangesOf(tvDir));
    try {
        EnsureDir(StagedOf(tvDir) + kWritten);
        EnsureDir(StagedOf(tvDir) + kRemoved);
    } catch (const Error&) {
        Discard(tvDir);
        throw;
    }
}

StagedChanges::~StagedChanges() {
    Discard(tvDir_);
}

void StagedChanges::Bring(const Store& store, const std::map<std::string, Value>& wanted) {
    if (!store.Problem().empty()) {
        throw Error(ErrorKind::kPlatform, store.Problem());
    }
    const std::string name = fs::path(store.Dir()).filename().string();
    std::map<std::string, Value> present;
    for (const Setting& setting : store.List()) {
        if (wanted.count(setting.key) == 0) {
            RemoveFile(name + "/" + Store::RequireKey(setting.key));
        } else if (setting.value) {
            present[setting.key] = *setting.value;
        }
    }
    const std::string dir = StagedOf(tvDir_) + kWritten + name;
    Store::Create(dir);
    Store staged(dir, Store::Durability::kDurable);
    for (const auto& [key, value] : wanted) {
        const auto found = present.find(key);
        if (found == present.end() || found->second != value) {
            staged.Write(key, value);
        }
    }
}

void StagedChanges::Write(const Store& store, const std::string& key,
                          const std::optional<Value>& value) {
    if (!store.Problem().empty()) {
        throw Error(ErrorKind::kPlatform, store.Problem());
    }
    const std::string name = fs::path(store.Dir()).filename().string();
    if (!value) {
        RemoveFile(name + "/" + Store::RequireKey(key));
        return;
    }
    const std::string dir = StagedOf(tvDir_) + kWritten + name;
    Store::Create(dir);
    Store(dir, Store::Durability::kDurable).Write(key, *value);
}

void StagedChanges::AddFile(const std::string& file) {
    MakeEmptyFile(tvDir_, std::string(kStaged) + kWritten + file);
}

void StagedChanges::RemoveFile(const std::string& file) {
    MakeEmptyFile(tvDir_, std::string(kStaged) + kRemoved + file);
}

void StagedChanges::SyncFolders() const {
    const std::string staged = StagedOf(tvDir_);
    for (const fs::path& folder : Below(staged, Kind::kFolder)) {
        SyncFolder(staged + "/" + folder.string());
    }
    SyncFolder(staged);
}

void StagedChanges::Commit() {
    SyncFolders();
    Rename(StagedOf(tvDir_), DecidedOf(tvDir_));
    try {
        SyncFolder(ChangesOf(tvDir_));
        SyncFolder(tvDir_);
        DoDecided(tvDir_);
    } catch (const Error& error) {
        throw Error(ErrorKind::kPlatform,
                    std::string(error.what()) +
                        " What is still to be done follows when the TV is opened next.");
    }
}

ChangesHalted::ChangesHalted(const std::string& tvDir) : lock_(tvDir, kLock) {
    if (Exists(DecidedOf(tvDir))) {
        DoDecided(tvDir);
    }
}

void CompleteChanges(const std::string& tvDir) {
    if (!Exists(ChangesOf(tvDir))) {
        return;
    }
    const ChangesHalted halted(tvDir);
    std::error_code ignored;  // in a folder that cannot be written nothing is to be done, either
    fs::remove_all(ChangesOf(tvDir), ignored);
}

}  // namespace vtv
