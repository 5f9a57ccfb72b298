#include "staged_changes.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "store_files.h"
#include "virtual-tv/model/text_file.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

// All names are below the TV's folder.
constexpr char kChanges[] = ".changes";
constexpr char kStaged[] = ".changes/staged";
constexpr char kDecided[] = ".changes/decided";

// Below both: the new files, and an empty file for each that shall go.
constexpr char kWritten[] = "/written";
constexpr char kRemoved[] = "/removed";

[[noreturn]] void Fail(const std::string& path, const char* what, const std::string& why) {
    throw Error(ErrorKind::kPlatform, path + ": " + what + ": " + why + ".");
}

bool Exists(const std::string& path) {
    return KindOf(path) != fs::file_type::not_found;
}

std::string ParentOfFile(const std::string& file) {
    return fs::path(file).parent_path().string();
}

void Rename(const std::string& tvDir, const std::string& from, const std::string& to) {
    if (!RenameInTv(tvDir, from, to)) {
        Fail(tvDir + "/" + to, "cannot be changed", std::strerror(errno));
    }
}

void Sync(const std::string& tvDir, const std::string& folder) {
    const int fd = OpenTvFolder(tvDir, folder);
    const bool good = fd >= 0 && store_file_calls.fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (!good) {
        Fail(tvDir + "/" + folder, "cannot be made durable", std::strerror(error));
    }
}

// What lies below a folder, relative to it.
std::vector<std::string> Below(const std::string& tvDir, const std::string& folder,
                               bool areFolders) {
    std::vector<std::string> found;
    const int error =
        WalkTvFolder(tvDir, folder, [&](const std::string& name, const struct stat& info) {
            if (S_ISDIR(info.st_mode) == areFolders) {
                found.push_back(name);
            }
            return true;
        });
    if (error != 0) {
        Fail(tvDir + "/" + folder, "cannot be read", std::strerror(error));
    }
    return found;
}

// But for what a store keeps for itself.
std::vector<std::string> FilesBelow(const std::string& tvDir, const std::string& folder) {
    std::vector<std::string> files = Below(tvDir, folder, false);
    std::erase_if(files, [](const std::string& file) {
        return *fs::path(file).begin() != "owner" &&
               fs::path(file).filename().string().front() == '.';
    });
    return files;
}

void MakeEmptyFile(const std::string& tvDir, const std::string& name) {
    MakeTvFolder(tvDir, ParentOfFile(name));
    int error = 0;
    if (!WriteTvFile(tvDir, name, "", &error)) {
        Fail(tvDir + "/" + name, "cannot be made", std::strerror(error));
    }
}

void DoDecided(const std::string& tvDir) {
    const std::string removed = std::string(kDecided) + kRemoved;
    for (const std::string& file : FilesBelow(tvDir, removed)) {
        if (!RemoveTvFile(tvDir, file) && errno != ENOENT && errno != ENOTDIR) {
            Fail(tvDir + "/" + file, "cannot be removed", std::strerror(errno));
        }
    }
    const std::string written = std::string(kDecided) + kWritten;
    for (const std::string& file : FilesBelow(tvDir, written)) {
        MakeTvFolder(tvDir, ParentOfFile(file));
        RemoveEmptyTvFolder(tvDir, file);  // one that only held what has gone
        Rename(tvDir, written + "/" + file, file);
    }
    for (const char* folder : {"settings", "state", "owner"}) {
        Sync(tvDir, folder);
    }
    // Done in one step, too: nothing of a folder that is half removed may be done again.
    Rename(tvDir, kDecided, kStaged);
    RemoveTvTree(tvDir, kChanges);
}

// What was staged, and not what was decided and is not done yet.
void Discard(const std::string& tvDir) {
    RemoveTvTree(tvDir, kStaged);
    RemoveEmptyTvFolder(tvDir, kChanges);
}

}  // namespace

StagedChanges::StagedChanges(const std::string& tvDir) : tvDir_(tvDir), lock_(tvDir, kLock) {
    if (Exists(tvDir + "/" + kDecided)) {
        DoDecided(tvDir);
    }
    if (!RemoveTvTree(tvDir, kChanges)) {
        Fail(tvDir + "/" + kChanges, "cannot be removed", std::strerror(errno));
    }
    try {
        MakeTvFolder(tvDir, kStaged + std::string(kWritten));
        MakeTvFolder(tvDir, kStaged + std::string(kRemoved));
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
    const std::string aside = kStaged + std::string(kWritten) + "/" + name;
    Store::Create(tvDir_, aside);
    Store staged(tvDir_, aside, Store::Durability::kDurable);
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
    const std::string aside = kStaged + std::string(kWritten) + "/" + name;
    Store::Create(tvDir_, aside);
    Store(tvDir_, aside, Store::Durability::kDurable).Write(key, *value);
}

void StagedChanges::AddFile(const std::string& file) {
    MakeEmptyFile(tvDir_, kStaged + std::string(kWritten) + "/" + file);
}

void StagedChanges::RemoveFile(const std::string& file) {
    MakeEmptyFile(tvDir_, kStaged + std::string(kRemoved) + "/" + file);
}

void StagedChanges::SyncFolders() const {
    for (const std::string& folder : Below(tvDir_, kStaged, true)) {
        Sync(tvDir_, kStaged + ("/" + folder));
    }
    Sync(tvDir_, kStaged);
}

void StagedChanges::Commit() {
    SyncFolders();
    Rename(tvDir_, kStaged, kDecided);
    try {
        Sync(tvDir_, kChanges);
        Sync(tvDir_, "");
        DoDecided(tvDir_);
    } catch (const Error& error) {
        throw Error(ErrorKind::kPlatform,
                    std::string(error.what()) +
                        " What is still to be done follows when the TV is opened next.");
    }
}

ChangesHalted::ChangesHalted(const std::string& tvDir) : lock_(tvDir, kLock) {
    if (Exists(tvDir + "/" + kDecided)) {
        DoDecided(tvDir);
    }
}

void CompleteChanges(const std::string& tvDir) {
    if (!Exists(tvDir + "/" + kChanges)) {
        return;
    }
    const ChangesHalted halted(tvDir);
    RemoveTvTree(tvDir, kChanges);  // in a folder that cannot be written nothing is to be done
}

}  // namespace vtv
