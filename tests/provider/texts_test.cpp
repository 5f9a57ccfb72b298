// Titles, help texts, the confirmation box, the reason why an item is dimmed and its popup.
#include <algorithm>

#include "page.h"

using namespace recording;

namespace {

std::string Text(const char* function, const std::string& item, const std::string& text) {
    return E(source::PROVIDER, function, "key:" + item + ", value:" + text);
}

class Texts : public Provider {
  protected:
    std::string Title(const char* item) {
        ClearCalls();
        HostText text;
        EXPECT_EQ(page->get_display_name(item, text.Out()), 0);
        return text.Text();
    }
    std::string Help(const char* item) {
        ClearCalls();
        HostText text;
        EXPECT_EQ(page->get_help_text(item, text.Out()), 0);
        return text.Text();
    }
};

// The translations that were asked for, in no order.
Lines Translated() {
    Lines lines = CallsOf("dgettext");
    std::sort(lines.begin(), lines.end());
    return lines;
}

}  // namespace

// --- Titles ---

TEST_F(Texts, TheTitlesOfTheRegistryAreTranslated) {
    const std::pair<const char*, std::string> titles[] = {
        {key::VOICE, "TV_SID_SETTINGS_VOICE"},
        {key::ASSISTANT, "TV_SID_SETTINGS_VOICE_ASSITANT"},
        {key::WAKE_UP, "TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP"},
        {key::ALWAYS, "COM_SID_ALWAYS_KR_ORVIK"},
        {key::SCREEN_ON, "TV_SID_ORVIK_CDJAN_ONLY_WHEN_SCREEN_ON"},
        {key::HINT, "TV_SID_SETTINGS_VOICE_HINT"},
        {key::ORVIK_CN, "TV_SID_SETTINGS_ORVIK_VOICE_SETTINGS"},
        {key::TENCENT, "TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS"},
        {key::ONBOARDING, "TV_SID_SETTINGS_VOICE"}};
    for (const auto& [item, id] : titles) {
        EXPECT_EQ(Title(item), "tr(" + id + ")");
        EXPECT_CALLS(Lines{Tr(id), Text("get_display_name", item, "tr(" + id + ")")});
    }
}

TEST_F(Texts, TheTitleOfOrviksSettingsHoldsItsTranslatedName) {
    tv().translations["TV_SID_MIX_SETTINGS"] = "<<A>> settings";
    tv().translations["DREAM_ORV_TMBODY_ORVIK"] = "Orvik!";
    EXPECT_EQ(Title(key::ORVIK), "Orvik! settings");
    EXPECT_EQ(Translated(), (Lines{Tr("DREAM_ORV_TMBODY_ORVIK"), Tr("TV_SID_MIX_SETTINGS")}));
    EXPECT_LOG(Lines{Text("get_display_name", key::ORVIK, "Orvik! settings")});
}

TEST_F(Texts, TheTitleOfAnAssistantsSettingsHoldsItsListedName) {
    Offer(WholePolicy());
    tv().translations["TV_SID_MIX_SETTINGS"] = "<<A>> settings";
    const std::pair<const char*, const char*> titles[] = {
        {key::ALEXA, "Alexa settings"},
        {key::GOOGLE, "Google Assistant settings"},
        {key::SALUTE, "Salute settings"}};
    for (const auto& [item, title] : titles) {
        EXPECT_EQ(Title(item), title);
        EXPECT_CALLS(Lines{Tr("TV_SID_MIX_SETTINGS"), Text("get_display_name", item, title)});
    }
}

TEST_F(Texts, TheTitleOfAnAssistantThatIsNotListedHoldsNoName) {
    tv().translations["TV_SID_MIX_SETTINGS"] = "<<A>> settings";
    for (const char* item : {key::ALEXA, key::GOOGLE, key::SALUTE}) {
        EXPECT_EQ(Title(item), " settings");
        EXPECT_LOG(Lines{E(source::LIST, "GetVANameByType", "[FATAL]Not matched!"),
                         Text("get_display_name", item, " settings")});
    }
}

