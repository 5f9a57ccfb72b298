#include "models.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "keys.h"

namespace explorer {

namespace fs = std::filesystem;

namespace {

// Settings that a market has and that its users have no hand in.
constexpr const char* MARKET_SETTINGS[] = {"db/comss/cisblock", "db/comss/countrycode",
                                           "db/menu/voice/is_k_voice", "memory/wizard/wizard_mode"};

bool IsOfMarket(const Input& input) {
    return input.kind == Input::Kind::kSetting &&
           std::find(std::begin(MARKET_SETTINGS), std::end(MARKET_SETTINGS), input.key) !=
               std::end(MARKET_SETTINGS);
}

Value Missing(int result) {
    Value missing;
    missing.kind = Value::Kind::kFails;
    missing.number = result;
    missing.words = "missing";
    return missing;
}

fs::path ModelFolder() {
    if (const char* data = std::getenv("VTV_DATA")) {
        return fs::path(data) / "tvs";
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / "../share/vtv/tvs").lexically_normal();
}

// Booleans, whole numbers and texts; others are left out.
std::map<std::string, Value> ReadValues(const toml::table& table) {
    std::map<std::string, Value> values;
    for (const auto& [key, node] : table) {
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
        } else {
            continue;
        }
        values[std::string(key.str())] = value;
    }
    return values;
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
        for (const auto& [key, value] : ReadValues(*features)) {
            model.features[key.find('/') == std::string::npos ? keys::FEATURES + key : key] = value;
        }
    }
    if (const toml::table* settings = root["settings"].as_table()) {
        model.settings = ReadValues(*settings);
    }
    return model;
}

// Assistants of the same name are told by their applications, too.
void TellApart(std::vector<Value>& assistants) {
    std::map<std::string, int> count;
    for (const Value& assistant : assistants) {
        ++count[assistant.words];
    }
    for (Value& assistant : assistants) {
        if (count[assistant.words] > 1 || assistant.words.empty()) {
            assistant.words += (assistant.words.empty() ? "" : " ") + ('(' + assistant.text + ')');
        }
    }
}

}  // namespace

std::vector<TvModel> LoadModels(const std::vector<std::string>& namesOrFiles) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const std::string& name : namesOrFiles) {
        const fs::path file =
            fs::is_regular_file(name, error) ? fs::path(name) : ModelFolder() / (name + ".toml");
        if (!fs::exists(file, error)) {
            throw NoSuchFile("no TV model \"" + name + "\" in " + ModelFolder().string());
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
    models.reserve(files.size());
    for (const fs::path& file : files) {
        models.push_back(LoadModel(file));
    }
    if (models.empty()) {
        throw Unreadable("no TV models in " + ModelFolder().string());
    }
    return models;
}

std::map<int, Value> ValuesOf(const Inputs& inputs, const TvModel& model) {
    std::map<int, Value> values;
    for (const Input& input : inputs.inputs) {
        if (input.kind != Input::Kind::kFeature) {
            continue;
        }
        const auto known = model.features.find(input.key);
        values[inputs.IndexOf(input)] =
            known != model.features.end() ? known->second : Missing(keys::INVALID_PARAMETER);
    }
    return values;
}

std::map<int, Value> MarketValuesOf(const Inputs& inputs, const TvModel& model) {
    std::map<int, Value> values;
    for (const Input& input : inputs.inputs) {
        if (IsOfMarket(input)) {
            const auto known = model.settings.find(input.key);
            values[inputs.IndexOf(input)] =
                known != model.settings.end() ? known->second : Missing(keys::FAILED);
        }
    }
    return values;
}

void KeepUserValues(Inputs& inputs, const std::vector<PolicyState>& policies) {
    for (Input& input : inputs.inputs) {
        if (input.kind == Input::Kind::kFeature || IsOfMarket(input)) {
            continue;
        }
        std::vector<Value> kept;
        if (input.isCurrentAssistant) {
            std::vector<std::string> seen;
            for (const PolicyState& policy : policies) {
                for (const Assistant& assistant : policy.list) {
                    if (std::find(seen.begin(), seen.end(), assistant.appId) == seen.end()) {
                        seen.push_back(assistant.appId);
                        kept.push_back(
                            {Value::Kind::kText, 0, assistant.appId, assistant.name, "string"});
                    }
                }
            }
            TellApart(kept);
            kept.push_back({Value::Kind::kText, 0, "", "none", "string"});
        } else {
            for (const Value& value : input.values) {
                const bool isOdd = value.isOdd || value.kind == Value::Kind::kFails ||
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
