// Copies a TV.
//
// A copy is what the TV is and knows. What happened on it stays with it: its log, its trace, what
// was launched and what runs.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

#include "folder_names.h"
#include "staged_changes.h"
#include "store_files.h"
#include "tv_impl.h"
#include "whole_folder.h"
#include "whole_tvs.h"

namespace vtv {

namespace {

// A descriptor that is closed with it.
class Descriptor {
  public:
    Descriptor(int dir, const std::string& name, int flags)
        : fd(openat(dir, name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {}
    explicit Descriptor(int open) : fd(open) {}
    ~Descriptor() {
        if (fd >= 0) {
            store_file_calls.close(fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    // False, with errno, when some of what was written got lost.
    bool Close() { return store_file_calls.close(std::exchange(fd, -1)) == 0; }

    int fd;
};

[[noreturn]] void FailToCopy(const std::string& path, const char* what) {
    throw Error(ErrorKind::kPlatform, path + ": " + what + ": " + std::strerror(errno) + ".");
}

void CopyContent(const Descriptor& from, const Descriptor& to, const std::string& path) {
    std::array<char, size_t{64} * 1024> buffer{};
    for (;;) {
        const ssize_t size = read(from.fd, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size < 0) {
            FailToCopy(path, "cannot be read");
        }
        if (size == 0) {
            break;
        }
        for (ssize_t done = 0; done < size;) {
            const ssize_t written = store_file_calls.write(to.fd, buffer.data() + done,
                                                           static_cast<size_t>(size - done));
            if (written < 0 && errno != EINTR) {
                FailToCopy(path, "cannot be copied");
            }
            done += std::max<ssize_t>(written, 0);
        }
    }
}

// Two folders, one that is copied and one that becomes the copy.
struct Folders {
    const Descriptor from;
    const Descriptor to;
    std::string path;     // of the first, for people
    bool durable = true;  // what is gone after a power failure anyway need not be on the disk

    void Sync(int fd) const {
        if (durable && store_file_calls.fsync(fd) != 0) {
            FailToCopy(path, "cannot be copied");
        }
    }

    Folders(int fromDir, int toDir, const std::string& name, const std::string& whole)
        : from(fromDir, name, O_RDONLY | O_DIRECTORY),
          to(toDir, name, O_RDONLY | O_DIRECTORY),
          path(whole) {}
};

void CopyFolder(int fromDir, int toDir, const std::string& name, const std::string& path);

// What has this name now, if anything.
void CopyEntry(const Folders& folders, const std::string& name) {
    const std::string path = folders.path + "/" + name;
    struct stat info{};
    if (fstatat(folders.from.fd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 &&
        errno != ENOENT) {
        FailToCopy(path, "cannot be read");
    }
    if (S_ISDIR(info.st_mode)) {
        CopyFolder(folders.from.fd, folders.to.fd, name, path);
        return;
    }
    unlinkat(folders.to.fd, name.c_str(), 0);  // as it was a moment ago
    const Descriptor from(folders.from.fd, name, O_RDONLY);
    if (from.fd < 0) {
        if (errno != ENOENT) {
            FailToCopy(path, "cannot be read");
        }
        return;  // gone since it was listed
    }
    if (fstat(from.fd, &info) != 0) {
        FailToCopy(path, "cannot be read");
    }
    if (!S_ISREG(info.st_mode)) {
        throw Error(ErrorKind::kUsage, path + ": this is no plain file and no folder.");
    }
    Descriptor to(store_file_calls.openat(folders.to.fd, name.c_str(),
                                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
    if (to.fd < 0) {
        FailToCopy(path, "cannot be copied");
    }
    CopyContent(from, to, path);
    folders.Sync(to.fd);
    if (!to.Close()) {
        FailToCopy(path, "cannot be copied");
    }
}

std::vector<std::string> NamesToCopy(int dir, const std::string& path) {
    DIR* entries = OpenListing(openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (entries == nullptr) {
        FailToCopy(path, "cannot be read");
    }
    std::vector<std::string> names;
    for (errno = 0; const dirent* entry = readdir(entries); errno = 0) {
        names.emplace_back(entry->d_name);
    }
    const int error = errno;
    closedir(entries);
    if (error != 0) {
        errno = error;
        FailToCopy(path, "cannot be read");
    }
    std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
    return names;
}

bool IsTemporary(const std::string& name) {
    return name.rfind(".tmp-", 0) == 0;
}

void CopyFolder(int fromDir, int toDir, const std::string& name, const std::string& path) {
    if (mkdirat(toDir, name.c_str(), kFolderMode) != 0 && errno != EEXIST) {
        FailToCopy(path, "cannot be copied");
    }
    const Folders folders(fromDir, toDir, name, path);
    if (folders.from.fd < 0 && errno == ENOENT) {
        return;
    }
    if (folders.from.fd < 0 || folders.to.fd < 0) {
        FailToCopy(path, "cannot be copied");
    }
    for (const std::string& entry : NamesToCopy(folders.from.fd, path)) {
        CopyEntry(folders, entry);
    }
    folders.Sync(folders.to.fd);
}

// Each value as it is at some moment between begin and end, and none left out: a folder that is
// written while it is listed may be listed without what is written, which is copied once more.
void CopyStore(int fromDir, int toDir, const std::string& name, const std::string& path) {
    Folders folders(fromDir, toDir, name, path);
    if (folders.from.fd < 0 || folders.to.fd < 0) {
        FailToCopy(path, "cannot be copied");
    }
    folders.durable = name != "memory";
    std::set<std::string> changed;
    Watcher watcher;
    watcher.Watch(path, kStoreEvents, "",
                  [&changed](const std::string& file) { changed.insert(file); });
    for (const std::string& file : NamesToCopy(folders.from.fd, path)) {
        changed.insert(file);
    }
    for (const std::string& file : std::exchange(changed, {})) {
        if (!IsTemporary(file)) {
            CopyEntry(folders, file);
        }
    }
    watcher.Dispatch();
    for (const std::string& file : changed) {
        if (!IsTemporary(file)) {
            CopyEntry(folders, file);
        }
    }
    folders.Sync(folders.to.fd);
}

}  // namespace

void CopyTv(const std::string& from, const std::string& to) {
    const std::string place = Absolute(to);
    // Not opened, which would write to its log what is damaged.
    const std::string source = Absolute(from);
    RequireTv(source);
    if (place.rfind(source + "/", 0) == 0) {
        throw Error(ErrorKind::kUsage,
                    place + ": this is inside of the TV that is to be copied. Name another place.");
    }
    NewFolder made(place);
    MakeFolders(made.Aside());
    const ChangesHalted halted(source);
    const Descriptor fromDir(AT_FDCWD, source + "/.", O_RDONLY | O_DIRECTORY);
    const Descriptor toDir(AT_FDCWD, made.Aside(), O_RDONLY | O_DIRECTORY);
    if (fromDir.fd < 0 || toDir.fd < 0) {
        FailToCopy(source, "cannot be copied");
    }
    CopyFolder(fromDir.fd, toDir.fd, "owner", source + "/owner");
    for (const char* store : {"settings", "memory", "state", "faults"}) {
        CopyStore(fromDir.fd, toDir.fd, store, source + "/" + store);
    }
    const Folders whole(fromDir.fd, toDir.fd, ".", source);
    CopyEntry(whole, "tv.toml");
    CopyEntry(whole, "switches");
    SyncFolder(made.Aside());
    made.PutInPlace();
}

}  // namespace vtv
