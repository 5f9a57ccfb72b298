// The small services: features, account, consents, network, always-on voice, packages, marker
// files, sound feedback, voices.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/features.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/speech.h"
#include "tv_fixture.h"

namespace {

using vtv::ErrorKind;
using vtv::Value;

constexpr char kPrefix[] = "com.vantelo/featureconf/";
constexpr char kOrvik[] = "com.vantelo.tv.voice-instant-app";

class ServicesTest : public TvTest {};

TEST_F(ServicesTest, FeaturesAreTheModels) {
    TurnOn();
    bool flag = false;
    int number = 0;
    EXPECT_EQ(system_info_get_custom_bool(
                  (std::string(kPrefix) + "voice.voice_recognition_support").c_str(), &flag),
              0);
    EXPECT_TRUE(flag);
    EXPECT_EQ(
        system_info_get_custom_int(
            (std::string(kPrefix) + "voice.voice_recognition_far_field_type").c_str(), &number),
        0);
    EXPECT_EQ(number, 1);
}

TEST_F(ServicesTest, AFeatureThatIsMissingOrOfAnotherTypeIsAnInvalidParameter) {
    TurnOn();
    bool flag = true;
    char* text = nullptr;
    int number = 7;
    const std::string sid = std::string(kPrefix) + "product.device_sid";
    const std::string type = std::string(kPrefix) + "product.product_type";
    EXPECT_EQ(system_info_get_custom_string(sid.c_str(), &text), -22);
    EXPECT_EQ(system_info_get_custom_bool(type.c_str(), &flag), -22);
    EXPECT_EQ(system_info_get_custom_int(nullptr, &number), -22);
    EXPECT_TRUE(flag);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(text, nullptr);
}

TEST_F(ServicesTest, AFeatureCanBeTriedTakenAwayAndPutBack) {
    TurnOn();
    const std::string key = std::string(kPrefix) + "the_skeld_version";
    const std::string support = std::string(kPrefix) + "voice.voice_recognition_support";
    int number = 0;
    bool flag = false;
    tv->SetFeature(key, 2);
    EXPECT_EQ(system_info_get_custom_int(key.c_str(), &number), 0);
    EXPECT_EQ(number, 2);
    EXPECT_EQ(tv->Features().at(key), Value(2));
    tv->SetFeature(support, std::nullopt);
    EXPECT_EQ(system_info_get_custom_bool(support.c_str(), &flag), -22);
    EXPECT_EQ(tv->Features().count(support), 0u);
    tv->ResetFeature(support);
    EXPECT_EQ(system_info_get_custom_bool(support.c_str(), &flag), 0);
    ErrorOf(ErrorKind::kUsage, [&] { tv->SetFeature(key, true); });
}

TEST_F(ServicesTest, AStringFeatureIsTheCallersToFree) {
    TurnOnText("[features]\n\"product.device_sid\" = \"REP.DEVICE.SCREEN\"\n");
    char* text = nullptr;
    ASSERT_EQ(
        system_info_get_custom_string((std::string(kPrefix) + "product.device_sid").c_str(), &text),
        0);
    EXPECT_STREQ(text, "REP.DEVICE.SCREEN");
    free(text);
}

TEST_F(ServicesTest, TheAccountIsKeptForAllProcesses) {
    TurnOn();
    const std::string dir = tv->Dir();
    int state = -1;
    EXPECT_EQ(sso_get_login_state(&state), 0);
    EXPECT_EQ(state, 1);
    InChild([&] {
        vtv::Tv other(dir);
        other.SetSignedIn(false);
        return 0;
    });
    EXPECT_EQ(sso_get_login_state(&state), 0);
    EXPECT_EQ(state, 0);
    EXPECT_NE(sso_get_login_state(nullptr), 0);
}

TEST_F(ServicesTest, TheAccountScreenIsTheModels) {
    TurnOnText("[account]\nui = \"org.example.account\"\n");
    char* id = nullptr;
    ASSERT_EQ(sso_get_account_ui_application_package_id(&id), 0);
    EXPECT_STREQ(id, "org.example.account");
    free(id);
    TurnOnText("[account]\nui = \"\"\n");
    id = nullptr;
    EXPECT_NE(sso_get_account_ui_application_package_id(&id), 0);
    EXPECT_EQ(id, nullptr);
}

TEST_F(ServicesTest, ConsentsAreKeptEachForItself) {
    TurnOn();
    tv->SetConsent("tnc", true);
    tv->SetConsent("pp", false);
    EXPECT_GT(GetDisclaimerItemAgreement("tnc"), 0);
    EXPECT_EQ(GetDisclaimerItemAgreement("pp"), 0);
    EXPECT_EQ(GetDisclaimerItemAgreement("other"), -1);
    EXPECT_EQ(GetDisclaimerItemAgreement(nullptr), -1);
    ErrorOf(ErrorKind::kUsage, [&] { tv->SetConsent("other", true); });
}

TEST_F(ServicesTest, TheNetworkIsAsItWasSet) {
    TurnOn();
    bool connected = false;
    EXPECT_EQ(connection_profile_check_default_gateway(&connected), 0);
    EXPECT_TRUE(connected);
    tv->SetNetwork(vtv::Network::kDisconnected);
    EXPECT_EQ(connection_profile_check_default_gateway(&connected), 0);
    EXPECT_FALSE(connected);
    EXPECT_FALSE(tv->Online());
}

TEST_F(ServicesTest, TheHostsNetworkFollowsTheDefaultRoute) {
    TurnOn();
    tv->SetNetwork(vtv::Network::kHost);
    bool expected = false;
    std::ifstream routes("/proc/net/route");
    for (std::string line; std::getline(routes, line);) {
        std::istringstream fields(line);
        std::string interface, destination, gateway;
        fields >> interface >> destination >> gateway;
        expected = expected || (destination == "00000000" && gateway != "00000000");
    }
    std::ifstream routes6("/proc/net/ipv6_route");
    const std::string everywhere = std::string(32, '0') + " 00 ";
    for (std::string line; std::getline(routes6, line);) {
        expected =
            expected || (line.rfind(everywhere, 0) == 0 && line.size() > 139 && line[139] == '3');
    }
    EXPECT_EQ(tv->Online(), expected);
}

TEST_F(ServicesTest, AlwaysOnVoiceIsKeptPerApplicationAndAnsweredForTheCurrentOne) {
    TurnOn();
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 0);
    EXPECT_EQ(AOVSystemDataSetAOVMode(kOrvik, 1), 0);
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 1);
    tv->Set("db/multi-assistant/default_assistant_appid", "com.vantelo.tv.alexa");
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 0);
    EXPECT_EQ(AOVSystemDataSetAOVMode("com.vantelo.tv.alexa", 2), 0);
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 2);
    tv->Set("db/multi-assistant/default_assistant_appid", kOrvik);
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 1);
    EXPECT_NE(AOVSystemDataSetAOVMode(nullptr, 1), 0);
}

