#include "models.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace explorer {

namespace fs = std::filesystem;

namespace {

constexpr char FEATURE_PREFIX[] = "com.vantelo/featureconf/";
constexpr int INVALID_PARAMETER = -22;

fs::path ModelFolder() {
    if (const char* data = std::getenv("VTV_DATA")) {
        return fs::path(data) / "tvs";
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / "../share/vtv/tvs").lexically_normal();
}

TvModel LoadModel(const fs::path& file) {
    toml::table root;
    try {
        root = toml::parse_file(file.string());
    } catch (const toml::parse_error& error) {
        throw InputError(file.string() + ":" + std::to_string(error.source().begin.line) + ": " +
                         std::string(error.description()));
    }
    TvModel model;
    std::error_code error;
    model.name = file.stem();
    model.file = file;
    model.call =
        file.parent_path() == ModelFolder() ? model.name : fs::absolute(file, error).string();
    if (const toml::table* features = root["features"].as_table()) {
        for (const auto& [key, node] : *features) {
            Value value;
            if (const auto flag = node.value_exact<bool>()) {
                value.number = *flag ? 1 : 0;
                value.words = *flag ? "true" : "false";
                value.storedType = "bool";
            } else if (const auto number = node.value_exact<std::int64_t>()) {
                value.number = static_cast<int>(*number);
                value.words = std::to_string(*number);
                value.storedType = "int";
            } else if (const auto text = node.value_exact<std::string>()) {
                value.kind = Value::Kind::kText;
                value.text = *text;
                value.words = *text;
                value.storedType = "string";
            }
            const std::string name(key.str());
            model.features[name.find('/') == std::string::npos ? FEATURE_PREFIX + name : name] =
                value;
        }
    }
    return model;
}

}  // namespace

std::vector<TvModel> LoadModels(const std::vector<std::string>& namesOrFiles) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const std::string& name : namesOrFiles) {
        const fs::path file =
            fs::is_regular_file(name, error) ? fs::path(name) : ModelFolder() / (name + ".toml");
        if (!fs::exists(file, error)) {
            throw NoSuchModel("no TV model \"" + name + "\" in " + ModelFolder().string());
        }
        files.push_back(file);
    }
    if (namesOrFiles.empty() && fs::is_directory(ModelFolder(), error)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(ModelFolder())) {
            if (entry.path().extension() == ".toml") {
                files.push_back(entry.path());
            }
        }
        std::sort(files.begin(), files.end());
    }
    std::vector<TvModel> models;
    for (const fs::path& file : files) {
        models.push_back(LoadModel(file));
    }
    if (models.empty()) {
        throw InputError("no TV models in " + ModelFolder().string());
    }
    return models;
}

std::map<int, Value> ValuesOf(const Inputs& inputs, const TvModel& model) {
    std::map<int, Value> values;
    for (const Input& input : inputs.inputs) {
        if (input.kind != Input::Kind::kFeature) {
            continue;
        }
        Value missing;
        missing.kind = Value::Kind::kFails;
        missing.number = INVALID_PARAMETER;
        missing.words = "missing";
        const auto known = model.features.find(input.key);
        values[inputs.IndexOf(input)] = known != model.features.end() ? known->second : missing;
    }
    return values;
}

void KeepUserValues(Inputs& inputs, const std::vector<PolicyState>& policies) {
    for (Input& input : inputs.inputs) {
        if (input.kind == Input::Kind::kFeature) {
            continue;
        }
        std::vector<Value> kept;
        if (input.isCurrentAssistant) {
            std::vector<std::string> seen;
            for (const PolicyState& policy : policies) {
                for (const Assistant& assistant : policy.list) {
                    if (std::find(seen.begin(), seen.end(), assistant.appId) == seen.end()) {
                        seen.push_back(assistant.appId);
                        kept.push_back({Value::Kind::kText, 0, assistant.appId, assistant.name,
                                        "string", false});
                    }
                }
            }
            kept.push_back({Value::Kind::kText, 0, "", "none", "string", false});
        } else {
            for (const Value& value : input.values) {
                const bool isOdd = value.kind == Value::Kind::kFails ||
                                   value.kind == Value::Kind::kNull || value.number < 0 ||
                                   value.number > 2;
                const bool isOddDocument =
                    value.hasPlaceholder
                        ? false
                        : value.kind == Value::Kind::kText && input.type == "string" &&
                              !value.text.empty() && value.text.front() != '{';
                const bool isThird = input.kind != Input::Kind::kSetting && value.number == 2;
                if (!isOdd && !isOddDocument && !isThird) {
                    kept.push_back(value);
                }
            }
        }
        if (!kept.empty()) {
            kept.resize(std::min<std::size_t>(kept.size(), 16));
            input.values = kept;
        }
    }
}

}  // namespace explorer
