// Values and choices through the table: which item has which handler, and the popup's action.
#include <climits>

#include "page.h"

using namespace recording;

namespace {

class Values : public Provider {
  protected:
    int Get(const char* item, int before = -77) {
        ClearCalls();
        int value = before;
        EXPECT_EQ(page->get_int(item, &value), 0);
        return value;
    }
    void Put(const char* item, int value) {
        ClearCalls();
        EXPECT_EQ(page->set_int(item, value), 0);
    }
};

std::string Got(const std::string& item, int value) {
    return E(source::PROVIDER, "get_int", "key:" + item + ", value:" + std::to_string(value));
}

std::string Putting(const std::string& item, int value) {
    return E(source::PROVIDER, "set_int", "key:" + item + ", value:" + std::to_string(value));
}

// An item that has a value, with its handlers as exported, and a TV on which they differ.
struct Item {
    const char* item;
    int (*reader)();
    void (*writer)(int);
};
constexpr Item ITEMS[] = {
    {key::ASSISTANT, checknode_int_voice_assistant, setnode_int_voice_assistant},
    {key::WAKE_UP, checknode_int_voice_wake_up, setnode_int_voice_wake_up},
    {key::ALWAYS, checknode_int_voice_always_wake_up, setnode_int_voice_always_wake_up},
    {key::SCREEN_ON, checknode_int_voice_screen_on_wake_up, setnode_int_voice_screen_on_wake_up},
    {key::HINT, checknode_int_voice_situational_hint, setnode_int_voice_situational_hint}};

void VoiceTv() {
    Set(setting::FARFIELD, R"({"app.orvik":"on"})");
    Set(setting::HINT, R"({"app.orvik":"null"})");
    tv().aovMode = 1;
    tv().aovModes.clear();
}

}  // namespace

TEST_F(Values, ReadingAnItemIsItsReaderFollowedByARecord) {
    for (const Item& item : ITEMS) {
        VoiceTv();
        Offer(WholePolicy(), "app.orvik");
        const int value = item.reader();
        const Lines ofReader = Calls();
        EXPECT_EQ(Get(item.item), value);
        EXPECT_CALLS(ofReader + Lines{Got(item.item, value)});
    }
}

TEST_F(Values, WritingAnItemIsARecordFollowedByItsWriter) {
    for (const Item& item : ITEMS) {
        for (const int value : {0, 1, 2, -1, 9998, INT_MAX, INT_MIN}) {
            VoiceTv();
            Offer(WholePolicy(), "app.orvik");
            item.writer(value);
            const Lines ofWriter = Calls();
            VoiceTv();
            Offer(WholePolicy(), "app.orvik");
            Put(item.item, value);
            EXPECT_CALLS(Lines{Putting(item.item, value)} + ofWriter);
        }
    }
}

TEST_F(Values, TheWakeUpItemReadsItsReadersResult) {
    Offer(WholePolicy(), "app.orvik");
    Set(setting::FARFIELD, R"({"app.orvik":"on"})");
    EXPECT_EQ(Get(key::WAKE_UP), 1);
    Set(setting::FARFIELD, R"({"app.orvik":"off"})");
    EXPECT_EQ(Get(key::WAKE_UP), 0);
}

TEST_F(Values, AKeyThatOnlyBeginsWithARegisteredOneFindsNothing) {
    for (const char* item : {"menu/system/general-voice-voice-wake-up-x",
                             "menu/system/general-voice-voice-wake-u", "menu", "", "menu/other"}) {
        EXPECT_EQ(Get(item, 5), 5) << item;
        EXPECT_CALLS(Lines{});
        Put(item, 1);
        EXPECT_CALLS(Lines{Putting(item, 1)});
        int count = 8;
        EXPECT_EQ(Ask([&] { return page->get_list_items(item, &count); }), nullptr);
        EXPECT_EQ(count, 8);
        EXPECT_CALLS(Lines{E(source::PROVIDER, "get_list_items",
                             std::string("[FATAL]key:") + item + " has no callback")});
    }
}

TEST_F(Values, ANullKeyMatchesNoItem) {
    EXPECT_EQ(Get(nullptr, 5), 5);
    EXPECT_CALLS(Lines{});
    Put(nullptr, 1);
    EXPECT_CALLS(Lines{Putting("(null)", 1)});
    int count = 8;
    EXPECT_EQ(Ask([&] { return page->get_list_items(nullptr, &count); }), nullptr);
    EXPECT_EQ(count, 8);
    EXPECT_CALLS(Lines{E(source::PROVIDER, "get_list_items", "[FATAL]key:(null) has no callback")});
}

TEST_F(Values, AnItemWithoutAValueIsNeitherReadNorWritten) {
    for (const char* item : {key::VOICE, key::ONBOARDING, key::ORVIK, key::ORVIK_CN, key::TENCENT,
                             key::ALEXA, key::GOOGLE, key::SALUTE}) {
        EXPECT_EQ(Get(item, 5), 5) << item;
        Put(item, 1);
        EXPECT_CALLS(Lines{Putting(item, 1)});
    }
}

TEST_F(Values, OnlyTheAssistantItemHasChoices) {
    Offer(WholePolicy(), "app.orvik");
    for (const char* item : key::ALL) {
        if (std::string(item) == key::ASSISTANT) {
            continue;
        }
        int count = 8;
        EXPECT_EQ(Ask([&] { return page->get_list_items(item, &count); }), nullptr) << item;
        EXPECT_EQ(count, 8) << item;
        EXPECT_CALLS(Lines{E(source::PROVIDER, "get_list_items",
                             std::string("[FATAL]key:") + item + " has no callback")});
    }
}

