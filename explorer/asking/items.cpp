#include "items.h"

namespace explorer {

#define RULES(visible, enabled) "check_general_voice_" visible, enabled
#define ENABLE(name) "check_general_voice_" name "_enable"
#define NODE(name) "checknode_int_voice_" name, "setnode_int_voice_" name

const std::vector<Item>& Items() {
    static const std::vector<Item> items = {
        {"voice", "menu/system/general-voice", RULES("supported", "check_general_voice_enable"),
         nullptr, nullptr, nullptr},
        {"onboarding", "menu/system/general-voice-onboarding",
         RULES("onboarding_supported", ENABLE("onboarding")), nullptr, nullptr, nullptr},
        {"voice-assistant", "menu/system/general-voice-voice-assistant",
         RULES("voice_assistant", "check_return_true"), NODE("assistant"),
         "get_list_items_voice_assistant"},
        {"voice-wake-up", "menu/system/general-voice-voice-wake-up",
         RULES("voice_wake_up", ENABLE("voice_wake_up")), NODE("wake_up"), nullptr},
        {"voice-always-wake-up", "menu/system/general-voice-voice-always-wake-up",
         RULES("voice_always_wake_up", ENABLE("voice_always_wake_up")), NODE("always_wake_up"),
         nullptr},
        {"voice-screen-on-wake-up", "menu/system/general-voice-voice-screen-on-wake-up",
         RULES("voice_screen_on_wake_up", ENABLE("voice_screen_on_wake_up")),
         NODE("screen_on_wake_up"), nullptr},
        {"situational-hint", "menu/system/general-voice-situational-hint",
         RULES("situational_hint", ENABLE("voice_situational_hint")), NODE("situational_hint"),
         nullptr},
        {"voice-settings-orvik", "menu/system/general-voice-voice-settings-orvik",
         RULES("voice_settings_orvik", ENABLE("voice_settings_orvik")), nullptr, nullptr, nullptr},
        {"voice-settings-orvik-cn", "menu/system/general-voice-voice-settings-orvik-cn",
         RULES("voice_settings_orvik_cn", ENABLE("voice_settings_orvik_cn")), nullptr, nullptr,
         nullptr},
        {"voice-settings-tencent", "menu/system/general-voice-voice-settings-tencent",
         RULES("voice_settings_tencent", ENABLE("voice_settings_tencent")), nullptr, nullptr,
         nullptr},
        {"voice-settings-alexa", "menu/system/general-voice-voice-settings-alexa",
         RULES("voice_settings_alexa", ENABLE("voice_settings_alexa")), nullptr, nullptr, nullptr},
        {"voice-settings-google", "menu/system/general-voice-voice-settings-google",
         RULES("voice_settings_google", ENABLE("voice_settings_google")), nullptr, nullptr,
         nullptr},
        {"voice-settings-salute", "menu/system/general-voice-voice-settings-salute",
         RULES("voice_settings_salute", ENABLE("voice_settings_salute")), nullptr, nullptr,
         nullptr},
    };
    return items;
}

const Item* FindItem(std::string_view nameOrKey) {
    for (const Item& item : Items()) {
        if (nameOrKey == item.name || nameOrKey == item.key) {
            return &item;
        }
    }
    return nullptr;
}

}  // namespace explorer
