// The models that come with the virtual TV, and a model written into a new TV's folder.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "spelling.h"
#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

std::vector<std::string> ModelFiles() {
    std::vector<std::string> files;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(DataDir() + "/tvs", error)) {
        if (entry.path().extension() == ".toml") {
            files.push_back(entry.path().string());
        }
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

void ApplyModel(const Model& model, Tv::Impl& tv) {
    for (const auto& [key, value] : model.settings) {
        tv.StoreOf(key).Write(key, value);
    }
    tv.state.Write("model", model.name);
    tv.state.Write("account/signed_in", model.signedIn);
    for (const auto& [item, agreed] : model.consents) {
        tv.state.Write("consent/" + item, agreed);
    }
    tv.state.Write("network", ToText(model.network));
    tv.state.Write("applications", ToText(model.applications));
    for (const std::string& file : model.ownerFiles) {
        const std::string path = tv.dir + "/owner/" + file;
        EnsureDir(fs::path(path).parent_path().string());
        int error = 0;
        if (!WriteNewFile(path, "", &error)) {
            throw Error(ErrorKind::kPlatform,
                        path + ": cannot be made: " + std::strerror(error) + ".");
        }
    }
}

}  // namespace vtv
