#include "page_behaviour.h"

#include <algorithm>

namespace model {

namespace {

const char ORVIK_NAME[] = "DREAM_ORV_TMBODY_ORVIK";
const char CURRENT_KEY[] = "db/multi-assistant/default_assistant_appid";
const char HANDS_FREE_KEY[] = "db/menu/voice/assistant_farfield";
const char HINT_KEY[] = "db/multi-assistant/situational_hint_supported";

std::string Named(const std::string& id, const std::string& name) {
    return id + " " + name;
}

// The name of the first assistant of that kind.
std::string NameOf(const State& s, int kind) {
    for (const Assistant& assistant : s.assistants) {
        if (KindOf(s, assistant.appId) == kind) {
            return assistant.name;
        }
    }
    return "";
}

bool WakeUpOn(const State& s) {
    return EntryOf(s.handsFree, CurrentApp(s)) == "on";
}

std::string WriteOf(const std::string& key, const std::string& type, const std::string& value) {
    return "writes " + key + " = " + type + " " + value;
}

// A document as it is stored: indented, its members sorted.
std::string Document(const Entries& entries) {
    std::string text = entries.comment.empty() ? "" : "\n" + entries.comment + "\n";
    std::string members;
    for (const auto& [name, value] : entries.texts) {
        members += (members.empty() ? "" : ",") + ("\n   \"" + name + "\" : \"" + value + "\"");
    }
    return text + "{" + members + "\n}\n";
}

// Changes the current assistant's member; a document that is not there is not made.
void WriteEntry(const State& s, const char* key, Entries& entries, const std::string& value,
                bool isTaken, Effects& effects) {
    if (!entries.readable) {
        return;
    }
    Entries after = entries;
    after.texts[CurrentApp(s)] = value;
    effects.push_back(WriteOf(key, "string", Document(after)));
    if (isTaken) {
        entries = after;
    }
}

void SetMode(State& s, int mode, Effects& effects) {
    effects.push_back("sets the always-on-voice mode of " + CurrentApp(s) + " to " +
                      std::to_string(mode));
    if (s.takesMode) {
        s.alwaysOnMode = mode;
    }
}

std::string Start(const std::string& app, const std::string& key, const std::string& value) {
    return "starts " + app + " " + key + "=\"" + value + "\"";
}

void Append(Effects& effects, const Effects& more) {
    effects.insert(effects.end(), more.begin(), more.end());
}

int HintValue(const State& s) {
    const std::string hint = EntryOf(s.hints, CurrentApp(s));
    if (hint == "on_user" || hint == "on_default") {
        return 1;
    }
    return hint == "null" ? -1 : 0;
}

int CurrentNumber(const State& s) {
    for (const Assistant& assistant : s.assistants) {
        if (assistant.appId == CurrentApp(s)) {
            return assistant.order;
        }
    }
    return 0;
}

bool ModelIsChinese(const State& s) {
    return Yes(s.china);
}

void WriteWakeUp(State& s, int value, Effects& effects) {
    WriteEntry(s, HANDS_FREE_KEY, s.handsFree, value == 1 ? "on" : "off", s.takesHandsFree,
               effects);
    if (value != 1 && CurrentIsOrvik(s)) {
        SetMode(s, 0, effects);
    }
}

void WriteHint(State& s, int value, Effects& effects) {
    if (HintValue(s) == -1) {
        return;
    }
    WriteEntry(s, HINT_KEY, s.hints, value == 1 ? "on_user" : "off_user", s.takesHints, effects);
}

void WriteAssistant(State& s, int value, Effects& effects) {
    const std::string previous = CurrentApp(s);
    const auto chosen = std::find_if(s.assistants.begin(), s.assistants.end(),
                                     [&](const Assistant& one) { return one.order == value; });
    if (chosen == s.assistants.end()) {
        return;
    }
    effects.push_back(WriteOf(CURRENT_KEY, "string", chosen->appId));
    if (s.takesCurrent) {
        s.current = chosen->appId;
    }
    const int kind = KindOf(s, chosen->appId);
    if (kind == NONE) {
        return;
    }
    if (KindOf(s, previous) != ORVIK && s.previousAppRuns) {
        effects.push_back("ends " + previous);
    }
    if (!SetUp(s, kind)) {
        Append(effects, LaunchOnboarding(s));
    } else if (kind != GOOGLE) {
        Append(effects, NoticeOfChange(s));
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Values and texts
// ---------------------------------------------------------------------------------------------

std::optional<int> ValueOf(const State& s, Item item) {
    switch (item) {
        case Item::ASSISTANT:
            return CurrentNumber(s);
        case Item::WAKE_UP:
            return WakeUpOn(s) ? 1 : 0;
        case Item::ALWAYS:
            return WakeUpOn(s) && s.alwaysOnMode == 1 ? 1 : 0;
        case Item::SCREEN_ON:
            return WakeUpOn(s) && s.alwaysOnMode != 1 ? 1 : 0;
        case Item::HINT:
            return HintValue(s);
        default:
            return std::nullopt;
    }
}

std::string TitleOf(const State& s, Item item) {
    switch (item) {
        case Item::VOICE:
            return "TV_SID_SETTINGS_VOICE";
        case Item::ONBOARDING:
            return "TV_SID_SETTINGS_VOICE";
        case Item::ASSISTANT:
            return "TV_SID_SETTINGS_VOICE_ASSITANT";
        case Item::WAKE_UP:
            return "TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP";
        case Item::ALWAYS:
            return "COM_SID_ALWAYS_KR_ORVIK";
        case Item::SCREEN_ON:
            return "TV_SID_ORVIK_CDJAN_ONLY_WHEN_SCREEN_ON";
        case Item::HINT:
            return "TV_SID_SETTINGS_VOICE_HINT";
        case Item::ORVIK:
            return Named("TV_SID_MIX_SETTINGS", ORVIK_NAME);
        case Item::ORVIK_CN:
            return "TV_SID_SETTINGS_ORVIK_VOICE_SETTINGS";
        case Item::TENCENT:
            return "TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS";
        case Item::ALEXA:
            return Named("TV_SID_MIX_SETTINGS", NameOf(s, ALEXA));
        case Item::GOOGLE:
            return Named("TV_SID_MIX_SETTINGS", NameOf(s, GOOGLE));
        case Item::SALUTE:
            return Named("TV_SID_MIX_SETTINGS", NameOf(s, SALUTE));
        case Item::COUNT:
            break;
    }
    return "";
}

std::string HelpOf(const State& s, Item item) {
    switch (item) {
        case Item::VOICE:
            return "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT";
        case Item::ONBOARDING:
            return "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT";
        case Item::ASSISTANT:
            return ModelIsChinese(s) ? "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT\n"
                                       "TV_SID_CHIVOICE_CCAPR_USE_VOICE_ASSISTANT_SEARCH_MSG"
                                     : "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT";
        case Item::WAKE_UP:
            return "TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE";
        case Item::ALWAYS:
            return "TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE";
        case Item::SCREEN_ON:
            return "TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE";
        case Item::HINT:
            return "TV_SID_SETTINGS_CONFIGURE_VOICE_HINTS_BASEDON";
        case Item::ORVIK:
            return "TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS";
        case Item::ORVIK_CN:
            return "TV_SID_SETTINGS_CONFIGURE_ORVIK_VOICE_SETTINGS";
        case Item::TENCENT:
            return "TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS";
        case Item::ALEXA:
            return Named("TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS", NameOf(s, ALEXA));
        case Item::GOOGLE:
            return Named("TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS", NameOf(s, GOOGLE));
        case Item::SALUTE:
            return Named("TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS", NameOf(s, SALUTE));
        case Item::COUNT:
            break;
    }
    return "";
}

// In the order of their numbers; of equal numbers the first counts.
Choices ChoicesOf(const State& s, Item item) {
    Choices choices;
    if (item != Item::ASSISTANT || s.assistants.size() < 2) {
        return choices;
    }
    for (const Assistant& assistant : s.assistants) {
        const bool isThere = std::any_of(choices.begin(), choices.end(), [&](const auto& choice) {
            return choice.first == assistant.order;
        });
        const bool isOrvik = KindOf(s, assistant.appId) == ORVIK;
        if (!isThere) {
            choices.emplace_back(assistant.order, isOrvik ? ORVIK_NAME : assistant.name);
        }
    }
    std::sort(choices.begin(), choices.end());
    return choices;
}

std::optional<Box> ConfirmationOf(Item item) {
    if (item != Item::ASSISTANT) {
        return std::nullopt;
    }
    return Box{"TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT",
               "TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT", "COM_SID_OK", "COM_SID_CANCEL"};
}

Reason ReasonOf(const State& s, Item item) {
    Reason reason;
    if ((item == Item::VOICE || item == Item::ONBOARDING) && MicrophoneSwitchedOff(s)) {
        reason.shown = true;
        reason.text = "TV_SID_RNS_CAOCT_MIC_OFF_TURN_ON_TRY_AGAIN";
    }
    if (item != Item::WAKE_UP || !CurrentIsSetUp(s)) {
        return reason;
    }
    reason.shown = true;
    if (!CurrentIsOrvik(s)) {
        return reason;
    }
    const bool isMicOff = !Yes(s.passThroughMic);
    if (FarFieldTv(s)) {
        if (Yes(s.connected) && Yes(s.passThrough) && isMicOff) {
            reason.text = "TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY";
        }
    } else if (!Yes(s.connected)) {
        reason.text = "TV_SID_SBAR_PASS_CBNOV_UNABLE_CHANGE_SETTINGS_CHECK_POWER";
    } else if (!Yes(s.passThrough)) {
        reason.text = "TV_SID_SBAR_CBDEC_UNABLE_CAHNGE_SETTINGS_NOW " +
                      Named("TV_SID_SBAR_MIX_CBDEC_CHECK_SETTING_TRY_AGAIN", ORVIK_NAME);
    } else if (isMicOff) {
        reason.text = "TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY";
    }
    return reason;
}

std::optional<Box> PopupOf(const State& s, Item item) {
    switch (item) {
        case Item::ORVIK:
        case Item::ORVIK_CN:
        case Item::TENCENT:
        case Item::ALEXA:
        case Item::GOOGLE:
        case Item::SALUTE:
            break;
        default:
            return std::nullopt;
    }
    if (!TermsAgreed(s)) {
        return Box{"COM_SID_OOBE_CDMAR_SETUP_SMART_FEATURES",
                   "TV_SID_ACCOUNT_CDMAR_USE_SMART_FEATURES_CHOOSING_SETTINGS",
                   "COM_SID_OOBE_CDMAR_START_SETUP", ""};
    }
    if (item == Item::ORVIK && !SignedIn(s) && !ModelIsChinese(s) && !Yes(s.firstTime)) {
        return Box{"COM_TV_SID_SIGN_IN", "COM_SID_SIGN_IN_VANTELO_ACCOUNT_SIGN_IN",
                   "COM_TV_SID_SIGN_IN", "COM_SID_CANCEL"};
    }
    return Box{"TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT",
               "TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW", "COM_SID_OK", "COM_SID_CANCEL"};
}

// ---------------------------------------------------------------------------------------------
// What the page does
// ---------------------------------------------------------------------------------------------

Effects Write(State& s, Item item, int value) {
    Effects effects;
    switch (item) {
        case Item::ASSISTANT:
            WriteAssistant(s, value, effects);
            break;
        case Item::WAKE_UP:
            WriteWakeUp(s, value, effects);
            break;
        case Item::ALWAYS:
            SetMode(s, value == 1 ? 1 : 0, effects);
            break;
        case Item::SCREEN_ON:
            SetMode(s, value == 1 ? 0 : 1, effects);
            break;
        case Item::HINT:
            WriteHint(s, value, effects);
            break;
        default:
            break;
    }
    return effects;
}

Effects PressPopup(const State& s, bool& fails) {
    if (!TermsAgreed(s)) {
        return {Start("org.nemra.wizard", "type", "PIVORA_SETUP")};
    }
    if (!CurrentIsOrvik(s) || SignedIn(s) || Yes(s.firstTime)) {
        return LaunchOnboarding(s);
    }
    fails = !s.accountApp.has_value();
    return fails ? Effects() : Effects{"starts " + *s.accountApp};
}

Effects LaunchOnboarding(const State& s) {
    const int kind = KindOf(s, CurrentApp(s));
    const std::string generic = Start("org.nemra.voice-onboarding", "type", "ONBOARDING_SETUP");
    const bool isReady = Yes(s.network) && TermsAgreed(s);
    if (kind == NONE || kind == SVA || SetUp(s, kind)) {
        return {};
    }
    if (kind == ORVIK && isReady && (ModelIsChinese(s) || SignedIn(s))) {
        return {Start("com.vantelo.tv.voice-instant-app", "show_onboarding", "ONBOARDING")};
    }
    if (kind == GOOGLE && isReady) {
        return {Start("com.vantelo.tv.google-assistant", "Login", "1")};
    }
    if (kind == SALUTE && isReady) {
        return {Start("com.vantelo.tv.salute-assistant", "PAGETYPE", "ONBOARDING")};
    }
    if (kind == TENCENT && isReady) {
        return {Start("com.vantelo.tv.tencent-voice-chrome", "show_onboarding", "ONBOARDING")};
    }
    return {generic};
}

Effects NoticeOfChange(const State& s) {
    if (!WakeUpOn(s)) {
        return {};
    }
    return ShowPopup(s,
                     "TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED "
                     "TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE");
}

Effects ShowPopup(const State& s, const std::string& text) {
    if (!s.popupCanBeAsked) {
        return {};
    }
    return {
        "asks for org.nemra.alert-syspopup operation=\"default\" type=\"notification\" text=\"" +
        text + "\" timeout=\"7\""};
}

Effects SwitchVoiceGuide(bool on) {
    const std::string flag = on ? "1" : "0";
    return {WriteOf("db/setting/accessibility/tts", "bool", flag),
            std::string("calls avoc_set_sound_feedback ") + (on ? "3" : "1") + " 1",
            "calls elm_init",
            "calls elm_config_access_set " + flag,
            "calls elm_config_save",
            "calls elm_config_item_flush ELM_ACCESS_MODE"};
}

Effects SwitchPassThrough(bool on) {
    return {WriteOf("db/menu/voice/passthru", "bool", on ? "1" : "0")};
}

// ---------------------------------------------------------------------------------------------
// What other programs ask
// ---------------------------------------------------------------------------------------------

Choices WakeUpChoices(const State& s) {
    Choices choices;
    if (CurrentIsOrvik(s)) {
        choices.emplace_back(2, "TV_SID_ORVIK_CCSEP_HANS_FREE_WAKE_UP_AYNTIME");
    }
    choices.emplace_back(1, "TV_SID_ORVIK_CCSEP_HANDS_FREE_WAKE_UIP_SCREEN_ON");
    choices.emplace_back(0, Named("TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON", "COM_ICON_VOICE"));
    return choices;
}

bool DisabledByPolicy(const State& s) {
    return TermsAgreed(s) && s.assistants.empty();
}

bool SignageTv(const State& s) {
    return s.productType.has_value() && *s.productType == 4;
}

bool PassThroughDimmed(const State& s) {
    return EntryOf(s.passThroughState, "state") != "active";
}

std::string PassThroughText(const State& s) {
    return EntryOf(s.passThroughState, "text");
}

std::string DeviceKind(const State& s) {
    if (s.deviceSid.has_value() && !s.deviceSid->empty()) {
        return *s.deviceSid;
    }
    if (s.modularVersion.has_value() && *s.modularVersion == 1) {
        return "REP.DEVICE.VANTELO.THE.SKELD";
    }
    if (s.modularVersion.has_value() && *s.modularVersion == 2) {
        return "TV_SID_MLED_CAOCT_NON_MICRO_LED";
    }
    if (Yes(s.projector)) {
        return "PJT_SID_TV";
    }
    if (Yes(s.monitor)) {
        return "REP.DEVICE.TESSA.MONITOR";
    }
    return "REP.DEVICE.TV";
}

std::string TextForDevice(const State& s, const std::string& tv, const std::string& screen,
                          const std::string& other) {
    const std::string kind = DeviceKind(s);
    if (kind == "REP.DEVICE.TV") {
        return tv;
    }
    return kind == "REP.DEVICE.SCREEN" ? screen : Named(other, kind);
}

bool MenuLanguageIsSpoken(const State& s) {
    if (!s.menuLanguage.has_value() || s.menuLanguage->size() < 5) {
        return false;
    }
    const bool isWizard = s.wizardMode.has_value() && *s.wizardMode == "PNP_SETUP";
    std::vector<std::string> languages;
    if (!isWizard || !Yes(s.neuralEngine)) {
        if (s.speechEngineStarts && s.voices.has_value()) {
            languages = *s.voices;
        }
    } else if (s.neuralPackageInstalled && s.legacyLanguagesReadable) {
        languages = s.legacyLanguages;
    } else {
        languages = {"ko_KR", "en_US", "en_GB", "de_DE", "it_IT", "es_ES", "ru_RU", "pt_PT"};
    }
    return std::find(languages.begin(), languages.end(), s.menuLanguage->substr(0, 5)) !=
           languages.end();
}

}  // namespace model
