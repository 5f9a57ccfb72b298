#include "rules.h"

#include <stdexcept>
#include <string>

namespace host {

namespace {

constexpr char kVisible[] = "si-ready/src/general_voice_visiblechecker.cpp";
constexpr char kEnabled[] = "si-ready/src/general_voice_enablechecker.cpp";
constexpr char kData[] = "si-ready/src/general_voice_dataprovider.cpp";

constexpr Rule Visible(const char* function) {
    return {function, kVisible};
}
constexpr Rule Enabled(const char* function) {
    return {function, kEnabled};
}
constexpr Rule Reads(const char* function) {
    return {function, kData};
}
constexpr Rule kNoRule = {nullptr, nullptr};

constexpr ItemRules kRules[] = {
    {"voice", Visible("check_general_voice_supported"), Enabled("check_general_voice_enable"),
     kNoRule},
    {"voice-assistant", Visible("check_general_voice_voice_assistant"),
     Enabled("check_return_true"), Reads("checknode_int_voice_assistant")},
    {"voice-wake-up", Visible("check_general_voice_voice_wake_up"),
     Enabled("check_general_voice_voice_wake_up_enable"), Reads("checknode_int_voice_wake_up")},
    {"voice-always-wake-up", Visible("check_general_voice_voice_always_wake_up"),
     Enabled("check_general_voice_voice_always_wake_up_enable"),
     Reads("checknode_int_voice_always_wake_up")},
    {"voice-screen-on-wake-up", Visible("check_general_voice_voice_screen_on_wake_up"),
     Enabled("check_general_voice_voice_screen_on_wake_up_enable"),
     Reads("checknode_int_voice_screen_on_wake_up")},
    {"situational-hint", Visible("check_general_voice_situational_hint"),
     Enabled("check_general_voice_voice_situational_hint_enable"),
     Reads("checknode_int_voice_situational_hint")},
    {"voice-settings-orvik", Visible("check_general_voice_voice_settings_orvik"),
     Enabled("check_general_voice_voice_settings_orvik_enable"), kNoRule},
    {"voice-settings-orvik-cn", Visible("check_general_voice_voice_settings_orvik_cn"),
     Enabled("check_general_voice_voice_settings_orvik_cn_enable"), kNoRule},
    {"voice-settings-tencent", Visible("check_general_voice_voice_settings_tencent"),
     Enabled("check_general_voice_voice_settings_tencent_enable"), kNoRule},
    {"voice-settings-alexa", Visible("check_general_voice_voice_settings_alexa"),
     Enabled("check_general_voice_voice_settings_alexa_enable"), kNoRule},
    {"voice-settings-google", Visible("check_general_voice_voice_settings_google"),
     Enabled("check_general_voice_voice_settings_google_enable"), kNoRule},
    {"voice-settings-salute", Visible("check_general_voice_voice_settings_salute"),
     Enabled("check_general_voice_voice_settings_salute_enable"), kNoRule},
    {"onboarding", Visible("check_general_voice_onboarding_supported"),
     Enabled("check_general_voice_onboarding_enable"), kNoRule},
};

}  // namespace

const ItemRules& RulesOf(const Item& item) {
    for (const ItemRules& rules : kRules) {
        if (rules.item == std::string_view(item.name)) {
            return rules;
        }
    }
    throw std::out_of_range("no rules of " + std::string(item.name));
}

Rule RuleOf(const Item& item, std::string_view question) {
    const ItemRules& rules = RulesOf(item);
    if (question == "visible") {
        return rules.visible;
    }
    if (question == "enabled") {
        return rules.enabled;
    }
    return question == "value" ? rules.value : Rule{"get_disable_text", kData};
}

}  // namespace host
