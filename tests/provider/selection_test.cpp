// Choosing the assistant: the current value, the choices, and what a choice starts.
#include <algorithm>
#include <climits>

#include "page.h"

using namespace recording;

namespace {

class Selection : public Provider {
  protected:
    // The items of the list as "value:text", in order; "null" for a missing list or item.
    std::string Choices() {
        ClearCalls();
        count = -1;
        ListItem** list = get_list_items_voice_assistant(nullptr, &count);
        if (list == nullptr) {
            return "null";
        }
        std::string items;
        for (int i = 0; i < count; ++i) {
            items += list[i] != nullptr ? std::to_string(list[i]->value) + ":" + list[i]->text + " "
                                        : "null ";
        }
        EXPECT_EQ(page->free_list_items(list, count), 0);
        return items;
    }
    static int Value() {
        ClearCalls();
        return checknode_int_voice_assistant();
    }
    static void Choose(int value) {
        ClearCalls();
        setnode_int_voice_assistant(value);
    }
    int count = 0;
};

std::string Choosing(const std::string& message) {
    return Handler("setnode_int_voice_assistant", message);
}

std::string Label(const std::string& message) {
    return Handler("get_list_items_voice_assistant", message);
}

Lines Start(const std::string& previous) {
    return {Current(), Choosing("strPreviousVAAppID:" + previous)};
}

Lines Store(const std::string& app) {
    return {std::string("vconf_set_str ") + setting::CURRENT + " " + app,
            E(source::UTIL, "SetVoiceAssistant", 615, "[0]str: " + app)};
}

Lines Closed(const std::string& app) {
    return {Choosing("Previous VA is NOT Orvik"), "app_manager_get_app_context " + app,
            "app_manager_terminate_app handle", Choosing("[0]terminate:" + app)};
}

Lines NotRunning(const std::string& app) {
    return {Choosing("Previous VA is NOT Orvik"), "app_manager_get_app_context " + app,
            Choosing("[-1][FAIL]app_manager_get_app_context:" + app)};
}

Lines WakeUpRead(const std::string& app, const std::string& entry) {
    return Walk(1) + Member(setting::FARFIELD, app, entry) +
           Lines{Handler("checknode_int_voice_wake_up",
                         std::string("[general voice] Hands-free Wake-up value = ") +
                             (entry == "on" ? "1" : "0"))};
}

const std::string NO_NOTICE = Handler("showVAChangingNoticePopup", "wakeup state is not STATUS_ON");
const Lines NOTICE = {
    Tr("TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED"),
    Tr("TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE"),
    "app_control_create",
    "app_control_set_operation default",
    "app_control_set_app_id org.nemra.alert-syspopup",
    "app_control_add_extra_data type notification",
    "app_control_add_extra_data text tr(TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED) "
    "tr(TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE)",
    "app_control_add_extra_data timeout 7",
    "app_control_send_launch_request (null) (null)",
    E(source::UTIL, "ShowPopup", 262, "Succeeded to launch alert popup."),
    "app_control_destroy"};

}  // namespace

// --- The current value ---

TEST_F(Selection, TheValueIsTheCurrentAssistantsOrder) {
    Offer(WholePolicy(), "app.google");
    EXPECT_EQ(Value(), 3);
    EXPECT_CALLS(Walk(3));
    Offer(
        Policy({Assistant(-4, "GVA", "app.google", "G"), Assistant(9, "ALEXA", "app.alexa", "A")}));
    EXPECT_EQ(Value(), -4);
}

TEST_F(Selection, TheValueOfAnAssistantThatIsNotListedIs0) {
    Offer(WholePolicy(), "other");
    EXPECT_EQ(Value(), 0);
    EXPECT_CALLS(Walk(6));
    Offer("[]");
    EXPECT_EQ(Value(), 0);
    EXPECT_CALLS(Lines{});
}

TEST_F(Selection, OfAnApplicationListedTwiceTheFirstOrderIsTheValue) {
    Offer(Policy({Assistant(2, "GVA", "app", "A"), Assistant(1, "ALEXA", "app", "B")}), "app");
    EXPECT_EQ(Value(), 2);
}

