// When each item can be selected: every path of every rule, what it reads and what it does not.
#include "page.h"

using namespace recording;

namespace {

// A TV with a built-in microphone that is on, outside China, every read succeeds; Orvik current,
// signed in, activated; a pass-through device connected, enabled, its microphone on.
class EnableRules : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Feature(feature::MIC, 1);
        Feature(feature::FAR_FIELD, 1);
        Feature(feature::CHINA, false);
        Set(setting::MIC, 1);
        Set(setting::FIRST_TIME, false);
        Set(setting::CONNECTED, true);
        Set(setting::PASSTHRU, true);
        Set(setting::PASSTHRU_MIC, true);
        SignIn();
        Offer(WholePolicy(), "app.orvik");
    }
    static bool Enabled(bool (*rule)(const char*, int)) {
        ClearCalls();
        return rule(nullptr, 0);
    }
};

std::string EnableRule(const std::string& function, const std::string& message) {
    return E(source::ENABLE, function, message);
}

constexpr const char* WAKE_UP_RULE = "check_general_voice_voice_wake_up_enable";
const Lines MIC_ON = {GetInt(setting::MIC),
                      E(source::UTIL, "isBuiltInMicActivated", 467, "builtInMic activated")};
const Lines MIC_OFF = {GetInt(setting::MIC),
                       E(source::UTIL, "isBuiltInMicActivated", 472, "builtInMic in-activated")};
// Orvik outside China, signed in.
const Lines SIGNED_IN = {Current(), FeatureBool(feature::CHINA), "sso_get_login_state",
                         FeatureInt(feature::FAR_FIELD)};
const std::string PTT = EnableRule(WAKE_UP_RULE, "PTT model.");

struct RootRule {
    bool (*rule)(const char*, int);
    const char* name;
};
constexpr RootRule ROOT_RULES[] = {
    {check_general_voice_enable, "check_general_voice_enable"},
    {check_general_voice_onboarding_enable, "check_general_voice_onboarding_enable"}};

}  // namespace

// --- Root and onboarding ---

TEST_F(EnableRules, WithoutABuiltInMicrophoneRootAndOnboardingAreEnabled) {
    Feature(feature::MIC, 0);
    for (const RootRule& root : ROOT_RULES) {
        EXPECT_TRUE(Enabled(root.rule));
        EXPECT_CALLS(Lines{FeatureInt(feature::MIC)});
    }
}

TEST_F(EnableRules, WithTheMicrophoneOnRootAndOnboardingAreEnabled) {
    for (const RootRule& root : ROOT_RULES) {
        EXPECT_TRUE(Enabled(root.rule));
        EXPECT_CALLS(Lines{FeatureInt(feature::MIC)} + MIC_ON);
    }
}

TEST_F(EnableRules, WithTheMicrophoneOffRootAndOnboardingAreDimmed) {
    Set(setting::MIC, 0);
    for (const RootRule& root : ROOT_RULES) {
        EXPECT_FALSE(Enabled(root.rule));
        EXPECT_CALLS(
            Lines{FeatureInt(feature::MIC)} + MIC_OFF +
            Lines{EnableRule(root.name, "Built In MIC status OFF(MIC support model) - dim")});
    }
}

TEST_F(EnableRules, AMicrophoneThatCannotBeReadDimsRootAndOnboarding) {
    Remove(setting::MIC);
    for (const RootRule& root : ROOT_RULES) {
        EXPECT_FALSE(Enabled(root.rule));
    }
}

// --- The assistant ---

TEST_F(EnableRules, TheSharedRulesLogTheKeyAndAnswer) {
    EXPECT_TRUE(Ask([] { return check_return_true("any key", 7); }));
    EXPECT_CALLS(Lines{EnableRule("check_return_true", "key:any key")});
    EXPECT_FALSE(Ask([] { return check_return_false("any key", 7); }));
    EXPECT_CALLS(Lines{EnableRule("check_return_false", "key:any key")});
}

TEST_F(EnableRules, TheSharedRulesTakeANullKey) {
    EXPECT_TRUE(check_return_true(nullptr, 0));
    EXPECT_FALSE(check_return_false(nullptr, 0));
}

// --- Wake-up of Orvik ---

TEST_F(EnableRules, WakeUpOfOrvikIsDimmedOutsideChinaWhenSignedOut) {
    tv().loginState = 0;
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(Lines{Current(), FeatureBool(feature::CHINA), "sso_get_login_state",
                       EnableRule(WAKE_UP_RULE, "SSO not login")});
    EXPECT_FALSE(check_general_voice_voice_always_wake_up_enable(nullptr, 0));
    EXPECT_FALSE(check_general_voice_voice_screen_on_wake_up_enable(nullptr, 0));
}

TEST_F(EnableRules, WakeUpOfOrvikInChinaDoesNotAskForTheSignIn) {
    tv().loginState = 0;
    Feature(feature::CHINA, true);
    EXPECT_TRUE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(Lines{Current(), FeatureBool(feature::CHINA), FeatureInt(feature::FAR_FIELD),
                       GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                       GetBool(setting::PASSTHRU_MIC), GetBool(setting::FIRST_TIME)});
}

