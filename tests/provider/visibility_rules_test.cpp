// When each item is shown: every path of every rule, what it reads and what it does not.
#include "page.h"

using namespace recording;

namespace {

// A far-field TV outside China with voice recognition, Orvik and pass-through; every read succeeds.
// Six assistants, the terms agreed, Google current.
class VisibilityRules : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Feature(feature::VOICE, true);
        Feature(feature::ORVIK, true);
        Feature(feature::FAR_FIELD, 1);
        Feature(feature::PASSTHRU, true);
        Feature(feature::CHINA, false);
        Set(setting::BLOCK, 0);
        Set(setting::LEGACY, false);
        Set(setting::FIRST_TIME, false);
        AgreeToTerms();
        Offer(WholePolicy(), "app.google");
    }
    static bool Shown(bool (*rule)(const char*, int)) {
        ClearCalls();
        return rule(nullptr, 0);
    }
};

std::string VisibleRule(const std::string& function, const std::string& message) {
    return E(source::VISIBLE, function, message);
}

std::string NotMatched(const char* function) {
    return E(source::LIST, function, "[FATAL]Not matched!");
}

const Lines MENU_VISIBLE = {FeatureBool(feature::VOICE), GetInt(setting::BLOCK),
                            FeatureBool(feature::ORVIK),
                            VisibleRule("_IsVoiceMenuVisible", "Supported")};
const Lines SEVERAL = AskTerms() + Lines{Current(), GetBool(setting::LEGACY)};
const std::string SELECTED =
    VisibleRule("_IsVoiceOnboardingVisible", "MVA selected, or SingleVA enabled subitems");
const std::string SINGLE_NOT_SET_UP =
    VisibleRule("_IsVoiceOnboardingVisible", "SingleVA all subitems disabled case");
const std::string GOOGLE_FILE = std::string("access ") + file::GOOGLE + " 0";
const std::string GOOGLE_POLICY_ONLY = Policy({Assistant(1, "GVA", "app.google", "G", true)});

}  // namespace

// --- Is there a voice menu at all? ---

TEST_F(VisibilityRules, WithoutVoiceRecognitionNeitherRootNorOnboardingIsShown) {
    Feature(feature::VOICE, false);
    for (const auto rule :
         {check_general_voice_supported, check_general_voice_onboarding_supported}) {
        EXPECT_FALSE(Shown(rule));
        EXPECT_CALLS(Lines{FeatureBool(feature::VOICE),
                           VisibleRule("_IsVoiceMenuVisible", "FMS not support")});
    }
}

TEST_F(VisibilityRules, AVoiceFeatureThatCannotBeReadHidesTheMenu) {
    FeatureFails(feature::VOICE, -22);
    EXPECT_FALSE(Shown(check_general_voice_supported));
    EXPECT_CALLS(
        Lines{FeatureBool(feature::VOICE),
              E(source::UTIL, "GetFMSBool", 361, std::string("ERROR:-22, key:") + feature::VOICE),
              VisibleRule("_IsVoiceMenuVisible", "FMS not support")});
}

TEST_F(VisibilityRules, ABlockedContentHubHidesRootAndOnboarding) {
    Set(setting::BLOCK, 2);
    for (const auto rule :
         {check_general_voice_supported, check_general_voice_onboarding_supported}) {
        EXPECT_FALSE(Shown(rule));
        EXPECT_CALLS(Lines{FeatureBool(feature::VOICE), GetInt(setting::BLOCK),
                           VisibleRule("_IsVoiceMenuVisible", "Pivora Blocked")});
    }
}

TEST_F(VisibilityRules, AnyOtherBlockValueDoesNotHideTheMenu) {
    for (const int value : {-1, 0, 1, 3, 22}) {
        Set(setting::BLOCK, value);
        EXPECT_TRUE(Shown(check_general_voice_supported)) << value;
    }
    Remove(setting::BLOCK);
    EXPECT_TRUE(Shown(check_general_voice_supported));
}

TEST_F(VisibilityRules, OnATvWithOrvikThePolicyIsNotAsked) {
    Offer("[]");
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{SELECTED});
}

