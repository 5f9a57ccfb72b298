#include "page_texts.h"

#include <algorithm>

namespace vtv {

namespace {

// A text is a part of several items alike.
std::vector<TextPlace> Of(const char* part, const std::vector<const char*>& places) {
    std::vector<TextPlace> found;
    for (const char* where : places) {
        found.push_back({where, part});
    }
    return found;
}

// Every assistant's settings can be pressed before the assistant is set up.
std::vector<TextPlace> SetupPopups(std::vector<TextPlace> first = {}) {
    for (const TextPlace& place :
         Of("popup", {"voice-settings-orvik", "voice-settings-orvik-cn", "voice-settings-tencent",
                      "voice-settings-alexa", "voice-settings-google", "voice-settings-salute"})) {
        first.push_back(place);
    }
    return first;
}

// What no item shows today.
constexpr char kWakeUpChoices[] = "get_list_items_voice_wake_up";
constexpr char kDevice[] = "CSIMenuUtil::GetDeviceSID";

}  // namespace

const std::vector<PageText>& PageTexts() {
    static const std::vector<PageText> texts = {
        {"TV_SID_SETTINGS_VOICE", Of("title", {"voice", "onboarding"})},
        {"TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT",
         Of("help", {"voice", "voice-assistant", "onboarding"})},
        {"TV_SID_SETTINGS_VOICE_ASSITANT", {{"voice-assistant", "title"}}},
        {"TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP", {{"voice-wake-up", "title"}}},
        {"TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE",
         Of("help", {"voice-wake-up", "voice-always-wake-up", "voice-screen-on-wake-up"})},
        {"COM_SID_ALWAYS_KR_ORVIK", {{"voice-always-wake-up", "title"}}},
        {"TV_SID_ORVIK_CDJAN_ONLY_WHEN_SCREEN_ON", {{"voice-screen-on-wake-up", "title"}}},
        {"TV_SID_SETTINGS_VOICE_HINT", {{"situational-hint", "title"}}},
        {"TV_SID_SETTINGS_CONFIGURE_VOICE_HINTS_BASEDON", {{"situational-hint", "help"}}},
        {"TV_SID_SETTINGS_ORVIK_VOICE_SETTINGS", {{"voice-settings-orvik-cn", "title"}}},
        {"TV_SID_SETTINGS_CONFIGURE_ORVIK_VOICE_SETTINGS", {{"voice-settings-orvik-cn", "help"}}},
        {"TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS",
         {{"voice-settings-tencent", "title"}, {"voice-settings-tencent", "help"}}},
        {"DREAM_ORV_TMBODY_ORVIK",
         {{"voice-assistant", "choice"},
          {"voice-wake-up", "reason"},
          {"voice-settings-orvik", "title"}}},
        {"TV_SID_MIX_SETTINGS", Of("title", {"voice-settings-orvik", "voice-settings-alexa",
                                             "voice-settings-google", "voice-settings-salute"})},
        {"TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS", {{"voice-settings-orvik", "help"}}},
        {"TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS",
         Of("help", {"voice-settings-alexa", "voice-settings-google", "voice-settings-salute"})},
        {"TV_SID_CHIVOICE_CCAPR_USE_VOICE_ASSISTANT_SEARCH_MSG", {{"voice-assistant", "help"}}},
        {"TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT", {{"voice-assistant", "confirmation"}}},
        {"TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT", {{"voice-assistant", "confirmation"}}},
        {"TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED", {{"voice-assistant", "toast"}}},
        {"TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE",
         {{"voice-assistant", "toast"}}},
        {"COM_SID_OK", SetupPopups({{"voice-assistant", "confirmation"}})},
        {"COM_SID_CANCEL", SetupPopups({{"voice-assistant", "confirmation"}})},
        {"TV_SID_RNS_CAOCT_MIC_OFF_TURN_ON_TRY_AGAIN", Of("reason", {"voice", "onboarding"})},
        {"TV_SID_SBAR_PASS_CBNOV_UNABLE_CHANGE_SETTINGS_CHECK_POWER",
         {{"voice-wake-up", "reason"}}},
        {"TV_SID_SBAR_CBDEC_UNABLE_CAHNGE_SETTINGS_NOW", {{"voice-wake-up", "reason"}}},
        {"TV_SID_SBAR_MIX_CBDEC_CHECK_SETTING_TRY_AGAIN", {{"voice-wake-up", "reason"}}},
        {"TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY", {{"voice-wake-up", "reason"}}},
        {"COM_SID_OOBE_CDMAR_SETUP_SMART_FEATURES", SetupPopups()},
        {"TV_SID_ACCOUNT_CDMAR_USE_SMART_FEATURES_CHOOSING_SETTINGS", SetupPopups()},
        {"COM_SID_OOBE_CDMAR_START_SETUP", SetupPopups()},
        {"COM_TV_SID_SIGN_IN", {{"voice-settings-orvik", "popup"}}},
        {"COM_SID_SIGN_IN_VANTELO_ACCOUNT_SIGN_IN", {{"voice-settings-orvik", "popup"}}},
        {"TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT", SetupPopups()},
        {"TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW", SetupPopups()},
        {"TV_SID_ORVIK_CCSEP_HANS_FREE_WAKE_UP_AYNTIME", {{kWakeUpChoices, "choice"}}},
        {"TV_SID_ORVIK_CCSEP_HANDS_FREE_WAKE_UIP_SCREEN_ON", {{kWakeUpChoices, "choice"}}},
        {"TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON", {{kWakeUpChoices, "choice"}}},
        {"COM_ICON_VOICE", {{kWakeUpChoices, "choice"}}},
        {"REP.DEVICE.TV", {{kDevice, "text"}}},
        {"REP.DEVICE.SCREEN", {{kDevice, "text"}}},
        {"REP.DEVICE.TESSA.MONITOR", {{kDevice, "text"}}},
        {"REP.DEVICE.VANTELO.THE.SKELD", {{kDevice, "text"}}},
        {"TV_SID_MLED_CAOCT_NON_MICRO_LED", {{kDevice, "text"}}},
        {"PJT_SID_TV", {{kDevice, "text"}}},
    };
    return texts;
}

std::vector<std::string> PlaceholdersOf(const std::string& text) {
    std::vector<std::string> found;
    for (size_t at = text.find("<<"); at != std::string::npos; at = text.find("<<", at + 1)) {
        if (text.compare(at + 3, 2, ">>") == 0) {
            found.push_back(text.substr(at, 5));
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace vtv
