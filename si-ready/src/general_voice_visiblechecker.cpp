#include "general_voice_visiblechecker.h"

#include <string>

#include "AssistantType.h"
#include "Dispatch.h"
#include "Guard.h"
#include "Keys.h"
#include "Log.h"
#include "MVAList.h"
#include "SIMenuUtil.h"
#include "abi/si_provider.h"
#include "platform/features.h"
#include "trace/Trace.h"

namespace {

constexpr char VOICE_RECOGNITION[] = "com.vantelo/featureconf/voice.voice_recognition_support";
constexpr char ORVIK_SUPPORT[] = "com.vantelo/featureconf/voice.voice_recognition_orvik_support";
constexpr char CONTENT_HUB_BLOCK[] = "db/comss/cisblock";

constexpr int CONTENT_HUB_BLOCKED = 2;
constexpr int INVALID_PARAMETER = -22;

// ---------------------------------------------------------------------------------------------
// What several rules share
// ---------------------------------------------------------------------------------------------

bool _IsOrvikSupport() {
    bool supported = false;
    const int result = system_info_get_custom_bool(ORVIK_SUPPORT, &supported);
    if (result == INVALID_PARAMETER) {
        return true;  // on purpose: this one error counts as support
    }
    if (result != 0) {
        LOG_ERROR("ERROR:%d", result);
        return false;
    }
    return supported;
}

bool _IsVoiceMenuVisible() {
    if (!CSIMenuUtil::GetFMSBool(VOICE_RECOGNITION)) {
        LOG_ERROR("FMS not support");
        return false;
    }
    if (CSIMenuUtil::VconfGetInt(CONTENT_HUB_BLOCK) == CONTENT_HUB_BLOCKED) {
        LOG_ERROR("Pivora Blocked");
        return false;
    }
    if (!_IsOrvikSupport() && MVAList::IsVoiceDisabledByVAPolicy()) {
        LOG_ERROR("No VA supported");
        return false;
    }
    LOG_ERROR("Supported");
    return true;
}

// True: the page shows the onboarding entry instead of the voice items.
bool _IsVoiceOnboardingVisible() {
    if (!CSIMenuUtil::IsTncPPAgreed()) {
        LOG_ERROR("terms not agreed");
        return true;
    }
    if (CSIMenuUtil::GetCurrentVAAppID().empty()) {
        LOG_ERROR("VASelection is needed");
        return true;
    }
    const bool isSingleAssistant =
        MVAList::GetVAListSize() == 1 || CSIMenuUtil::VconfGetBool(setting::LEGACY_VOICE);
    if (isSingleAssistant && !MVAList::IsCurrentVASetupComplete()) {
        LOG_ERROR("SingleVA all subitems disabled case");
        return true;
    }
    LOG_ERROR("MVA selected, or SingleVA enabled subitems");
    return false;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// The rules
// ---------------------------------------------------------------------------------------------

bool check_general_voice_supported(const char*, int) {
    return _IsVoiceMenuVisible() && !_IsVoiceOnboardingVisible();
}

bool check_general_voice_onboarding_supported(const char*, int) {
    return _IsVoiceMenuVisible() && _IsVoiceOnboardingVisible();
}

bool check_general_voice_voice_assistant(const char*, int) {
    if (MVAList::GetVAListSize() < 2) {
        return false;
    }
    return !CSIMenuUtil::VconfGetBool(setting::LEGACY_VOICE);
}

bool check_general_voice_voice_wake_up() {
    if (CSIMenuUtil::VconfGetBool(setting::LEGACY_VOICE)) {
        return false;
    }
    if (CSIMenuUtil::IsFarFieldFMSSupported() && MVAList::IsCurrentVASupportFF()) {
        return true;
    }
    if (!MVAList::IsCurrentVAOrvik()) {
        return false;
    }
    return CSIMenuUtil::IsPassthruSupportModel();
}

bool check_general_voice_voice_wake_up(const char*, int) {
    return check_general_voice_voice_wake_up();
}

bool check_general_voice_voice_always_wake_up(const char*, int) {
    if (!MVAList::IsCurrentVAOrvik()) {
        LOG_ERROR("current VA is not Orvik, item is invisible.");
        TRACE_EVENT_AT(175, "current VA is not Orvik, item is invisible.");
        return false;
    }
    return check_general_voice_voice_wake_up();
}

bool check_general_voice_voice_screen_on_wake_up(const char*, int) {
    if (!MVAList::IsCurrentVAOrvik()) {
        LOG_ERROR("current VA is not Orvik, item is invisible.");
        TRACE_EVENT_AT(187, "current VA is not Orvik, item is invisible.");
        return false;
    }
    return check_general_voice_voice_wake_up();
}

bool check_general_voice_situational_hint(const char*, int) {
    if (CSIMenuUtil::VconfGetBool(setting::LEGACY_VOICE)) {
        return false;
    }
    const std::string hint =
        CSIMenuUtil::getValueOfJsonVconf(setting::HINT, CSIMenuUtil::GetCurrentVAAppID());
    if (!hint.empty()) {
        LOG_ERROR("situational Hint (supported)");
        TRACE_EVENT_AT(205, "situational Hint (supported)");
        return true;
    }
    LOG_ERROR("situational Hint Value is NULL(unsupported)");
    TRACE_EVENT_AT(211, "situational Hint Value is NULL(unsupported)");
    return false;
}

bool check_general_voice_voice_settings_orvik(const char*, int) {
    if (CSIMenuUtil::isChina()) {
        return false;
    }
    return MVAList::IsCurrentVAOrvik() || MVAList::GetCurrentVAType() == ASSISTANT_SVA;
}

bool check_general_voice_voice_settings_orvik_cn(const char*, int) {
    return CSIMenuUtil::isChina() && MVAList::IsCurrentVAOrvik();
}

bool check_general_voice_voice_settings_tencent(const char*, int) {
    return MVAList::GetCurrentVAType() == ASSISTANT_TENCENT;
}

bool check_general_voice_voice_settings_alexa(const char*, int) {
    return MVAList::GetCurrentVAType() == ASSISTANT_ALEXA;
}

bool check_general_voice_voice_settings_google(const char*, int) {
    return MVAList::GetCurrentVAType() == ASSISTANT_GVA;
}

bool check_general_voice_voice_settings_salute(const char*, int) {
    return MVAList::GetCurrentVAType() == ASSISTANT_SBER;
}

// ---------------------------------------------------------------------------------------------
// Entry points
// ---------------------------------------------------------------------------------------------

namespace {

constexpr RuleRow VISIBILITY_RULES[] = {
    {menu::VOICE, check_general_voice_supported},
    {menu::ONBOARDING, check_general_voice_onboarding_supported},
    {menu::VOICE_ASSISTANT, check_general_voice_voice_assistant},
    {menu::WAKE_UP, check_general_voice_voice_wake_up},
    {menu::ALWAYS_WAKE_UP, check_general_voice_voice_always_wake_up},
    {menu::SCREEN_ON_WAKE_UP, check_general_voice_voice_screen_on_wake_up},
    {menu::SITUATIONAL_HINT, check_general_voice_situational_hint},
    {menu::SETTINGS_ORVIK, check_general_voice_voice_settings_orvik},
    {menu::SETTINGS_ORVIK_CN, check_general_voice_voice_settings_orvik_cn},
    {menu::SETTINGS_TENCENT, check_general_voice_voice_settings_tencent},
    {menu::SETTINGS_ALEXA, check_general_voice_voice_settings_alexa},
    {menu::SETTINGS_GOOGLE, check_general_voice_voice_settings_google},
    {menu::SETTINGS_SALUTE, check_general_voice_voice_settings_salute},
};

}  // namespace

SI_EXPORT int check_visibility_int(const char* key, int value) try {
    const RuleRow* row = FindRow(VISIBILITY_RULES, key);
    if (row == nullptr) {
        LOG_ERROR("[FATAL]no callback[%s]", Printable(key));
        return 0;
    }
    const bool visible = row->rule(key, value);
    LOG_ERROR("key:%s, status:%s", key, visible ? "visible" : "invisible");
    return visible ? 1 : 0;
}
NEUTRAL_ON_EXCEPTION(0)

SI_EXPORT int check_visibility_bool(const char*, bool) {
    return 1;
}

SI_EXPORT int check_visibility_double(const char*, double) {
    return 1;
}

SI_EXPORT int check_visibility_string(const char*, const char*) {
    return 1;
}
