// Which onboarding starts for the current assistant, and when none does.
#include "page.h"

using namespace recording;

namespace {

// Online, the terms agreed, nothing set up.
class Onboarding : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        AgreeToTerms();
        tv().online = true;
        Set(setting::FIRST_TIME, true);
        Set(setting::TENCENT, "{}");
        Feature(feature::CHINA, false);
        Offer(WholePolicy());
    }
    static void Start(const char* current) {
        Set(setting::CURRENT, current);
        ClearCalls();
        LaunchOnboarding("a test");
    }
};

const Lines ASKED = {Handler("LaunchOnboarding", "reason:a test"), Current()};
const std::string NETWORK = "connection_profile_check_default_gateway";

Lines Launched(const std::string& app, const std::string& name, const std::string& value) {
    return {"bundle_create", "bundle_add_str " + name + " " + value, "aul_launch_app " + app,
            "bundle_free"};
}

const Lines GENERIC = Launched("org.nemra.voice-onboarding", "type", "ONBOARDING_SETUP");
const Lines ORVIK_APP =
    Launched("com.vantelo.tv.voice-instant-app", "show_onboarding", "ONBOARDING");

// The three that share one shape.
struct OwnApp {
    const char* current;
    Lines check;
    Lines launch;
    const char* function;
    const char* complete;
};
const std::vector<OwnApp>& OwnApps() {
    static const std::vector<OwnApp> apps = {
        {"app.google",
         {std::string("access ") + file::GOOGLE + " 0"},
         Launched("com.vantelo.tv.google-assistant", "Login", "1"),
         "_LaunchGoogleOnboarding",
         "[FATAL][Google]Already setup complete"},
        {"app.salute",
         {std::string("access ") + file::SALUTE + " 0"},
         Launched("com.vantelo.tv.salute-assistant", "PAGETYPE", "ONBOARDING"),
         "_LaunchSaluteOnboarding",
         "[FATAL][Salute]Already setup complete"},
        {"app.tencent",
         {GetStr(setting::TENCENT)},
         Launched("com.vantelo.tv.tencent-voice-chrome", "show_onboarding", "ONBOARDING"),
         "_LaunchTencentOnboarding",
         "[FATAL][Tencent]Already setup complete"}};
    return apps;
}

void SetUpAll() {
    tv().files = {file::ALEXA, file::GOOGLE, file::SALUTE};
    Set(setting::TENCENT, R"({"onboarding_completed":true})");
    Set(setting::FIRST_TIME, false);
}

}  // namespace

TEST_F(Onboarding, AlexaStartsTheGenericOneWithoutAskingForTheNetwork) {
    tv().online = false;
    Start("app.alexa");
    EXPECT_CALLS(ASKED + Lines{std::string("access ") + file::ALEXA + " 0"} + GENERIC);
}

TEST_F(Onboarding, AlexaThatIsSetUpStartsNothing) {
    SetUpAll();
    Start("app.alexa");
    EXPECT_CALLS(ASKED +
                 Lines{std::string("access ") + file::ALEXA + " 0",
                       Handler("LaunchOnboarding", "[FATAL][Alexa]Already setup complete")});
}

TEST_F(Onboarding, OnlineAndAgreedAnAssistantsOwnApplicationStarts) {
    for (const OwnApp& app : OwnApps()) {
        Start(app.current);
        EXPECT_CALLS(ASKED + app.check + Lines{NETWORK} + AskTerms() + app.launch);
    }
}

TEST_F(Onboarding, OfflineTheGenericOneStartsWithoutAskingForTheTerms) {
    tv().online = false;
    for (const OwnApp& app : OwnApps()) {
        Start(app.current);
        EXPECT_CALLS(ASKED + app.check + Lines{NETWORK} + GENERIC);
    }
}

TEST_F(Onboarding, WithoutTheTermsTheGenericOneStarts) {
    tv().consents["pp"] = 0;
    for (const OwnApp& app : OwnApps()) {
        Start(app.current);
        EXPECT_CALLS(ASKED + app.check + Lines{NETWORK} + AskTerms() + GENERIC);
    }
}

TEST_F(Onboarding, AnAssistantThatIsSetUpStartsNothing) {
    SetUpAll();
    for (const OwnApp& app : OwnApps()) {
        Start(app.current);
        EXPECT_EQ(Launches().size(), 0u);
        EXPECT_EQ(Calls().back().rfind(
                      std::string("log E ") + source::PROVIDER + " " + app.function + " ", 0),
                  0u);
        EXPECT_LOGGED(Handler(app.function, app.complete));
        EXPECT_EQ(CallsOf(NETWORK), Lines{});
    }
}

TEST_F(Onboarding, OrvikThatIsSetUpStartsNothing) {
    SetUpAll();
    Start("app.orvik");
    EXPECT_CALLS(ASKED +
                 Lines{GetBool(setting::FIRST_TIME),
                       Handler("_LaunchOrvikOnboarding", "[FATAL][Orvik]Already setup complete")});
}

TEST_F(Onboarding, OrvikInChinaStartsItsApplicationWithoutAskingForTheSignIn) {
    Feature(feature::CHINA, true);
    Start("app.orvik");
    EXPECT_CALLS(ASKED + Lines{GetBool(setting::FIRST_TIME), NETWORK} + AskTerms() +
                 Lines{FeatureBool(feature::CHINA)} + ORVIK_APP);
}

TEST_F(Onboarding, OrvikSignedInStartsItsApplication) {
    SignIn();
    Start("app.orvik");
    EXPECT_CALLS(ASKED + Lines{GetBool(setting::FIRST_TIME), NETWORK} + AskTerms() +
                 Lines{FeatureBool(feature::CHINA), "sso_get_login_state"} + ORVIK_APP);
}

TEST_F(Onboarding, OrvikSignedOutOutsideChinaStartsTheGenericOne) {
    Start("app.orvik");
    EXPECT_CALLS(ASKED + Lines{GetBool(setting::FIRST_TIME), NETWORK} + AskTerms() +
                 Lines{FeatureBool(feature::CHINA), "sso_get_login_state"} + GENERIC);
}

TEST_F(Onboarding, OrvikOfflineOrWithoutTheTermsStartsTheGenericOne) {
    SignIn();
    tv().consents["tnc"] = 0;
    Start("app.orvik");
    EXPECT_CALLS(ASKED +
                 Lines{GetBool(setting::FIRST_TIME), NETWORK, "GetDisclaimerItemAgreement tnc"} +
                 GENERIC);
    tv().online = false;
    Start("app.orvik");
    EXPECT_CALLS(ASKED + Lines{GetBool(setting::FIRST_TIME), NETWORK} + GENERIC);
}

TEST_F(Onboarding, SvaAndUnknownAssistantsStartNothing) {
    for (const char* current : {"app.sva", "other", ""}) {
        Start(current);
        EXPECT_CALLS(ASKED + Lines{Handler("LaunchOnboarding", "[FATAL]Wrong VA type")});
    }
}

TEST_F(Onboarding, ALaunchThatFailsIsNotTriedAgain) {
    Fail("aul_launch_app");
    Start("app.google");
    EXPECT_EQ(CallsOf("aul_launch_app").size(), 1u);
}

TEST_F(Onboarding, WithoutAReasonItDoesNotCrash) {
    Set(setting::CURRENT, "app.alexa");
    LaunchOnboarding(nullptr);
    EXPECT_EQ(Launches().size(), 1u);
}