// --- The choices ---

TEST_F(Selection, TheChoicesAreTheAssistantsWithOrvikTranslated) {
    tv().translations["DREAM_ORV_TMBODY_ORVIK"] = "Orvik!";
    Offer(Policy({Assistant(1, "ORVIK2", "app.orvik", "never shown"),
                  Assistant(2, "ALEXA", "app.alexa", "Alexa")}));
    EXPECT_EQ(Choices(), "1:Orvik! 2:Alexa ");
    EXPECT_EQ(count, 2);
    EXPECT_CALLS(Lines{Label("[Orvik]"), Tr("DREAM_ORV_TMBODY_ORVIK"), Label("Other VA")});
}

TEST_F(Selection, TheChoicesStandInTheirOrderAndNotInThePolicys) {
    Offer(Policy({Assistant(2, "ALEXA", "app.alexa", "Alexa"),
                  Assistant(1, "GVA", "app.google", "Google")}));
    EXPECT_EQ(Choices(), "1:Google 2:Alexa ");
    EXPECT_CALLS(Lines{Label("Other VA"), Label("Other VA")});
}

TEST_F(Selection, AnAssistantWithoutAKindIsOfferedByItsName) {
    Offer(Policy({Assistant(1, "XY", "app.xy", "Xy"), Assistant(2, "GVA", "app.g", "")}));
    EXPECT_EQ(Choices(), "1:Xy 2: ");
}

TEST_F(Selection, FewerThanTwoAssistantsAreNoChoice) {
    EXPECT_EQ(Choices(), "null");
    EXPECT_EQ(count, 0);
    EXPECT_CALLS(Lines{Label("[FATAL]count:0")});
    Offer(Policy({Assistant(1, "GVA", "app.g", "G")}));
    EXPECT_EQ(Choices(), "null");
    EXPECT_EQ(count, 1);
    EXPECT_CALLS(Lines{Label("[FATAL]count:1")});
}

// Of equal orders only the first can be chosen; so only that one is offered.
TEST_F(Selection, OrdersThatAreNotOneToNAreSortedWithoutAGapAndOfEqualOnesTheFirst) {
    struct {
        std::vector<int> orders;
        const char* choices;
    } const cases[] = {
        {{7, 3, 5}, "3:B 5:C 7:A "},
        {{0, -1, 2}, "-1:B 0:A 2:C "},
        {{1, 1, 1}, "1:A "},
        {{2, 1, 2}, "1:B 2:A "},
        {{INT_MAX, INT_MIN, 0}, "-2147483648:B 0:C 2147483647:A "},
        {{4, 3, 2}, "2:C 3:B 4:A "},
        {{1, 2, 4}, "1:A 2:B 4:C "},
    };
    for (const auto& test : cases) {
        std::vector<std::string> assistants;
        for (std::size_t i = 0; i < test.orders.size(); ++i) {
            assistants.push_back(Assistant(test.orders[i], "GVA", "app" + std::to_string(i),
                                           std::string(1, static_cast<char>('A' + i))));
        }
        Offer(Policy(assistants));
        const std::string choices = Choices();
        EXPECT_EQ(choices, test.choices);
        EXPECT_EQ(count, std::count(choices.begin(), choices.end(), ' '));
    }
}

TEST_F(Selection, TheChoicesWithoutAPlaceForTheCountDoNotCrash) {
    EXPECT_EQ(get_list_items_voice_assistant(nullptr, nullptr), nullptr);
    Offer(WholePolicy());
    ListItem** list = get_list_items_voice_assistant(nullptr, nullptr);
    if (list != nullptr) {
        page->free_list_items(list, 6);
    }
}

// --- A choice ---

TEST_F(Selection, AnOrderThatIsNotListedChangesNothing) {
    Offer(WholePolicy(), "app.google");
    for (const int value : {0, 7, -1, INT_MAX, INT_MIN}) {
        Choose(value);
        EXPECT_CALLS(Start("app.google") +
                     Lines{Choosing("[FATAL]No matched VA for order:" + std::to_string(value))});
    }
    Offer("[]");
    Choose(1);
    EXPECT_CALLS(Start("app.google") + Lines{Choosing("[FATAL]No matched VA for order:1")});
}

