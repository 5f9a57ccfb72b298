#include "model_states.h"

#include <json/json.h>

#include <memory>
#include <sstream>

using explorer::Input;
using explorer::Value;
using model::State;

namespace {

bool Fails(const Value& value) {
    return value.kind == Value::Kind::kFails;
}

void Put(std::optional<bool>& member, const Value& value) {
    member = Fails(value) ? std::nullopt : std::optional<bool>(value.number != 0);
}

void Put(std::optional<int>& member, const Value& value) {
    member = Fails(value) ? std::nullopt : std::optional<int>(value.number);
}

void Put(std::optional<std::string>& member, const Value& value, const std::string& text) {
    member = value.kind == Value::Kind::kText ? std::optional<std::string>(text) : std::nullopt;
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

bool Parse(const std::string& text, Json::Value& root) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    return reader->parse(text.data(), text.data() + text.size(), &root, &errors);
}

model::Entries ReadEntries(const std::string& text) {
    model::Entries entries;
    Json::Value root;
    if (!Parse(text, root) || !root.isObject()) {
        return entries;
    }
    entries.readable = true;
    if (text.rfind("/*", 0) == 0) {
        entries.comment = text.substr(0, text.find("*/") + 2);
    }
    for (const std::string& name : root.getMemberNames()) {
        const Json::Value& member = root[name];
        entries.texts[name] = member.isObject() || member.isArray() ? "" : member.asString();
    }
    return entries;
}

struct Setter {
    const char* key;
    void (*set)(State& state, const Value& value, const std::string& text);
};

#define PUT(member) [](State& s, const Value& v, const std::string&) { Put(s.member, v); }
#define PUT_TEXT(member) [](State& s, const Value& v, const std::string& t) { Put(s.member, v, t); }
#define IS(member, condition) \
    [](State& s, [[maybe_unused]] const Value& v, const std::string&) { s.member = (condition); }
#define FEATURE "com.vantelo/featureconf/"
#define MARKER "/home/owner/share/.voice/"
// What the page does not look at, because it cannot tell.
#define NOTHING [](State&, const Value&, const std::string&) {}

void OrvikFeature(State& s, const Value& value, const std::string&) {
    Put(s.orvikFeature, value);
    s.orvikFeatureError = Fails(value) ? value.number : 0;
}

void Voices(State& s, const Value& value, const std::string& text) {
    s.voices = Fails(value) ? std::nullopt : std::optional(Split(text));
}

void LegacyLanguages(State& s, const Value& value, const std::string& text) {
    s.legacyLanguagesReadable = !Fails(value);
    s.legacyLanguages = Split(text);
}

constexpr Setter SETTERS[] = {
    {FEATURE "voice.voice_recognition_support", PUT(voiceRecognition)},
    {FEATURE "voice.voice_recognition_orvik_support", OrvikFeature},
    {FEATURE "voice.voice_recognition_far_field_type", PUT(farFieldType)},
    {FEATURE "voice.farfield_passthru_support", PUT(passThroughModel)},
    {FEATURE "cn_ai_service_supported", PUT(china)},
    {FEATURE "recorder.microphone_type", PUT(microphoneType)},
    {FEATURE "product.product_type", PUT(productType)},
    {FEATURE "product.device_sid", PUT_TEXT(deviceSid)},
    {FEATURE "the_skeld_version", PUT(modularVersion)},
    {FEATURE "projector_feature_support", PUT(projector)},
    {FEATURE "product.tessa_monitor_feature_support", PUT(monitor)},
    {FEATURE "ttsengine.neural_tts_support", PUT(neuralEngine)},
    {"db/multi-assistant/default_assistant_appid", PUT_TEXT(current)},
    {"db/comss/cisblock", PUT(block)},
    {"db/menu/voice/is_k_voice", PUT(legacy)},
    {"db/voice-app/activate_first_time", PUT(firstTime)},
    {"db/aisound-app/soundsensorflag_prev", PUT(microphone)},
    {"memory/passthru/connected", PUT(connected)},
    {"db/menu/voice/passthru", PUT(passThrough)},
    {"db/passthru/mic_state", PUT(passThroughMic)},
    {"db/comss/countrycode", PUT_TEXT(country)},
    {"db/menu_widget/language", PUT_TEXT(menuLanguage)},
    {"memory/wizard/wizard_mode", PUT_TEXT(wizardMode)},
    {MARKER "alexa_login_success", IS(alexaFile, v.number == 1)},
    {MARKER "ga_login_success", IS(googleFile, v.number == 1)},
    {MARKER "salute_login_success", IS(saluteFile, v.number == 1)},
    {"tnc", IS(tnc, v.number)},
    {"pp", IS(pp, v.number)},
    {"sso_get_login_state", PUT(loginState)},
    {"sso_get_account_ui_application_package_id", PUT_TEXT(accountApp)},
    {"connection_profile_check_default_gateway", PUT(network)},
    {"AOVSystemDataGetAOVMode", IS(alwaysOnMode, v.number)},
    {"AOVSystemDataSetAOVMode", IS(takesMode, !Fails(v))},
    {"app_manager_get_app_context", IS(previousAppRuns, !Fails(v))},
    {"app_manager_terminate_app", NOTHING},
    {"aul_launch_app", NOTHING},
    {"app_control_create", IS(popupCanBeAsked, !Fails(v))},
    {"app_control_send_launch_request", NOTHING},
    {"tts_create", IS(speechEngineStarts, !Fails(v))},
    {"tts_destroy", NOTHING},
    {"tts_foreach_supported_voices", Voices},
    {"pkgmgrinfo_appinfo_get_appinfo", IS(neuralPackageInstalled, !Fails(v))},
    {"pkgmgrinfo_appinfo_get_metadata_value", LegacyLanguages},
};

constexpr Setter WRITE_SETTERS[] = {
    {"db/multi-assistant/default_assistant_appid", IS(takesCurrent, !Fails(v))},
    {"db/menu/voice/assistant_farfield", IS(takesHandsFree, !Fails(v))},
    {"db/multi-assistant/situational_hint_supported", IS(takesHints, !Fails(v))},
    {"db/menu/voice/passthru", IS(takesPassThrough, !Fails(v))},
    {"db/setting/accessibility/tts", NOTHING},
    {"db/menu/refresh_menu", NOTHING},
};

struct Document {
    const char* key;
    model::Entries State::* member;
};

constexpr Document DOCUMENTS[] = {
    {"db/menu/voice/assistant_farfield", &State::handsFree},
    {"db/multi-assistant/situational_hint_supported", &State::hints},
    {"db/tencent-voice-assistant/voice-setting", &State::tencent},
    {"db/menu/voice/passthru/state", &State::passThroughState},
};

template <typename Row, std::size_t Count>
const Row* Find(const Row (&rows)[Count], const std::string& key) {
    for (const Row& row : rows) {
        if (key == row.key) {
            return &row;
        }
    }
    return nullptr;
}

const Document* DocumentOf(const Input& input) {
    return input.kind == Input::Kind::kSetting ? Find(DOCUMENTS, input.key) : nullptr;
}

const Setter* SetterOf(const Input& input) {
    return input.kind == Input::Kind::kWrite ? Find(WRITE_SETTERS, input.key)
                                             : Find(SETTERS, input.key);
}

// Takes a published document as a TV does: a broken one changes nothing.
void Publish(State& state, const std::string& document) {
    Json::Value root;
    if (!Parse(document, root)) {
        return;
    }
    std::vector<model::Assistant> assistants;
    try {
        for (const Json::Value& one : root.isArray() ? root : Json::Value(Json::arrayValue)) {
            if (!one.isObject()) {
                return;
            }
            assistants.push_back({one["VAId"].asString(), one["VAAppId"].asString(),
                                  one["VAFFSupport"].asBool(), one["VAOrder"].asInt(),
                                  one["VAName"].asString()});
        }
    } catch (const Json::Exception&) {
        return;
    }
    model::TakePolicy(state, assistants);
}

}  // namespace