TEST_F(Texts, AnUnknownItemHasANullTitleAndARecord) {
    for (const char* item : {"menu/other", "", "menu/system/general-voice-voice-wake-up2"}) {
        char other[] = "other";
        char* text = other;
        EXPECT_EQ(Ask([&] { return page->get_display_name(item, &text); }), 0);
        EXPECT_EQ(text, nullptr);
        EXPECT_CALLS(Lines{E(source::PROVIDER, "get_display_name",
                             std::string("[FATAL][") + item + "]display name is NULL")});
    }
}

// --- Help ---

TEST_F(Texts, TheHelpOfTheRegistryIsTranslated) {
    const std::string wakeUp = "TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE";
    const std::pair<const char*, std::string> texts[] = {
        {key::VOICE, "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT"},
        {key::WAKE_UP, wakeUp},
        {key::ALWAYS, wakeUp},
        {key::SCREEN_ON, wakeUp},
        {key::HINT, "TV_SID_SETTINGS_CONFIGURE_VOICE_HINTS_BASEDON"},
        {key::ORVIK_CN, "TV_SID_SETTINGS_CONFIGURE_ORVIK_VOICE_SETTINGS"},
        {key::TENCENT, "TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS"},
        {key::ONBOARDING, "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT"}};
    for (const auto& [item, id] : texts) {
        EXPECT_EQ(Help(item), "tr(" + id + ")");
        EXPECT_CALLS(Lines{Tr(id), Text("get_help_text", item, "tr(" + id + ")")});
    }
}

TEST_F(Texts, TheHelpOfOrviksSettingsIsItsOwn) {
    EXPECT_EQ(Help(key::ORVIK), "tr(TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS)");
    EXPECT_CALLS(Lines{
        Tr("TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS"),
        Text("get_help_text", key::ORVIK, "tr(TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS)")});
}

TEST_F(Texts, TheHelpOfAnAssistantsSettingsHoldsItsListedName) {
    Offer(WholePolicy());
    tv().translations["TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS"] = "Configure <<A>>.";
    const std::pair<const char*, const char*> texts[] = {{key::ALEXA, "Configure Alexa."},
                                                         {key::GOOGLE,
                                                          "Configure Google "
                                                          "Assistant."},
                                                         {key::SALUTE, "Configure Salute."}};
    for (const auto& [item, help] : texts) {
        EXPECT_EQ(Help(item), help);
        EXPECT_CALLS(
            Lines{Tr("TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS"), Text("get_help_text", item, help)});
    }
    Offer("[]");
    EXPECT_EQ(Help(key::ALEXA), "Configure .");
}

TEST_F(Texts, TheHelpOfTheAssistantOutsideChinaIsOneText) {
    Feature(feature::CHINA, false);
    EXPECT_EQ(Help(key::ASSISTANT), "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)");
    EXPECT_EQ(CallsOf("system_info"), Lines{FeatureBool(feature::CHINA)});
    EXPECT_EQ(Translated(), Lines{Tr("TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT")});
    EXPECT_LOG(Lines{
        Text("get_help_text", key::ASSISTANT, "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)")});
}

TEST_F(Texts, TheHelpOfTheAssistantInChinaIsTwoTextsWithOneNewlineBetween) {
    Feature(feature::CHINA, true);
    const std::string help =
        "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)\n"
        "tr(TV_SID_CHIVOICE_CCAPR_USE_VOICE_ASSISTANT_SEARCH_MSG)";
    EXPECT_EQ(Help(key::ASSISTANT), help);
    EXPECT_EQ(CallsOf("system_info"), Lines{FeatureBool(feature::CHINA)});
    EXPECT_LOG(Lines{Text("get_help_text", key::ASSISTANT, help)});
}

TEST_F(Texts, AnUnknownItemHasANullHelpAndARecord) {
    for (const char* item : {"menu/other", ""}) {
        char other[] = "other";
        char* text = other;
        EXPECT_EQ(Ask([&] { return page->get_help_text(item, &text); }), 0);
        EXPECT_EQ(text, nullptr);
        EXPECT_CALLS(Lines{E(source::PROVIDER, "get_help_text",
                             std::string("[FATAL][") + item + "]help text is NULL")});
    }
}

