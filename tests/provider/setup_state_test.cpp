// Setup of the assistants, sign-in, consent, network.
#include "page.h"

using namespace recording;

namespace {

class SetupState : public Provider {};

std::string Access(const char* path) {
    return std::string("access ") + path + " 0";
}

const std::string WRONG_TYPE = E(source::UTIL, "IsVASetupComplete", 673, "[FATAL]Wrong type");

}  // namespace

TEST_F(SetupState, AFileExistsWhenItIsThere) {
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::isExistFile("/home/owner/x"); }));
    EXPECT_CALLS(Lines{"access /home/owner/x 0"});
    tv().files.insert("/home/owner/x");
    EXPECT_TRUE(CSIMenuUtil::isExistFile("/home/owner/x"));
    EXPECT_FALSE(CSIMenuUtil::isExistFile(""));
}

TEST_F(SetupState, AMarkerFileIsEnoughWhateverItHolds) {
    struct {
        bool (*check)();
        const char* file;
    } const checks[] = {{CSIMenuUtil::checkSetUpComplete_Alexa, file::ALEXA},
                        {CSIMenuUtil::checkSetUpComplete_Google, file::GOOGLE},
                        {CSIMenuUtil::checkSetUpComplete_Salute, file::SALUTE}};
    for (const auto& check : checks) {
        EXPECT_FALSE(Ask([&] { return check.check(); })) << check.file;
        EXPECT_CALLS(Lines{Access(check.file)});
        tv().files = {check.file};
        EXPECT_TRUE(Ask([&] { return check.check(); })) << check.file;
        EXPECT_CALLS(Lines{Access(check.file)});
    }
}

TEST_F(SetupState, AMarkerFileThatVanishesIsSeen) {
    tv().files.insert(file::ALEXA);
    EXPECT_TRUE(CSIMenuUtil::checkSetUpComplete_Alexa());
    tv().files.clear();
    EXPECT_FALSE(CSIMenuUtil::checkSetUpComplete_Alexa());
}

TEST_F(SetupState, TencentIsSetUpWhenItsMemberIsThereWhateverItsValue) {
    for (const char* value : {"false", "true", "null", "0", "[]", "{}", "\"\""}) {
        Set(setting::TENCENT, (std::string(R"({"onboarding_completed":)") + value + "}").c_str());
        EXPECT_TRUE(Ask([] { return CSIMenuUtil::checkSetUpComplete_Tencent(); })) << value;
        EXPECT_CALLS(Lines{GetStr(setting::TENCENT), I(source::UTIL, "checkSetUpComplete_Tencent",
                                                       305, "tencent onboarding done")});
    }
}

TEST_F(SetupState, TencentIsNotSetUpWithoutItsMember) {
    for (const char* text : {"{}", R"({"other":true})", R"({"Onboarding_completed":true})"}) {
        Set(setting::TENCENT, text);
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::checkSetUpComplete_Tencent(); })) << text;
        EXPECT_CALLS(Lines{GetStr(setting::TENCENT)});
    }
}

TEST_F(SetupState, TencentIsNotSetUpWhenItsSettingIsNoObject) {
    const std::string deep = R"({"onboarding_completed":true,"deep":)" + std::string(5000, '[');
    for (const char* text :
         {"[]", R"(["onboarding_completed"])", "5", "\"onboarding_completed\"", deep.c_str()}) {
        Set(setting::TENCENT, text);
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::checkSetUpComplete_Tencent(); }));
        EXPECT_CALLS(Lines{GetStr(setting::TENCENT)});
    }
}

TEST_F(SetupState, TencentsSettingThatDoesNotParseIsLogged) {
    Set(setting::TENCENT, "{");
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::checkSetUpComplete_Tencent(); }));
    EXPECT_CALLS(Lines{GetStr(setting::TENCENT),
                       E(source::UTIL, "checkSetUpComplete_Tencent", 296, "json parse error")});
    Remove(setting::TENCENT);
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::checkSetUpComplete_Tencent(); }));
    EXPECT_CALLS(Lines{GetStr(setting::TENCENT),
                       E(source::UTIL, "GetVconfStirng", 68,
                         std::string("[FATAL]can not get string from ") + setting::TENCENT),
                       E(source::UTIL, "checkSetUpComplete_Tencent", 296, "json parse error")});
}

TEST_F(SetupState, NoKindIsNotSetUp) {
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsVASetupComplete(ASSISTANT_NONE); }));
    EXPECT_CALLS(Lines{E(source::UTIL, "IsVASetupComplete", 651, "[FATAL]VA not selected")});
}

TEST_F(SetupState, AKindOutsideTheListIsWrong) {
    for (const int type : {7, -1, 100, -2147483647}) {
        EXPECT_FALSE(
            Ask([&] { return CSIMenuUtil::IsVASetupComplete(static_cast<ASSISTANT_TYPE>(type)); }));
        EXPECT_CALLS(Lines{WRONG_TYPE});
    }
}

