#include "new_tv.h"

#include <json/json.h>
#include <toml++/toml.h>

#include "keys.h"

namespace explorer {

namespace {

constexpr char WAKE_UP_KEY[] = "db/menu/voice/assistant_farfield";
constexpr char HINT_KEY[] = "db/multi-assistant/situational_hint_supported";
constexpr char NEURAL_ENGINE[] = "org.nemra.tts-engine-neural";
constexpr char ENGINE_LANGUAGES[] = "com.vantelo/tv/metadata/tts-engine/legacy_tts_language";

std::string CompactJson(const Json::Value& json) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, json);
}

Json::Value TomlToJson(const toml::node& node) {
    if (const toml::table* table = node.as_table()) {
        Json::Value object(Json::objectValue);
        for (const auto& [key, value] : *table) {
            object[std::string(key.str())] = TomlToJson(value);
        }
        return object;
    }
    if (const toml::array* array = node.as_array()) {
        Json::Value list(Json::arrayValue);
        for (const toml::node& value : *array) {
            list.append(TomlToJson(value));
        }
        return list;
    }
    if (const auto flag = node.value_exact<bool>()) {
        return *flag;
    }
    if (const auto number = node.value_exact<std::int64_t>()) {
        return static_cast<int>(*number);
    }
    return node.value_or(std::string());
}

// What the store holds for a member of [settings].
Value StoredValue(const toml::node& node) {
    if (node.is_table() || node.is_array()) {
        return TextValue(CompactJson(TomlToJson(node)));
    }
    if (const auto flag = node.value_exact<bool>()) {
        return NumberValue(*flag ? 1 : 0, "bool");
    }
    if (const auto number = node.value_exact<std::int64_t>()) {
        return NumberValue(static_cast<int>(*number), "int");
    }
    return TextValue(node.value_or(std::string()));
}

class NewTvReader {
  public:
    NewTvReader(const Inputs& inputs, const TvModel& model) : inputs_(inputs) {
        tv_.name = model.name;
        tv_.model = model.call;
        for (const Input& input : inputs.inputs) {
            tv_.values[inputs.IndexOf(input)] = ValueOfNothing(input);
        }
        for (const auto& [input, value] : ValuesOf(inputs, model)) {
            tv_.values[input] = value;
        }
    }

    NewTv Read(const toml::table& root) {
        ReadAssistants(root);
        SetText("db/comss/countrycode", root["country"]);
        SetText("db/menu_widget/language", root["language"]);
        if (const toml::table* settings = root["settings"].as_table()) {
            for (const auto& [key, node] : *settings) {
                Set(std::string(key.str()), StoredValue(node));
            }
        }
        for (const char* item : {"tnc", "pp"}) {
            const bool agreed = root["consents"][item].value_or(false);
            SetInput(Input::Kind::kConsent, item, NumberValue(agreed ? 1 : 0, "int"));
        }
        ReadAccount(root);
        ReadFiles(root);
        ReadSpeech(root);
        const std::string network = root["network"].value_or(std::string("connected"));
        tv_.online = network != "disconnected";
        SetInput(Input::Kind::kCall, "connection_profile_check_default_gateway",
                 NumberValue(tv_.online ? 1 : 0, "bool"));
        const std::string mode = root["applications"].value_or(std::string("process"));
        tv_.applications = mode == "auto"     ? NewTv::Applications::kAuto
                           : mode == "record" ? NewTv::Applications::kRecord
                                              : NewTv::Applications::kProcess;
        return std::move(tv_);
    }

  private:
    // Nothing is stored, nobody has agreed, no file is there; platform calls succeed.
    static Value ValueOfNothing(const Input& input) {
        switch (input.kind) {
            case Input::Kind::kSetting:
                return MissingValue();
            case Input::Kind::kFile:
            case Input::Kind::kConsent:
                return NumberValue(0, "int");
            default:
                return input.values.front();
        }
    }

    void SetInput(Input::Kind kind, const std::string& key, const Value& value) {
        if (const Input* input = inputs_.Find(kind, key)) {
            tv_.values[inputs_.IndexOf(*input)] = value;
        }
    }

    void Set(const std::string& key, const Value& value) {
        if (key == keys::POLICY) {
            tv_.policy = value.text;
            return;
        }
        const Input* input = inputs_.Find(Input::Kind::kSetting, key);
        if (input == nullptr) {
            return;  // nothing that the page looks at
        }
        Value stored = value;
        if (value.storedType != input->type) {
            stored = MissingValue();
            stored.storedType = value.storedType;
            stored.words = "of type " + value.storedType;
        }
        tv_.values[inputs_.IndexOf(*input)] = stored;
    }

    template <typename Node>
    void SetText(const char* key, const Node& node) {
        const std::string text = node.value_or(std::string());
        if (!text.empty()) {
            Set(key, TextValue(text));
        }
    }

    void AddFile(const std::string& file) {
        SetInput(Input::Kind::kFile, file, NumberValue(1, "bool"));
    }