TEST_F(Texts, ANullItemHasNoTexts) {
    EXPECT_EQ(Title(nullptr), "(null)");
    EXPECT_LOG(
        Lines{E(source::PROVIDER, "get_display_name", "[FATAL][(null)]display name is NULL")});
    EXPECT_EQ(Help(nullptr), "(null)");
    EXPECT_LOG(Lines{E(source::PROVIDER, "get_help_text", "[FATAL][(null)]help text is NULL")});
}

TEST_F(Texts, ATextIsACopyOfTheHostsOwn) {
    HostText first;
    HostText second;
    page->get_display_name(key::VOICE, first.Out());
    page->get_display_name(key::VOICE, second.Out());
    EXPECT_NE(*first.Out(), *second.Out());
}

TEST_F(Texts, AMissingTranslationIsTheIdItself) {
    tv().translations["TV_SID_SETTINGS_VOICE"] = "TV_SID_SETTINGS_VOICE";
    EXPECT_EQ(Title(key::VOICE), "TV_SID_SETTINGS_VOICE");
}

// --- The confirmation box ---

namespace {

class ConfirmationBox : public Provider {
  protected:
    void Fetch(const char* item) {
        ClearCalls();
        EXPECT_EQ(page->get_messagebox_info(item, text, first, second, &buttons), 0);
    }
    char text[256] = "text before";
    char first[256] = "first before";
    char second[256] = "second before";
    int buttons = 7;
};

}  // namespace

TEST_F(ConfirmationBox, ChangingTheAssistantIsConfirmed) {
    Fetch(key::ASSISTANT);
    EXPECT_STREQ(text, "tr(TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT)");
    EXPECT_STREQ(first, "tr(COM_SID_OK)");
    EXPECT_STREQ(second, "tr(COM_SID_CANCEL)");
    EXPECT_EQ(buttons, 2);
    EXPECT_CALLS(Lines{
        Tr("TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT"), Tr("COM_SID_OK"), Tr("COM_SID_CANCEL"),
        E(source::PROVIDER, "get_messagebox_info",
          std::string("key:") + key::ASSISTANT +
              ", pDisplayText:tr(TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT), "
              "pFirstButtonText:tr(COM_SID_OK), pSecondButtonText:tr(COM_SID_CANCEL), "
              "*nButtonCount:2")});
}

TEST_F(ConfirmationBox, AnyOtherChangeIsNot) {
    for (const char* item : {key::WAKE_UP, key::VOICE, "menu/other"}) {
        Fetch(item);
        EXPECT_STREQ(text, "text before");
        EXPECT_STREQ(first, "first before");
        EXPECT_STREQ(second, "second before");
        EXPECT_EQ(buttons, 7);
        EXPECT_CALLS(Lines{E(source::PROVIDER, "get_messagebox_info",
                             std::string("key:") + item +
                                 ", pDisplayText:text before, pFirstButtonText:first before, "
                                 "pSecondButtonText:second before, *nButtonCount:7")});
    }
}

TEST_F(ConfirmationBox, ATextIsCopiedWithItsEndAndNotAByteMore) {
    tv().translations["COM_SID_OK"] = "OK";
    std::fill(std::begin(first), std::end(first), '#');
    Fetch(key::ASSISTANT);
    EXPECT_STREQ(first, "OK");
    EXPECT_EQ(first[3], '#');
}

TEST_F(ConfirmationBox, ALongTranslationIsCopiedWhole) {
    const std::string longText(200, 'x');
    tv().translations["TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT"] = longText;
    EXPECT_EQ(page->get_messagebox_title(key::ASSISTANT, text), 0);
    EXPECT_EQ(text, longText);
}

TEST_F(ConfirmationBox, ItsTitleIsWrittenForTheAssistantAlone) {
    EXPECT_EQ(Ask([&] { return page->get_messagebox_title(key::WAKE_UP, text); }), 0);
    EXPECT_STREQ(text, "text before");
    EXPECT_CALLS(Lines{E(source::PROVIDER, "get_messagebox_title",
                         std::string("key:") + key::WAKE_UP + ", title:text before")});
    EXPECT_EQ(Ask([&] { return page->get_messagebox_title(key::ASSISTANT, text); }), 0);
    EXPECT_STREQ(text, "tr(TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT)");
    EXPECT_CALLS(Lines{Tr("TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT"),
                       E(source::PROVIDER, "get_messagebox_title",
                         std::string("key:") + key::ASSISTANT +
                             ", title:tr(TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT)")});
}