TEST_F(Selection, AChoiceWithoutAKindIsStoredAndNothingElse) {
    Offer(Policy({Assistant(1, "XY", "app.xy", "Xy"), Assistant(2, "GVA", "app.g", "G")}), "app.g");
    Choose(1);
    EXPECT_CALLS(Start("app.g") + Store("app.xy") +
                 Lines{Choosing("[FATAL]No matched VA for order:1")});
    EXPECT_EQ(Stored(setting::CURRENT), "app.xy");
}

TEST_F(Selection, AChoiceThatIsNotSetUpStartsItsOnboardingAfterItIsStored) {
    Offer(WholePolicy(), "app.orvik");
    Choose(2);
    EXPECT_CALLS(Start("app.orvik") + Store("app.alexa") +
                 Lines{std::string("access ") + file::ALEXA + " 0",
                       Handler("LaunchOnboarding", "reason:setnode_int_voice_assistant"), Current(),
                       std::string("access ") + file::ALEXA + " 0", "bundle_create",
                       "bundle_add_str type ONBOARDING_SETUP",
                       "aul_launch_app org.nemra.voice-onboarding", "bundle_free"});
}

TEST_F(Selection, AChoiceThatIsSetUpShowsTheNoticeWhenItListensHandsFree) {
    Offer(WholePolicy(), "app.orvik");
    tv().files.insert(file::ALEXA);
    Set(setting::FARFIELD, R"({"app.alexa":"on"})");
    Choose(2);
    EXPECT_CALLS(Start("app.orvik") + Store("app.alexa") +
                 Lines{std::string("access ") + file::ALEXA + " 0"} +
                 WakeUpRead("app.alexa", "on") + NOTICE);
}

TEST_F(Selection, AChoiceThatDoesNotListenHandsFreeShowsNoNotice) {
    Offer(WholePolicy(), "app.orvik");
    tv().files.insert(file::ALEXA);
    Set(setting::FARFIELD, R"({"app.alexa":"off","app.orvik":"on"})");
    Choose(2);
    EXPECT_CALLS(Start("app.orvik") + Store("app.alexa") +
                 Lines{std::string("access ") + file::ALEXA + " 0"} +
                 WakeUpRead("app.alexa", "off") + Lines{NO_NOTICE});
}

TEST_F(Selection, GoogleThatIsSetUpShowsNothing) {
    Offer(WholePolicy(), "app.orvik");
    tv().files.insert(file::GOOGLE);
    Set(setting::FARFIELD, R"({"app.google":"on"})");
    Choose(3);
    EXPECT_CALLS(Start("app.orvik") + Store("app.google") +
                 Lines{std::string("access ") + file::GOOGLE + " 0"});
}

TEST_F(Selection, ThePreviousApplicationIsClosed) {
    Offer(WholePolicy(), "app.google");
    tv().runningApps.insert("app.google");
    Set(setting::FIRST_TIME, false);
    Set(setting::FARFIELD, R"({"app.orvik":"off"})");
    Choose(1);
    EXPECT_CALLS(Start("app.google") + Store("app.orvik") + Closed("app.google") +
                 Lines{GetBool(setting::FIRST_TIME)} + WakeUpRead("app.orvik", "off") +
                 Lines{NO_NOTICE});
}

TEST_F(Selection, AChoiceThatIsAlreadyCurrentIsClosedAndNoticed) {
    Offer(WholePolicy(), "app.alexa");
    tv().runningApps.insert("app.alexa");
    tv().files.insert(file::ALEXA);
    Set(setting::FARFIELD, R"({"app.alexa":"on"})");
    Choose(2);
    EXPECT_CALLS(Start("app.alexa") + Store("app.alexa") + Closed("app.alexa") +
                 Lines{std::string("access ") + file::ALEXA + " 0"} +
                 WakeUpRead("app.alexa", "on") + NOTICE);
}

