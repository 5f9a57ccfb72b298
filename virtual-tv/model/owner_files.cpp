#include "owner_files.h"

#include <filesystem>

#include "error.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

// What every file system takes, also below the folders of a TV and of changes to it.
constexpr size_t kLongestName = 255;
constexpr size_t kLongestPath = 1000;

[[noreturn]] void FailAsClash(const std::string& file, const std::string& below) {
    throw Error(ErrorKind::kUsage, "\"" + below + "\" cannot be there beside \"" + file +
                                       "\": a file holds no other. Leave one of them out.");
}

}  // namespace

std::string RequireOwnerFile(const std::string& path) {
    const fs::path normal = fs::path(path).lexically_normal();
    const bool isFile = normal.has_filename() && normal != "." && path.find('\0') == path.npos;
    if (!isFile || normal.is_absolute() || *normal.begin() == "..") {
        throw Error(ErrorKind::kUsage,
                    "\"" + path +
                        "\" is no file below /home/owner: write it without a leading "
                        "slash, for example share/.voice/ga_login_success.");
    }
    bool isTooLong = normal.string().size() > kLongestPath;
    for (const fs::path& part : normal) {
        isTooLong = isTooLong || part.string().size() > kLongestName;
    }
    if (isTooLong) {
        throw Error(ErrorKind::kUsage, "\"" + path.substr(0, 60) +
                                           "...\" is too long for a file below /home/owner: at "
                                           "most " +
                                           std::to_string(kLongestPath) + " bytes, and " +
                                           std::to_string(kLongestName) + " for each name.");
    }
    return normal.string();
}

void OwnerFileNames::Add(const std::string& path) {
    const std::string name = RequireOwnerFile(path);
    for (size_t slash = name.find('/'); slash != std::string::npos;
         slash = name.find('/', slash + 1)) {
        if (names_.count(name.substr(0, slash)) != 0) {
            FailAsClash(name.substr(0, slash), name);
        }
    }
    const auto below = names_.lower_bound(name + "/");
    if (below != names_.end() && below->rfind(name + "/", 0) == 0) {
        FailAsClash(name, *below);
    }
    names_.insert(name);
}

}  // namespace vtv
