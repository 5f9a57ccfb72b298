// TV models: read and checked.
#include <json/json.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "spelling.h"
#include "toml_reader.h"
#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr char kFeaturePrefix[] = "com.vantelo/featureconf/";
constexpr char kDefaultAccountUi[] = "com.vantelo.account-ui";

// What tells that an assistant is set up.
struct AssistantKind {
    const char* id;
    const char* marker;  // a file below /home/owner, or null
};
constexpr AssistantKind kAssistantKinds[] = {
    {"ALEXA", "share/.voice/alexa_login_success"},
    {"GVA", "share/.voice/ga_login_success"},
    {"SBER", "share/.voice/salute_login_success"},
    {"ORVIK2", nullptr},   // db/voice-app/activate_first_time
    {"SVA", nullptr},      // the same
    {"TENCENT", nullptr},  // db/tencent-voice-assistant/voice-setting
};
const std::set<std::string> kHints = {"on_user", "on_default", "off_user", "off_default", "null"};

// Reads one model.
class ModelReader : private TomlReader {
  public:
    explicit ModelReader(const std::string& file) : TomlReader(file) {}

    Model Read();

  private:
    void ReadFeatures(const toml::table& root);
    void ReadAssistants(const toml::table& root);
    void ReadAssistant(const toml::table& table);
    void ReadSettings(const toml::table& root);
    void CheckPolicy(const toml::node& node, const Value& value) const;
    void CheckOrder(const toml::node& where, const std::vector<int>& orders) const;
    void ReadPackages(const toml::table& root);
    void ReadSpeech(const toml::table& root);
    void SetUp(const std::string& id, bool done);

    Model model_;
    // JSON-valued settings that the assistants' tables describe.
    Json::Value policy_{Json::arrayValue};
    Json::Value wakeUp_{Json::objectValue};
    Json::Value hints_{Json::objectValue};
};

std::string Compact(const Json::Value& json) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, json);
}