TEST_F(ConfirmationBox, ABufferThatIsNotGivenIsNotWritten) {
    for (const char* item : {key::ASSISTANT, key::VOICE, static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(page->get_messagebox_info(item, nullptr, first, second, &buttons), 0);
        EXPECT_EQ(page->get_messagebox_info(item, text, nullptr, second, &buttons), 0);
        EXPECT_EQ(page->get_messagebox_info(item, text, first, nullptr, &buttons), 0);
        EXPECT_EQ(page->get_messagebox_info(item, text, first, second, nullptr), 0);
        EXPECT_EQ(page->get_messagebox_info(item, nullptr, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(page->get_messagebox_title(item, nullptr), 0);
    }
}

// --- Why an item is dimmed ---

namespace {

constexpr const char* TURN_ON = "tr(TV_SID_RNS_CAOCT_MIC_OFF_TURN_ON_TRY_AGAIN)";
constexpr const char* CHECK_POWER = "tr(TV_SID_SBAR_PASS_CBNOV_UNABLE_CHANGE_SETTINGS_CHECK_POWER)";
constexpr const char* PASSTHRU_MIC_OFF = "tr(TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY)";

// A TV with a built-in microphone that is on; Orvik current and set up; a far-field TV with a
// pass-through device connected, enabled, its microphone on.
class DisableText : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Feature(feature::MIC, 1);
        Feature(feature::FAR_FIELD, 1);
        Set(setting::MIC, 1);
        Set(setting::FIRST_TIME, false);
        Set(setting::CONNECTED, true);
        Set(setting::PASSTHRU, true);
        Set(setting::PASSTHRU_MIC, true);
        Offer(WholePolicy(), "app.orvik");
    }
    // The text, or "untouched".
    std::string Reason(const char* item) {
        ClearCalls();
        char mark[] = "mark";
        char* out = mark;
        flag = false;
        EXPECT_EQ(page->get_disable_text(item, &out, &flag), 0);
        if (out == mark) {
            return "untouched";
        }
        const std::string text = out != nullptr ? out : "(null)";
        std::free(out);
        return text;
    }
    bool flag = false;
};

std::string Asked(const char* item) {
    return E(source::PROVIDER, "get_disable_text", std::string("key : ") + item);
}

std::string Why(const std::string& message) {
    return E(source::PROVIDER, "get_disable_text", message);
}

const Lines MICROPHONE = {FeatureInt(feature::MIC), GetInt(setting::MIC)};
const std::string MIC_ON = E(source::UTIL, "isBuiltInMicActivated", 467, "builtInMic activated");
const std::string MIC_OFF =
    E(source::UTIL, "isBuiltInMicActivated", 472, "builtInMic in-activated");
const Lines ORVIK_SET_UP = {Current(), GetBool(setting::FIRST_TIME)};

}  // namespace

TEST_F(DisableText, RootAndOnboardingTellThatTheMicrophoneIsOff) {
    Set(setting::MIC, 0);
    for (const char* item : {key::VOICE, key::ONBOARDING}) {
        EXPECT_EQ(Reason(item), TURN_ON);
        EXPECT_TRUE(flag);
        EXPECT_CALLS(Lines{Asked(item)} + MICROPHONE +
                     Lines{MIC_OFF, Tr("TV_SID_RNS_CAOCT_MIC_OFF_TURN_ON_TRY_AGAIN")} +
                     ORVIK_SET_UP);
    }
}

TEST_F(DisableText, RootTellsSoThoughTheAssistantIsNotSetUp) {
    Set(setting::MIC, 0);
    Set(setting::FIRST_TIME, true);
    EXPECT_EQ(Reason(key::VOICE), TURN_ON);
    EXPECT_TRUE(flag);
}

TEST_F(DisableText, RootHasNoReasonWithTheMicrophoneOn) {
    EXPECT_EQ(Reason(key::VOICE), "untouched");
    EXPECT_FALSE(flag);
    EXPECT_CALLS(Lines{Asked(key::VOICE)} + MICROPHONE + Lines{MIC_ON} + ORVIK_SET_UP);
}

TEST_F(DisableText, RootHasNoReasonWithoutABuiltInMicrophone) {
    Feature(feature::MIC, 0);
    Set(setting::MIC, 0);
    EXPECT_EQ(Reason(key::VOICE), "untouched");
    EXPECT_FALSE(flag);
    EXPECT_CALLS(Lines{Asked(key::VOICE), FeatureInt(feature::MIC)} + ORVIK_SET_UP);
}

TEST_F(DisableText, AnyOtherItemHasNoReasonAndDoesNotAskForTheMicrophone) {
    Set(setting::MIC, 0);
    for (const char* item : {key::ASSISTANT, key::ALWAYS, key::HINT, "menu/other"}) {
        EXPECT_EQ(Reason(item), "untouched") << item;
        EXPECT_FALSE(flag) << item;
        EXPECT_CALLS(Lines{Asked(item)} + ORVIK_SET_UP);
    }
}

TEST_F(DisableText, WakeUpHasNoReasonUntilTheAssistantIsSetUp) {
    Set(setting::FIRST_TIME, true);
    EXPECT_EQ(Reason(key::WAKE_UP), "untouched");
    EXPECT_FALSE(flag);
    EXPECT_CALLS(Lines{Asked(key::WAKE_UP)} + ORVIK_SET_UP);
}

TEST_F(DisableText, WakeUpOfAnotherAssistantSetsTheFlagWithoutAText) {
    Set(setting::CURRENT, "app.alexa");
    tv().files.insert(file::ALEXA);
    EXPECT_EQ(Reason(key::WAKE_UP), "untouched");
    EXPECT_TRUE(flag);
    EXPECT_CALLS(
        Lines{Asked(key::WAKE_UP), Current(), std::string("access ") + file::ALEXA + " 0"} +
        Walk(2));
}

TEST_F(DisableText, OnAPushToTalkTvADisconnectedDeviceIsTold) {
    Feature(feature::FAR_FIELD, 0);
    Set(setting::CONNECTED, false);
    EXPECT_EQ(Reason(key::WAKE_UP), CHECK_POWER);
    EXPECT_TRUE(flag);
    EXPECT_CALLS(Lines{Asked(key::WAKE_UP)} + ORVIK_SET_UP +
                 Lines{Current(), FeatureInt(feature::FAR_FIELD), GetBool(setting::CONNECTED),
                       Why("PTT model, passthru is not connected."),
                       Tr("TV_SID_SBAR_PASS_CBNOV_UNABLE_CHANGE_SETTINGS_CHECK_POWER")});
}

TEST_F(DisableText, OnAPushToTalkTvADisabledPassThroughIsToldWithOrviksName) {
    Feature(feature::FAR_FIELD, 0);
    Set(setting::PASSTHRU, false);
    tv().translations["TV_SID_SBAR_CBDEC_UNABLE_CAHNGE_SETTINGS_NOW"] = "Not now.";
    tv().translations["TV_SID_SBAR_MIX_CBDEC_CHECK_SETTING_TRY_AGAIN"] = "Check <<A>>.";
    tv().translations["DREAM_ORV_TMBODY_ORVIK"] = "Orvik!";
    EXPECT_EQ(Reason(key::WAKE_UP), "Not now. Check Orvik!.");
    EXPECT_TRUE(flag);
    EXPECT_LOG(Lines{Asked(key::WAKE_UP), Why("PTT model, passthru is not enabled.")});
    EXPECT_EQ(CallsOf("vconf"), (Lines{Current(), GetBool(setting::FIRST_TIME), Current(),
                                       GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU)}));
    EXPECT_EQ(Translated(), (Lines{Tr("DREAM_ORV_TMBODY_ORVIK"),
                                   Tr("TV_SID_SBAR_CBDEC_UNABLE_CAHNGE_SETTINGS_NOW"),
                                   Tr("TV_SID_SBAR_MIX_CBDEC_CHECK_SETTING_TRY_AGAIN")}));
}

