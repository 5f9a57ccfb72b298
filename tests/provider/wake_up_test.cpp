// Hands-free wake-up: the switch, its two sub-items and the choice list.
#include <algorithm>

#include "page.h"

using namespace recording;

namespace {

class WakeUp : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Offer(WholePolicy(), "app.orvik");
    }
    static void Entry(const std::string& entry) {
        Set(setting::FARFIELD,
            (R"({"app.orvik":")" + entry + R"(","app.alexa":")" + entry + "\"}").c_str());
        ClearCalls();
    }
    static void Do(void (*writer)(int), int value) {
        ClearCalls();
        writer(value);
    }
    static int Read(int (*reader)()) {
        ClearCalls();
        return reader();
    }
    static std::string EntryOf(const std::string& app) {
        ClearCalls();
        return CSIMenuUtil::getValueOfJsonVconf(setting::FARFIELD, app);
    }
};

std::string WakeUpValue(int value) {
    return Handler("checknode_int_voice_wake_up",
                   "[general voice] Hands-free Wake-up value = " + std::to_string(value));
}

std::string AlwaysValue(int value) {
    return Handler("checknode_int_voice_always_wake_up",
                   "[general voice] voice always wakeup value = " + std::to_string(value));
}

std::string ScreenOnValue(int value) {
    return Handler("checknode_int_voice_screen_on_wake_up",
                   "[general voice] voice screen on value = " + std::to_string(value));
}

std::string Styled(const std::string& orvik, const std::string& alexa) {
    return "{\n   \"app.alexa\" : \"" + alexa + "\",\n   \"app.orvik\" : \"" + orvik + "\"\n}\n";
}

Lines Write(const std::string& text) {
    return {GetStr(setting::FARFIELD),
            E(source::UTIL, "setVAsValueOfJsonVconf", 345,
              std::string("[general voice] ") + setting::FARFIELD + " value = " + text),
            std::string("vconf_set_str ") + setting::FARFIELD + " " + text};
}

}  // namespace

// --- Reading ---

TEST_F(WakeUp, WithTheEntryOnAndModeOneWakeUpAndAlwaysRead1) {
    Entry("on");
    tv().aovMode = 1;
    const Lines entry = Walk(1) + Member(setting::FARFIELD, "app.orvik", "on");
    EXPECT_EQ(Read(checknode_int_voice_wake_up), 1);
    EXPECT_CALLS(entry + Lines{WakeUpValue(1)});
    EXPECT_EQ(Read(checknode_int_voice_always_wake_up), 1);
    EXPECT_CALLS(entry + Lines{"AOVSystemDataGetAOVMode", AlwaysValue(1)});
    EXPECT_EQ(Read(checknode_int_voice_screen_on_wake_up), 0);
    EXPECT_CALLS(entry + Lines{"AOVSystemDataGetAOVMode", ScreenOnValue(0)});
}

TEST_F(WakeUp, WithTheEntryOnAndAnyOtherModeWakeUpAndScreenOnRead1) {
    Entry("on");
    for (const int mode : {0, 2, -1, 100}) {
        tv().aovMode = mode;
        EXPECT_EQ(Read(checknode_int_voice_wake_up), 1);
        EXPECT_EQ(Read(checknode_int_voice_always_wake_up), 0);
        EXPECT_LOGGED(AlwaysValue(0));
        EXPECT_EQ(Read(checknode_int_voice_screen_on_wake_up), 1);
        EXPECT_LOGGED(ScreenOnValue(1));
    }
}

TEST_F(WakeUp, WithTheEntryNotExactlyOnAllRead0AndTheModeIsNotAsked) {
    for (const int mode : {0, 1}) {
        tv().aovMode = mode;
        for (const char* text : {"off", "On", "ON", "", "on ", "1", "true"}) {
            Entry(text);
            const Lines entry = Walk(1) + Member(setting::FARFIELD, "app.orvik", text);
            EXPECT_EQ(Read(checknode_int_voice_wake_up), 0);
            EXPECT_CALLS(entry + Lines{WakeUpValue(0)});
            EXPECT_EQ(Read(checknode_int_voice_always_wake_up), 0);
            EXPECT_CALLS(entry + Lines{AlwaysValue(0)});
            EXPECT_EQ(Read(checknode_int_voice_screen_on_wake_up), 0);
            EXPECT_CALLS(entry + Lines{ScreenOnValue(0)});
        }
    }
}

