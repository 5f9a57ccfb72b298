#include "tv_model.h"

#include <algorithm>
#include <filesystem>

#include "applications.h"
#include "format_version.h"
#include "json_text.h"
#include "keys.h"
#include "known_settings.h"
#include "limits.h"
#include "owner_files.h"
#include "policy.h"
#include "spelling.h"
#include "text_file.h"
#include "toml_reader.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

// Reads one model.
class ModelReader : private TomlReader {
  public:
    explicit ModelReader(const std::string& file) : TomlReader(file) {}

    Model Read(const std::string& text);

  private:
    void ReadFeatures(const toml::table& root);
    void ReadAssistants(const toml::table& root);
    void ReadMember(const toml::table& table, const char* key, const char* setting,
                    const std::string& appId, Json::Value* members);
    void ReadAssistant(const toml::table& table);
    void ReadSettings(const toml::table& root);
    void CheckPolicy(const toml::node& node, const Value& value) const;
    void CheckOrder(const toml::node& where, const std::vector<int>& orders) const;
    void ReadPackages(const toml::table& root);
    void ReadSpeech(const toml::table& root);
    void SetUp(const std::string& id, bool done);
    void ReadOwnerFiles(const toml::table& root);
    template <typename Parse>
    auto ReadWord(const toml::table& root, const char* key, const char* otherwise,
                  Parse parse) const;
    void ReadState(const toml::table& root);

    Model model_;
    // JSON-valued settings that the assistants' tables describe.
    Json::Value wakeUp_{Json::objectValue};
    Json::Value hints_{Json::objectValue};
};

void ModelReader::ReadFeatures(const toml::table& root) {
    std::vector<std::string> names;
    for (const KnownFeature& known : KnownFeatures()) {
        names.push_back(known.Name());
    }
    if (const toml::table* features = Table(root, "features")) {
        for (const auto& [key, node] : *features) {
            const auto known = std::find(names.begin(), names.end(), key.str());
            if (known == names.end()) {
                Fail(key.source(),
                     "there is no feature \"" + std::string(key.str()) + "\"." +
                         DidYouMean(key.str(), names) + " Known: " + Join(names) +
                         ". Features that the Voice page does not read go into [other-features], "
                         "under their full key.");
            }
            const KnownFeature& feature =
                KnownFeatures()[static_cast<size_t>(known - names.begin())];
            const Value value = Scalar(node, std::string(key.str()));
            if (feature.type != TypeName(value)) {
                Fail(node, "the feature \"" + std::string(key.str()) + "\" (" + feature.meaning +
                               ") is of type " + feature.type + ": write " +
                               ExampleOf(feature.type) + ".");
            }
            model_.features[feature.key] = value;
        }
    }
    if (const toml::table* features = Table(root, "other-features")) {
        for (const auto& [key, node] : *features) {
            const std::string name(key.str());
            const Value value = Scalar(node, name);
            try {
                CheckFeature(name, value);
            } catch (const Error& error) {
                Fail(node, error.what());
            }
            model_.features[name] = value;
        }
    }
}

void ModelReader::CheckOrder(const toml::node& where, const std::vector<int>& orders) const {
    std::vector<int> sorted = orders;
    std::sort(sorted.begin(), sorted.end());
    for (size_t i = 0; i < sorted.size(); ++i) {
        if (sorted[i] != static_cast<int>(i) + 1) {
            std::string found;
            for (const int order : orders) {
                found += (found.empty() ? "" : ", ") + std::to_string(order);
            }
            const std::string count = std::to_string(orders.size());
            Fail(where, "the policy's assistants are numbered " + found + ". Number them 1 to " +
                            count + ", each number once.");
        }
    }
}

// The page trusts a policy to number its assistants 1 to n; a model is where a slip is caught.
void ModelReader::CheckPolicy(const toml::node& node, const Value& value) const {
    const std::string* text = std::get_if<std::string>(&value);
    Json::Value root;
    if (text == nullptr || !ParseJson(*text, &root) || !root.isArray()) {
        Fail(node, "\"" + std::string(kPolicyKey) +
                       "\" must be a list of assistants, or its JSON text: write "
                       "[{VAOrder = 1, VAId = \"ORVIK2\", ...}].");
    }
    std::vector<int> orders;
    for (const Json::Value& element : root) {
        if (!element.isObject() || !element[policy::kOrder].isInt()) {
            Fail(node, "each assistant of \"" + std::string(kPolicyKey) +
                           "\" needs a whole number as VAOrder.");
        }
        orders.push_back(element[policy::kOrder].asInt());
    }
    CheckOrder(node, orders);
}

void ModelReader::SetUp(const std::string& id, bool done) {
    for (const Deed& deed : SetUpDeeds(id, done, "")) {
        if (deed.kind == Deed::Kind::kOwnerFile) {
            model_.ownerFiles.push_back(deed.name);
        } else {
            model_.settings[deed.name] = deed.value;
        }
    }
}