TEST_F(DisableText, OnAPushToTalkTvAMicrophoneThatIsOffIsTold) {
    Feature(feature::FAR_FIELD, 0);
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_EQ(Reason(key::WAKE_UP), PASSTHRU_MIC_OFF);
    EXPECT_TRUE(flag);
    EXPECT_CALLS(Lines{Asked(key::WAKE_UP)} + ORVIK_SET_UP +
                 Lines{Current(), FeatureInt(feature::FAR_FIELD), GetBool(setting::CONNECTED),
                       GetBool(setting::PASSTHRU), GetBool(setting::PASSTHRU_MIC),
                       Why("PTT model, passthru microphone off."),
                       Tr("TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY")});
}

TEST_F(DisableText, OnAPushToTalkTvWithEverythingOnTheFlagIsSetWithoutAText) {
    Feature(feature::FAR_FIELD, 0);
    EXPECT_EQ(Reason(key::WAKE_UP), "untouched");
    EXPECT_TRUE(flag);
    EXPECT_CALLS(Lines{Asked(key::WAKE_UP)} + ORVIK_SET_UP +
                 Lines{Current(), FeatureInt(feature::FAR_FIELD), GetBool(setting::CONNECTED),
                       GetBool(setting::PASSTHRU), GetBool(setting::PASSTHRU_MIC)});
}

