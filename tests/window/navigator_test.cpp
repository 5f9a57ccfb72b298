// Where the keys of a remote control lead, on pages that the tests write down, with a provider that
// asks before it changes the assistant and notes what is sent to it.
#include "host/window/navigator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "host/window/scene.h"

using host::Box;
using host::FindItem;
using host::Item;
using host::ItemKind;
using host::ItemView;
using host::Page;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using window::Key;
using window::Navigator;
using Deed = window::Navigator::Deed;

namespace {

std::vector<std::pair<std::string, int>> sent;
bool asks = true;

int TakeSent(const char* key, int value) {
    sent.emplace_back(FindItem(key)->name, value);
    return 0;
}

template <size_t kSize>
void Put(const char (&text)[kSize], char* buffer) {
    std::copy_n(text, kSize, buffer);
}

int AskAboutAssistant(const char* key, char* message, char* first, char* second, int* count) {
    if (asks && std::strcmp(FindItem(key)->name, "voice-assistant") == 0) {
        Put("Change it?", message);
        Put("OK", first);
        Put("Cancel", second);
        *count = 2;
    }
    return 0;
}

int TitleOfQuestion(const char*, char* title) {
    Put("Assistant", title);
    return 0;
}

host::AskableProvider Provider() {
    static const SIProviderTable table = [] {
        SIProviderTable slots{};
        slots.set_int = TakeSent;
        slots.get_messagebox_info = AskAboutAssistant;
        slots.get_messagebox_title = TitleOfQuestion;
        return slots;
    }();
    const auto yes = [](const char*, int) { return 1; };
    return {yes, yes, table};
}

Page Full() {
    Page page;
    for (const Item& item : host::PageItems()) {
        ItemView view;
        view.item = &item;
        view.visible = item.kind != ItemKind::kSetup;
        view.enabled = true;
        view.title = "T " + std::string(item.name);
        if (item.kind == ItemKind::kSwitch) {
            view.value = 0;
        }
        if (item.kind == ItemKind::kList) {
            view.value = 2;
            view.choices = {{1, "One"}, {2, "Two"}, {3, "Three"}};
        }
        page.items.push_back(std::move(view));
    }
    return page;
}

ItemView& At(Page& page, const std::string& name) {
    for (ItemView& view : page.items) {
        if (name == view.item->name) {
            return view;
        }
    }
    throw std::out_of_range(name);
}

Page Without(Page page, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        At(page, name).visible = false;
    }
    return page;
}

Page Dimmed(Page page, const std::string& name, const std::optional<std::string>& reason,
            const std::optional<Box>& popup) {
    ItemView& view = At(page, name);
    view.enabled = false;
    view.disableText = reason;
    view.disablePopup = popup;
    return page;
}

class NavigatorTest : public testing::Test {
  protected:
    NavigatorTest() {
        sent.clear();
        asks = true;
    }

    std::string Focus() const {
        return navigator_.Focused() != nullptr ? navigator_.Focused()->name : "";
    }
    std::vector<Deed> Press(const std::vector<Key>& keys) {
        std::vector<Deed> deeds;
        for (const Key key : keys) {
            deeds.push_back(navigator_.Press(key));
        }
        return deeds;
    }
    void FocusOn(const std::string& name) {
        navigator_.Press(Key::kHome);
        while (Focus() != name) {
            const std::string before = Focus();
            navigator_.Press(Key::kDown);
            ASSERT_NE(before, Focus()) << "there is no " << name;
        }
    }

    const host::AskableProvider provider_ = Provider();
    Navigator navigator_{provider_, Full()};
};

const Box kTwoButtons = {"Set up", "Set it up first.", {"Set up", "Later"}, 9999};
const Box kOneButton = {"Set up", "Set it up first.", {"Set up"}, 9999};

}  // namespace

