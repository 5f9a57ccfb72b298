#include "general_voice_enablechecker.h"

#include <string>

#include "Dispatch.h"
#include "Guard.h"
#include "Keys.h"
#include "Log.h"
#include "MVAList.h"
#include "SIMenuUtil.h"
#include "abi/si_provider.h"

// ---------------------------------------------------------------------------------------------
// Shared rules
// ---------------------------------------------------------------------------------------------

bool check_return_true(const char* key, int) {
    LOG_ERROR("key:%s", Printable(key));
    return true;
}

bool check_return_false(const char* key, int) {
    LOG_ERROR("key:%s", Printable(key));
    return false;
}

// ---------------------------------------------------------------------------------------------
// The rules
// ---------------------------------------------------------------------------------------------

namespace {

// The record is the rule's.
bool IsEntryEnabled(const char* rule) {
    if (CSIMenuUtil::isBuiltInMicSupported() && !CSIMenuUtil::isBuiltInMicActivated()) {
        LOG_ERROR_FOR(rule, "Built In MIC status OFF(MIC support model) - dim");
        return false;
    }
    return true;
}

}  // namespace

bool check_general_voice_enable(const char*, int) {
    return IsEntryEnabled(__func__);
}

bool check_general_voice_onboarding_enable(const char*, int) {
    return IsEntryEnabled(__func__);
}

bool check_general_voice_voice_wake_up_enable() {
    if (!MVAList::IsCurrentVAOrvik()) {
        return MVAList::IsCurrentVASetupComplete() && CSIMenuUtil::isBuiltInMicActivated();
    }
    if (!CSIMenuUtil::isChina() && !CSIMenuUtil::IsSignedIn()) {
        LOG_ERROR("SSO not login");
        return false;
    }
    if (CSIMenuUtil::IsFarFieldFMSSupported()) {
        if (CSIMenuUtil::VconfGetBool(setting::PASSTHRU_CONNECTED) &&
            CSIMenuUtil::VconfGetBool(setting::PASSTHRU) &&
            !CSIMenuUtil::VconfGetBool(setting::PASSTHRU_MIC)) {
            LOG_ERROR("Passthru connected / enable and passthru MIC off");
            return false;
        }
        return !CSIMenuUtil::VconfGetBool(setting::FIRST_TIME);
    }
    // Without far-field microphones, hands-free wake-up needs the pass-through one.
    LOG_ERROR("PTT model.");
    return CSIMenuUtil::VconfGetBool(setting::PASSTHRU_CONNECTED) &&
           CSIMenuUtil::VconfGetBool(setting::PASSTHRU) &&
           CSIMenuUtil::VconfGetBool(setting::PASSTHRU_MIC) &&
           !CSIMenuUtil::VconfGetBool(setting::FIRST_TIME);
}

bool check_general_voice_voice_wake_up_enable(const char*, int) {
    return check_general_voice_voice_wake_up_enable();
}

namespace {

bool IsWakeUpEnabledAndOn() {
    if (!check_general_voice_voice_wake_up_enable()) {
        return false;
    }
    return CSIMenuUtil::getValueOfJsonVconf(setting::FARFIELD, CSIMenuUtil::GetCurrentVAAppID()) ==
           "on";
}

}  // namespace

bool check_general_voice_voice_always_wake_up_enable(const char*, int) {
    if (!IsWakeUpEnabledAndOn()) {
        return false;
    }
    LOG_ERROR("When 'Hands-free Wake-up' item is On, 'Always' item is activated.");
    return true;
}

bool check_general_voice_voice_screen_on_wake_up_enable(const char*, int) {
    if (!IsWakeUpEnabledAndOn()) {
        return false;
    }
    LOG_ERROR(
        "When 'Hands-free Wake-up' item is On, 'Only when the screen is on' item is activated.");
    return true;
}

bool check_general_voice_voice_situational_hint_enable(const char*, int) {
    return MVAList::IsCurrentVASetupComplete();
}

bool check_general_voice_voice_settings_orvik_enable(const char*, int) {
    if (CSIMenuUtil::isChina()) {
        return false;
    }
    if (!CSIMenuUtil::IsSignedIn()) {
        return false;
    }
    return !CSIMenuUtil::VconfGetBool(setting::FIRST_TIME);
}

bool check_general_voice_voice_settings_orvik_cn_enable(const char*, int) {
    if (!CSIMenuUtil::isChina()) {
        return false;
    }
    return !CSIMenuUtil::VconfGetBool(setting::FIRST_TIME);
}

bool check_general_voice_voice_settings_alexa_enable(const char*, int) {
    return CSIMenuUtil::checkSetUpComplete_Alexa();
}

bool check_general_voice_voice_settings_google_enable(const char*, int) {
    return CSIMenuUtil::checkSetUpComplete_Google();
}

bool check_general_voice_voice_settings_tencent_enable(const char*, int) {
    return CSIMenuUtil::checkSetUpComplete_Tencent();
}

bool check_general_voice_voice_settings_salute_enable(const char*, int) {
    return CSIMenuUtil::checkSetUpComplete_Salute();
}

// ---------------------------------------------------------------------------------------------
// Entry points
// ---------------------------------------------------------------------------------------------

namespace {

constexpr RuleRow ENABLE_RULES[] = {
    {menu::VOICE, check_general_voice_enable},
    {menu::ONBOARDING, check_general_voice_onboarding_enable},
    {menu::VOICE_ASSISTANT, check_return_true},
    {menu::WAKE_UP, check_general_voice_voice_wake_up_enable},
    {menu::ALWAYS_WAKE_UP, check_general_voice_voice_always_wake_up_enable},
    {menu::SCREEN_ON_WAKE_UP, check_general_voice_voice_screen_on_wake_up_enable},
    {menu::SITUATIONAL_HINT, check_general_voice_voice_situational_hint_enable},
    {menu::SETTINGS_ORVIK, check_general_voice_voice_settings_orvik_enable},
    {menu::SETTINGS_ORVIK_CN, check_general_voice_voice_settings_orvik_cn_enable},
    {menu::SETTINGS_TENCENT, check_general_voice_voice_settings_tencent_enable},
    {menu::SETTINGS_ALEXA, check_general_voice_voice_settings_alexa_enable},
    {menu::SETTINGS_GOOGLE, check_general_voice_voice_settings_google_enable},
    {menu::SETTINGS_SALUTE, check_general_voice_voice_settings_salute_enable},
};

}  // namespace

SI_EXPORT int check_enable_int(const char* key, int value) try {
    const RuleRow* row = FindRow(ENABLE_RULES, key);
    if (row == nullptr) {
        LOG_ERROR("[FATAL]no callback[%s]", Printable(key));
        return 0;
    }
    const bool enabled = row->rule(key, value);
    LOG_ERROR("key:%s, status:%s", key, enabled ? "enable" : "disable");
    return enabled ? 1 : 0;
}
NEUTRAL_ON_EXCEPTION(0)

SI_EXPORT int check_enable_bool(const char*, bool) {
    return 1;
}

SI_EXPORT int check_enable_double(const char*, double) {
    return 1;
}

SI_EXPORT int check_enable_string(const char*, const char*) {
    return 1;
}