TEST_F(WakeUp, WithoutTheEntryOrTheSettingAllRead0) {
    tv().aovMode = 1;
    for (const char* text : {"{}", "broken", "[]", static_cast<const char*>(nullptr)}) {
        if (text != nullptr) {
            Set(setting::FARFIELD, text);
        } else {
            Remove(setting::FARFIELD);
        }
        EXPECT_EQ(Read(checknode_int_voice_wake_up), 0);
        EXPECT_EQ(Read(checknode_int_voice_always_wake_up), 0);
        EXPECT_EQ(Read(checknode_int_voice_screen_on_wake_up), 0);
        EXPECT_EQ(CallsOf("AOV"), Lines{});
    }
}

TEST_F(WakeUp, TheEntryOfTheCurrentAssistantCounts) {
    Set(setting::FARFIELD, R"({"app.orvik":"on","app.alexa":"off"})");
    EXPECT_EQ(checknode_int_voice_wake_up(), 1);
    Set(setting::CURRENT, "app.alexa");
    EXPECT_EQ(checknode_int_voice_wake_up(), 0);
}

// --- The switch ---

TEST_F(WakeUp, TurningItOnWritesOnAndLeavesTheModeAlone) {
    Entry("off");
    tv().aovMode = 1;
    Do(setnode_int_voice_wake_up, 1);
    EXPECT_CALLS(Walk(1) + Write(Styled("on", "off")) + Walk(1) +
                 Lines{Handler("setnode_int_voice_wake_up",
                               "Set Hands-free Wake-up value [1] && Wakeup[on]")});
    EXPECT_EQ(AlwaysOnMode(), 1);
    EXPECT_EQ(checknode_int_voice_always_wake_up(), 1);
}

TEST_F(WakeUp, TurningItOffForOrvikWritesOffAndThenSetsTheModeTo0) {
    Entry("on");
    tv().aovMode = 1;
    Do(setnode_int_voice_wake_up, 0);
    Lines calls = Calls();
    // The id for the mode may be the one already read or be read again.
    const auto off = std::find_if(calls.begin(), calls.end(), [](const std::string& line) {
        return line.ends_with("set AOV off.");
    });
    ASSERT_NE(off, calls.end());
    const Lines before(calls.begin(), off);
    EXPECT_EQ(before.size(), 5u);
    EXPECT_EQ(before.at(3),
              "vconf_set_str " + std::string(setting::FARFIELD) + " " + Styled("off", "on"));
    EXPECT_LOG(Lines{
        Write(Styled("off", "on"))[1], Handler("setnode_int_voice_wake_up", "set AOV off."),
        Handler("setnode_int_voice_wake_up", "Set Hands-free Wake-up value [0] && Wakeup[off]")});
    EXPECT_EQ(CallsOf("AOV"), Lines{"AOVSystemDataSetAOVMode app.orvik 0"});
    EXPECT_EQ(AlwaysOnMode(), 0);
}

TEST_F(WakeUp, TurningItOffForAnotherAssistantLeavesTheModeAlone) {
    Set(setting::CURRENT, "app.alexa");
    Entry("on");
    tv().aovMode = 1;
    Do(setnode_int_voice_wake_up, 0);
    EXPECT_CALLS(Walk(1) + Write(Styled("on", "off")) + Walk(2) +
                 Lines{Handler("setnode_int_voice_wake_up",
                               "Set Hands-free Wake-up value [0] && Wakeup[off]")});
    EXPECT_EQ(AlwaysOnMode(), 1);
}

TEST_F(WakeUp, AnyOtherNumberIsOff) {
    for (const int value : {2, -1, 100}) {
        Entry("on");
        Do(setnode_int_voice_wake_up, value);
        EXPECT_LOGGED(
            Handler("setnode_int_voice_wake_up",
                    "Set Hands-free Wake-up value [" + std::to_string(value) + "] && Wakeup[off]"));
        EXPECT_EQ(EntryOf("app.orvik"), "off");
    }
}

TEST_F(WakeUp, WithoutTheSettingNothingIsWrittenButTheModeIsStillSet) {
    for (const char* text : {static_cast<const char*>(nullptr), "broken", "[]", "5"}) {
        if (text != nullptr) {
            Set(setting::FARFIELD, text);
        }
        tv().aovMode = 1;
        tv().aovModes.clear();
        Do(setnode_int_voice_wake_up, 0);
        EXPECT_EQ(CallsOf("vconf_set"), Lines{});
        EXPECT_EQ(AlwaysOnMode(), 0);
        EXPECT_LOGGED(Handler("setnode_int_voice_wake_up",
                              "Set Hands-free Wake-up value [0] && Wakeup[off]"));
    }
}

TEST_F(WakeUp, AStoreAndAModeThatRefuseAreNotNoticed) {
    Entry("on");
    Fail("vconf_set_str");
    Fail("AOVSystemDataSetAOVMode");
    Do(setnode_int_voice_wake_up, 0);
    EXPECT_LOGGED(
        Handler("setnode_int_voice_wake_up", "Set Hands-free Wake-up value [0] && Wakeup[off]"));
}