// What a setting with a member for each assistant says of one.
void ModelReader::ReadMember(const toml::table& table, const char* key, const char* setting,
                             const std::string& appId, Json::Value* members) {
    const std::string text = String(table, key, "");
    const std::vector<const char*>& known = FindKnownSetting(setting)->values;
    if (text.empty()) {
        return;
    }
    if (std::find(known.begin(), known.end(), text) == known.end()) {
        Fail(*table.get(key), std::string(key) + " must be one of " +
                                  Join({known.begin(), known.end()}) + ", in quotes.");
    }
    (*members)[appId] = text;
}

void ModelReader::ReadAssistant(const toml::table& table) {
    CheckKeys(table, "in [[assistants]]",
              {"order", "id", "app", "name", "far_field", "wake_up", "hint", "set_up", "current"});
    Assistant assistant;
    const toml::node* order = table.get("order");
    if (order == nullptr || !order->is_integer()) {
        Fail(order != nullptr ? *order : table,
             "an assistant needs its place in the list: write order = 1.");
    }
    assistant.order = Integer(*order);
    assistant.id = RequiredString(table, "id", "an assistant");
    assistant.appId = RequiredString(table, "app", "an assistant");
    assistant.name = RequiredString(table, "name", "an assistant");
    assistant.farField = Bool(table, "far_field", false);

    if (FindKnownAssistant(assistant.id) == nullptr) {
        std::vector<std::string> ids;
        for (const KnownAssistant& known : KnownAssistants()) {
            ids.emplace_back(known.id);
        }
        Fail(*table.get("id"), "there is no assistant \"" + assistant.id + "\"." +
                                   DidYouMean(assistant.id, ids) + " Known: " + Join(ids) + ".");
    }
    ReadMember(table, "wake_up", kWakeUpKey, assistant.appId, &wakeUp_);
    ReadMember(table, "hint", kHintKey, assistant.appId, &hints_);
    SetUp(assistant.id, Bool(table, "set_up", false));
    if (Bool(table, "current", false)) {
        if (model_.settings.count(kCurrentAssistantKey) != 0) {
            Fail(table, "two assistants are current: leave current = true at one of them.");
        }
        model_.settings[kCurrentAssistantKey] = assistant.appId;
    }
    model_.assistants.push_back(assistant);
}

void ModelReader::ReadAssistants(const toml::table& root) {
    const toml::node* node = root.get("assistants");
    if (node == nullptr) {
        return;
    }
    const std::vector<const toml::table*> tables = Tables(root, "assistants");
    if (const std::string problem = TooMany("assistants", tables.size(), kMostAssistants);
        !problem.empty()) {
        Fail(*node, problem);
    }
    std::vector<int> orders;
    for (const toml::table* table : tables) {
        ReadAssistant(*table);
        orders.push_back(model_.assistants.back().order);
    }
    CheckOrder(*node, orders);
    // An empty list is a policy too: one that offers no assistant at all.
    model_.settings[kPolicyKey] = WritePolicy(model_.assistants);
    model_.settings[kWakeUpKey] = CompactJson(wakeUp_);
    model_.settings[kHintKey] = CompactJson(hints_);
}

void ModelReader::ReadSettings(const toml::table& root) {
    const toml::table* settings = Table(root, "settings");
    if (settings == nullptr) {
        return;
    }
    for (const auto& [name, node] : *settings) {
        const std::string key(name.str());
        if (!IsSettingKey(key)) {
            Fail(name.source(), "\"" + key +
                                    "\" is no settings key: write one that begins with \"db/\" or "
                                    "\"memory/\", in quotes.");
        }
        if (const std::string problem = KeyProblem(key); !problem.empty()) {
            Fail(name.source(), problem);
        }
        if (model_.settings.count(key) != 0) {
            Fail(name.source(),
                 "\"" + key +
                     "\" follows from [[assistants]], country or language already: write it "
                     "in one of the two places.");
        }
        const bool json = node.is_table() || node.is_array();
        const Value value = json ? Value(CompactJson(ToJson(node))) : Scalar(node, key);
        if (const std::string problem = TooLong(key, ToText(value).size()); !problem.empty()) {
            Fail(node, problem);
        }
        if (key == kPolicyKey) {
            CheckPolicy(node, value);
        } else if (const std::string problem = TypeProblem(key, TypeName(value));
                   !problem.empty()) {
            Fail(node, problem);
        }
        model_.settings[key] = value;
    }
}

