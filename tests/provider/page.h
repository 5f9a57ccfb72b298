// What every test of the provider needs: a TV to set up, a provider on it, and its calls compared.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "abi/si_provider.h"
#include "host_text.h"
#include "recording_platform.h"
#include "si-ready/src/MVAList.h"
#include "si-ready/src/SIMenuUtil.h"
#include "si-ready/src/general_voice_dataprovider.h"
#include "si-ready/src/general_voice_enablechecker.h"
#include "si-ready/src/general_voice_visiblechecker.h"

// The names stand here once more, on purpose: a test must not take them from what it tests.
namespace key {
inline constexpr const char* VOICE = "menu/system/general-voice";
inline constexpr const char* ONBOARDING = "menu/system/general-voice-onboarding";
inline constexpr const char* ASSISTANT = "menu/system/general-voice-voice-assistant";
inline constexpr const char* WAKE_UP = "menu/system/general-voice-voice-wake-up";
inline constexpr const char* ALWAYS = "menu/system/general-voice-voice-always-wake-up";
inline constexpr const char* SCREEN_ON = "menu/system/general-voice-voice-screen-on-wake-up";
inline constexpr const char* HINT = "menu/system/general-voice-situational-hint";
inline constexpr const char* ORVIK = "menu/system/general-voice-voice-settings-orvik";
inline constexpr const char* ORVIK_CN = "menu/system/general-voice-voice-settings-orvik-cn";
inline constexpr const char* TENCENT = "menu/system/general-voice-voice-settings-tencent";
inline constexpr const char* ALEXA = "menu/system/general-voice-voice-settings-alexa";
inline constexpr const char* GOOGLE = "menu/system/general-voice-voice-settings-google";
inline constexpr const char* SALUTE = "menu/system/general-voice-voice-settings-salute";
// In the page's order.
inline constexpr const char* ALL[] = {VOICE,  ASSISTANT, WAKE_UP,   ALWAYS,  SCREEN_ON,
                                      HINT,   ORVIK,     ORVIK_CN,  TENCENT, ALEXA,
                                      GOOGLE, SALUTE,    ONBOARDING};
}  // namespace key

namespace setting {
inline constexpr const char* POLICY = "db/menu/voice/mva_list";
inline constexpr const char* CURRENT = "db/multi-assistant/default_assistant_appid";
inline constexpr const char* FARFIELD = "db/menu/voice/assistant_farfield";
inline constexpr const char* HINT = "db/multi-assistant/situational_hint_supported";
inline constexpr const char* LEGACY = "db/menu/voice/is_k_voice";
inline constexpr const char* FIRST_TIME = "db/voice-app/activate_first_time";
inline constexpr const char* BLOCK = "db/comss/cisblock";
inline constexpr const char* PASSTHRU = "db/menu/voice/passthru";
inline constexpr const char* PASSTHRU_STATE = "db/menu/voice/passthru/state";
inline constexpr const char* CONNECTED = "memory/passthru/connected";
inline constexpr const char* PASSTHRU_MIC = "db/passthru/mic_state";
inline constexpr const char* MIC = "db/aisound-app/soundsensorflag_prev";
inline constexpr const char* TENCENT = "db/tencent-voice-assistant/voice-setting";
inline constexpr const char* LANGUAGE = "db/menu_widget/language";
inline constexpr const char* COUNTRY = "db/comss/countrycode";
inline constexpr const char* WIZARD = "memory/wizard/wizard_mode";
inline constexpr const char* VOICE_GUIDE = "db/setting/accessibility/tts";
inline constexpr const char* REFRESH = "db/menu/refresh_menu";
}  // namespace setting

namespace feature {
inline constexpr const char* VOICE = "com.vantelo/featureconf/voice.voice_recognition_support";
inline constexpr const char* ORVIK =
    "com.vantelo/featureconf/voice.voice_recognition_orvik_support";
inline constexpr const char* FAR_FIELD =
    "com.vantelo/featureconf/voice.voice_recognition_far_field_type";
inline constexpr const char* PASSTHRU = "com.vantelo/featureconf/voice.farfield_passthru_support";
inline constexpr const char* MIC = "com.vantelo/featureconf/recorder.microphone_type";
inline constexpr const char* PRODUCT = "com.vantelo/featureconf/product.product_type";
inline constexpr const char* CHINA = "com.vantelo/featureconf/cn_ai_service_supported";
inline constexpr const char* DEVICE_SID = "com.vantelo/featureconf/product.device_sid";
inline constexpr const char* SKELD = "com.vantelo/featureconf/the_skeld_version";
inline constexpr const char* PROJECTOR = "com.vantelo/featureconf/projector_feature_support";
inline constexpr const char* MONITOR =
    "com.vantelo/featureconf/product.tessa_monitor_feature_support";
inline constexpr const char* NEURAL = "com.vantelo/featureconf/ttsengine.neural_tts_support";
}  // namespace feature