TEST_F(NavigatorTest, TheFirstItemHasTheFocusAndTheArrowsStopAtTheEnds) {
    EXPECT_EQ(Focus(), "voice-assistant");
    Press({Key::kUp});
    EXPECT_EQ(Focus(), "voice-assistant");
    Press(std::vector<Key>(20, Key::kDown));
    EXPECT_EQ(Focus(), "voice-settings-salute");
}

TEST_F(NavigatorTest, HiddenItemsAreSkippedAndDimmedOnesAreNot) {
    navigator_.Show(Dimmed(Without(Full(), {"voice-always-wake-up", "voice-screen-on-wake-up"}),
                           "situational-hint", "Not now", std::nullopt));
    Press({Key::kDown, Key::kDown});
    EXPECT_EQ(Focus(), "situational-hint");
}

TEST_F(NavigatorTest, WhatLiesBelowAHiddenItemIsHiddenToo) {
    navigator_.Show(Without(Full(), {"voice-wake-up"}));
    Press({Key::kDown});
    EXPECT_EQ(Focus(), "situational-hint");
}

TEST_F(NavigatorTest, OkTurnsASwitchOver) {
    FocusOn("voice-wake-up");
    EXPECT_THAT(Press({Key::kOk}), ElementsAre(Deed::kSent));
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-wake-up", 1)));
    Page on = Full();
    At(on, "voice-wake-up").value = 1;
    navigator_.Show(on);
    Press({Key::kOk});
    EXPECT_EQ(sent.back(), std::pair(std::string("voice-wake-up"), 0));
    EXPECT_EQ(Focus(), "voice-wake-up");
}

TEST_F(NavigatorTest, TheListOpensOnTheCurrentChoiceAndBackLeavesIt) {
    Press({Key::kOk});
    ASSERT_TRUE(navigator_.OpenedList());
    EXPECT_EQ(navigator_.OpenedList()->focus, 1U);
    EXPECT_THAT(Press({Key::kBack}), ElementsAre(Deed::kNothing));
    EXPECT_FALSE(navigator_.OpenedList());
    EXPECT_EQ(Focus(), "voice-assistant");
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, AChoiceIsAskedAboutOnceWithTheFocusOnTheFirstButton) {
    Press({Key::kOk, Key::kDown, Key::kOk});
    EXPECT_FALSE(navigator_.OpenedList());
    ASSERT_TRUE(navigator_.OpenedBox());
    EXPECT_EQ(navigator_.OpenedBox()->box.message, "Change it?");
    EXPECT_EQ(navigator_.OpenedBox()->focus, 0U);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_THAT(Press({Key::kOk}), ElementsAre(Deed::kSent));
    EXPECT_FALSE(navigator_.OpenedBox());
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-assistant", 3)));
}

TEST_F(NavigatorTest, TheSecondButtonAndBackSendNothing) {
    Press({Key::kOk, Key::kOk, Key::kRight, Key::kOk});
    EXPECT_FALSE(navigator_.OpenedBox());
    Press({Key::kOk, Key::kOk, Key::kBack});
    EXPECT_FALSE(navigator_.OpenedBox());
    EXPECT_FALSE(navigator_.OpenedList());
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, TheFocusMovesBackAndForthAmongTheButtonsAndStopsAtTheEnds) {
    Press({Key::kOk, Key::kOk, Key::kRight, Key::kRight});
    EXPECT_EQ(navigator_.OpenedBox()->focus, 1U);
    Press({Key::kLeft, Key::kLeft});
    EXPECT_EQ(navigator_.OpenedBox()->focus, 0U);
}

TEST_F(NavigatorTest, AChoiceThatNobodyAsksAboutIsSentAtOnce) {
    asks = false;
    EXPECT_THAT(Press({Key::kOk, Key::kUp, Key::kOk}),
                ElementsAre(Deed::kNothing, Deed::kNothing, Deed::kSent));
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-assistant", 1)));
}

