// Starting applications, the popup, the refresh request, the choice of the assistant.
#include "page.h"

using namespace recording;

namespace {

class Launching : public Provider {
  protected:
    template <typename Action>
    static void Do(Action action) {
        ClearCalls();
        action();
    }
};

Lines PopupRequest(const std::string& text) {
    return {"app_control_create",
            "app_control_set_operation default",
            "app_control_set_app_id org.nemra.alert-syspopup",
            "app_control_add_extra_data type notification",
            "app_control_add_extra_data text " + text,
            "app_control_add_extra_data timeout 7",
            "app_control_send_launch_request (null) (null)"};
}

const Lines POPUP_SENT = {E(source::UTIL, "ShowPopup", 262, "Succeeded to launch alert popup."),
                          "app_control_destroy"};
const Lines POPUP_FAILED = {E(source::UTIL, "ShowPopup", 266, "Failed to launch alert popup"),
                            "app_control_destroy"};

}  // namespace

TEST_F(Launching, AnApplicationIsStartedWithAnEmptyBundle) {
    Do([] { CSIMenuUtil::LaunchApp("app"); });
    EXPECT_CALLS(Lines{"bundle_create", "aul_launch_app app", "bundle_free"});
    EXPECT_EQ(Launches(), (std::vector<Launch>{{"app", {}}}));
}

TEST_F(Launching, AnApplicationIsStartedWithOneExtra) {
    Do([] { CSIMenuUtil::LaunchApp("app", "key", "value"); });
    EXPECT_CALLS(
        Lines{"bundle_create", "bundle_add_str key value", "aul_launch_app app", "bundle_free"});
    EXPECT_EQ(Launches(), (std::vector<Launch>{{"app", {{"key", "value"}}}}));
}

TEST_F(Launching, AnApplicationThatCannotBeStartedIsNotNoticed) {
    Fail("aul_launch_app", 1, FOREVER, -20);
    Do([] { CSIMenuUtil::LaunchApp("no.such.app"); });
    EXPECT_CALLS(Lines{"bundle_create", "aul_launch_app no.such.app", "bundle_free"});
    Do([] { CSIMenuUtil::LaunchApp("no.such.app", "key", "value"); });
    EXPECT_CALLS(Lines{"bundle_create", "bundle_add_str key value", "aul_launch_app no.such.app",
                       "bundle_free"});
}

TEST_F(Launching, AFailedExtraDoesNotStopTheLaunch) {
    Fail("bundle_add_str");
    Do([] { CSIMenuUtil::LaunchApp("app", "key", "value"); });
    EXPECT_EQ(Launches().size(), 1u);
}

TEST_F(Launching, WithoutABundleTheLaunchDoesNotCrash) {
    Fail("bundle_create");
    Do([] { CSIMenuUtil::LaunchApp("app"); });
    Do([] { CSIMenuUtil::LaunchApp("app", "key", "value"); });
}

TEST_F(Launching, ThePopupIsRequestedWithItsExtrasInOrder) {
    Do([] { CSIMenuUtil::ShowPopup("Assistant changed."); });
    EXPECT_CALLS(PopupRequest("Assistant changed.") + POPUP_SENT);
    EXPECT_EQ(Launches(),
              (std::vector<Launch>{
                  {"org.nemra.alert-syspopup",
                   {{"type", "notification"}, {"text", "Assistant changed."}, {"timeout", "7"}}}}));
}

TEST_F(Launching, AnEmptyPopupTextIsStillSent) {
    Do([] { CSIMenuUtil::ShowPopup(""); });
    EXPECT_CALLS(PopupRequest("") + POPUP_SENT);
    EXPECT_EQ(Launches().at(0).extras.at("text"), "");
}

TEST_F(Launching, APopupThatCannotBeCreatedIsLoggedAndNothingElseHappens) {
    Fail("app_control_create");
    Do([] { CSIMenuUtil::ShowPopup("x"); });
    EXPECT_CALLS(Lines{"app_control_create",
                       E(source::UTIL, "ShowPopup", 251, "app_control_create failed")});
}

TEST_F(Launching, APopupThatCannotBeSentIsLoggedAndDestroyed) {
    Fail("app_control_send_launch_request");
    Do([] { CSIMenuUtil::ShowPopup("x"); });
    EXPECT_CALLS(PopupRequest("x") + POPUP_FAILED);
}

TEST_F(Launching, APopupIsSentThoughItsPartsWereRefused) {
    Fail("app_control_set_operation");
    Fail("app_control_add_extra_data");
    Do([] { CSIMenuUtil::ShowPopup("x"); });
    EXPECT_CALLS(PopupRequest("x") + POPUP_SENT);
}

TEST_F(Launching, APopupWhoseAddresseeWasRefusedIsTriedAllTheSame) {
    Fail("app_control_set_app_id");
    Do([] { CSIMenuUtil::ShowPopup("x"); });
    EXPECT_CALLS(PopupRequest("x") + POPUP_FAILED);
}

TEST_F(Launching, RefreshWritesOneAndLogsNothing) {
    Do([] { CSIMenuUtil::RefreshMenu(); });
    EXPECT_CALLS(Lines{"vconf_set_int db/menu/refresh_menu 1"});
    Do([] { CSIMenuUtil::RefreshMenu(); });
    EXPECT_CALLS(Lines{"vconf_set_int db/menu/refresh_menu 1"});
}

TEST_F(Launching, AFailedRefreshIsAnInfoRecord) {
    Fail("vconf_set_int");
    Do([] { CSIMenuUtil::RefreshMenu(); });
    EXPECT_CALLS(Lines{"vconf_set_int db/menu/refresh_menu 1",
                       I(source::UTIL, "RefreshMenu", 179,
                         "Failed to set db/menu/refresh_menu, refresh menu failed")});
}

TEST_F(Launching, TheChosenAssistantIsStoredAndLogged) {
    Do([] { CSIMenuUtil::SetVoiceAssistant("app"); });
    EXPECT_CALLS(Lines{std::string("vconf_set_str ") + setting::CURRENT + " app",
                       E(source::UTIL, "SetVoiceAssistant", 615, "[0]str: app")});
    EXPECT_EQ(CSIMenuUtil::GetCurrentVAAppID(), "app");
}

TEST_F(Launching, AChoiceThatTheStoreRefusesIsLoggedWithItsResult) {
    Fail("vconf_set_str", 1, 1, -7);
    Do([] { CSIMenuUtil::SetVoiceAssistant("app"); });
    EXPECT_LOG(Lines{E(source::UTIL, "SetVoiceAssistant", 615, "[-7]str: app")});
    EXPECT_EQ(CSIMenuUtil::GetCurrentVAAppID(), "");
}
