#include "items.h"

#include <algorithm>

namespace vtv {

#define KEY "menu/system/general-voice"
#define RULES(visible, enabled) "check_general_voice_" visible, enabled
#define ENABLE(name) "check_general_voice_" name "_enable"
#define NODE(name) "checknode_int_voice_" name, "setnode_int_voice_" name

const std::vector<Item>& PageItems() {
    static const std::vector<Item> items = {
        {KEY, "voice", nullptr, ItemKind::kPage, RULES("supported", "check_general_voice_enable")},
        {KEY "-voice-assistant", "voice-assistant", "voice", ItemKind::kList,
         RULES("voice_assistant", "check_return_true"), NODE("assistant"),
         "get_list_items_voice_assistant"},
        {KEY "-voice-wake-up", "voice-wake-up", "voice", ItemKind::kSwitch,
         RULES("voice_wake_up", ENABLE("voice_wake_up")), NODE("wake_up")},
        {KEY "-voice-always-wake-up", "voice-always-wake-up", "voice-wake-up", ItemKind::kSwitch,
         RULES("voice_always_wake_up", ENABLE("voice_always_wake_up")), NODE("always_wake_up")},
        {KEY "-voice-screen-on-wake-up", "voice-screen-on-wake-up", "voice-wake-up",
         ItemKind::kSwitch, RULES("voice_screen_on_wake_up", ENABLE("voice_screen_on_wake_up")),
         NODE("screen_on_wake_up")},
        {KEY "-situational-hint", "situational-hint", "voice", ItemKind::kSwitch,
         RULES("situational_hint", ENABLE("voice_situational_hint")), NODE("situational_hint")},
        {KEY "-voice-settings-orvik", "voice-settings-orvik", "voice", ItemKind::kApplication,
         RULES("voice_settings_orvik", ENABLE("voice_settings_orvik"))},
        {KEY "-voice-settings-orvik-cn", "voice-settings-orvik-cn", "voice", ItemKind::kApplication,
         RULES("voice_settings_orvik_cn", ENABLE("voice_settings_orvik_cn"))},
        {KEY "-voice-settings-tencent", "voice-settings-tencent", "voice", ItemKind::kApplication,
         RULES("voice_settings_tencent", ENABLE("voice_settings_tencent"))},
        {KEY "-voice-settings-alexa", "voice-settings-alexa", "voice", ItemKind::kApplication,
         RULES("voice_settings_alexa", ENABLE("voice_settings_alexa"))},
        {KEY "-voice-settings-google", "voice-settings-google", "voice", ItemKind::kApplication,
         RULES("voice_settings_google", ENABLE("voice_settings_google"))},
        {KEY "-voice-settings-salute", "voice-settings-salute", "voice", ItemKind::kApplication,
         RULES("voice_settings_salute", ENABLE("voice_settings_salute"))},
        {KEY "-onboarding", "onboarding", nullptr, ItemKind::kSetup,
         RULES("onboarding_supported", ENABLE("onboarding"))},
    };
    return items;
}

#undef KEY
#undef RULES
#undef ENABLE
#undef NODE

const Item* FindItem(std::string_view nameOrKey) {
    for (const Item& item : PageItems()) {
        if (nameOrKey == item.name || nameOrKey == item.key) {
            return &item;
        }
    }
    return nullptr;
}

int DepthOf(const Item& item) {
    int depth = -1;
    for (const Item* above = &item; above->parent != nullptr; above = FindItem(above->parent)) {
        ++depth;
    }
    return std::max(depth, 0);
}

}  // namespace vtv
