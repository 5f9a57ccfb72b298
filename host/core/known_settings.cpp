#include "known_settings.h"

namespace host {

const std::vector<KnownSetting>& KnownSettings() {
    static const std::vector<KnownSetting> settings = {
        {kCurrentAssistantKey, "string", "application id of the current assistant"},
        {kPolicyKey, "string", "the assistant policy: a JSON array"},
        {"db/menu/voice/assistant_farfield",
         "string",
         "hands-free wake-up of each assistant, \"on\" or \"off\"",
         true,
         {"on", "off"}},
        {"db/multi-assistant/situational_hint_supported",
         "string",
         "hint state of each assistant",
         true,
         {"on_default", "off_default", "on_user", "off_user", "null"}},
        {"db/voice-app/activate_first_time",
         "bool",
         "true until Orvik has been set up",
         false,
         {"false", "true"}},
        {"db/tencent-voice-assistant/voice-setting",
         "string",
         "Tencent's own settings: a JSON object",
         false,
         {R"({"onboarding_completed":true})", "{}"}},
        {"db/menu/voice/is_k_voice",
         "bool",
         "the legacy voice assistant is in use",
         false,
         {"false", "true"}},
        {"db/comss/cisblock", "int", "2 while the content hub is blocked", false, {"0", "2"}},
        {"db/comss/countrycode", "string", "country of the set"},
        {"db/menu_widget/language", "string", "menu language, such as en_US"},
        {"db/aisound-app/soundsensorflag_prev",
         "int",
         "built-in microphone: 0 is off",
         false,
         {"1", "0"}},
        {"db/menu/voice/passthru",
         "bool",
         "voice is forwarded to a connected device",
         false,
         {"true", "false"}},
        {"db/menu/voice/passthru/state",
         "string",
         "JSON object: \"state\" and \"text\" of pass-through",
         false,
         {R"({"state":"active"})", R"({"state":"dim"})"}},
        {"db/passthru/mic_state",
         "bool",
         "the connected device's microphone is on",
         false,
         {"true", "false"}},
        {"memory/passthru/connected",
         "bool",
         "a pass-through device is connected",
         false,
         {"true", "false"}},
        {"db/setting/accessibility/tts",
         "bool",
         "the voice guide speaks",
         false,
         {"true", "false"}},
        {"db/menu/refresh_menu", "int", "written 1 to have the menu redrawn"},
        {"memory/wizard/wizard_mode", "string", "mode of the first-time setup wizard"},
    };
    return settings;
}

const KnownSetting* FindKnownSetting(std::string_view key) {
    for (const KnownSetting& setting : KnownSettings()) {
        if (key == setting.key) {
            return &setting;
        }
    }
    return nullptr;
}

std::vector<const char*> KnownFeatureValues(std::string_view key) {
    struct Known {
        std::string_view name;
        std::vector<const char*> values;
    };
    static const std::vector<Known> features = {
        {"cn_ai_service_supported", {"false", "true"}},
        {"product.device_sid", {"REP.DEVICE.TV", "REP.DEVICE.SCREEN"}},
        {"product.product_type", {"0", "4"}},
        {"product.tessa_monitor_feature_support", {"false", "true"}},
        {"projector_feature_support", {"false", "true"}},
        {"recorder.microphone_type", {"1", "0"}},
        {"the_skeld_version", {"0", "1", "2"}},
        {"ttsengine.neural_tts_support", {"true", "false"}},
        {"voice.farfield_passthru_support", {"true", "false"}},
        {"voice.voice_recognition_far_field_type", {"1", "0"}},
        {"voice.voice_recognition_orvik_support", {"true", "false"}},
        {"voice.voice_recognition_support", {"true", "false"}},
    };
    for (const Known& feature : features) {
        if (key == kFeaturePrefix + std::string(feature.name)) {
            return feature.values;
        }
    }
    return {};
}

const std::vector<KnownAssistant>& KnownAssistants() {
    static const std::vector<KnownAssistant> assistants = {
        {"ORVIK2", "com.vantelo.tv.voice-instant-app", "Orvik"},
        {"GVA", "com.vantelo.tv.google-assistant", "Google Assistant"},
        {"ALEXA", "com.vantelo.tv.alexa", "Alexa"},
        {"SBER", "com.vantelo.tv.salute-assistant", "Salute"},
        {"TENCENT", "com.vantelo.tv.tencent-voice-chrome", "Xiaowei"},
        {"SVA", "com.vantelo.tv.sva-app", "SVA"},
    };
    return assistants;
}

}  // namespace host