// --- The sub-items ---

TEST_F(WakeUp, TheAlwaysItemSetsMode1OnlyForOne) {
    const std::pair<int, int> cases[] = {{1, 1}, {0, 0}, {2, 0}, {-1, 0}};
    for (const auto& [value, mode] : cases) {
        Do(setnode_int_voice_always_wake_up, value);
        EXPECT_CALLS(Walk(1) + Lines{"AOVSystemDataSetAOVMode app.orvik " + std::to_string(mode),
                                     Handler("setnode_int_voice_always_wake_up",
                                             "Set voice always wakeup value AOV[" +
                                                 std::to_string(mode) + "]")});
    }
}

TEST_F(WakeUp, TheScreenOnItemSetsMode0OnlyForOne) {
    const std::pair<int, int> cases[] = {{1, 0}, {0, 1}, {2, 1}, {-1, 1}};
    for (const auto& [value, mode] : cases) {
        Do(setnode_int_voice_screen_on_wake_up, value);
        EXPECT_CALLS(Walk(1) +
                     Lines{"AOVSystemDataSetAOVMode app.orvik " + std::to_string(mode),
                           Handler("setnode_int_voice_screen_on_wake_up",
                                   "Set voice screen on value AOV[" + std::to_string(mode) + "]")});
    }
}

TEST_F(WakeUp, TheSubItemsDoNotLookAtTheSwitch) {
    Entry("off");
    Do(setnode_int_voice_always_wake_up, 1);
    EXPECT_EQ(AlwaysOnMode(), 1);
    EXPECT_EQ(CallsOf("vconf_get_str db/menu"), Lines{});
}

TEST_F(WakeUp, TheModeIsSetForWhicheverAssistantIsCurrent) {
    Remove(setting::CURRENT);
    Do(setnode_int_voice_always_wake_up, 1);
    EXPECT_EQ(CallsOf("AOV"), Lines{"AOVSystemDataSetAOVMode  1"});
}

// --- The choice list ---

namespace {

std::vector<std::pair<int, std::string>> Items(ListItem** list, int count) {
    std::vector<std::pair<int, std::string>> items;
    for (int i = 0; i < count; ++i) {
        items.emplace_back(list[i]->value, list[i]->text);
    }
    return items;
}

const std::string ANYTIME = "tr(TV_SID_ORVIK_CCSEP_HANS_FREE_WAKE_UP_AYNTIME)";
const std::string SCREEN = "tr(TV_SID_ORVIK_CCSEP_HANDS_FREE_WAKE_UIP_SCREEN_ON)";

}  // namespace

TEST_F(WakeUp, TheChoicesOfOrvikAreThree) {
    tv().translations["TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON"] = "Press <<A>> or <<A>>";
    tv().translations["COM_ICON_VOICE"] = "(mic)";
    int count = 0;
    ListItem** list = Ask([&] { return get_list_items_voice_wake_up("any key", &count); });
    ASSERT_EQ(count, 3);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(Items(list, count), (std::vector<std::pair<int, std::string>>{
                                      {2, ANYTIME}, {1, SCREEN}, {0, "Press (mic) or (mic)"}}));
    EXPECT_LOG(Lines{Handler("get_list_items_voice_wake_up", "items count:3")});
    // Orvik is asked for before the record and again after it.
    EXPECT_EQ(CallsOf("vconf"), Walk(2));
    EXPECT_EQ(Calls().at(0), Current());
    EXPECT_EQ(Calls().at(2), Current());
    page->free_list_items(list, count);
}

TEST_F(WakeUp, TheChoicesOfAnyOtherAssistantAreTwo) {
    for (const char* current : {"app.alexa", "other"}) {
        Set(setting::CURRENT, current);
        int count = 0;
        ListItem** list = Ask([&] { return get_list_items_voice_wake_up(nullptr, &count); });
        ASSERT_EQ(count, 2);
        EXPECT_EQ(Items(list, count),
                  (std::vector<std::pair<int, std::string>>{
                      {1, SCREEN}, {0, "tr(TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON)"}}));
        EXPECT_LOGGED(Handler("get_list_items_voice_wake_up", "items count:2"));
        page->free_list_items(list, count);
    }
}

TEST_F(WakeUp, TheChoicesWithoutAPlaceForTheCountDoNotCrash) {
    ListItem** list = get_list_items_voice_wake_up(nullptr, nullptr);
    if (list != nullptr) {
        page->free_list_items(list, 3);
    }
}