TEST_F(EnableRules, OnAFarFieldTvAPassThroughMicrophoneThatIsOffDimsWakeUp) {
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                                   GetBool(setting::PASSTHRU_MIC),
                                   EnableRule(WAKE_UP_RULE,
                                              "Passthru connected / enable and passthru MIC off")});
}

TEST_F(EnableRules, OnAFarFieldTvADisconnectedDeviceDoesNotMatter) {
    Set(setting::CONNECTED, false);
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_TRUE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{GetBool(setting::CONNECTED), GetBool(setting::FIRST_TIME)});
}

TEST_F(EnableRules, OnAFarFieldTvADisabledPassThroughDoesNotMatter) {
    Set(setting::PASSTHRU, false);
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_TRUE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                                   GetBool(setting::FIRST_TIME)});
}

TEST_F(EnableRules, OnAFarFieldTvWakeUpIsDimmedUntilTheFirstActivation) {
    Set(setting::FIRST_TIME, true);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                                   GetBool(setting::PASSTHRU_MIC), GetBool(setting::FIRST_TIME)});
}

TEST_F(EnableRules, OnAPushToTalkTvAllThreePassThroughTestsMustHold) {
    Feature(feature::FAR_FIELD, 0);
    EXPECT_TRUE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{PTT, GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                                   GetBool(setting::PASSTHRU_MIC), GetBool(setting::FIRST_TIME)});
    Set(setting::PASSTHRU_MIC, false);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{PTT, GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU),
                                   GetBool(setting::PASSTHRU_MIC)});
    Set(setting::PASSTHRU, false);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{PTT, GetBool(setting::CONNECTED), GetBool(setting::PASSTHRU)});
    Set(setting::CONNECTED, false);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(SIGNED_IN + Lines{PTT, GetBool(setting::CONNECTED)});
}

TEST_F(EnableRules, OnAPushToTalkTvWakeUpIsDimmedUntilTheFirstActivation) {
    Feature(feature::FAR_FIELD, 0);
    Set(setting::FIRST_TIME, true);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
}

TEST_F(EnableRules, BothFormsOfTheWakeUpRuleAnswerAlike) {
    EXPECT_TRUE(check_general_voice_voice_wake_up_enable());
    tv().loginState = 0;
    EXPECT_FALSE(check_general_voice_voice_wake_up_enable());
}

// --- Wake-up of another assistant ---

TEST_F(EnableRules, WakeUpOfAnotherAssistantThatIsSetUpFollowsTheBuiltInMicrophone) {
    Set(setting::CURRENT, "app.alexa");
    tv().files.insert(file::ALEXA);
    const Lines setUp = Walk(2) + Walk(1) + Lines{std::string("access ") + file::ALEXA + " 0"};
    EXPECT_TRUE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(setUp + MIC_ON);
    Set(setting::MIC, 0);
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(setUp + MIC_OFF);
}

TEST_F(EnableRules, WakeUpOfAnotherAssistantThatIsNotSetUpIsDimmed) {
    Set(setting::CURRENT, "app.alexa");
    EXPECT_FALSE(Enabled(check_general_voice_voice_wake_up_enable));
    EXPECT_CALLS(Walk(2) + Walk(1) + Lines{std::string("access ") + file::ALEXA + " 0"});
}

// --- Always and screen-on ---

TEST_F(EnableRules, AlwaysAndScreenOnAreEnabledWhileWakeUpIsOn) {
    Set(setting::FARFIELD, R"({"app.orvik":"on"})");
    Set(setting::CONNECTED, false);
    const Lines wakeUp =
        SIGNED_IN + Lines{GetBool(setting::CONNECTED), GetBool(setting::FIRST_TIME), Current()} +
        Member(setting::FARFIELD, "app.orvik", "on");
    EXPECT_TRUE(Enabled(check_general_voice_voice_always_wake_up_enable));
    EXPECT_CALLS(wakeUp + Lines{EnableRule("check_general_voice_voice_always_wake_up_enable",
                                           "When 'Hands-free Wake-up' item is On, 'Always' item is "
                                           "activated.")});
    EXPECT_TRUE(Enabled(check_general_voice_voice_screen_on_wake_up_enable));
    EXPECT_CALLS(wakeUp + Lines{EnableRule("check_general_voice_voice_screen_on_wake_up_enable",
                                           "When 'Hands-free Wake-up' item is On, 'Only when the "
                                           "screen is on' item is activated.")});
}

TEST_F(EnableRules, AlwaysAndScreenOnAreDimmedWhileWakeUpIsNotExactlyOn) {
    Set(setting::CONNECTED, false);
    for (const char* entry : {"off", "On", "", "on "}) {
        Set(setting::FARFIELD, (std::string(R"({"app.orvik":")") + entry + "\"}").c_str());
        for (const auto rule : {check_general_voice_voice_always_wake_up_enable,
                                check_general_voice_voice_screen_on_wake_up_enable}) {
            EXPECT_FALSE(Enabled(rule)) << entry;
            EXPECT_CALLS(
                SIGNED_IN +
                Lines{GetBool(setting::CONNECTED), GetBool(setting::FIRST_TIME), Current()} +
                Member(setting::FARFIELD, "app.orvik", entry));
        }
    }
}

