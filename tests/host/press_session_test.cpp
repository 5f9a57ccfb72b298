// A press as a session, on fake providers: what waits for the viewer, and what goes to the
// provider.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/page/provider.h"
#include "host/page/viewer.h"

using host::Answer;
using host::FindItem;
using host::ItemView;
using host::Press;
using host::PressSession;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A provider of its own for each test: what one presses the next does not find.
class PressSessionTest : public testing::Test {
  protected:
    ItemView Look(const char* item) const { return LookAt(provider_, *FindItem(item)); }

    const host::Provider provider_{std::string(FAKES) + "/libfake-sound.so",
                                   host::Provider::Copy::kPrivate};
};

// A TV on which nothing but one application was ever launched, behind the first mark.
class OneLaunch : public host::TvEvents {
  public:
    vtv::LaunchMark LaunchMark() override { return {.size = 7}; }
    std::vector<vtv::Launch> LaunchesSince(const vtv::LaunchMark& mark) override {
        EXPECT_EQ(mark.size, 7);
        vtv::Launch launch;
        launch.appId = "an.app";
        launch.extras = {{"key", "value"}};
        return {launch};
    }
    void Settle() override { ++settled; }
    std::vector<std::string> TakeFailures() override { return {"it failed"}; }

    int settled = 0;
};

}  // namespace

TEST_F(PressSessionTest, AListWaitsForAChoiceAndThenForAnAnswer) {
    const ItemView list = Look("voice-assistant");
    PressSession session(provider_, list);
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kForChoice);
    session.Choose(2);
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kForAnswer);
    ASSERT_TRUE(session.OpenedBox());
    EXPECT_EQ(session.OpenedBox()->message, "Change it?");
    EXPECT_EQ(session.Sends(), std::nullopt);
    session.Reply(Answer::kNone);
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kForAnswer);
    session.Reply(Answer::kOk);
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kNothing);
    EXPECT_EQ(session.Sends(), 2);
    EXPECT_EQ(provider_.GetInt(list.item->key), 1);
    session.Send();
    EXPECT_EQ(provider_.GetInt(list.item->key), 2);
}

TEST_F(PressSessionTest, ACancelSendsNothing) {
    const ItemView list = Look("voice-assistant");
    PressSession session(provider_, list);
    session.Play({list.item, 2, Answer::kCancel});
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kNothing);
    EXPECT_EQ(session.Sends(), std::nullopt);
    session.Send();
    EXPECT_EQ(provider_.GetInt(list.item->key), 1);
}

TEST_F(PressSessionTest, AChoiceWithoutABoxIsSentAtOnce) {
    ItemView list = Look("voice-assistant");
    const host::Item unasked = {"x", "x", nullptr, host::ItemKind::kList, "", ""};
    list.item = &unasked;
    PressSession session(provider_, list);
    session.Choose(2);
    EXPECT_EQ(session.OpenedBox(), std::nullopt);
    EXPECT_EQ(session.Sends(), 2);
}

TEST_F(PressSessionTest, ASwitchTurnsOverOrTakesWhatItIsTold) {
    ItemView wakeUp = Look("voice-wake-up");
    wakeUp.enabled = true;
    PressSession session(provider_, wakeUp);
    EXPECT_EQ(session.Sends(), 1);
    session.Choose(0);
    EXPECT_EQ(session.Sends(), 0);
    wakeUp.value = 1;
    EXPECT_EQ(PressSession(provider_, wakeUp).Sends(), 0);
    wakeUp.value.reset();
    EXPECT_EQ(PressSession(provider_, wakeUp).Sends(), 1);
}

TEST_F(PressSessionTest, TheButtonOfADimmedItemsPopupSendsItsAction) {
    const ItemView dimmed = Look("voice-settings-orvik");
    PressSession session(provider_, dimmed);
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kForAnswer);
    EXPECT_EQ(session.OpenedBox()->message, "Set it up?");
    session.Reply(Answer::kOk);
    EXPECT_EQ(session.Sends(), 9999);
}

TEST_F(PressSessionTest, ADimmedItemWithoutAPopupTakesNothing) {
    const ItemView dimmed = Look("voice-wake-up");
    PressSession session(provider_, dimmed);
    session.Play({dimmed.item, 1, Answer::kOk});
    EXPECT_EQ(session.WaitsFor(), PressSession::Waits::kNothing);
    EXPECT_EQ(session.Sends(), std::nullopt);
}

TEST_F(PressSessionTest, EverythingThatAViewerCanDoIsListedToItsEnd) {
    const ItemView list = Look("voice-assistant");
    EXPECT_THAT(
        PossiblePresses(provider_, list),
        ElementsAre(Press{list.item, 1, Answer::kOk}, Press{list.item, 1, Answer::kCancel},
                    Press{list.item, 2, Answer::kOk}, Press{list.item, 2, Answer::kCancel}));
    ItemView popup = Look("voice-settings-orvik");
    EXPECT_THAT(
        PossiblePresses(provider_, popup),
        ElementsAre(Press{popup.item, {}, Answer::kOk}, Press{popup.item, {}, Answer::kCancel}));
    popup.disablePopup->action.reset();
    EXPECT_THAT(PossiblePresses(provider_, popup),
                ElementsAre(Press{popup.item, {}, Answer::kCancel}));
    ItemView wakeUp = Look("voice-wake-up");
    EXPECT_THAT(PossiblePresses(provider_, wakeUp), IsEmpty());
    wakeUp.enabled = true;
    EXPECT_THAT(PossiblePresses(provider_, wakeUp),
                ElementsAre(Press{wakeUp.item, 1, Answer::kNone}));
    EXPECT_THAT(PossiblePresses(provider_, Look("voice")), IsEmpty());
    EXPECT_EQ(provider_.GetInt(list.item->key), 1) << "listing is not pressing";
}

TEST_F(PressSessionTest, AViewerSeesWhatWasLaunchedBehindTheMarkAndWhatFailed) {
    OneLaunch tv;
    const host::PressResult result =
        host::Viewer(provider_, tv).PressItem({FindItem("voice-assistant"), 2, Answer::kOk});
    EXPECT_TRUE(result.done);
    std::vector<std::string> seen;
    for (const host::Sight& sight : result.sights) {
        seen.push_back(std::string(ToText(sight.kind)) + ": " + sight.text);
    }
    EXPECT_THAT(seen,
                ElementsAre("box: Change: Change it? [Yes] [No]", "application: an.app key=value",
                            "change: Assistant (voice-assistant): One -> Two"));
    EXPECT_THAT(result.failures, ElementsAre("it failed"));
    EXPECT_EQ(tv.settled, 1);
}

TEST_F(PressSessionTest, AChoiceThatIsNotOfferedMeansNothing) {
    OneLaunch tv;
    EXPECT_THROW(host::Viewer(provider_, tv).PressItem({FindItem("voice-assistant"), 3}),
                 host::MeaninglessPress);
}