void ModelReader::ReadPackages(const toml::table& root) {
    for (const toml::table* table : Tables(root, "packages")) {
        CheckKeys(*table, "in [[packages]]", {"app", "name", "command", "metadata"});
        Package package;
        package.appId = RequiredString(*table, "app", "a package");
        package.name = String(*table, "name", "");
        package.command = String(*table, "command", "");
        if (const toml::table* metadata = Table(*table, "metadata")) {
            for (const auto& [key, node] : *metadata) {
                const bool empty = node.is_boolean() && !node.as_boolean()->get();
                if (!empty && !node.is_string()) {
                    Fail(
                        node,
                        "metadata must be a text in quotes, or false for an item without a value.");
                }
                auto& value = package.metadata[std::string(key.str())];
                if (!empty) {
                    value = node.as_string()->get();
                }
            }
        }
        model_.packages.push_back(package);
    }
}

void ModelReader::ReadSpeech(const toml::table& root) {
    model_.speechOutput = "sound";
    const toml::table* speech = Table(root, "speech");
    if (speech == nullptr) {
        return;
    }
    CheckKeys(*speech, "in [speech]", {"voices", "output"});
    model_.speechOutput = String(*speech, "output", "sound");
    if (model_.speechOutput != "sound" && model_.speechOutput != "file" &&
        model_.speechOutput != "none") {
        Fail(*speech->get("output"), "output must be \"sound\", \"file\" or \"none\".");
    }
    if (!speech->contains("voices")) {
        return;
    }
    model_.voices.emplace();
    for (const std::string& language : Strings(*speech, "voices")) {
        model_.voices->push_back({language, 0});
    }
}

void ModelReader::ReadOwnerFiles(const toml::table& root) {
    const toml::array* files = List(root, "owner_files");
    if (files == nullptr) {
        return;
    }
    OwnerFileNames names;
    for (const toml::node& file : *files) {
        try {
            names.Add(file.is_string() ? file.as_string()->get() : "");
        } catch (const Error& error) {
            Fail(file, error.what());
        }
    }
    model_.ownerFiles.assign(names.All().begin(), names.All().end());
}

// A word that stands for one of a few things.
template <typename Parse>
auto ModelReader::ReadWord(const toml::table& root, const char* key, const char* otherwise,
                           Parse parse) const {
    const std::string word = String(root, key, otherwise);
    try {
        return parse(word);
    } catch (const Error& error) {
        Fail(*root.get(key), error.what());
    }
}

void ModelReader::ReadState(const toml::table& root) {
    model_.network = ReadWord(root, "network", "connected", ParseNetwork);
    model_.applications = ReadWord(root, "applications", "process", ParseApplicationMode);
    const toml::table* consents = Table(root, "consents");
    if (consents != nullptr) {
        CheckKeys(*consents, "in [consents]", {std::begin(kConsents), std::end(kConsents)});
    }
    for (const char* item : kConsents) {
        model_.consents[item] = consents != nullptr && Bool(*consents, item, false);
    }
    model_.accountUi = kUsualAccountUi;
    if (const toml::table* account = Table(root, "account")) {
        CheckKeys(*account, "in [account]", {"signed_in", "ui"});
        model_.signedIn = Bool(*account, "signed_in", false);
        model_.accountUi = String(*account, "ui", kUsualAccountUi);
    }
}

Model ModelReader::Read(const std::string& text) {
    toml::table root;
    try {
        root = toml::parse(text, File());
    } catch (const toml::parse_error& error) {
        Fail(error.source(), "this is no TOML: " + std::string(error.description()) + ".");
    }
    if (const toml::node* version = root.get("version")) {
        const std::string problem =
            VersionProblem("a model", version->value_exact<int64_t>(), kModelVersion);
        if (!problem.empty()) {
            Fail(*version, problem);
        }
    }
    CheckKeys(root, "in a model",
              {"version", "title", "description", "country", "language", "network", "applications",
               "owner_files", "features", "other-features", "settings", "assistants", "consents",
               "account", "packages", "speech"});
    model_.file = File();
    model_.name = fs::path(File()).stem().string();
    model_.title = String(root, "title", model_.name);
    model_.description = String(root, "description", "");
    ReadFeatures(root);
    ReadAssistants(root);
    std::string problem;
    if (const toml::node* node = FindTooMany(root, &problem)) {
        Fail(*node, problem);
    }
    if (const std::string country = String(root, "country", ""); !country.empty()) {
        model_.settings[kCountryKey] = country;
    }
    if (const std::string language = String(root, "language", ""); !language.empty()) {
        model_.settings[kLanguageKey] = language;
    }
    ReadSettings(root);
    ReadPackages(root);
    ReadSpeech(root);
    ReadState(root);
    ReadOwnerFiles(root);
    return model_;
}

}  // namespace

Model LoadModel(const std::string& file) {
    return ParseModel(ReadTextFile(file), file);
}

Model ParseModel(const std::string& text, const std::string& file) {
    if (text.size() > kMostBytes) {
        throw Error(ErrorKind::kUsage, file + ": has more than " +
                                           std::to_string(kMostBytes >> 20U) +
                                           " MiB, the most of a model.");
    }
    return ModelReader(file).Read(text);
}

}  // namespace vtv