TEST_F(VisibilityRules, AnInvalidParameterErrorOfTheOrvikFeatureCountsAsOrvikWithoutARecord) {
    FeatureFails(feature::ORVIK, -22);
    Offer("[]");
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{SELECTED});
}

TEST_F(VisibilityRules, AnyOtherErrorOfTheOrvikFeatureIsLoggedAndThePolicyIsAsked) {
    Offer("[]");
    for (const int code : {-1, 22, 1, -23}) {
        FeatureFails(feature::ORVIK, code);
        EXPECT_FALSE(Shown(check_general_voice_supported));
        EXPECT_CALLS(Lines{FeatureBool(feature::VOICE), GetInt(setting::BLOCK),
                           FeatureBool(feature::ORVIK),
                           VisibleRule("_IsOrvikSupport", "ERROR:" + std::to_string(code))} +
                     AskTerms() + Lines{VisibleRule("_IsVoiceMenuVisible", "No VA supported")});
    }
}

TEST_F(VisibilityRules, ATvWithoutOrvikAndWithoutAnyAssistantHidesTheMenu) {
    Feature(feature::ORVIK, false);
    Offer("[]");
    for (const auto rule :
         {check_general_voice_supported, check_general_voice_onboarding_supported}) {
        EXPECT_FALSE(Shown(rule));
        EXPECT_CALLS(Lines{FeatureBool(feature::VOICE), GetInt(setting::BLOCK),
                           FeatureBool(feature::ORVIK)} +
                     AskTerms() + Lines{VisibleRule("_IsVoiceMenuVisible", "No VA supported")});
    }
}

TEST_F(VisibilityRules, ATvWithoutOrvikShowsTheMenuWhenAnAssistantIsOffered) {
    Feature(feature::ORVIK, false);
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(
        Lines{FeatureBool(feature::VOICE), GetInt(setting::BLOCK), FeatureBool(feature::ORVIK)} +
        AskTerms() + Lines{VisibleRule("_IsVoiceMenuVisible", "Supported")} + SEVERAL +
        Lines{SELECTED});
}

TEST_F(VisibilityRules, ATvWithoutOrvikShowsTheOnboardingBeforeTheTermsAreAgreed) {
    Feature(feature::ORVIK, false);
    Offer("[]");
    tv().consents.clear();
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
    EXPECT_CALLS(Lines{FeatureBool(feature::VOICE), GetInt(setting::BLOCK),
                       FeatureBool(feature::ORVIK), "GetDisclaimerItemAgreement tnc",
                       VisibleRule("_IsVoiceMenuVisible", "Supported"),
                       "GetDisclaimerItemAgreement tnc",
                       VisibleRule("_IsVoiceOnboardingVisible", "terms not agreed")});
}

// --- Root or onboarding? ---

TEST_F(VisibilityRules, WithoutTheTermsTheOnboardingIsShownInsteadOfTheRoot) {
    tv().consents["pp"] = 0;
    EXPECT_FALSE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + AskTerms() +
                 Lines{VisibleRule("_IsVoiceOnboardingVisible", "terms not agreed")});
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
}

TEST_F(VisibilityRules, WithoutAnAssistantChosenTheOnboardingIsShownInsteadOfTheRoot) {
    Set(setting::CURRENT, "");
    EXPECT_FALSE(Shown(check_general_voice_supported));
    EXPECT_CALLS(
        MENU_VISIBLE + AskTerms() +
        Lines{Current(), VisibleRule("_IsVoiceOnboardingVisible", "VASelection is needed")});
    Remove(setting::CURRENT);
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
}

TEST_F(VisibilityRules, WithSeveralAssistantsTheRootIsShownThoughNoneIsSetUp) {
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{SELECTED});
    EXPECT_FALSE(Shown(check_general_voice_onboarding_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{SELECTED});
}

TEST_F(VisibilityRules, ASingleAssistantThatIsNotSetUpShowsTheOnboarding) {
    Offer(GOOGLE_POLICY_ONLY);
    EXPECT_FALSE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + AskTerms() + Walk(2) + Lines{GOOGLE_FILE, SINGLE_NOT_SET_UP});
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
}