TEST_F(DisableText, OnAFarFieldTvAMicrophoneThatIsOffIsTold) {
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_EQ(Reason(key::WAKE_UP), PASSTHRU_MIC_OFF);
    EXPECT_TRUE(flag);
    EXPECT_LOG(
        Lines{Asked(key::WAKE_UP),
              Why("FF supported model, passthru connected and enabled, but microphone off.")});
}

// Enabled, connected, microphone: each is asked only when those before it hold.
TEST_F(DisableText, OnAFarFieldTvPassThroughIsAskedWhetherItIsEnabledThenWhetherItIsConnected) {
    const Lines before = Lines{Asked(key::WAKE_UP)} + ORVIK_SET_UP +
                         Lines{Current(), FeatureInt(feature::FAR_FIELD)};
    const Lines asked = {GetBool(setting::PASSTHRU), GetBool(setting::CONNECTED),
                         GetBool(setting::PASSTHRU_MIC)};
    const Lines told = {
        Why("FF supported model, passthru connected and enabled, but microphone off."),
        Tr("TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY")};
    for (const bool enabled : {false, true}) {
        for (const bool connected : {false, true}) {
            for (const bool microphone : {false, true}) {
                Set(setting::PASSTHRU, enabled);
                Set(setting::CONNECTED, connected);
                Set(setting::PASSTHRU_MIC, microphone);
                const bool isTold = enabled && connected && !microphone;
                EXPECT_EQ(Reason(key::WAKE_UP), isTold ? PASSTHRU_MIC_OFF : "untouched");
                EXPECT_TRUE(flag);
                const int reads = !enabled ? 1 : !connected ? 2 : 3;
                EXPECT_CALLS(before + Lines(asked.begin(), asked.begin() + reads) +
                             (isTold ? told : Lines()));
            }
        }
    }
}

TEST_F(DisableText, OnAFarFieldTvWithEverythingOnTheFlagIsSetWithoutAText) {
    EXPECT_EQ(Reason(key::WAKE_UP), "untouched");
    EXPECT_TRUE(flag);
}

TEST_F(DisableText, NullItemsAndNullOutPointersDoNotCrash) {
    EXPECT_EQ(Reason(nullptr), "untouched");
    EXPECT_FALSE(flag);
    Set(setting::MIC, 0);
    Feature(feature::FAR_FIELD, 0);
    for (const char* item : {key::VOICE, key::WAKE_UP}) {
        for (const bool connected : {false, true}) {
            Set(setting::CONNECTED, connected);
            Set(setting::PASSTHRU, false);
            HostText text;
            flag = false;
            EXPECT_EQ(page->get_disable_text(item, nullptr, &flag), 0);
            EXPECT_TRUE(flag);
            EXPECT_EQ(page->get_disable_text(item, text.Out(), nullptr), 0);
            EXPECT_FALSE(text.IsNull());
            EXPECT_EQ(page->get_disable_text(item, nullptr, nullptr), 0);
        }
    }
}

