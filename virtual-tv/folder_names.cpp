#include "folder_names.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <set>
#include <tuple>

#include "store.h"

namespace vtv {

namespace {

constexpr int kMostListings = 20;

// The errno of what could not be read, or 0.
int AddNames(DIR* dir, std::set<std::string>* names) {
    rewinddir(dir);
    for (errno = 0; const dirent* entry = readdir(dir); errno = 0) {
        names->insert(entry->d_name);
    }
    return errno;
}

// By the clock that the system stamps files with.
bool HasChangedSince(int folder, const timespec& start) {
    struct stat info{};
    return fstat(folder, &info) == 0 && std::tie(info.st_mtim.tv_sec, info.st_mtim.tv_nsec) >=
                                            std::tie(start.tv_sec, start.tv_nsec);
}

}  // namespace

DIR* OpenListing(int folder) {
    DIR* const dir = folder >= 0 ? fdopendir(folder) : nullptr;
    if (dir == nullptr && folder >= 0) {
        const int error = errno;
        close(folder);
        errno = error;
    }
    return dir;
}

// In memory, a file that is replaced while its folder is listed may be listed neither as the old
// one nor as the new one. What no listing of a folder that is written without end has is as likely
// as all of them going wrong.
std::vector<std::string> NamesIn(int folder, const std::string& path) {
    DIR* const dir = OpenListing(folder);
    if (dir == nullptr) {
        Unreadable::ThrowIf(errno, path);
        return {};
    }
    std::set<std::string> names;
    timespec start{};
    int listings = 0;
    int error = 0;
    do {
        clock_gettime(CLOCK_REALTIME_COARSE, &start);
        error = AddNames(dir, &names);
    } while (++listings < kMostListings && HasChangedSince(folder, start));
    closedir(dir);
    Unreadable::ThrowIf(error, path);
    names.erase(".");
    names.erase("..");
    return {names.begin(), names.end()};
}

std::vector<std::string> NamesIn(const std::string& folder) {
    return NamesIn(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder);
}

}  // namespace vtv