TEST_F(ServicesTest, AlwaysOnVoiceIsKeptWhileNoAssistantIsChosen) {
    TurnOn();
    tv->Unset("db/multi-assistant/default_assistant_appid");
    EXPECT_EQ(AOVSystemDataSetAOVMode("", 1), 0);
    EXPECT_EQ(AOVSystemDataGetAOVMode(), 1);
    EXPECT_TRUE(tv->Problems().empty());
    EXPECT_EQ(tv->State().count("always_on_voice/"), 1U);
    tv->Restore(tv->TakeSnapshot());
    const std::string error =
        ErrorOf(ErrorKind::kUsage, [] { vtv::CheckStateName("no-feature/"); });
    EXPECT_EQ(error, "\"no-feature/\" needs a name behind it.");
}

TEST_F(ServicesTest, MetadataIsThePackages) {
    TurnOnText(
        "[[packages]]\napp = \"org.example\"\n"
        "metadata = { \"with\" = \"value\", \"empty\" = \"\", \"without\" = false }\n");
    pkgmgrinfo_appinfo_h handle = nullptr;
    ASSERT_EQ(pkgmgrinfo_appinfo_get_appinfo("org.example", &handle), 0);
    char* value = nullptr;
    EXPECT_EQ(pkgmgrinfo_appinfo_get_metadata_value(handle, "with", &value), 0);
    EXPECT_STREQ(value, "value");
    EXPECT_EQ(pkgmgrinfo_appinfo_get_metadata_value(handle, "empty", &value), 0);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(pkgmgrinfo_appinfo_get_metadata_value(handle, "without", &value), 0);
    EXPECT_EQ(value, nullptr);
    EXPECT_NE(pkgmgrinfo_appinfo_get_metadata_value(handle, "none", &value), 0);
    EXPECT_EQ(pkgmgrinfo_appinfo_destroy_appinfo(handle), 0);
    EXPECT_NE(pkgmgrinfo_appinfo_get_appinfo("org.none", &handle), 0);
}

