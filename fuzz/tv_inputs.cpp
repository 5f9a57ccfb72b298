#include "tv_inputs.h"

#include <iterator>

#include "recording_platform.h"
#include "virtual-tv/model/keys.h"

namespace fuzz {

namespace {

using recording::tv;

// Assistants by their place in both lists, and what is none.
constexpr const char* IDS[] = {"ORVIK2", "ALEXA", "GVA", "SBER", "SVA", "TENCENT", "orvik2", ""};
constexpr const char* APPS[] = {"com.vantelo.tv.voice-instant-app",
                                "com.vantelo.tv.alexa",
                                "com.vantelo.tv.google-assistant",
                                "com.vantelo.tv.salute-assistant",
                                "com.vantelo.tv.sva",
                                "com.vantelo.tv.tencent-voice-chrome",
                                "a",
                                ""};
constexpr const char* BOOLS[] = {vtv::kLegacyVoiceKey, vtv::kFirstTimeKey,
                                 vtv::kPassThroughKey, vtv::kPassThroughMicrophoneKey,
                                 vtv::kVoiceGuideKey,  vtv::kPassThroughConnectedKey};
constexpr const char* NUMBERS[] = {vtv::kBlockKey, vtv::kMicrophoneKey, vtv::kRefreshKey};
constexpr const char* TEXTS[] = {vtv::kCountryKey, vtv::kLanguageKey, vtv::kWizardModeKey};
constexpr const char* BOOL_FEATURES[] = {
    vtv::kVoiceFeature,     vtv::kOrvikFeature,   vtv::kPassThroughFeature, vtv::kChinaFeature,
    vtv::kProjectorFeature, vtv::kMonitorFeature, vtv::kNeuralSpeechFeature};
constexpr const char* NUMBER_FEATURES[] = {vtv::kFarFieldFeature, vtv::kMicrophoneFeature,
                                           vtv::kProductTypeFeature, vtv::kModularFeature};
constexpr const char* LANGUAGES[] = {"en_US", "de_DE", "zh_CN", "ko_KR", "en_GB", "en", ""};
constexpr const char* FILES[] = {"/home/owner/share/.voice/alexa_login_success",
                                 "/home/owner/share/.voice/ga_login_success",
                                 "/home/owner/share/.voice/salute_login_success"};
// Texts with placeholders, and some that the page puts into others.
constexpr const char* TRANSLATED[] = {
    "TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON", "COM_ICON_VOICE",
    "TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED", "DREAM_ORV_TMBODY_ORVIK", "COM_TV_SID_TV"};

// Of a text that is no known one, so that many fit into an input.
constexpr std::size_t MOST_BYTES = 24;

// Once in so many times; never when the bytes are used up.
bool Rarely(FuzzedDataProvider& bytes, int times) {
    return bytes.ConsumeIntegralInRange(1, times) == times;
}

// One of the known, or any other.
template <std::size_t N>
std::string TextOf(FuzzedDataProvider& bytes, const char* const (&known)[N]) {
    return Rarely(bytes, 8) ? bytes.ConsumeRandomLengthString(MOST_BYTES)
                            : bytes.PickValueInArray(known);
}

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

// A value of a JSON document, of any type.
std::string AnyJson(FuzzedDataProvider& bytes) {
    constexpr const char* VALUES[] = {
        "0",  "1",  "-1",   "2147483648", "1e99",   "0.5",   "true", "null",
        "[]", "{}", "[{}]", "\"\"",       "\"on\"", "\"7\"", "nope", "99999999999999999999"};
    return bytes.PickValueInArray(VALUES);
}

// Known by its type, or not at all.
std::string MemberOr(FuzzedDataProvider& bytes, const std::string& usual) {
    return Rarely(bytes, 16) ? AnyJson(bytes) : usual;
}

// What a document may have around it: a TV's reader takes all of it.
std::string Wrapped(FuzzedDataProvider& bytes, const std::string& document) {
    switch (bytes.ConsumeIntegralInRange(0, 31)) {
        case 31:
            return "/* a remark */" + document;
        case 30:
            return document + " anything";
        case 29:
            return document.substr(0,
                                   bytes.ConsumeIntegralInRange<std::size_t>(0, document.size()));
        default:
            return document;
    }
}

std::string AssistantText(FuzzedDataProvider& bytes, int place) {
    if (Rarely(bytes, 32)) {
        return AnyJson(bytes);
    }
    const std::size_t known = bytes.ConsumeIntegralInRange<std::size_t>(0, std::size(IDS) - 1);
    const std::string id = Rarely(bytes, 8) ? TextOf(bytes, IDS) : IDS[known];
    const int order = Rarely(bytes, 8) ? bytes.ConsumeIntegralInRange(-2, 9) : place;
    const std::pair<const char*, std::string> members[] = {
        {"VAOrder", MemberOr(bytes, std::to_string(order))},
        {"VAId", MemberOr(bytes, Quoted(id))},
        {"VAAppId", MemberOr(bytes, Quoted(APPS[known]))},
        {"VAName", MemberOr(bytes, Quoted(TextOf(bytes, IDS)))},
        {"VAFFSupport", MemberOr(bytes, bytes.ConsumeBool() ? "true" : "false")},
    };
    std::string text = "{";
    for (const auto& [name, value] : members) {
        if (!Rarely(bytes, 64)) {
            text += (text.size() > 1 ? "," : "") + Quoted(name) + ':' + value;
        }
    }
    return text + '}';
}

// A JSON object with an entry for each of some applications.
std::string EntriesText(FuzzedDataProvider& bytes, const std::string& usual) {
    std::string text = "{";
    for (const char* app : APPS) {
        if (bytes.ConsumeBool()) {
            text +=
                (text.size() > 1 ? "," : "") + Quoted(app) + ':' + MemberOr(bytes, Quoted(usual));
        }
    }
    return Wrapped(bytes, text + '}');
}

std::string JsonSettingText(FuzzedDataProvider& bytes, const std::string& key) {
    constexpr const char* HINTS[] = {"on_user", "on_default", "off_user", "off_default", "null"};
    constexpr const char* SWITCHES[] = {"on", "off", "On"};
    constexpr const char* STATES[] = {"active", "dim", "hide", "toast"};
    if (Rarely(bytes, 16)) {
        return bytes.ConsumeRandomLengthString();
    }
    if (key == vtv::kHintKey) {
        return EntriesText(bytes, TextOf(bytes, HINTS));
    }
    if (key == vtv::kWakeUpKey) {
        return EntriesText(bytes, TextOf(bytes, SWITCHES));
    }
    if (key == vtv::kTencentKey) {
        return Wrapped(bytes, R"({"onboarding_completed":)" + AnyJson(bytes) + '}');
    }
    return Wrapped(bytes, R"({"state":)" + MemberOr(bytes, Quoted(TextOf(bytes, STATES))) +
                              R"(,"text":)" + MemberOr(bytes, Quoted(TextOf(bytes, IDS))) + '}');
}

void ChangeSetting(FuzzedDataProvider& bytes) {
    constexpr const char* DOCUMENTS[] = {vtv::kWakeUpKey, vtv::kHintKey, vtv::kTencentKey,
                                         vtv::kPassThroughStateKey};
    std::string key;
    recording::SettingValue value;
    switch (bytes.ConsumeIntegralInRange(0, 5)) {
        case 0:
        case 1:
            key = bytes.PickValueInArray(DOCUMENTS);
            value = JsonSettingText(bytes, key);
            break;
        case 2:
            key = vtv::kCurrentAssistantKey;
            value = TextOf(bytes, APPS);
            break;
        case 3:
            key = bytes.PickValueInArray(NUMBERS);
            value = bytes.ConsumeIntegralInRange(-1, 4);
            break;
        case 4:
            key = bytes.PickValueInArray(TEXTS);
            value =
                key == vtv::kWizardModeKey ? std::string("PNP_SETUP") : TextOf(bytes, LANGUAGES);
            break;
        default:
            key = bytes.PickValueInArray(BOOLS);
            value = recording::StoredBool{bytes.ConsumeIntegralInRange(0, 2)};
    }
    if (Rarely(bytes, 16)) {
        tv().settings.erase(key);
    } else {
        tv().settings[key] = value;
    }
}

void ChangeFeature(FuzzedDataProvider& bytes) {
    constexpr int ERRORS[] = {-22, -1};
    constexpr const char* DEVICES[] = {"REP.DEVICE.TV", "REP.DEVICE.SCREEN", "COM_TV_SID_TV", ""};
    std::string key;
    recording::FeatureValue value;
    switch (bytes.ConsumeIntegralInRange(0, 4)) {
        case 0:
            key = vtv::kDeviceNameFeature;
            value = TextOf(bytes, DEVICES);
            break;
        case 1:
            key = bytes.PickValueInArray(NUMBER_FEATURES);
            value = bytes.ConsumeIntegralInRange(-1, 5);
            break;
        default:
            key = bytes.PickValueInArray(BOOL_FEATURES);
            value = bytes.ConsumeBool();
    }
    switch (bytes.ConsumeIntegralInRange(0, 15)) {
        case 15:
            value = recording::FeatureError{bytes.PickValueInArray(ERRORS)};
            break;
        case 14:
            value = recording::NullText{};
            break;
        default:
            break;
    }
    tv().features[key] = value;
}

void ChangeService(FuzzedDataProvider& bytes) {
    switch (bytes.ConsumeIntegralInRange(0, 5)) {
        case 0:
            tv().consents["tnc"] = bytes.ConsumeIntegralInRange(-1, 2);
            break;
        case 1:
            tv().consents["pp"] = bytes.ConsumeIntegralInRange(-1, 2);
            break;
        case 2:
            tv().loginState = bytes.ConsumeIntegralInRange(-1, 2);
            break;
        case 3:
            tv().online = bytes.ConsumeBool();
            break;
        case 4:
            tv().aovMode = bytes.ConsumeIntegralInRange(-1, 3);
            break;
        default:
            tv().accountApp.reset();
            if (bytes.ConsumeBool()) {
                tv().accountApp = TextOf(bytes, APPS);
            }
    }
}

void ChangeFile(FuzzedDataProvider& bytes) {
    const std::string file = bytes.PickValueInArray(FILES);
    if (bytes.ConsumeBool()) {
        tv().files.insert(file);
    } else {
        tv().files.erase(file);
    }
}

// Placeholders in any sequence: also those that a replacement completes.
std::string TextWithPlaceholders(FuzzedDataProvider& bytes) {
    static const std::string A_LONG_PIECE(3000, 'x');
    constexpr const char* PIECES[] = {"<<A>>", "<<B>>", "<<", ">>", "A", "B", "%s", "x"};
    std::string text;
    if (Rarely(bytes, 16)) {
        text = A_LONG_PIECE;
    }
    for (int left = bytes.ConsumeIntegralInRange(0, 12); left > 0; --left) {
        text += bytes.PickValueInArray(PIECES);
    }
    return text;
}

void ChangeSpeech(FuzzedDataProvider& bytes) {
    constexpr const char* VOICES[] = {"en_US", "de_DE", "zh_CN", "", nullptr};
    auto& neural = tv().packages["org.nemra.tts-engine-neural"];
    std::optional<std::string>& languages =
        neural["com.vantelo/tv/metadata/tts-engine/legacy_tts_language"];
    switch (bytes.ConsumeIntegralInRange(0, 3)) {
        case 0:
            tv().packages.clear();
            break;
        case 1:
            languages.reset();
            break;
        case 2:
            languages = TextOf(bytes, LANGUAGES) + ',' + TextOf(bytes, LANGUAGES);
            break;
        default:
            tv().voices.clear();
            for (int left = bytes.ConsumeIntegralInRange(0, 3); left > 0; --left) {
                tv().voices.push_back(bytes.PickValueInArray(VOICES));
            }
    }
}

}  // namespace

std::string PolicyText(FuzzedDataProvider& bytes) {
    switch (bytes.ConsumeIntegralInRange(0, 15)) {
        case 0:
            return bytes.ConsumeRandomLengthString();
        case 1:
            return std::string(bytes.ConsumeIntegralInRange<std::size_t>(0, 1100), '[');
        case 2:
            return AnyJson(bytes);
        default:
            break;
    }
    std::string text = "[";
    const int count = bytes.ConsumeIntegralInRange(0, 7);
    for (int place = 1; place <= count; ++place) {
        text += (place > 1 ? "," : "") + AssistantText(bytes, place);
    }
    return Wrapped(bytes, text + ']');
}

void MakeReady(Ready which) {
    if (which == NOT_READY) {
        return;
    }
    recording::TV& tv = recording::tv();
    for (const char* feature : BOOL_FEATURES) {
        tv.features[feature] = feature != std::string(vtv::kChinaFeature);
    }
    tv.features[vtv::kFarFieldFeature] = 1;
    tv.features[vtv::kMicrophoneFeature] = 1;
    tv.settings[vtv::kBlockKey] = 0;
    tv.settings[vtv::kMicrophoneKey] = 1;
    tv.settings[vtv::kCurrentAssistantKey] = APPS[0];
    tv.settings[vtv::kLanguageKey] = LANGUAGES[0];
    tv.consents = {{"tnc", 1}, {"pp", 1}};
    tv.loginState = 1;
    tv.online = true;
    tv.files.insert(std::begin(FILES), std::end(FILES));
    tv.voices = {LANGUAGES[0]};
    if (which == PASS_THROUGH) {
        tv.features[vtv::kFarFieldFeature] = 0;
        for (const char* key : {vtv::kPassThroughKey, vtv::kPassThroughConnectedKey,
                                vtv::kPassThroughMicrophoneKey}) {
            tv.settings[key] = recording::StoredBool{1};
        }
    } else if (which == NEW_IN_CHINA) {
        tv.features[vtv::kChinaFeature] = true;
        tv.settings[vtv::kFirstTimeKey] = recording::StoredBool{1};
        tv.loginState = 0;
        tv.files.clear();
    }
}

void ChangeTv(FuzzedDataProvider& bytes) {
    switch (bytes.ConsumeIntegralInRange(0, 9)) {
        case 0:
            return ChangeService(bytes);
        case 1:
            return ChangeFile(bytes);
        case 2:
            tv().translations[bytes.PickValueInArray(TRANSLATED)] = TextWithPlaceholders(bytes);
            return;
        case 3:
            return ChangeSpeech(bytes);
        case 4:
            tv().runningApps = {TextOf(bytes, APPS)};
            return;
        case 5:
        case 6:
            return ChangeFeature(bytes);
        default:
            return ChangeSetting(bytes);
    }
}

}  // namespace fuzz