TEST_F(SetupState, AlexaGoogleAndSaluteAskTheirFiles) {
    const std::pair<ASSISTANT_TYPE, const char*> kinds[] = {{ASSISTANT_ALEXA, file::ALEXA},
                                                            {ASSISTANT_GVA, file::GOOGLE},
                                                            {ASSISTANT_SBER, file::SALUTE}};
    for (const auto& [type, path] : kinds) {
        tv().files.clear();
        EXPECT_FALSE(Ask([&] { return CSIMenuUtil::IsVASetupComplete(type); }));
        EXPECT_CALLS(Lines{Access(path)});
        tv().files = {path};
        EXPECT_TRUE(CSIMenuUtil::IsVASetupComplete(type));
    }
}

TEST_F(SetupState, OrvikAndSvaAreSetUpWhenFirstActivationIsOver) {
    for (const ASSISTANT_TYPE type : {ASSISTANT_ORVIK, ASSISTANT_SVA}) {
        Set(setting::FIRST_TIME, true);
        EXPECT_FALSE(Ask([&] { return CSIMenuUtil::IsVASetupComplete(type); }));
        EXPECT_CALLS(Lines{GetBool(setting::FIRST_TIME)});
        Set(setting::FIRST_TIME, false);
        EXPECT_TRUE(CSIMenuUtil::IsVASetupComplete(type));
    }
}

TEST_F(SetupState, OrvikAndSvaAreSetUpWhenTheirSettingIsMissing) {
    EXPECT_TRUE(CSIMenuUtil::IsVASetupComplete(ASSISTANT_ORVIK));
    EXPECT_TRUE(CSIMenuUtil::IsVASetupComplete(ASSISTANT_SVA));
}

TEST_F(SetupState, TencentAsksItsSetting) {
    Set(setting::TENCENT, R"({"onboarding_completed":false})");
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsVASetupComplete(ASSISTANT_TENCENT); }));
    EXPECT_LOG(
        Lines{I(source::UTIL, "checkSetUpComplete_Tencent", 305, "tencent onboarding done")});
}

TEST_F(SetupState, OnlyLoginStateOneIsSignedIn) {
    for (const int state : {-1, 0, 2, 3, 11}) {
        tv().loginState = state;
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsSignedIn(); })) << state;
        EXPECT_CALLS(Lines{"sso_get_login_state"});
    }
    tv().loginState = 1;
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsSignedIn(); }));
    EXPECT_CALLS(Lines{"sso_get_login_state"});
}

TEST_F(SetupState, ALoginStateThatCannotBeReadIsSignedOutAndLogged) {
    SignIn();
    for (const int code : {-1, 1}) {
        Fail("sso_get_login_state", 1, 1, code);
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsSignedIn(); }));
        EXPECT_CALLS(Lines{"sso_get_login_state",
                           E(source::UTIL, "IsSignedIn", 204, "get logged in state failed")});
    }
}

TEST_F(SetupState, BothConsentsAreNeeded) {
    tv().consents = {{"tnc", 1}, {"pp", 1}};
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsTncPPAgreed(); }));
    EXPECT_CALLS(AskTerms());
    tv().consents = {{"tnc", 1}, {"pp", 0}};
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsTncPPAgreed(); }));
    EXPECT_CALLS(AskTerms());
}

TEST_F(SetupState, WithoutTheFirstConsentTheSecondIsNotAsked) {
    for (const int answer : {0, -1, -22}) {
        tv().consents = {{"tnc", answer}, {"pp", 1}};
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsTncPPAgreed(); }));
        EXPECT_CALLS(Lines{"GetDisclaimerItemAgreement tnc"});
    }
}

TEST_F(SetupState, EveryPositiveAnswerIsAConsent) {
    tv().consents = {{"tnc", 2}, {"pp", 77}};
    EXPECT_TRUE(CSIMenuUtil::IsTncPPAgreed());
    tv().consents["pp"] = -1;
    EXPECT_FALSE(CSIMenuUtil::IsTncPPAgreed());
}

TEST_F(SetupState, TheNetworkIsConnectedWhenItSaysSo) {
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsNetworkConnected(); }));
    EXPECT_CALLS(Lines{"connection_profile_check_default_gateway"});
    tv().online = true;
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::IsNetworkConnected(); }));
    EXPECT_CALLS(Lines{"connection_profile_check_default_gateway"});
}

TEST_F(SetupState, ANetworkThatCannotBeAskedIsNotConnectedWithoutARecord) {
    tv().online = true;
    for (const int code : {-1, 1}) {
        Fail("connection_profile_check_default_gateway", 1, 1, code);
        EXPECT_FALSE(Ask([] { return CSIMenuUtil::IsNetworkConnected(); }));
        EXPECT_CALLS(Lines{"connection_profile_check_default_gateway"});
    }
}
