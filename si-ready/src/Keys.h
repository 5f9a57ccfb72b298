// Menu keys, and the settings keys that more than one source reads.
#pragma once

namespace menu {

constexpr char VOICE[] = "menu/system/general-voice";
constexpr char ONBOARDING[] = "menu/system/general-voice-onboarding";
constexpr char VOICE_ASSISTANT[] = "menu/system/general-voice-voice-assistant";
constexpr char WAKE_UP[] = "menu/system/general-voice-voice-wake-up";
constexpr char ALWAYS_WAKE_UP[] = "menu/system/general-voice-voice-always-wake-up";
constexpr char SCREEN_ON_WAKE_UP[] = "menu/system/general-voice-voice-screen-on-wake-up";
constexpr char SITUATIONAL_HINT[] = "menu/system/general-voice-situational-hint";
constexpr char SETTINGS_ORVIK[] = "menu/system/general-voice-voice-settings-orvik";
constexpr char SETTINGS_ORVIK_CN[] = "menu/system/general-voice-voice-settings-orvik-cn";
constexpr char SETTINGS_TENCENT[] = "menu/system/general-voice-voice-settings-tencent";
constexpr char SETTINGS_ALEXA[] = "menu/system/general-voice-voice-settings-alexa";
constexpr char SETTINGS_GOOGLE[] = "menu/system/general-voice-voice-settings-google";
constexpr char SETTINGS_SALUTE[] = "menu/system/general-voice-voice-settings-salute";

}  // namespace menu

namespace setting {

// Application id of the assistant that the viewer has chosen.
constexpr char CURRENT_ASSISTANT[] = "db/multi-assistant/default_assistant_appid";
// JSON object: assistant application id -> "on" or "off".
constexpr char FARFIELD[] = "db/menu/voice/assistant_farfield";
// JSON object: assistant application id -> "on_user", "on_default", "off_user", "off_default",
// "null".
constexpr char HINT[] = "db/multi-assistant/situational_hint_supported";
// bool: the legacy voice assistant is in use.
constexpr char LEGACY_VOICE[] = "db/menu/voice/is_k_voice";
// bool: the maker's assistant has not been set up yet.
constexpr char FIRST_TIME[] = "db/voice-app/activate_first_time";
// bool: voice is forwarded to a connected device; whether one is connected; its microphone is on.
constexpr char PASSTHRU[] = "db/menu/voice/passthru";
constexpr char PASSTHRU_CONNECTED[] = "memory/passthru/connected";
constexpr char PASSTHRU_MIC[] = "db/passthru/mic_state";

}  // namespace setting