void ModelReader::ReadFeatures(const toml::table& root) {
    std::vector<std::string> names;
    for (const FeatureKey& known : KnownFeatures()) {
        names.push_back(known.key.substr(sizeof kFeaturePrefix - 1));
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
            const FeatureKey& feature = KnownFeatures()[static_cast<size_t>(known - names.begin())];
            const Value value = Scalar(node, std::string(key.str()));
            if (feature.type != TypeName(value)) {
                const std::string example = feature.type == "bool" ? "true or false"
                                            : feature.type == "int"
                                                ? "a whole number, for example 1"
                                                : "a text in quotes";
                Fail(node, "the feature \"" + std::string(key.str()) + "\" (" + feature.meaning +
                               ") is of type " + feature.type + ": write " + example + ".");
            }
            model_.features[feature.key] = value;
        }
    }
    if (const toml::table* features = Table(root, "other-features")) {
        for (const auto& [key, node] : *features) {
            model_.features[std::string(key.str())] = Scalar(node, std::string(key.str()));
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
    std::string errors;
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (text == nullptr ||
        !reader->parse(text->data(), text->data() + text->size(), &root, &errors) ||
        !root.isArray()) {
        Fail(node, "\"" + std::string(kPolicyKey) +
                       "\" must be a list of assistants, or its JSON text: write "
                       "[{VAOrder = 1, VAId = \"ORVIK2\", ...}].");
    }
    std::vector<int> orders;
    for (const Json::Value& element : root) {
        if (!element.isObject() || !element["VAOrder"].isInt()) {
            Fail(node, "each assistant of \"" + std::string(kPolicyKey) +
                           "\" needs a whole number as VAOrder.");
        }
        orders.push_back(element["VAOrder"].asInt());
    }
    CheckOrder(node, orders);
}

void ModelReader::SetUp(const std::string& id, bool done) {
    for (const AssistantKind& kind : kAssistantKinds) {
        if (id == kind.id && kind.marker != nullptr && done) {
            model_.ownerFiles.push_back(kind.marker);
        }
    }
    if (id == "ORVIK2" || id == "SVA") {
        model_.settings[kFirstTimeKey] = !done;
    } else if (id == "TENCENT") {
        model_.settings[kTencentKey] = std::string(done ? "{\"onboarding_completed\":true}" : "{}");
    }
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

    std::vector<std::string> ids;
    for (const AssistantKind& kind : kAssistantKinds) {
        ids.push_back(kind.id);
    }
    if (std::find(ids.begin(), ids.end(), assistant.id) == ids.end()) {
        Fail(*table.get("id"), "there is no assistant \"" + assistant.id + "\"." +
                                   DidYouMean(assistant.id, ids) + " Known: " + Join(ids) + ".");
    }
    const std::string wakeUp = String(table, "wake_up", "");
    if (!wakeUp.empty() && wakeUp != "on" && wakeUp != "off") {
        Fail(*table.get("wake_up"), "wake_up must be \"on\" or \"off\".");
    }
    if (!wakeUp.empty()) {
        wakeUp_[assistant.appId] = wakeUp;
    }
    const std::string hint = String(table, "hint", "");
    if (!hint.empty() && kHints.count(hint) == 0) {
        Fail(*table.get("hint"),
             "hint must be one of " + Join({kHints.begin(), kHints.end()}) + ", in quotes.");
    }
    if (!hint.empty()) {
        hints_[assistant.appId] = hint;
    }
    SetUp(assistant.id, Bool(table, "set_up", false));
    if (Bool(table, "current", false)) {
        if (model_.settings.count(kCurrentAssistantKey) != 0) {
            Fail(table, "two assistants are current: leave current = true at one of them.");
        }
        model_.settings[kCurrentAssistantKey] = assistant.appId;
    }
    Json::Value element;
    element["VAOrder"] = assistant.order;
    element["VAId"] = assistant.id;
    element["VAAppId"] = assistant.appId;
    element["VAName"] = assistant.name;
    element["VAFFSupport"] = assistant.farField;
    policy_.append(element);
    model_.assistants.push_back(assistant);
}

void ModelReader::ReadAssistants(const toml::table& root) {
    const toml::node* node = root.get("assistants");
    if (node == nullptr) {
        return;
    }
    std::vector<int> orders;
    for (const toml::table* table : Tables(root, "assistants")) {
        ReadAssistant(*table);
        orders.push_back(model_.assistants.back().order);
    }
    CheckOrder(*node, orders);
    // An empty list is a policy too: one that offers no assistant at all.
    model_.settings[kPolicyKey] = Compact(policy_);
    model_.settings[kWakeUpKey] = Compact(wakeUp_);
    model_.settings[kHintKey] = Compact(hints_);
}

void ModelReader::ReadSettings(const toml::table& root) {
    const toml::table* settings = Table(root, "settings");
    if (settings == nullptr) {
        return;
    }
    for (const auto& [name, node] : *settings) {
        const std::string key(name.str());
        if (key.rfind("db/", 0) != 0 && key.rfind("memory/", 0) != 0) {
            Fail(name.source(), "\"" + key +
                                    "\" is no settings key: write one that begins with \"db/\" or "
                                    "\"memory/\", in quotes.");
        }
        if (model_.settings.count(key) != 0) {
            Fail(name.source(),
                 "\"" + key +
                     "\" follows from [[assistants]], country or language already: write it "
                     "in one of the two places.");
        }
        const bool json = node.is_table() || node.is_array();
        const Value value = json ? Value(Compact(ToJson(node))) : Scalar(node, key);
        if (key == kPolicyKey) {
            CheckPolicy(node, value);
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
    const toml::node* voices = speech->get("voices");
    if (voices == nullptr) {
        return;
    }
    if (!voices->is_array()) {
        Fail(*voices, "voices must be a list: write [\"en_US\", \"de_DE\"].");
    }
    model_.voices.emplace();
    for (const toml::node& node : *voices->as_array()) {
        if (!node.is_string()) {
            Fail(node, "a voice must be a language in quotes, for example \"en_US\".");
        }
        model_.voices->push_back({node.as_string()->get(), 0});
    }
}

Model ModelReader::Read() {
    toml::table root;
    try {
        root = toml::parse_file(File());
    } catch (const toml::parse_error& error) {
        std::error_code code;
        if (!fs::is_regular_file(File(), code)) {
            throw Error(ErrorKind::kNoSuch, File() + ": there is no such model file.");
        }
        Fail(error.source(), "this is no TOML: " + std::string(error.description()) + ".");
    }
    CheckKeys(root, "in a model",
              {"title", "description", "country", "language", "network", "applications",
               "owner_files", "features", "other-features", "settings", "assistants", "consents",
               "account", "packages", "speech"});
    model_.file = File();
    model_.name = fs::path(File()).stem().string();
    model_.title = String(root, "title", model_.name);
    model_.description = String(root, "description", "");
    ReadFeatures(root);
    ReadAssistants(root);
    if (const std::string country = String(root, "country", ""); !country.empty()) {
        model_.settings[kCountryKey] = country;
    }
    if (const std::string language = String(root, "language", ""); !language.empty()) {
        model_.settings[kLanguageKey] = language;
    }
    ReadSettings(root);
    ReadPackages(root);
    ReadSpeech(root);
    const std::string network = String(root, "network", "connected");
    try {
        model_.network = ParseNetwork(network);
    } catch (const Error& error) {
        Fail(*root.get("network"), error.what());
    }
    const std::string applications = String(root, "applications", "process");
    try {
        model_.applications = ParseApplicationMode(applications);
    } catch (const Error& error) {
        Fail(*root.get("applications"), error.what());
    }
    model_.consents = {{"tnc", false}, {"pp", false}};
    if (const toml::table* consents = Table(root, "consents")) {
        CheckKeys(*consents, "in [consents]", {"tnc", "pp"});
        for (auto& [item, agreed] : model_.consents) {
            agreed = Bool(*consents, item.c_str(), false);
        }
    }
    model_.accountUi = kDefaultAccountUi;
    if (const toml::table* account = Table(root, "account")) {
        CheckKeys(*account, "in [account]", {"signed_in", "ui"});
        model_.signedIn = Bool(*account, "signed_in", false);
        model_.accountUi = String(*account, "ui", kDefaultAccountUi);
    }
    if (const toml::node* files = root.get("owner_files")) {
        if (!files->is_array()) {
            Fail(*files, "owner_files must be a list of paths below /home/owner.");
        }
        for (const toml::node& file : *files->as_array()) {
            const std::string path = file.is_string() ? file.as_string()->get() : "";
            if (path.empty() || path.front() == '/' ||
                *fs::path(path).lexically_normal().begin() == "..") {
                Fail(file,
                     "a file must be a path below /home/owner, in quotes and without a "
                     "leading slash.");
            }
            model_.ownerFiles.push_back(path);
        }
    }
    return model_;
}

}  // namespace

Model LoadModel(const std::string& file) {
    return ModelReader(file).Read();
}

}  // namespace vtv