// --- The popup of a dimmed item ---

namespace {

class DisablePopup : public Provider {
  protected:
    void Fetch(const char* item) {
        ClearCalls();
        for (char* buffer : {message, title, first, second}) {
            std::fill(buffer, buffer + 256, '#');
        }
        std::fill(std::begin(action), std::end(action), '#');
        buttons = 7;
        EXPECT_EQ(
            page->get_disablepopup_info(item, message, title, first, second, &buttons, action), 0);
    }
    static std::string Of(const char* buffer) { return buffer[0] == '#' ? "untouched" : buffer; }
    std::string Popup() {
        return Of(message) + " | " + Of(title) + " | " + Of(first) + " | " + Of(second) + " | " +
               std::to_string(buttons) + " | " + Of(action);
    }
    char message[256];
    char title[256];
    char first[256];
    char second[256];
    char action[8];
    int buttons = 7;
};

const std::string NOTHING = "untouched | untouched | untouched | untouched | 7 | untouched";
const std::string SETUP =
    "tr(TV_SID_ACCOUNT_CDMAR_USE_SMART_FEATURES_CHOOSING_SETTINGS) | "
    "tr(COM_SID_OOBE_CDMAR_SETUP_SMART_FEATURES) | tr(COM_SID_OOBE_CDMAR_START_SETUP) | untouched "
    "| 1 | 9999";
const std::string SIGN_IN =
    "tr(COM_SID_SIGN_IN_VANTELO_ACCOUNT_SIGN_IN) | tr(COM_TV_SID_SIGN_IN) | "
    "tr(COM_TV_SID_SIGN_IN) | tr(COM_SID_CANCEL) | 2 | 9999";
const std::string ONBOARD =
    "tr(TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW) | "
    "tr(TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT) | tr(COM_SID_OK) | tr(COM_SID_CANCEL) | 2 | 9999";

constexpr const char* ORVIK_TERMS = "menu/system/general-voice-voice-settings-orvik-terms";

std::string PopupAsked(const std::string& item) {
    return E(source::PROVIDER, "get_disablepopup_info", "key : " + item);
}

const Lines OTHERS = {key::ALEXA,    key::GOOGLE, key::TENCENT, std::string(key::TENCENT) + "-more",
                      key::ORVIK_CN, key::SALUTE};

}  // namespace

TEST_F(DisablePopup, WithoutTheTermsEveryItemOffersTheSetup) {
    for (const std::string& item : OTHERS + Lines{key::ORVIK, ORVIK_TERMS}) {
        Fetch(item.c_str());
        EXPECT_EQ(Popup(), SETUP) << item;
        EXPECT_CALLS(Lines{PopupAsked(item), "GetDisclaimerItemAgreement tnc",
                           Tr("TV_SID_ACCOUNT_CDMAR_USE_SMART_FEATURES_CHOOSING_SETTINGS"),
                           Tr("COM_SID_OOBE_CDMAR_SETUP_SMART_FEATURES"),
                           Tr("COM_SID_OOBE_CDMAR_START_SETUP")});
    }
}

TEST_F(DisablePopup, OrvikSignedOutOutsideChinaAndActivatedOffersTheSignIn) {
    AgreeToTerms();
    Feature(feature::CHINA, false);
    for (const char* item : {key::ORVIK, ORVIK_TERMS}) {
        Fetch(item);
        EXPECT_EQ(Popup(), SIGN_IN) << item;
        EXPECT_CALLS(Lines{PopupAsked(item)} + AskTerms() +
                     Lines{"sso_get_login_state", FeatureBool(feature::CHINA),
                           GetBool(setting::FIRST_TIME),
                           Tr("COM_SID_SIGN_IN_VANTELO_ACCOUNT_SIGN_IN"), Tr("COM_TV_SID_SIGN_IN"),
                           Tr("COM_TV_SID_SIGN_IN"), Tr("COM_SID_CANCEL")});
    }
}

