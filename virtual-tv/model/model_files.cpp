// Where models lie.
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "spelling.h"
#include "text_file.h"
#include "tv_model.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

// The folder of the program or library that this code is part of, which knows neither where it was
// built nor where it was installed.
fs::path FolderOfTheLibrary() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&FolderOfTheLibrary), &info) == 0 ||
        info.dli_fname == nullptr) {
        return ".";
    }
    std::error_code error;
    const fs::path file = fs::canonical(info.dli_fname, error);
    if (error == std::errc::no_such_file_or_directory) {  // the program itself, as it was called
        return fs::path(info.dli_fname).parent_path();
    }
    if (error) {
        throw Error(ErrorKind::kPlatform,
                    std::string(info.dli_fname) + ": cannot be read: " + error.message() + ".");
    }
    return file.parent_path();
}

// The first of them, when there is none.
std::string FirstThatExists(const std::vector<fs::path>& candidates) {
    for (const fs::path& candidate : candidates) {
        if (IsThere(candidate.string())) {
            return candidate.lexically_normal().string();
        }
    }
    return candidates.front().lexically_normal().string();
}

}  // namespace

fs::path FolderOfTheProgram() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) {
        throw Error(ErrorKind::kPlatform,
                    "/proc/self/exe: cannot be read: " + error.message() + ".");
    }
    return program.parent_path();
}

// The folders of a build are bin, lib and share, whatever they are to be when installed.
std::string InstalledDataDir() {
    const fs::path program = FolderOfTheProgram();
    const fs::path library = FolderOfTheLibrary();
    return FirstThatExists({program / SI_PROGRAMS_TO_DATA, program / "../share/vtv",
                            library / SI_VIRTUAL_TV_TO_DATA, library / "../share/vtv"});
}

std::string FindProgram(const std::string& name) {
    const fs::path library = FolderOfTheLibrary();
    return FirstThatExists({FolderOfTheProgram() / name, library / SI_VIRTUAL_TV_TO_PROGRAMS / name,
                            library / "../bin" / name});
}

std::string DataDir() {
    const char* data = std::getenv("VTV_DATA");
    return data != nullptr && *data != '\0' ? data : InstalledDataDir();
}

std::vector<std::string> ModelFiles() {
    const std::string dir = DataDir() + "/tvs";
    std::vector<std::string> files;
    std::error_code error;
    for (fs::directory_iterator entry(dir, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (entry->path().extension() == ".toml") {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw Error(ErrorKind::kPlatform,
                    dir + ": the models of TVs cannot be read: " + error.message() +
                        ". They come with vtv; " + "VTV_DATA names another folder than its own.");
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string FindModel(const std::string& nameOrFile) {
    std::error_code error;
    if (fs::is_regular_file(nameOrFile, error)) {
        return nameOrFile;
    }
    std::vector<std::string> names;
    for (const std::string& file : ModelFiles()) {
        names.push_back(fs::path(file).stem().string());
        if (names.back() == nameOrFile) {
            return file;
        }
    }
    throw Error(ErrorKind::kNoSuch, "There is no TV model \"" + nameOrFile + "\"." +
                                        DidYouMean(nameOrFile, names) +
                                        " Name a file, or one of: " + Join(names) + ".");
}

}  // namespace vtv