TEST_F(VisibilityRules, ASingleAssistantThatIsSetUpShowsTheRootWithoutAskingForTheLegacyOne) {
    Offer(GOOGLE_POLICY_ONLY);
    tv().files.insert(file::GOOGLE);
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + AskTerms() + Walk(2) + Lines{GOOGLE_FILE, SELECTED});
    EXPECT_FALSE(Shown(check_general_voice_onboarding_supported));
}

TEST_F(VisibilityRules, TheLegacyAssistantCountsAsASingleOne) {
    Set(setting::LEGACY, true);
    EXPECT_FALSE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{Current(), GOOGLE_FILE, SINGLE_NOT_SET_UP});
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
    tv().files.insert(file::GOOGLE);
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{Current(), GOOGLE_FILE, SELECTED});
    EXPECT_FALSE(Shown(check_general_voice_onboarding_supported));
}

TEST_F(VisibilityRules, AnEmptyListTakesThePathOfSeveralAssistants) {
    Offer("[]");
    EXPECT_TRUE(Shown(check_general_voice_supported));
    EXPECT_FALSE(Shown(check_general_voice_onboarding_supported));
    EXPECT_CALLS(MENU_VISIBLE + SEVERAL + Lines{SELECTED});
}

TEST_F(VisibilityRules, AnEmptyListWithTheLegacyAssistantAsksForItsSetup) {
    Offer("[]");
    Set(setting::LEGACY, true);
    EXPECT_TRUE(Shown(check_general_voice_onboarding_supported));
}

// --- The assistant ---

TEST_F(VisibilityRules, TheAssistantItemIsShownWithTwoAssistants) {
    Offer(Policy({Assistant(1, "GVA", "a", "A"), Assistant(2, "ALEXA", "b", "B")}));
    EXPECT_TRUE(Shown(check_general_voice_voice_assistant));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY)});
}

TEST_F(VisibilityRules, TheAssistantItemIsHiddenWithFewerThanTwoWhateverTheLegacyFlagSays) {
    for (const bool legacy : {false, true}) {
        Set(setting::LEGACY, legacy);
        for (const std::string& policy : {std::string("[]"), GOOGLE_POLICY_ONLY}) {
            Offer(policy);
            EXPECT_FALSE(Shown(check_general_voice_voice_assistant));
            EXPECT_CALLS(Lines{});
        }
    }
}

TEST_F(VisibilityRules, TheAssistantItemIsHiddenWithTheLegacyAssistant) {
    Set(setting::LEGACY, true);
    EXPECT_FALSE(Shown(check_general_voice_voice_assistant));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY)});
}

// --- Wake-up ---

TEST_F(VisibilityRules, WakeUpIsHiddenWithTheLegacyAssistant) {
    Set(setting::LEGACY, true);
    EXPECT_FALSE(Shown(check_general_voice_voice_wake_up));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY)});
}

TEST_F(VisibilityRules, WakeUpIsShownForAFarFieldAssistantOnAFarFieldTv) {
    EXPECT_TRUE(Shown(check_general_voice_voice_wake_up));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD)} + Walk(3));
    EXPECT_TRUE(check_general_voice_voice_wake_up());
}

TEST_F(VisibilityRules, WakeUpIsHiddenForAnotherAssistantThatHasNoFarField) {
    Set(setting::CURRENT, "app.alexa");
    EXPECT_FALSE(Shown(check_general_voice_voice_wake_up));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD)} + Walk(2) +
                 Walk(2));
}

TEST_F(VisibilityRules, WakeUpIsHiddenForAnotherAssistantOnATvWithoutFarField) {
    Feature(feature::FAR_FIELD, 0);
    EXPECT_FALSE(Shown(check_general_voice_voice_wake_up));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD)} + Walk(3));
}

TEST_F(VisibilityRules, WakeUpOfOrvikOnATvWithoutFarFieldFollowsThePassThroughModel) {
    Feature(feature::FAR_FIELD, 0);
    Set(setting::CURRENT, "app.orvik");
    for (const bool passthru : {true, false}) {
        Feature(feature::PASSTHRU, passthru);
        EXPECT_EQ(Shown(check_general_voice_voice_wake_up), passthru);
        EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD), Current(),
                           FeatureBool(feature::PASSTHRU)});
    }
}