TEST_F(DisablePopup, OrvikOtherwiseOffersTheOnboarding) {
    AgreeToTerms();
    const Lines onboarding = {Tr("TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW"),
                              Tr("TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT"), Tr("COM_SID_OK"),
                              Tr("COM_SID_CANCEL")};
    SignIn();
    Fetch(key::ORVIK);
    EXPECT_EQ(Popup(), ONBOARD);
    EXPECT_CALLS(Lines{PopupAsked(key::ORVIK)} + AskTerms() + Lines{"sso_get_login_state"} +
                 onboarding);
    tv().loginState = 0;
    Feature(feature::CHINA, true);
    Fetch(key::ORVIK);
    EXPECT_EQ(Popup(), ONBOARD);
    EXPECT_CALLS(Lines{PopupAsked(key::ORVIK)} + AskTerms() +
                 Lines{"sso_get_login_state", FeatureBool(feature::CHINA)} + onboarding);
    Feature(feature::CHINA, false);
    Set(setting::FIRST_TIME, true);
    Fetch(key::ORVIK);
    EXPECT_EQ(Popup(), ONBOARD);
    EXPECT_CALLS(
        Lines{PopupAsked(key::ORVIK)} + AskTerms() +
        Lines{"sso_get_login_state", FeatureBool(feature::CHINA), GetBool(setting::FIRST_TIME)} +
        onboarding);
}

TEST_F(DisablePopup, AnyOtherAssistantOffersTheOnboardingWithoutAskingForTheSignIn) {
    AgreeToTerms();
    for (const std::string& item : OTHERS) {
        Fetch(item.c_str());
        EXPECT_EQ(Popup(), ONBOARD) << item;
        EXPECT_CALLS(Lines{PopupAsked(item)} + AskTerms() +
                     Lines{Tr("TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW"),
                           Tr("TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT"), Tr("COM_SID_OK"),
                           Tr("COM_SID_CANCEL")});
    }
}

TEST_F(DisablePopup, TencentsKeyMatchesByItsBeginningAndNoOtherDoes) {
    AgreeToTerms();
    Fetch("menu/system/general-voice-voice-settings-tencent/terms");
    EXPECT_EQ(Popup(), ONBOARD);
    for (const char* item : {"menu/system/general-voice-voice-settings-alexa-x",
                             "menu/system/general-voice-voice-"
                             "settings-orvik-cn2",
                             "menu/system/general-voice-voice-settings-tencen",
                             "menu/system/general-voice-voice-settings-orvik-term",
                             "menu/system/general-voice-voice-settings-salute "}) {
        Fetch(item);
        EXPECT_EQ(Popup(), NOTHING) << item;
    }
}

TEST_F(DisablePopup, AnItemWithoutAPopupWritesNothing) {
    for (const char* item : {key::ASSISTANT, key::WAKE_UP, key::VOICE, key::HINT, "menu/other"}) {
        Fetch(item);
        EXPECT_EQ(Popup(), NOTHING) << item;
        EXPECT_CALLS(Lines{PopupAsked(item)});
    }
    Fetch(nullptr);
    EXPECT_EQ(Popup(), NOTHING);
    EXPECT_CALLS(Lines{PopupAsked("(null)")});
}

TEST_F(DisablePopup, TheActionsValueIsFiveBytes) {
    Fetch(key::ALEXA);
    EXPECT_EQ(std::string(action, 6), std::string("9999\0#", 6));
}

TEST_F(DisablePopup, ABufferThatIsNotGivenIsNotWritten) {
    for (const bool agreed : {false, true}) {
        if (agreed) {
            AgreeToTerms();
        }
        for (const char* item : {key::ORVIK, key::ALEXA}) {
            EXPECT_EQ(page->get_disablepopup_info(item, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                  nullptr),
                      0);
            EXPECT_EQ(
                page->get_disablepopup_info(item, nullptr, title, nullptr, second, nullptr, action),
                0);
        }
    }
}
