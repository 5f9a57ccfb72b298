// The page: its items, what is seen of them, and how two looks differ.
#include "host/page/page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "host/page/provider.h"

using host::CompareItems;
using host::FindItem;
using host::HoldsTextId;
using host::LookAtPage;
using host::Page;
using host::PageItems;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const host::Provider& Fake() {
    static const host::Provider provider(std::string(FAKES) + "/libfake-sound.so");
    return provider;
}

}  // namespace

TEST(Page, HasThirteenItemsWithNamesThatAreTheEndsOfTheirKeys) {
    const std::string prefix = "menu/system/general-";
    std::set<std::string> names;
    for (const host::Item& item : PageItems()) {
        names.insert(item.name);
        const std::string key = item.key;
        const std::string end =
            key == "menu/system/general-voice" ? "voice" : key.substr((prefix + "voice-").size());
        EXPECT_EQ(item.name, end) << key;
    }
    EXPECT_EQ(names.size(), 13U);
}

TEST(Page, AnItemIsFoundByNameAndByKey) {
    EXPECT_EQ(FindItem("voice-wake-up"), FindItem("menu/system/general-voice-voice-wake-up"));
    EXPECT_NE(FindItem("voice-wake-up"), nullptr);
    EXPECT_EQ(FindItem("voice-wake"), nullptr);
    EXPECT_EQ(FindItem(""), nullptr);
}

TEST(Page, EveryParentIsAnItem) {
    int children = 0;
    for (const host::Item& item : PageItems()) {
        if (item.parent != nullptr) {
            ++children;
            EXPECT_NE(FindItem(item.parent), nullptr) << item.name;
        }
    }
    EXPECT_GT(children, 0);
}

TEST(Page, ATextIdInPlaceOfATextIsNoticed) {
    EXPECT_TRUE(HoldsTextId("TV_SID_SETTINGS_VOICE"));
    EXPECT_TRUE(HoldsTextId("Press COM_SID_OK now"));
    EXPECT_TRUE(HoldsTextId("Erst\nDREAM_ORV_TMBODY_ORVIK"));
    EXPECT_FALSE(HoldsTextId("Voice"));
    EXPECT_FALSE(HoldsTextId("USB_C and HDMI"));
    EXPECT_FALSE(HoldsTextId("语音"));
    EXPECT_FALSE(HoldsTextId(""));
}

TEST(Page, AnUntranslatedTitleIsMarked) {
    const Page page = LookAtPage(Fake());
    EXPECT_THAT(page["voice-wake-up"].MissingTexts(), ElementsAre("title"));
    EXPECT_THAT(page["voice"].MissingTexts(), IsEmpty());
}

TEST(Page, OnlyItemsWithAValueAreAskedForOne) {
    const Page page = LookAtPage(Fake());
    for (const host::ItemView& view : page.items) {
        EXPECT_EQ(view.value.has_value() && !HasValue(*view.item), false) << view.item->name;
    }
    EXPECT_EQ(page["voice-assistant"].ValueText(), "One");
    EXPECT_EQ(page["voice-wake-up"].ValueText(), "off");
}

TEST(Page, ADimmedItemCarriesItsReasonAndAnEnabledOneNone) {
    const Page page = LookAtPage(Fake());
    EXPECT_EQ(page["voice-wake-up"].disableText, "Not now.");
    EXPECT_TRUE(page["voice-settings-orvik"].disablePopup.has_value());
    EXPECT_EQ(page["voice-assistant"].disableText, std::nullopt);
}

TEST(Page, AnItemOnAHiddenOrDimmedPageCannotBeReached) {
    Page page = LookAtPage(Fake());
    const host::Item& item = *FindItem("voice-assistant");
    EXPECT_TRUE(page.IsReachable(item));
    page.items.front().enabled = false;
    EXPECT_FALSE(page.IsReachable(item));
    page.items.front().enabled = true;
    page.items.front().visible = false;
    EXPECT_FALSE(page.IsReachable(item));
}

TEST(Page, TwoLooksDifferInWhatAViewerSees) {
    const Page before = LookAtPage(Fake());
    Page after = before;
    EXPECT_THAT(ComparePages(before, after), IsEmpty());
    after.items[1].value = 2;
    after.items[12].title = "of a hidden item";
    const std::vector<host::PageChange> changes = ComparePages(before, after);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(ToText(changes[0], after), "Assistant (voice-assistant): One -> Two");
}

TEST(Page, APopupWithTheSameWordsAndAnotherButtonIsAnotherReason) {
    const host::ItemView before = LookAtPage(Fake())["voice-settings-orvik"];
    host::ItemView after = before;
    EXPECT_THAT(CompareItems(before, after), IsEmpty());
    after.disablePopup->buttons = {"Later"};
    const std::vector<host::PageChange> changes = CompareItems(before, after);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].what, "reason");
    EXPECT_EQ(ToText(changes[0]), "Set up: Set it up? [Start] -> Set up: Set it up? [Later]");
}

TEST(Page, OfAnItemThatGoesAwayNothingElseIsTold) {
    const Page before = LookAtPage(Fake());
    Page after = before;
    after.items[1].visible = false;
    after.items[1].value = 2;
    const std::vector<host::PageChange> changes = ComparePages(before, after);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].what, "visible");
    EXPECT_EQ(changes[0].after, "hidden");
}

TEST(Page, AnItemBelowAHiddenItemIsNotOnThePageWhateverItsOwnRuleSays) {
    Page page;
    for (const host::Item& item : PageItems()) {
        host::ItemView view;
        view.item = &item;
        view.visible = view.enabled = true;
        page.items.push_back(view);
    }
    const host::Item& always = *FindItem("voice-always-wake-up");
    EXPECT_TRUE(page.IsReachable(always));
    page.items[2].visible = false;  // voice-wake-up
    EXPECT_FALSE(page.IsReachable(always));
    EXPECT_EQ(page.FirstHidden(always)->item, FindItem("voice-wake-up"));
    page.items[0].visible = false;
    EXPECT_EQ(page.FirstHidden(always)->item, FindItem("voice"));
    page.items[0].visible = page.items[2].visible = true;
    page.items[0].enabled = false;
    EXPECT_TRUE(page.IsShown(always));
    EXPECT_FALSE(page.IsReachable(always));
    EXPECT_TRUE(page.IsReachable(*FindItem("onboarding")));
}