TEST_F(VisibilityRules, WakeUpOfAnOrvikWithoutFarFieldFollowsThePassThroughModel) {
    Offer(Policy({Assistant(1, "ORVIK2", "app.orvik", "O", false)}), "app.orvik");
    for (const bool passthru : {true, false}) {
        Feature(feature::PASSTHRU, passthru);
        EXPECT_EQ(Shown(check_general_voice_voice_wake_up), passthru);
        EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD), Current(),
                           Current(), FeatureBool(feature::PASSTHRU)});
    }
}

TEST_F(VisibilityRules, WakeUpIsHiddenWhenTheCurrentAssistantIsNotListed) {
    Offer("[]");
    EXPECT_FALSE(Shown(check_general_voice_voice_wake_up));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD),
                       NotMatched("IsCurrentVASupportFF"), NotMatched("IsCurrentVAOrvik")});
}

TEST_F(VisibilityRules, AlwaysAndScreenOnAreHiddenForAnotherAssistantEvenOnAFarFieldTv) {
    const std::pair<bool (*)(const char*, int), const char*> rules[] = {
        {check_general_voice_voice_always_wake_up, "check_general_voice_voice_always_wake_up"},
        {check_general_voice_voice_screen_on_wake_up,
         "check_general_voice_voice_screen_on_wake_up"}};
    for (const auto& [rule, name] : rules) {
        EXPECT_FALSE(Shown(rule));
        EXPECT_CALLS(Walk(3) +
                     Lines{VisibleRule(name, "current VA is not Orvik, item is invisible.")});
    }
}

TEST_F(VisibilityRules, AlwaysAndScreenOnFollowTheWakeUpItemForOrvik) {
    Set(setting::CURRENT, "app.orvik");
    for (const auto rule :
         {check_general_voice_voice_always_wake_up, check_general_voice_voice_screen_on_wake_up}) {
        Feature(feature::FAR_FIELD, 1);
        Set(setting::LEGACY, false);
        EXPECT_TRUE(Shown(rule));
        EXPECT_CALLS(
            Lines{Current(), GetBool(setting::LEGACY), FeatureInt(feature::FAR_FIELD), Current()});
        Set(setting::LEGACY, true);
        EXPECT_FALSE(Shown(rule));
        EXPECT_CALLS(Lines{Current(), GetBool(setting::LEGACY)});
        Set(setting::LEGACY, false);
        Feature(feature::FAR_FIELD, 0);
        Feature(feature::PASSTHRU, true);
        EXPECT_TRUE(Shown(rule));
        Feature(feature::PASSTHRU, false);
        EXPECT_FALSE(Shown(rule));
    }
}

TEST_F(VisibilityRules, TheLegacyAssistantHidesWakeUpAlwaysScreenOnAndHint) {
    Set(setting::LEGACY, true);
    Set(setting::CURRENT, "app.orvik");
    Set(setting::HINT, R"({"app.orvik":"on_user"})");
    for (const char* item : {key::WAKE_UP, key::ALWAYS, key::SCREEN_ON, key::HINT}) {
        EXPECT_EQ(check_visibility_int(item, 0), 0) << item;
    }
}

// --- Situational hint ---

TEST_F(VisibilityRules, TheHintIsHiddenWithTheLegacyAssistant) {
    Set(setting::LEGACY, true);
    EXPECT_FALSE(Shown(check_general_voice_situational_hint));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY)});
}

TEST_F(VisibilityRules, TheHintIsShownWithAnyEntry) {
    for (const char* entry : {"on_user", "off_default", "null", "x"}) {
        Set(setting::HINT, (std::string(R"({"app.google":")") + entry + "\"}").c_str());
        EXPECT_TRUE(Shown(check_general_voice_situational_hint)) << entry;
        EXPECT_CALLS(Lines{GetBool(setting::LEGACY), Current()} +
                     Member(setting::HINT, "app.google", entry) +
                     Lines{VisibleRule("check_general_voice_situational_hint",
                                       "situational Hint (supported)")});
    }
}