TEST_F(ServicesTest, MarkerFilesOfTheOwnerLieInTheTvsFolder) {
    TurnOn();
    const char* marker = "/home/owner/share/.voice/ga_login_success";
    EXPECT_NE(access(marker, F_OK), 0);
    tv->AddOwnerFile("share/.voice/ga_login_success");
    EXPECT_EQ(access(marker, F_OK), 0);
    EXPECT_EQ(access((tv->OwnerDir() + "/share/.voice/ga_login_success").c_str(), F_OK), 0);
    EXPECT_TRUE(tv->RemoveOwnerFile("share/.voice/ga_login_success"));
    EXPECT_FALSE(tv->RemoveOwnerFile("share/.voice/ga_login_success"));
    EXPECT_NE(access(marker, F_OK), 0);
}

TEST_F(ServicesTest, OtherPathsAreTheSystems) {
    TurnOn();
    EXPECT_EQ(access("/", F_OK), 0);
    EXPECT_EQ(access("/home/owner", F_OK), 0);
    EXPECT_NE(access("/home/ownership", F_OK), 0);
    EXPECT_NE(access("/no/such/path", F_OK), 0);
    ErrorOf(ErrorKind::kUsage, [&] { tv->AddOwnerFile("../outside"); });
    ErrorOf(ErrorKind::kUsage, [&] { tv->AddOwnerFile("/etc/passwd"); });
    ErrorOf(ErrorKind::kUsage, [&] { tv->RemoveOwnerFile("share/../../tv.toml"); });
}

TEST_F(ServicesTest, SoundFeedbackIsKept) {
    TurnOn();
    EXPECT_EQ(tv->State().count("sound/feedback"), 0U);
    EXPECT_EQ(avoc_set_sound_feedback(3, 1), 0);
    EXPECT_EQ(tv->State().at("sound/feedback"), vtv::Value(3));
    EXPECT_EQ(tv->State().at("sound/priority"), vtv::Value(1));
}

// --- Speech ---

bool Collect(tts_h, const char* language, int, void* userData) {
    auto* languages = static_cast<std::vector<std::string>*>(userData);
    languages->push_back(language);
    return languages->size() < 2;
}

TEST_F(ServicesTest, VoicesAreTheModelsUntilTheCallbackHasEnough) {
    TurnOnText("[speech]\nvoices = [\"en_US\", \"de_DE\", \"ko_KR\"]\n");
    tts_h tts = nullptr;
    ASSERT_EQ(tts_create(&tts), 0);
    std::vector<std::string> languages;
    EXPECT_EQ(tts_foreach_supported_voices(tts, Collect, &languages), 0);
    EXPECT_EQ(languages, (std::vector<std::string>{"en_US", "de_DE"}));
    EXPECT_EQ(tts_destroy(tts), 0);
    EXPECT_NE(tts_foreach_supported_voices(nullptr, Collect, &languages), 0);
}

bool IsInstalled(const char* library) {
    return dlopen(library, RTLD_NOW) != nullptr;
}

TEST_F(ServicesTest, WithoutAListTheVoicesAreTheInstalledEngines) {
    ASSERT_TRUE(IsInstalled("libespeak-ng.so.1")) << "apt-get install libespeak-ng1";
    TurnOn();
    std::vector<std::string> languages;
    for (const vtv::Voice& voice : tv->Voices()) {
        languages.push_back(voice.language);
    }
    for (const char* language :
         {"en_US", "en_GB", "de_DE", "fr_FR", "es_ES", "ru_RU", "ko_KR", "zh_CN", "pt_PT"}) {
        EXPECT_NE(std::find(languages.begin(), languages.end(), language), languages.end())
            << language;
    }
}

TEST_F(ServicesTest, TheVoiceGuideSpeaksOnlyWhenItIsOn) {
    ASSERT_TRUE(IsInstalled("libespeak-ng.so.1")) << "apt-get install libespeak-ng1";
    TurnOnText("language = \"de_DE\"\n[speech]\noutput = \"file\"\n");
    const std::string file = tv->Dir() + "/speech/last.wav";
    EXPECT_FALSE(tv->Speak("Sprache"));
    EXPECT_FALSE(std::filesystem::exists(file));
    tv->Set("db/setting/accessibility/tts", true);
    EXPECT_TRUE(tv->Speak("Sprache"));
    const std::string wave = ReadText(file);
    EXPECT_EQ(wave.substr(0, 4), "RIFF");
    EXPECT_GT(wave.size(), 5000u);
    EXPECT_TRUE(tv->Speak("Ein viel längerer Text, der auch viel länger dauert als der erste."));
    EXPECT_GT(ReadText(file).size(), 2 * wave.size());
    EXPECT_TRUE(LogHas("voice guide: Sprache"));
}

}  // namespace
