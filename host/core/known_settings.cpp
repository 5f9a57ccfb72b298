#include "known_settings.h"

namespace host {

const std::vector<KnownSetting>& KnownSettings() {
    static const std::vector<KnownSetting> settings = {
        {"db/multi-assistant/default_assistant_appid", "string",
         "application id of the current assistant"},
        {kPolicyKey, "string", "the assistant policy: a JSON array"},
        {"db/menu/voice/assistant_farfield", "string",
         "hands-free wake-up of each assistant, \"on\" or \"off\"", true},
        {"db/multi-assistant/situational_hint_supported", "string", "hint state of each assistant",
         true},
        {"db/voice-app/activate_first_time", "bool", "true until Orvik has been set up"},
        {"db/tencent-voice-assistant/voice-setting", "string",
         "Tencent's own settings: a JSON object"},
        {"db/menu/voice/is_k_voice", "bool", "the legacy voice assistant is in use"},
        {"db/comss/cisblock", "int", "2 while the content hub is blocked"},
        {"db/comss/countrycode", "string", "country of the set"},
        {"db/menu_widget/language", "string", "menu language, such as en_US"},
        {"db/aisound-app/soundsensorflag_prev", "int", "built-in microphone: 0 is off"},
        {"db/menu/voice/passthru", "bool", "voice is forwarded to a connected device"},
        {"db/menu/voice/passthru/state", "string",
         "JSON object: \"state\" and \"text\" of pass-through"},
        {"db/passthru/mic_state", "bool", "the connected device's microphone is on"},
        {"memory/passthru/connected", "bool", "a pass-through device is connected"},
        {"db/setting/accessibility/tts", "bool", "the voice guide speaks"},
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

}  // namespace host