TEST_F(Values, TheAssistantsChoicesAreItsBuildersAfterARecord) {
    Offer(WholePolicy(), "app.orvik");
    int count = 0;
    ListItem** list = get_list_items_voice_assistant(nullptr, &count);
    const Lines ofBuilder = Calls();
    EXPECT_EQ(page->free_list_items(list, count), 0);
    count = 0;
    list = Ask([&] { return page->get_list_items(key::ASSISTANT, &count); });
    EXPECT_CALLS(Lines{E(source::PROVIDER, "get_list_items",
                         std::string("[MATCHED]key:") + key::ASSISTANT)} +
                 ofBuilder);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(count, 6);
    EXPECT_EQ(page->free_list_items(list, count), 0);
}

TEST_F(Values, ABuilderThatOffersNothingGivesNullAndItsCount) {
    int count = 8;
    EXPECT_EQ(Ask([&] { return page->get_list_items(key::ASSISTANT, &count); }), nullptr);
    EXPECT_EQ(count, 0);
}

// --- The popup's action ---

namespace {

class PopupAction : public Values {
  protected:
    // The terms agreed, Orvik current, signed out, activated before.
    void SetUp() override {
        Values::SetUp();
        AgreeToTerms();
        Set(setting::FIRST_TIME, false);
        Offer(WholePolicy(), "app.orvik");
    }
    void Press() { Put(key::ORVIK, 9999); }
};

std::string Reason() {
    return E(source::PROVIDER, "LaunchOnboarding", "reason:set_int");
}

Lines Launched(const std::string& app, const std::string& name, const std::string& value) {
    return {"bundle_create", "bundle_add_str " + name + " " + value, "aul_launch_app " + app,
            "bundle_free"};
}

}  // namespace

TEST_F(PopupAction, WithoutTheTermsTheSetupWizardStarts) {
    tv().consents.clear();
    Press();
    EXPECT_CALLS(Lines{"GetDisclaimerItemAgreement tnc",
                       E(source::PROVIDER, "set_int", "PIVORA_SETUP Launching.")} +
                 Launched("org.nemra.wizard", "type", "PIVORA_SETUP"));
}

TEST_F(PopupAction, ForAnotherAssistantItsOnboardingStarts) {
    Set(setting::CURRENT, "app.alexa");
    Press();
    EXPECT_CALLS(AskTerms() + Walk(2) + Lines{Reason(), Current()} +
                 Lines{std::string("access ") + file::ALEXA + " 0"} +
                 Launched("org.nemra.voice-onboarding", "type", "ONBOARDING_SETUP"));
}

TEST_F(PopupAction, ForOrvikSignedInItsOnboardingStarts) {
    SignIn();
    Press();
    EXPECT_CALLS(AskTerms() + Walk(1) + Lines{"sso_get_login_state", Reason(), Current()} +
                 Lines{GetBool(setting::FIRST_TIME), E(source::PROVIDER, "_LaunchOrvikOnboarding",
                                                       "[FATAL][Orvik]Already setup complete")});
}

TEST_F(PopupAction, ForOrvikBeforeItsFirstActivationItsOnboardingStarts) {
    Set(setting::FIRST_TIME, true);
    Press();
    EXPECT_CALLS(AskTerms() + Walk(1) +
                 Lines{"sso_get_login_state", GetBool(setting::FIRST_TIME), Reason(), Current(),
                       GetBool(setting::FIRST_TIME), "connection_profile_check_default_gateway"} +
                 Launched("org.nemra.voice-onboarding", "type", "ONBOARDING_SETUP"));
}

TEST_F(PopupAction, ForOrvikSignedOutAndActivatedTheAccountsSignInStarts) {
    Press();
    EXPECT_CALLS(AskTerms() + Walk(1) +
                 Lines{"sso_get_login_state", GetBool(setting::FIRST_TIME),
                       E(source::PROVIDER, "set_int", "Orvik SSO Launching"),
                       "sso_get_account_ui_application_package_id", "bundle_create",
                       "aul_launch_app account.app", "bundle_free"});
    EXPECT_EQ(Launches(), (std::vector<Launch>{{"account.app", {}}}));
}

TEST_F(PopupAction, AnAccountThatCannotBeAskedIsLoggedAndNothingIsLaunched) {
    Fail("sso_get_account_ui_application_package_id");
    Press();
    EXPECT_CALLS(AskTerms() + Walk(1) +
                 Lines{"sso_get_login_state", GetBool(setting::FIRST_TIME),
                       E(source::PROVIDER, "set_int", "Orvik SSO Launching"),
                       "sso_get_account_ui_application_package_id",
                       E(source::PROVIDER, "set_int",
                         "[EXCEPTION]FAIL sso_get_account_ui_application_package_id")});
}

TEST_F(PopupAction, AnAccountWithANullIdIsTheSameFailure) {
    tv().accountApp.reset();
    Press();
    EXPECT_EQ(Launches().size(), 0u);
    EXPECT_LOGGED(E(source::PROVIDER, "set_int",
                    "[EXCEPTION]FAIL sso_get_account_ui_application_package_id"));
}

TEST_F(PopupAction, IsTheSameForEveryKeyAndNeverWritesAValue) {
    Press();
    const Lines ofAction = Calls();
    for (const char* item : {key::ASSISTANT, key::WAKE_UP, key::ALWAYS, key::SCREEN_ON, key::HINT,
                             key::VOICE, "menu/other", "", static_cast<const char*>(nullptr)}) {
        Put(item, 9999);
        EXPECT_CALLS(ofAction);
    }
    EXPECT_EQ(CallsOf("vconf_set"), Lines{});
}

TEST_F(PopupAction, IsOfThisValueAlone) {
    for (const int value : {9998, 10000, -9999}) {
        Put(key::ORVIK, value);
        EXPECT_CALLS(Lines{Putting(key::ORVIK, value)});
    }
}