TEST_F(VisibilityRules, TheHintIsHiddenWithoutAnEntry) {
    Set(setting::HINT, R"({"app.alexa":"on_user"})");
    EXPECT_FALSE(Shown(check_general_voice_situational_hint));
    EXPECT_CALLS(Lines{GetBool(setting::LEGACY), Current(), GetStr(setting::HINT),
                       VisibleRule("check_general_voice_situational_hint",
                                   "situational Hint Value is NULL(unsupported)")});
}

TEST_F(VisibilityRules, TheHintIsHiddenWithAnEmptyEntryOrWithoutTheSetting) {
    Set(setting::HINT, R"({"app.google":""})");
    EXPECT_FALSE(Shown(check_general_voice_situational_hint));
    Remove(setting::HINT);
    EXPECT_FALSE(Shown(check_general_voice_situational_hint));
    EXPECT_LOGGED(E(source::UTIL, "getValueOfJsonVconf", 316, "json parse error"));
}

// --- Assistants' settings ---

TEST_F(VisibilityRules, OrvikSettingsItemIsAlwaysHiddenInChina) {
    Feature(feature::CHINA, true);
    for (const char* current : {"app.orvik", "app.sva", "app.google"}) {
        Set(setting::CURRENT, current);
        EXPECT_FALSE(Shown(check_general_voice_voice_settings_orvik)) << current;
        EXPECT_CALLS(Lines{FeatureBool(feature::CHINA)});
    }
}

TEST_F(VisibilityRules, OrvikSettingsItemIsShownForOrvikWithoutAskingForTheKind) {
    Set(setting::CURRENT, "app.orvik");
    EXPECT_TRUE(Shown(check_general_voice_voice_settings_orvik));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA), Current()});
}

TEST_F(VisibilityRules, OrvikSettingsItemIsShownForSva) {
    Set(setting::CURRENT, "app.sva");
    EXPECT_TRUE(Shown(check_general_voice_voice_settings_orvik));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA)} + Walk(5) + Walk(1));
}

TEST_F(VisibilityRules, OrvikSettingsItemIsHiddenForAnyOther) {
    for (const char* current : {"app.alexa", "app.google", "app.salute", "app.tencent", "other"}) {
        Set(setting::CURRENT, current);
        EXPECT_FALSE(Shown(check_general_voice_voice_settings_orvik)) << current;
    }
}

TEST_F(VisibilityRules, TheChinaVariantIsAlwaysHiddenOutsideChina) {
    Set(setting::CURRENT, "app.orvik");
    EXPECT_FALSE(Shown(check_general_voice_voice_settings_orvik_cn));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA)});
}

TEST_F(VisibilityRules, TheChinaVariantIsShownOnlyWhileOrvikIsCurrent) {
    Feature(feature::CHINA, true);
    Set(setting::CURRENT, "app.orvik");
    EXPECT_TRUE(Shown(check_general_voice_voice_settings_orvik_cn));
    EXPECT_CALLS(Lines{FeatureBool(feature::CHINA), Current()});
    for (const char* current : {"app.sva", "app.tencent", "other"}) {
        Set(setting::CURRENT, current);
        EXPECT_FALSE(Shown(check_general_voice_voice_settings_orvik_cn)) << current;
    }
}

TEST_F(VisibilityRules, AnAssistantsSettingsItemIsShownOnlyWhileItIsCurrent) {
    const std::pair<bool (*)(const char*, int), std::string> rules[] = {
        {check_general_voice_voice_settings_tencent, "app.tencent"},
        {check_general_voice_voice_settings_alexa, "app.alexa"},
        {check_general_voice_voice_settings_google, "app.google"},
        {check_general_voice_voice_settings_salute, "app.salute"}};
    for (const auto& [rule, own] : rules) {
        for (const char* current : {"app.orvik", "app.alexa", "app.google", "app.salute", "app.sva",
                                    "app.tencent", "other", ""}) {
            Set(setting::CURRENT, current);
            EXPECT_EQ(Shown(rule), current == own) << own << " while " << current;
            EXPECT_CALLS(Walk(1));
        }
    }
}
