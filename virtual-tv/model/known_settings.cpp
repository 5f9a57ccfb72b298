#include "known_settings.h"

#include <algorithm>

#include "spelling.h"

namespace vtv {

namespace {

template <typename Known>
const Known* FindByKey(const std::vector<Known>& all, std::string_view key) {
    for (const Known& one : all) {
        if (key == one.key) {
            return &one;
        }
    }
    return nullptr;
}

}  // namespace

const std::vector<KnownSetting>& KnownSettings() {
    static const std::vector<KnownSetting> settings = {
        {kCurrentAssistantKey, "string", "application id of the current assistant"},
        {kPolicyKey, "string", "the assistant policy: a JSON array"},
        {kWakeUpKey,
         "string",
         "hands-free wake-up of each assistant, \"on\" or \"off\"",
         {"on", "off"},
         true},
        {kHintKey,
         "string",
         "hint state of each assistant",
         {"on_default", "off_default", "on_user", "off_user", "null"},
         true},
        {kFirstTimeKey,
         "bool",
         "true until Orvik has been set up",
         {"false", "true"},
         false,
         YesAndNo{"Orvik has not been set up yet", "Orvik is set up"}},
        {kTencentKey,
         "string",
         "Tencent's own settings: a JSON object",
         {R"({"onboarding_completed":true})", "{}"}},
        {kLegacyVoiceKey,
         "bool",
         "the legacy voice assistant is in use",
         {"false", "true"},
         false,
         YesAndNo{"the legacy voice assistant is in use",
                  "the legacy voice assistant is not in use"}},
        {kBlockKey, "int", "2 while the content hub is blocked", {"0", "2"}},
        {kCountryKey, "string", "country of the set"},
        {kLanguageKey, "string", "menu language, such as en_US"},
        {kMicrophoneKey,
         "int",
         "built-in microphone: 0 is off",
         {"1", "0"},
         false,
         YesAndNo{"the built-in microphone is on", "the built-in microphone is off"}},
        {kPassThroughKey,
         "bool",
         "voice is forwarded to a connected device",
         {"true", "false"},
         false,
         YesAndNo{"pass-through is switched on", "pass-through is switched off"}},
        {kPassThroughStateKey,
         "string",
         "JSON object: \"state\" and \"text\" of pass-through",
         {R"({"state":"active"})", R"({"state":"dim"})"}},
        {kPassThroughMicrophoneKey,
         "bool",
         "the connected device's microphone is on",
         {"true", "false"},
         false,
         YesAndNo{"the pass-through microphone is on", "the pass-through microphone is off"}},
        {kPassThroughConnectedKey,
         "bool",
         "a pass-through device is connected",
         {"true", "false"},
         false,
         YesAndNo{"a pass-through device is connected", "no pass-through device is connected"}},
        {kVoiceGuideKey, "bool", "the voice guide speaks", {"true", "false"}},
        {kRefreshKey, "int", "written 1 to have the menu redrawn"},
        {kWizardModeKey, "string", "mode of the first-time setup wizard"},
    };
    return settings;
}

const KnownSetting* FindKnownSetting(std::string_view key) {
    return FindByKey(KnownSettings(), key);
}

std::string MeantSetting(const std::string& key) {
    constexpr size_t kMostLetters = 2;  // more or fewer: the beginning of another key is no slip
    std::vector<std::string> known;
    for (const KnownSetting& setting : KnownSettings()) {
        const std::string one = setting.key;
        if (one == key) {
            return "";
        }
        if (std::max(one.size(), key.size()) - std::min(one.size(), key.size()) <= kMostLetters) {
            known.push_back(one);
        }
    }
    const std::vector<std::string> similar = Similar(key, known);
    return similar.empty() ? "" : similar.front();
}

std::string TypeProblem(std::string_view key, std::string_view type) {
    const KnownSetting* known = FindKnownSetting(key);
    if (known == nullptr || type == known->type) {
        return "";
    }
    return "\"" + std::string(key) + "\" is " + WithArticle(known->type) + " on a TV (" +
           known->meaning + "), not " + WithArticle(type) + ": write " + ExampleOf(known->type) +
           ".";
}

const std::vector<KnownFeature>& KnownFeatures() {
    static const std::vector<KnownFeature> features = {
        {kChinaFeature,
         "bool",
         "a China model",
         {"false", "true"},
         YesAndNo{"the TV is a China model", "the TV is no China model"}},
        {kDeviceNameFeature,
         "string",
         "string id that names this kind of device",
         {"REP.DEVICE.TV", "REP.DEVICE.SCREEN"}},
        {kProductTypeFeature, "int", "4 is signage", {"0", "4"}},
        {kMonitorFeature, "bool", "a monitor", {"false", "true"}},
        {kProjectorFeature, "bool", "a projector", {"false", "true"}},
        {kMicrophoneFeature,
         "int",
         "above 0: a built-in microphone",
         {"1", "0"},
         YesAndNo{"the TV has a built-in microphone", "the TV has no built-in microphone"}},
        {kModularFeature, "int", "1 or 2: a modular display", {"0", "1", "2"}},
        {kNeuralSpeechFeature, "bool", "the neural speech engine is fitted", {"true", "false"}},
        {kPassThroughFeature,
         "bool",
         "far-field voice through a connected device",
         {"true", "false"},
         YesAndNo{"the TV supports pass-through", "the TV does not support pass-through"}},
        {kFarFieldFeature,
         "int",
         "above 0: far-field microphones",
         {"1", "0"},
         YesAndNo{"the TV has far-field microphones", "the TV has no far-field microphones"}},
        {kOrvikFeature,
         "bool",
         "the maker's own assistant",
         {"true", "false"},
         YesAndNo{"the TV supports Orvik", "the TV does not support Orvik"}},
        {kVoiceFeature,
         "bool",
         "voice recognition at all",
         {"true", "false"},
         YesAndNo{"the TV has voice recognition", "the TV has no voice recognition"}},
    };
    return features;
}

const KnownFeature* FindKnownFeature(std::string_view key) {
    return FindByKey(KnownFeatures(), key);
}

std::optional<YesAndNo> WordsOf(std::string_view subject) {
    if (subject == kTermsConsent) {
        return YesAndNo{"the terms are agreed", "the terms are not agreed"};
    }
    if (subject == kPrivacyConsent) {
        return YesAndNo{"the privacy policy is agreed", "the privacy policy is not agreed"};
    }
    if (const KnownSetting* setting = FindKnownSetting(subject)) {
        return setting->words;
    }
    const KnownFeature* feature = FindKnownFeature(subject);
    return feature != nullptr ? feature->words : std::nullopt;
}

std::string FullFeatureKey(const std::string& name) {
    return FindKnownFeature(name) == nullptr && name.find('/') == std::string::npos
               ? kFeaturePrefix + name
               : name;
}

std::string ShortFeatureName(const std::string& key) {
    return key.rfind(kFeaturePrefix, 0) == 0 ? key.substr(sizeof kFeaturePrefix - 1) : key;
}

void CheckFeature(const std::string& key, const Value& value) {
    const KnownFeature* known = FindKnownFeature(key);
    if (key.empty()) {
        throw Error(ErrorKind::kUsage, "A feature's key must not be empty.");
    }
    if (known != nullptr && known->type != TypeName(value)) {
        throw Error(ErrorKind::kUsage, "The feature \"" + key + "\" is of type " + known->type +
                                           ", not " + TypeName(value) + ".");
    }
}

}  // namespace vtv