TEST_F(Selection, OrviksApplicationIsNeverClosed) {
    Offer(WholePolicy(), "app.orvik");
    tv().runningApps.insert("app.orvik");
    for (int value = 1; value <= 6; ++value) {
        Set(setting::CURRENT, "app.orvik");
        Choose(value);
        EXPECT_EQ(CallsOf("app_manager"), Lines{}) << value;
    }
}

TEST_F(Selection, APreviousApplicationThatIsNotRunningIsLogged) {
    Offer(WholePolicy(), "app.google");
    Choose(4);
    EXPECT_CALLS(Start("app.google") + Store("app.salute") + NotRunning("app.google") +
                 Lines{std::string("access ") + file::SALUTE + " 0",
                       Handler("LaunchOnboarding", "reason:setnode_int_voice_assistant"), Current(),
                       std::string("access ") + file::SALUTE + " 0",
                       "connection_profile_check_default_gateway", "bundle_create",
                       "bundle_add_str type ONBOARDING_SETUP",
                       "aul_launch_app org.nemra.voice-onboarding", "bundle_free"});
}

TEST_F(Selection, WithoutAPreviousApplicationItsClosingFailsAndIsLogged) {
    Offer(WholePolicy());
    Choose(3);
    const Lines expected = Start("") + Store("app.google") + NotRunning("");
    const Lines calls = Calls();
    ASSERT_GE(calls.size(), expected.size());
    ClearCalls();
    EXPECT_EQ(calls.at(5), "app_manager_get_app_context ");
}

TEST_F(Selection, AnApplicationThatRefusesToCloseIsLoggedWithItsResult) {
    Offer(WholePolicy(), "app.google");
    tv().runningApps.insert("app.google");
    Fail("app_manager_terminate_app", 1, 1, -6);
    Choose(1);
    EXPECT_LOGGED(Choosing("[-6]terminate:app.google"));
}

TEST_F(Selection, SvaThatIsNotSetUpStartsNothing) {
    Offer(WholePolicy(), "app.orvik");
    Set(setting::FIRST_TIME, true);
    Choose(5);
    EXPECT_CALLS(Start("app.orvik") + Store("app.sva") +
                 Lines{GetBool(setting::FIRST_TIME),
                       Handler("LaunchOnboarding", "reason:setnode_int_voice_assistant"), Current(),
                       Handler("LaunchOnboarding", "[FATAL]Wrong VA type")});
}

TEST_F(Selection, OfTwoAssistantsOfOneOrderTheFirstIsChosen) {
    Offer(Policy({Assistant(1, "GVA", "app.first", "A"), Assistant(1, "ALEXA", "app.second", "B")}),
          "app.second");
    Choose(1);
    EXPECT_EQ(Stored(setting::CURRENT), "app.first");
}

TEST_F(Selection, AStoreThatRefusesIsLoggedAndTheChoiceGoesOn) {
    Offer(WholePolicy(), "app.orvik");
    tv().files.insert(file::ALEXA);
    Fail("vconf_set_str", 1, 1, -5);
    Choose(2);
    EXPECT_LOGGED(E(source::UTIL, "SetVoiceAssistant", 615, "[-5]str: app.alexa"));
    EXPECT_LOGGED(NO_NOTICE);
}

TEST_F(Selection, TheMenuIsNotRefreshedFromHere) {
    Offer(WholePolicy(), "app.google");
    Choose(1);
    EXPECT_EQ(CallsOf("vconf_set_int"), Lines{});
}

// --- The notice ---

TEST_F(Selection, TheNoticeIsShownWhileTheCurrentAssistantListensHandsFree) {
    Offer(WholePolicy(), "app.alexa");
    Set(setting::FARFIELD, R"({"app.alexa":"on"})");
    ClearCalls();
    showVAChangingNoticePopup();
    EXPECT_CALLS(WakeUpRead("app.alexa", "on") + NOTICE);
}

TEST_F(Selection, TheNoticeIsNotShownOtherwise) {
    Offer(WholePolicy(), "app.alexa");
    Set(setting::FARFIELD, R"({"app.alexa":"off"})");
    ClearCalls();
    showVAChangingNoticePopup();
    EXPECT_CALLS(WakeUpRead("app.alexa", "off") + Lines{NO_NOTICE});
}