StateFiller::StateFiller(const explorer::Inputs& inputs, const explorer::Policy& policy,
                         int filling)
    : inputs_(inputs),
      filling_(filling),
      values_(inputs.inputs.size(), -1),
      texts_(inputs.inputs.size()) {
    for (const std::string& document : policy.published) {
        Publish(state_, document);
    }
}

std::vector<std::string> StateFiller::Unknown() const {
    std::vector<std::string> unknown;
    for (const Input& input : inputs_.inputs) {
        if (DocumentOf(input) == nullptr && SetterOf(input) == nullptr) {
            unknown.push_back(input.name);
        }
    }
    return unknown;
}

const State& StateFiller::At(const std::vector<int>& values,
                             const std::vector<std::string>& texts) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::vector<Value>& all = inputs_.inputs[i].values;
        const bool isDecided = values[i] >= 0;
        const int number = isDecided ? values[i] : filling_ % static_cast<int>(all.size());
        const Value& value = all[static_cast<std::size_t>(number)];
        if (values_[i] == number && !value.hasPlaceholder) {
            continue;
        }
        const std::string text = isDecided ? texts[i] : WithCurrent(value);
        if (values_[i] != number || texts_[i] != text) {
            values_[i] = number;
            texts_[i] = text;
            Apply(inputs_.inputs[i], value, text);
        }
    }
    return state_;
}

std::string StateFiller::WithCurrent(const Value& value) const {
    std::string text = value.text;
    if (value.hasPlaceholder) {
        text.replace(text.find(explorer::CURRENT_PLACEHOLDER), explorer::CURRENT_PLACEHOLDER.size(),
                     state_.current.value_or(""));
    }
    return text;
}

void StateFiller::Apply(const Input& input, const Value& value, const std::string& text) {
    if (const Document* document = DocumentOf(input)) {
        const std::string stored = value.kind == Value::Kind::kText ? text : "";
        const auto [known, isNew] = entries_.try_emplace(stored);
        if (isNew && !stored.empty()) {
            known->second = ReadEntries(stored);
        }
        state_.*(document->member) = known->second;
    } else if (const Setter* setter = SetterOf(input)) {
        setter->set(state_, value, text);
    }
}