TEST_F(NavigatorTest, ADimmedItemTellsItsReasonAndSendsNothing) {
    navigator_.Show(Dimmed(Full(), "voice-wake-up", "Not now", std::nullopt));
    FocusOn("voice-wake-up");
    EXPECT_THAT(Press({Key::kOk}), ElementsAre(Deed::kNothing));
    EXPECT_EQ(navigator_.TakeReason(), "Not now");
    EXPECT_EQ(navigator_.TakeReason(), std::nullopt);
    EXPECT_FALSE(navigator_.OpenedBox());
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, TheFirstButtonOfADimmedItemsPopupSendsItsAction) {
    for (const Box& popup : {kOneButton, kTwoButtons}) {
        sent.clear();
        navigator_.Show(Dimmed(Full(), "voice-settings-orvik", std::nullopt, popup));
        FocusOn("voice-settings-orvik");
        Press({Key::kOk});
        ASSERT_TRUE(navigator_.OpenedBox());
        EXPECT_EQ(navigator_.OpenedBox()->box, popup);
        Press({Key::kOk});
        EXPECT_THAT(sent, ElementsAre(std::pair("voice-settings-orvik", 9999)));
    }
}

TEST_F(NavigatorTest, AOneButtonPopupKeepsItsFocusAndBackLeavesIt) {
    navigator_.Show(Dimmed(Full(), "voice-settings-orvik", std::nullopt, kOneButton));
    FocusOn("voice-settings-orvik");
    Press({Key::kOk, Key::kRight});
    EXPECT_EQ(navigator_.OpenedBox()->focus, 0U);
    Press({Key::kBack});
    EXPECT_FALSE(navigator_.OpenedBox());
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, TheFocusGoesToTheNextItemWhenItsOwnVanishes) {
    FocusOn("situational-hint");
    navigator_.Show(Without(Full(), {"situational-hint"}));
    EXPECT_EQ(Focus(), "voice-settings-orvik");
    FocusOn("voice-settings-salute");
    navigator_.Show(Without(Full(), {"voice-settings-salute"}));
    EXPECT_EQ(Focus(), "voice-settings-google");
}

TEST_F(NavigatorTest, TheFocusStaysOnItsItemWhenOthersComeAndGo) {
    FocusOn("situational-hint");
    navigator_.Show(Without(Full(), {"voice-wake-up", "voice-assistant"}));
    EXPECT_EQ(Focus(), "situational-hint");
    navigator_.Show(Full());
    EXPECT_EQ(Focus(), "situational-hint");
}

TEST_F(NavigatorTest, ThePageComesInPlaceOfTheSetupAndKeepsAFocus) {
    std::vector<std::string> all;
    for (const Item& item : host::PageItems()) {
        all.emplace_back(item.name);
    }
    Page setup = Without(Full(), all);
    At(setup, "onboarding").visible = true;
    navigator_.Show(setup);
    EXPECT_EQ(Focus(), "onboarding");
    EXPECT_EQ(navigator_.Lines().size(), 1U);
    EXPECT_THAT(Press({Key::kOk}), ElementsAre(Deed::kSent));
    EXPECT_THAT(sent, ElementsAre(std::pair("onboarding", 9999)));
    navigator_.Show(Full());
    EXPECT_EQ(Focus(), "voice-settings-salute");  // the last one before it
    navigator_.Show(Without(Full(), all));
    EXPECT_EQ(Focus(), "");
    EXPECT_THAT(Press({Key::kOk, Key::kDown}), ElementsAre(Deed::kNothing, Deed::kNothing));
}

TEST_F(NavigatorTest, ADimmedPageIsItsOwnOnlyLineAndTellsWhy) {
    navigator_.Show(Dimmed(Full(), "voice", "The microphone is off", std::nullopt));
    EXPECT_EQ(Focus(), "voice");
    EXPECT_EQ(navigator_.Lines().size(), 1U);
    Press({Key::kOk});
    EXPECT_EQ(navigator_.TakeReason(), "The microphone is off");
}

