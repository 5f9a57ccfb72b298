// The built-in microphone and pass-through.
#include "page.h"

using namespace recording;

namespace {

class Microphone : public Provider {};
class PassThrough : public Provider {};

}  // namespace

TEST_F(Microphone, SwitchedOnIsEveryNumberButZero) {
    for (const int state : {1, 2, -1}) {
        Set(setting::MIC, state);
        EXPECT_TRUE(Ask([] { return CSIMenuUtil::isBuiltInMicActivated(); })) << state;
        EXPECT_CALLS(Lines{GetInt(setting::MIC),
                           E(source::UTIL, "isBuiltInMicActivated", 467, "builtInMic activated")});
    }
}

TEST_F(Microphone, ZeroIsSwitchedOff) {
    Set(setting::MIC, 0);
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::isBuiltInMicActivated(); }));
    EXPECT_CALLS(Lines{GetInt(setting::MIC),
                       E(source::UTIL, "isBuiltInMicActivated", 472, "builtInMic in-activated")});
}

TEST_F(Microphone, AMissingSettingIsSwitchedOffWithARecord) {
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::isBuiltInMicActivated(); }));
    EXPECT_CALLS(Lines{GetInt(setting::MIC),
                       E(source::UTIL, "isBuiltInMicActivated", 461, "vconf get failed")});
}

TEST_F(PassThrough, SwitchingItOnIsLoggedAsAnErrorRecord) {
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::setPassthruEnabled(true); }));
    EXPECT_CALLS(Lines{"vconf_set_bool db/menu/voice/passthru 1",
                       E(source::UTIL, "setPassthruEnabled", 415, "Passthru enable : 1")});
    EXPECT_EQ(std::get<StoredBool>(tv().settings[setting::PASSTHRU]).number, 1);
}

TEST_F(PassThrough, SwitchingItOffIsLoggedWithZero) {
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::setPassthruEnabled(false); }));
    EXPECT_CALLS(Lines{"vconf_set_bool db/menu/voice/passthru 0",
                       E(source::UTIL, "setPassthruEnabled", 415, "Passthru enable : 0")});
}

TEST_F(PassThrough, AWriteThatFailsIsAnInfoRecordAndFalse) {
    Set(setting::PASSTHRU, false);
    Fail("vconf_set_bool");
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::setPassthruEnabled(true); }));
    EXPECT_CALLS(
        Lines{"vconf_set_bool db/menu/voice/passthru 1",
              I(source::UTIL, "setPassthruEnabled", 412, "Failed to set db/menu/voice/passthru")});
    EXPECT_EQ(std::get<StoredBool>(tv().settings[setting::PASSTHRU]).number, 0);
}

TEST_F(PassThrough, TheStateDimIsDimmed) {
    Set(setting::PASSTHRU_STATE, R"({"state":"dim"})");
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsPassthruDimmed(); }));
    EXPECT_CALLS(Member(setting::PASSTHRU_STATE, "state", "dim") +
                 Lines{E(source::UTIL, "IsPassthruDimmed", 431, "Passthru dim")});
}

TEST_F(PassThrough, OnlyTheStateActiveIsNotDimmed) {
    Set(setting::PASSTHRU_STATE, R"({"state":"active"})");
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsPassthruDimmed(); }));
    EXPECT_CALLS(Member(setting::PASSTHRU_STATE, "state", "active") +
                 Lines{E(source::UTIL, "IsPassthruDimmed", 436, "Passthru undim")});
}

TEST_F(PassThrough, AnyOtherStateIsWrongAndDimmed) {
    for (const char* state : {"DIM", "Active", "", "dim ", "null"}) {
        Set(setting::PASSTHRU_STATE, (std::string(R"({"state":")") + state + "\"}").c_str());
        EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsPassthruDimmed(); })) << state;
        EXPECT_CALLS(Member(setting::PASSTHRU_STATE, "state", state) +
                     Lines{E(source::UTIL, "IsPassthruDimmed", 441,
                             std::string("Passthru dim value wrong - ") + state)});
    }
}

TEST_F(PassThrough, AMissingStateIsDimmedAndHasNoText) {
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsPassthruDimmed(); }));
    EXPECT_LOGGED(E(source::UTIL, "IsPassthruDimmed", 441, "Passthru dim value wrong - "));
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetPassthruDimmedToastPopUpString(); }), "");
    EXPECT_LOGGED(
        E(source::UTIL, "GetPassthruDimmedToastPopUpString", 450, "Passthru dim string - "));
}

TEST_F(PassThrough, AMissingStateMemberIsDimmed) {
    Set(setting::PASSTHRU_STATE, R"({"text":"x"})");
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsPassthruDimmed(); }));
    EXPECT_CALLS(Lines{GetStr(setting::PASSTHRU_STATE),
                       E(source::UTIL, "IsPassthruDimmed", 441, "Passthru dim value wrong - ")});
}

TEST_F(PassThrough, TheTextIsReadAndLogged) {
    Set(setting::PASSTHRU_STATE, R"({"state":"dim","text":"Check the power."})");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetPassthruDimmedToastPopUpString(); }),
              "Check the power.");
    EXPECT_CALLS(Member(setting::PASSTHRU_STATE, "text", "Check the power.") +
                 Lines{E(source::UTIL, "GetPassthruDimmedToastPopUpString", 450,
                         "Passthru dim string - Check the power.")});
}
