#include "folder_names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <set>
#include <tuple>

#include "store.h"

namespace vtv {

namespace {

constexpr int kMostListings = 20;

void AddNames(const std::string& folder, std::set<std::string>* names) {
    DIR* dir = opendir(folder.c_str());
    int error = errno;
    if (dir != nullptr) {
        for (errno = 0; const dirent* entry = readdir(dir); errno = 0) {
            names->insert(entry->d_name);
        }
        error = errno;
        closedir(dir);
    }
    Unreadable::ThrowIf(error, folder);
}

// By the clock that the system stamps files with.
bool HasChangedSince(const std::string& folder, const timespec& start) {
    struct stat info{};
    return stat(folder.c_str(), &info) == 0 &&
           std::tie(info.st_mtim.tv_sec, info.st_mtim.tv_nsec) >=
               std::tie(start.tv_sec, start.tv_nsec);
}

}  // namespace

// In memory, a file that is replaced while its folder is listed may be listed neither as the old
// one nor as the new one. What no listing of a folder that is written without end has is as likely
// as all of them going wrong.
std::vector<std::string> NamesIn(const std::string& folder) {
    std::set<std::string> names;
    timespec start{};
    int listings = 0;
    do {
        clock_gettime(CLOCK_REALTIME_COARSE, &start);
        AddNames(folder, &names);
    } while (++listings < kMostListings && HasChangedSince(folder, start));
    names.erase(".");
    names.erase("..");
    return {names.begin(), names.end()};
}

}  // namespace vtv