TEST_F(NavigatorTest, AnOpenBoxOutlivesAChangeOfThePage) {
    Press({Key::kOk, Key::kUp, Key::kOk});
    ASSERT_TRUE(navigator_.OpenedBox());
    navigator_.Show(Without(Full(), {"voice-assistant"}));
    ASSERT_TRUE(navigator_.OpenedBox());
    EXPECT_THAT(Press({Key::kOk}), ElementsAre(Deed::kSent));
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-assistant", 1)));
}

TEST_F(NavigatorTest, AnOpenListShowsWhatCanBeChosenNow) {
    Press({Key::kOk, Key::kDown});
    Page other = Full();
    At(other, "voice-assistant").choices = {{3, "Three"}, {4, "Four"}};
    navigator_.Show(other);
    ASSERT_TRUE(navigator_.OpenedList());
    EXPECT_EQ(navigator_.OpenedList()->focus, 0U);  // still on "Three"
    Press({Key::kDown, Key::kOk, Key::kOk});
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-assistant", 4)));
    navigator_.Show(Full());
    Press({Key::kOk});
    ASSERT_TRUE(navigator_.OpenedList());
    navigator_.Show(Without(Full(), {"voice-assistant"}));
    EXPECT_FALSE(navigator_.OpenedList());
}

TEST_F(NavigatorTest, AnApplicationCoversThePageUntilItEnds) {
    FocusOn("situational-hint");
    navigator_.Open({"org.example.app", 7, "An application", {"type = SETUP"}, ""});
    ASSERT_NE(navigator_.FrontApplication(), nullptr);
    EXPECT_THAT(Press({Key::kOk, Key::kRight, Key::kOk, Key::kBack}),
                ElementsAre(Deed::kFinish, Deed::kNothing, Deed::kCancel, Deed::kCancel));
    EXPECT_THAT(sent, IsEmpty());
    navigator_.TellProblem("There is no network.");
    EXPECT_EQ(navigator_.FrontApplication()->problem, "There is no network.");
    navigator_.CloseProcess(8);
    ASSERT_NE(navigator_.FrontApplication(), nullptr);
    navigator_.CloseProcess(7);
    EXPECT_EQ(navigator_.FrontApplication(), nullptr);
    EXPECT_EQ(Focus(), "situational-hint");
}

TEST_F(NavigatorTest, AnApplicationThatComesAgainIsThereOnceAndInFront) {
    navigator_.Open({"one", 1, "", {}, ""});
    navigator_.Open({"two", 2, "", {}, ""});
    navigator_.Open({"one", 1, "", {}, ""});
    EXPECT_EQ(navigator_.FrontApplication()->id, "one");
    navigator_.CloseProcess(1);
    EXPECT_EQ(navigator_.FrontApplication()->id, "two");
    navigator_.CloseProcess(2);
    EXPECT_EQ(navigator_.FrontApplication(), nullptr);
}