namespace file {
inline constexpr const char* ALEXA = "/home/owner/share/.voice/alexa_login_success";
inline constexpr const char* GOOGLE = "/home/owner/share/.voice/ga_login_success";
inline constexpr const char* SALUTE = "/home/owner/share/.voice/salute_login_success";
}  // namespace file

namespace source {
inline constexpr const char* PROVIDER = "general_voice_dataprovider.cpp";
inline constexpr const char* VISIBLE = "general_voice_visiblechecker.cpp";
inline constexpr const char* ENABLE = "general_voice_enablechecker.cpp";
inline constexpr const char* UTIL = "SIMenuUtil.cpp";
inline constexpr const char* LIST = "MVAList.cpp";
}  // namespace source

// --- The TV ---

inline void Set(const std::string& name, bool value) {
    recording::tv().settings[name] = recording::StoredBool{value ? 1 : 0};
}
inline void Set(const std::string& name, int value) {
    recording::tv().settings[name] = value;
}
inline void Set(const std::string& name, const char* value) {
    recording::tv().settings[name] = std::string(value);
}
inline void Remove(const std::string& name) {
    recording::tv().settings.erase(name);
}
inline void Feature(const std::string& name, bool value) {
    recording::tv().features[name] = value;
}
inline void Feature(const std::string& name, int value) {
    recording::tv().features[name] = value;
}
inline void Feature(const std::string& name, const char* value) {
    recording::tv().features[name] = std::string(value);
}
inline void FeatureFails(const std::string& name, int code) {
    recording::tv().features[name] = recording::FeatureError{code};
}
inline void AgreeToTerms() {
    recording::tv().consents = {{"tnc", 1}, {"pp", 1}};
}
inline void SignIn() {
    recording::tv().loginState = 1;
}
// The text that a string setting holds; "(none)" when it holds none.
std::string Stored(const std::string& name);

// --- Policies ---

// The policy's element of an assistant; the far-field member is left out when it is not given.
std::string Assistant(int order, const std::string& id, const std::string& appId,
                      const std::string& name, bool farField = false);
std::string Policy(const std::vector<std::string>& assistants);

// Six assistants, 1 to 6: Orvik, Alexa, Google, Salute, SVA, Tencent, as "app.orvik", "app.alexa",
// ... Orvik and Google are far-field assistants.
std::string WholePolicy();

// --- Comparing calls ---

using Lines = std::vector<std::string>;

// A log record of error priority; the line "*" stands for any line number, but a number.
std::string E(const char* file, const std::string& function, const std::string& message);
std::string E(const char* file, const std::string& function, int line, const std::string& message);
// The same, of the source of the items' values and choices.
std::string Handler(const std::string& function, const std::string& message);
// The same of info priority.
std::string I(const char* file, const std::string& function, int line, const std::string& message);

// What the platform was asked since the calls were cleared, to the letter and in order.
testing::AssertionResult CallsAre(const Lines& expected);
// The log records among it.
testing::AssertionResult LogIs(const Lines& expected);
testing::AssertionResult Logged(const std::string& expected);
#define EXPECT_CALLS(...) EXPECT_TRUE(CallsAre(__VA_ARGS__))
#define EXPECT_LOG(...) EXPECT_TRUE(LogIs(__VA_ARGS__))
#define EXPECT_LOGGED(...) EXPECT_TRUE(Logged(__VA_ARGS__))

// One list after the other.
Lines operator+(Lines first, const Lines& second);

// Reads that occur in many tests.
inline std::string GetBool(const std::string& name) {
    return "vconf_get_bool " + name;
}
inline std::string GetInt(const std::string& name) {
    return "vconf_get_int " + name;
}
inline std::string GetStr(const std::string& name) {
    return "vconf_get_str " + name;
}
inline std::string FeatureBool(const std::string& name) {
    return "system_info_get_custom_bool " + name;
}
inline std::string FeatureInt(const std::string& name) {
    return "system_info_get_custom_int " + name;
}
inline std::string Tr(const std::string& id) {
    return "dgettext si-ready " + id;
}
// The read of the current assistant, and the same for each record that a walk visits.
inline std::string Current() {
    return GetStr(setting::CURRENT);
}
Lines Walk(int records);
// A member of a JSON-valued setting read with success.
Lines Member(const std::string& name, const std::string& member, const std::string& value);
Lines AskTerms();  // both agreed

// --- The provider ---

// Creates a provider on a TV that was never set up, with an empty list of assistants and no
// application known, and deletes it. Whatever the platform handed out must have come back by then.
class Provider : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Publishes the policy and makes the assistant current; forgets the calls.
    void Offer(const std::string& policy, const char* current = nullptr);
    // Runs a question and forgets what was called before it.
    template <typename Question>
    auto Ask(Question question) {
        recording::ClearCalls();
        return question();
    }

    SIProviderTable* page = nullptr;
};
