// Names on a TV: settings, features, consents, files.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

namespace vtv {

// Settings are kept, or end with the power.
inline constexpr std::string_view kKeptSettings = "db/";
inline constexpr std::string_view kPassingSettings = "memory/";
constexpr bool IsKeptSetting(std::string_view key) {
    return key.starts_with(kKeptSettings);
}
constexpr bool IsPassingSetting(std::string_view key) {
    return key.starts_with(kPassingSettings);
}
constexpr bool IsSettingKey(std::string_view key) {
    return IsKeptSetting(key) || IsPassingSetting(key);
}
inline constexpr char kPolicyKey[] = "db/menu/voice/mva_list";
inline constexpr char kCurrentAssistantKey[] = "db/multi-assistant/default_assistant_appid";
inline constexpr char kWakeUpKey[] = "db/menu/voice/assistant_farfield";
inline constexpr char kHintKey[] = "db/multi-assistant/situational_hint_supported";
inline constexpr char kFirstTimeKey[] = "db/voice-app/activate_first_time";
inline constexpr char kTencentKey[] = "db/tencent-voice-assistant/voice-setting";
inline constexpr char kLegacyVoiceKey[] = "db/menu/voice/is_k_voice";
inline constexpr char kBlockKey[] = "db/comss/cisblock";
inline constexpr char kCountryKey[] = "db/comss/countrycode";
inline constexpr char kLanguageKey[] = "db/menu_widget/language";
inline constexpr char kMicrophoneKey[] = "db/aisound-app/soundsensorflag_prev";
inline constexpr char kPassThroughKey[] = "db/menu/voice/passthru";
inline constexpr char kPassThroughStateKey[] = "db/menu/voice/passthru/state";
inline constexpr char kPassThroughMicrophoneKey[] = "db/passthru/mic_state";
inline constexpr char kPassThroughConnectedKey[] = "memory/passthru/connected";
inline constexpr char kVoiceGuideKey[] = "db/setting/accessibility/tts";
inline constexpr char kRefreshKey[] = "db/menu/refresh_menu";
inline constexpr char kWizardModeKey[] = "memory/wizard/wizard_mode";

// Features.
#define FEATURES "com.vantelo/featureconf/"
inline constexpr char kFeaturePrefix[] = FEATURES;  // of every feature that the page knows
inline constexpr char kChinaFeature[] = FEATURES "cn_ai_service_supported";
inline constexpr char kDeviceNameFeature[] = FEATURES "product.device_sid";
inline constexpr char kProductTypeFeature[] = FEATURES "product.product_type";
inline constexpr char kMonitorFeature[] = FEATURES "product.tessa_monitor_feature_support";
inline constexpr char kProjectorFeature[] = FEATURES "projector_feature_support";
inline constexpr char kMicrophoneFeature[] = FEATURES "recorder.microphone_type";
inline constexpr char kModularFeature[] = FEATURES "the_skeld_version";
inline constexpr char kNeuralSpeechFeature[] = FEATURES "ttsengine.neural_tts_support";
inline constexpr char kPassThroughFeature[] = FEATURES "voice.farfield_passthru_support";
inline constexpr char kFarFieldFeature[] = FEATURES "voice.voice_recognition_far_field_type";
inline constexpr char kOrvikFeature[] = FEATURES "voice.voice_recognition_orvik_support";
inline constexpr char kVoiceFeature[] = FEATURES "voice.voice_recognition_support";
#undef FEATURES

// Consents: terms and conditions, privacy policy.
#define TERMS "tnc"
#define PRIVACY "pp"
inline constexpr char kTermsConsent[] = TERMS;
inline constexpr char kPrivacyConsent[] = PRIVACY;
inline constexpr const char* kConsents[] = {kTermsConsent, kPrivacyConsent};
constexpr bool IsConsent(std::string_view item) {
    return std::any_of(std::begin(kConsents), std::end(kConsents),
                       [item](const char* known) { return item == known; });
}

// What else a TV keeps, by name; one that ends with '/' begins the names of several.
inline constexpr char kSignedInState[] = "account/signed_in";
#define CONSENT "consent/"
inline constexpr char kConsentState[] = CONSENT;  // and one of kConsents
inline constexpr char kTermsState[] = CONSENT TERMS;
inline constexpr char kPrivacyState[] = CONSENT PRIVACY;
#undef CONSENT
#undef TERMS
#undef PRIVACY
inline constexpr char kModelNameState[] = "model";        // under which the TV knows its model
inline constexpr char kModeState[] = "always_on_voice/";  // and an assistant's application id
inline constexpr char kNetworkState[] = "network";
inline constexpr char kFeatureState[] = "feature/";           // and a feature's key
inline constexpr char kAbsentFeatureState[] = "no-feature/";  // and a feature's key

// The folder of the TV's owner, in which applications leave their marks.
#define OWNER "/home/owner/"
#define GOOGLE_MARKER "share/.voice/ga_login_success"
inline constexpr char kOwnerFolder[] = OWNER;
inline constexpr char kGoogleMarker[] = GOOGLE_MARKER;            // below kOwnerFolder
inline constexpr char kGoogleMarkerFile[] = OWNER GOOGLE_MARKER;  // the whole path
#undef OWNER
#undef GOOGLE_MARKER

}  // namespace vtv