TEST_F(NavigatorTest, TheSettingsOfAnAssistantOpenAndBackLeadsToThePage) {
    FocusOn("voice-settings-alexa");
    for (const Key leaves : {Key::kBack, Key::kOk, Key::kHome}) {
        FocusOn("voice-settings-alexa");
        Press({Key::kOk});
        ASSERT_NE(navigator_.FrontApplication(), nullptr);
        EXPECT_EQ(navigator_.FrontApplication()->title, "T voice-settings-alexa");
        EXPECT_THAT(Press({leaves}), ElementsAre(Deed::kNothing));
        EXPECT_EQ(navigator_.FrontApplication(), nullptr);
    }
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, HomeLeavesWhateverIsOpenAndBackOnThePageLeavesThePage) {
    Press({Key::kDown, Key::kUp, Key::kOk, Key::kOk});
    ASSERT_TRUE(navigator_.OpenedBox());
    navigator_.Open({"one", 1, "", {}, ""});
    Press({Key::kHome});
    EXPECT_FALSE(navigator_.OpenedBox());
    EXPECT_EQ(navigator_.FrontApplication(), nullptr);
    EXPECT_EQ(Focus(), "voice-assistant");
    EXPECT_THAT(Press({Key::kBack}), ElementsAre(Deed::kLeave));
    navigator_.Open({"one", 1, "", {}, ""});
    EXPECT_NE(navigator_.FrontApplication(), nullptr);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NavigatorTest, TheMousePressesItemsLinesAndButtonsButNothingThatIsCovered) {
    navigator_.PressItem("voice-wake-up");
    EXPECT_THAT(sent, ElementsAre(std::pair("voice-wake-up", 1)));
    navigator_.PressItem("voice-assistant");
    navigator_.PressItem("situational-hint");
    EXPECT_EQ(Focus(), "voice-assistant");
    navigator_.PressLine(9);
    navigator_.PressLine(0);
    ASSERT_TRUE(navigator_.OpenedBox());
    EXPECT_EQ(navigator_.PressButton(0), Deed::kSent);
    EXPECT_EQ(sent.back(), std::pair(std::string("voice-assistant"), 1));
    EXPECT_EQ(navigator_.PressButton(0), Deed::kNothing);
    navigator_.PressItem("onboarding");
    EXPECT_EQ(sent.size(), 2U);
}

TEST_F(NavigatorTest, EveryNameOfAKeyIsKnownAndNoOther) {
    for (const char* name : {"up", "down", "left", "right", "ok", "back", "home"}) {
        EXPECT_TRUE(window::KeyNamed(name)) << name;
    }
    EXPECT_FALSE(window::KeyNamed("OK"));
    EXPECT_FALSE(window::KeyNamed(""));
}

TEST_F(NavigatorTest, TheSceneTellsAllThatIsSeen) {
    navigator_.Show(Dimmed(Full(), "voice-always-wake-up", "Not now", std::nullopt));
    FocusOn("voice-always-wake-up");
    const window::Scene scene = SceneOf(navigator_, "de_DE", {"situational-hint"});
    const std::string text = ToText(scene);
    EXPECT_THAT(text, HasSubstr(">   T voice-always-wake-up = Aus (dimmed)\n"));
    EXPECT_THAT(text, HasSubstr("  T situational-hint = Aus (changed)\n"));
    EXPECT_THAT(text, HasSubstr("reason: Not now\n"));
    EXPECT_THAT(text, HasSubstr("  T voice-assistant = Two\n"));
    EXPECT_THAT(text, Not(HasSubstr("T onboarding")));
    EXPECT_EQ(SpokenText(scene, "de_DE"), "T voice-always-wake-up. Aus. nicht verfügbar. Not now");
    EXPECT_FALSE(scene.look.mirrored);
    EXPECT_TRUE(SceneOf(navigator_, "ar_AE", {}).look.mirrored);
}

TEST_F(NavigatorTest, ASwitchThatIsNeitherOnNorOffIsNotDrawnAsOff) {
    Page page = Full();
    for (ItemView& view : page.items) {
        view.value = view.item->name == std::string("situational-hint") ? -1 : view.value;
    }
    navigator_.Show(page);
    EXPECT_THAT(ToText(SceneOf(navigator_, "de_DE", {})),
                HasSubstr("  T situational-hint = neither on nor off (-1)\n"));
}

TEST_F(NavigatorTest, WhatIsInFrontIsWhatIsSpoken) {
    Press({Key::kOk});
    EXPECT_EQ(SpokenText(SceneOf(navigator_, "en_GB", {}), "en_GB"),
              "T voice-assistant. Two. selected");
    Press({Key::kDown, Key::kOk});
    EXPECT_EQ(SpokenText(SceneOf(navigator_, "en_GB", {}), "en_GB"), "Assistant. Change it? OK");
    navigator_.Open({"one", 1, "Sign in", {}, "There is no network."});
    EXPECT_EQ(SpokenText(SceneOf(navigator_, "en_GB", {}), "en_GB"),
              "Sign in. There is no network. Finish");
}