    void ReadAssistants(const toml::table& root) {
        const toml::array* assistants = root["assistants"].as_array();
        if (assistants == nullptr) {
            return;
        }
        Json::Value policy(Json::arrayValue);
        Json::Value wakeUp(Json::objectValue);
        Json::Value hints(Json::objectValue);
        for (const toml::node& node : *assistants) {
            const toml::table* table = node.as_table();
            if (table == nullptr) {
                continue;
            }
            const auto text = [table](const char* member) {
                return (*table)[member].value_or(std::string());
            };
            Json::Value element;
            element["VAOrder"] = (*table)["order"].value_or(0);
            element["VAId"] = text("id");
            element["VAAppId"] = text("app");
            element["VAName"] = text("name");
            element["VAFFSupport"] = (*table)["far_field"].value_or(false);
            policy.append(element);
            if (!text("wake_up").empty()) {
                wakeUp[text("app")] = text("wake_up");
            }
            if (!text("hint").empty()) {
                hints[text("app")] = text("hint");
            }
            SetUp(text("id"), (*table)["set_up"].value_or(false));
            if ((*table)["current"].value_or(false)) {
                Set(keys::CURRENT, TextValue(text("app")));
            }
            tv_.installed.insert(text("app"));
        }
        Set(keys::POLICY, TextValue(CompactJson(policy)));
        Set(WAKE_UP_KEY, TextValue(CompactJson(wakeUp)));
        Set(HINT_KEY, TextValue(CompactJson(hints)));
    }

    void SetUp(const std::string& id, bool done) {
        if (id == "ORVIK2" || id == "SVA") {
            Set(keys::FIRST_TIME, NumberValue(done ? 0 : 1, "bool"));
        } else if (id == "TENCENT") {
            Set(keys::TENCENT, TextValue(done ? "{\"onboarding_completed\":true}" : "{}"));
        }
        for (const keys::Marker& marker : keys::MARKERS) {
            if (id == marker.assistant && done) {
                AddFile(marker.file);
            }
        }
    }

    void ReadAccount(const toml::table& root) {
        const bool signedIn = root["account"]["signed_in"].value_or(false);
        SetInput(Input::Kind::kCall, keys::LOGIN, NumberValue(signedIn ? 1 : 0, "int"));
        tv_.accountUi = root["account"]["ui"].value_or(std::string("com.vantelo.account-ui"));
        SetInput(Input::Kind::kCall, "sso_get_account_ui_application_package_id",
                 tv_.accountUi.empty() ? MissingValue() : TextValue(tv_.accountUi));
        if (!tv_.accountUi.empty()) {
            tv_.installed.insert(tv_.accountUi);
        }
    }

    void ReadFiles(const toml::table& root) {
        if (const toml::array* files = root["owner_files"].as_array()) {
            for (const toml::node& file : *files) {
                AddFile(keys::OWNER + file.value_or(std::string()));
            }
        }
    }

    // The voices of the engine that is installed on a machine are not known here: where the model
    // names none, the first value of the inputs stands for them.
    void ReadSpeech(const toml::table& root) {
        if (const toml::array* voices = root["speech"]["voices"].as_array()) {
            std::string list;
            for (const toml::node& voice : *voices) {
                list += (list.empty() ? "" : ",") + voice.value_or(std::string());
            }
            SetInput(Input::Kind::kCall, "tts_foreach_supported_voices", TextValue(list));
        }
        Value installed = MissingValue();
        Value languages = MissingValue();
        if (const toml::array* packages = root["packages"].as_array()) {
            for (const toml::node& node : *packages) {
                const toml::table* package = node.as_table();
                const std::string app =
                    package != nullptr ? (*package)["app"].value_or(std::string()) : "";
                if (app.empty()) {
                    continue;
                }
                tv_.installed.insert(app);
                if (!(*package)["command"].value_or(std::string()).empty()) {
                    tv_.foreign.insert(app);
                }
                if (app == NEURAL_ENGINE) {
                    installed = NumberValue(0, "int");
                    ReadLanguages(*package, languages);
                }
            }
        }
        SetInput(Input::Kind::kCall, "pkgmgrinfo_appinfo_get_appinfo", installed);
        SetInput(Input::Kind::kCall, "pkgmgrinfo_appinfo_get_metadata_value", languages);
    }

    static void ReadLanguages(const toml::table& package, Value& languages) {
        const toml::table* metadata = package["metadata"].as_table();
        const toml::node* node = metadata != nullptr ? metadata->get(ENGINE_LANGUAGES) : nullptr;
        if (node != nullptr && node->is_string()) {
            languages = TextValue(node->as_string()->get());
        } else if (node != nullptr) {
            languages = Value();
            languages.kind = Value::Kind::kNull;
            languages.words = "null";
        }
    }

    const Inputs& inputs_;
    NewTv tv_;
};

}  // namespace

Value MissingValue() {
    Value value;
    value.kind = Value::Kind::kFails;
    value.number = -1;
    value.words = "missing";
    return value;
}

Value NumberValue(int number, const char* storedType) {
    Value value;
    value.number = number;
    value.words = std::to_string(number);
    value.storedType = storedType;
    return value;
}

Value TextValue(const std::string& text) {
    Value value;
    value.kind = Value::Kind::kText;
    value.text = text;
    value.words = text;
    value.storedType = "string";
    return value;
}

NewTv LoadNewTv(const Inputs& inputs, const TvModel& model) {
    try {
        return NewTvReader(inputs, model).Read(toml::parse_file(model.file));
    } catch (const toml::parse_error& error) {
        throw InputError(model.file + ":" + std::to_string(error.source().begin.line) + ": " +
                         std::string(error.description()));
    }
}

}  // namespace explorer