TEST_F(EnableRules, AlwaysAndScreenOnAreDimmedWithoutAWakeUpEntry) {
    for (const auto rule : {check_general_voice_voice_always_wake_up_enable,
                            check_general_voice_voice_screen_on_wake_up_enable}) {
        EXPECT_FALSE(Enabled(rule));
        Set(setting::FARFIELD, R"({"app.google":"on"})");
        EXPECT_FALSE(Enabled(rule));
    }
}

TEST_F(EnableRules, AlwaysAndScreenOnDoNotAskForTheEntryWhileWakeUpIsDimmed) {
    Set(setting::FARFIELD, R"({"app.orvik":"on"})");
    tv().loginState = 0;
    for (const auto rule : {check_general_voice_voice_always_wake_up_enable,
                            check_general_voice_voice_screen_on_wake_up_enable}) {
        EXPECT_FALSE(Enabled(rule));
        EXPECT_CALLS(Lines{Current(), FeatureBool(feature::CHINA), "sso_get_login_state",
                           EnableRule(WAKE_UP_RULE, "SSO not login")});
    }
}

// --- Hint and assistants' settings ---

TEST_F(EnableRules, TheHintIsEnabledWhenTheCurrentAssistantIsSetUp) {
    EXPECT_TRUE(Enabled(check_general_voice_voice_situational_hint_enable));
    EXPECT_CALLS(Lines{Current(), GetBool(setting::FIRST_TIME)});
    Set(setting::FIRST_TIME, true);
    EXPECT_FALSE(Enabled(check_general_voice_voice_situational_hint_enable));
    Set(setting::CURRENT, "app.google");
    EXPECT_FALSE(Enabled(check_general_voice_voice_situational_hint_enable));
    tv().files.insert(file::GOOGLE);
    EXPECT_TRUE(Enabled(check_general_voice_voice_situational_hint_enable));
}

TEST_F(EnableRules, OrvikSettingsAreDimmedInChina) {
    Feature(feature::CHINA, true);
    EXPECT_FALSE(Enabled(check_general_voice_voice_settings_orvik_enable));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA)});
}

TEST_F(EnableRules, OrvikSettingsAreDimmedWhenSignedOut) {
    tv().loginState = 2;
    EXPECT_FALSE(Enabled(check_general_voice_voice_settings_orvik_enable));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA), "sso_get_login_state"});
}

TEST_F(EnableRules, OrvikSettingsAreEnabledOnceActivated) {
    for (const bool pending : {false, true}) {
        Set(setting::FIRST_TIME, pending);
        EXPECT_EQ(Enabled(check_general_voice_voice_settings_orvik_enable), !pending);
        EXPECT_CALLS(Lines{FeatureBool(feature::CHINA), "sso_get_login_state",
                           GetBool(setting::FIRST_TIME)});
    }
}

TEST_F(EnableRules, TheChinaVariantIsDimmedOutsideChina) {
    EXPECT_FALSE(Enabled(check_general_voice_voice_settings_orvik_cn_enable));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA)});
}

TEST_F(EnableRules, TheChinaVariantIsEnabledOnceActivatedWithoutASignIn) {
    Feature(feature::CHINA, true);
    tv().loginState = 0;
    for (const bool pending : {false, true}) {
        Set(setting::FIRST_TIME, pending);
        EXPECT_EQ(Enabled(check_general_voice_voice_settings_orvik_cn_enable), !pending);
        EXPECT_CALLS(Lines{FeatureBool(feature::CHINA), GetBool(setting::FIRST_TIME)});
    }
}

TEST_F(EnableRules, AlexaGoogleAndSaluteSettingsAreEnabledByTheirMarkerFiles) {
    const std::pair<bool (*)(const char*, int), const char*> rules[] = {
        {check_general_voice_voice_settings_alexa_enable, file::ALEXA},
        {check_general_voice_voice_settings_google_enable, file::GOOGLE},
        {check_general_voice_voice_settings_salute_enable, file::SALUTE}};
    for (const auto& [rule, path] : rules) {
        tv().files.clear();
        EXPECT_FALSE(Enabled(rule));
        EXPECT_CALLS(Lines{std::string("access ") + path + " 0"});
        tv().files = {path};
        EXPECT_TRUE(Enabled(rule));
        EXPECT_CALLS(Lines{std::string("access ") + path + " 0"});
    }
}

TEST_F(EnableRules, TencentSettingsAreEnabledByTheirMember) {
    Set(setting::TENCENT, "{}");
    EXPECT_FALSE(Enabled(check_general_voice_voice_settings_tencent_enable));
    EXPECT_CALLS(Lines{GetStr(setting::TENCENT)});
    Set(setting::TENCENT, R"({"onboarding_completed":false})");
    EXPECT_TRUE(Enabled(check_general_voice_voice_settings_tencent_enable));
    EXPECT_CALLS(Lines{GetStr(setting::TENCENT), I(source::UTIL, "checkSetUpComplete_Tencent", 305,
                                                   "tencent onboarding done")});
}
