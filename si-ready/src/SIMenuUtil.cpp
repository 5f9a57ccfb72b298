#include "SIMenuUtil.h"

#include <json/json.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>

#include "Guard.h"
#include "Keys.h"
#include "Log.h"
#include "PlatformString.h"
#include "Texts.h"
#include "platform/account.h"
#include "platform/applications.h"
#include "platform/features.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/toolkit.h"

namespace {

constexpr char COUNTRY_CODE[] = "db/comss/countrycode";
constexpr char OSD_LANGUAGE[] = "db/menu_widget/language";
constexpr char BUILT_IN_MIC[] = "db/aisound-app/soundsensorflag_prev";
constexpr char PASSTHRU_STATE[] = "db/menu/voice/passthru/state";
constexpr char TENCENT_SETTING[] = "db/tencent-voice-assistant/voice-setting";
constexpr char VOICE_GUIDE[] = "db/setting/accessibility/tts";
constexpr char WIZARD_MODE[] = "memory/wizard/wizard_mode";
constexpr char REFRESH_MENU[] = "db/menu/refresh_menu";

constexpr char MICROPHONE_TYPE[] = "com.vantelo/featureconf/recorder.microphone_type";
constexpr char FAR_FIELD_TYPE[] = "com.vantelo/featureconf/voice.voice_recognition_far_field_type";
constexpr char PRODUCT_TYPE[] = "com.vantelo/featureconf/product.product_type";
constexpr char PASSTHRU_SUPPORT[] = "com.vantelo/featureconf/voice.farfield_passthru_support";
constexpr char CHINA_SERVICE[] = "com.vantelo/featureconf/cn_ai_service_supported";
constexpr char DEVICE_SID[] = "com.vantelo/featureconf/product.device_sid";
constexpr char MODULAR_VERSION[] = "com.vantelo/featureconf/the_skeld_version";
constexpr char PROJECTOR[] = "com.vantelo/featureconf/projector_feature_support";
constexpr char MONITOR[] = "com.vantelo/featureconf/product.tessa_monitor_feature_support";
constexpr char NEURAL_TTS[] = "com.vantelo/featureconf/ttsengine.neural_tts_support";

constexpr int PRODUCT_TYPE_SIGNAGE = 4;

}  // namespace

// ---------------------------------------------------------------------------------------------
// Settings store
// ---------------------------------------------------------------------------------------------

int CSIMenuUtil::VconfGetInt(const char* key) {
    int value = -1;
    return vconf_get_int(key, &value) == 0 ? value : -1;
}

bool CSIMenuUtil::VconfGetBool(const char* key) {
    int value = 0;
    return vconf_get_bool(key, &value) == 0 && value != 0;
}

std::string CSIMenuUtil::VconfGetStr(const char* key) {
    const PlatformString text(vconf_get_str(key));
    return text ? text.get() : "";
}

std::string CSIMenuUtil::GetVconfStirng(const char* key) {
    const PlatformString text(vconf_get_str(key));
    if (!text) {
        LOG_ERROR_AT(68, "[FATAL]can not get string from %s", Printable(key));
        return "";
    }
    return text.get();
}

void CSIMenuUtil::SetBool(const char* key, bool value) {
    const int result = vconf_set_bool(key, value);
    LOG_ERROR_AT(526, "nRet:%d, key:%s", result, Printable(key));
}

void CSIMenuUtil::SetString(const char* key, const char* value) {
    const int result = vconf_set_str(key, value);
    LOG_ERROR_AT(520, "nRet:%d, key:%s, value:%s", result, Printable(key), Printable(value));
}

std::string CSIMenuUtil::GetCurrentVAAppID() {
    return VconfGetStr(setting::CURRENT_ASSISTANT);
}

std::string CSIMenuUtil::GetCountryCode() {
    return GetVconfStirng(COUNTRY_CODE);
}

std::string CSIMenuUtil::GetOsdLanguage() {
    return GetVconfStirng(OSD_LANGUAGE);
}

// ---------------------------------------------------------------------------------------------
// Feature configuration
// ---------------------------------------------------------------------------------------------

std::string CSIMenuUtil::GetFMSString(const char* key) {
    char* value = nullptr;
    const int result = system_info_get_custom_string(key, &value);
    if (result != 0 || value == nullptr) {
        LOG_ERROR_AT(393, "ret:%d", result);
        return "";
    }
    return PlatformString(value).get();
}

int CSIMenuUtil::GetFMSInt(const char* key) {
    int value = 0;
    const int result = system_info_get_custom_int(key, &value);
    if (result != 0) {
        LOG_ERROR_AT(376, "ERROR:%d, key:%s", result, Printable(key));
        return -1;
    }
    return value;
}

bool CSIMenuUtil::GetFMSBool(const char* key) {
    bool value = false;
    const int result = system_info_get_custom_bool(key, &value);
    if (result != 0) {
        LOG_ERROR_AT(361, "ERROR:%d, key:%s", result, Printable(key));
        return false;
    }
    return value;
}

bool CSIMenuUtil::isBuiltInMicSupported() {
    return GetFMSInt(MICROPHONE_TYPE) > 0;
}

bool CSIMenuUtil::IsFarFieldFMSSupported() {
    return GetFMSInt(FAR_FIELD_TYPE) > 0;
}

bool CSIMenuUtil::FlagLFDProductModel() {
    return GetFMSInt(PRODUCT_TYPE) == PRODUCT_TYPE_SIGNAGE;
}

bool CSIMenuUtil::IsPassthruSupportModel() {
    return GetFMSBool(PASSTHRU_SUPPORT);
}

bool CSIMenuUtil::isChina() {
    return GetFMSBool(CHINA_SERVICE);
}

// ---------------------------------------------------------------------------------------------
// Settings whose value is a JSON object
// ---------------------------------------------------------------------------------------------

// The settings hold what Json::StyledWriter writes and Json::Reader accepts, and other programs of
// the TV read them: the library's newer classes accept and write a different text.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

enum class ParseResult { Object, NotAnObject, Broken };

// The library throws the same exception for a value that is nested deeper than it reads and for a
// text that it finds no memory for. A value with fewer brackets than this is not too deep for any
// build of it: 1000 levels are usual, and the settings themselves have one.
constexpr std::ptrdiff_t ALWAYS_READABLE_BRACKETS = 100;

bool MayBeTooDeep(const std::string& text) {
    return std::count(text.begin(), text.end(), '[') + std::count(text.begin(), text.end(), '{') >
           ALWAYS_READABLE_BRACKETS;
}

// Throws nothing but std::bad_alloc.
ParseResult ParseObject(const std::string& text, Json::Value& root) {
    try {
        if (!Json::Reader().parse(text, root, true)) {
            return ParseResult::Broken;
        }
    } catch (const Json::Exception&) {
        if (!MayBeTooDeep(text)) {
            throw std::bad_alloc();
        }
        return ParseResult::NotAnObject;
    }
    return root.isObject() ? ParseResult::Object : ParseResult::NotAnObject;
}

std::string StyledText(const Json::Value& root) {
    return Json::StyledWriter().write(root);
}

}  // namespace

#pragma GCC diagnostic pop

std::string CSIMenuUtil::getValueOfJsonVconf(std::string key, std::string member) {
    Json::Value root;
    const ParseResult result = ParseObject(GetVconfStirng(key.c_str()), root);
    if (result == ParseResult::Broken) {
        LOG_ERROR_AT(316, "json parse error");
        return "";
    }
    if (result == ParseResult::NotAnObject) {
        return "";
    }
    const Json::Value* value = root.find(member.data(), member.data() + member.size());
    if (value == nullptr || value->isArray() || value->isObject()) {
        return "";
    }
    std::string text = value->asString();
    LOG_ERROR_AT(325, "json parse vconf %s - key %s, value %s", key.c_str(), member.c_str(),
                 text.c_str());
    return text;
}

bool CSIMenuUtil::setVAsValueOfJsonVconf(std::string key, std::string member, std::string value) {
    Json::Value root;
    if (ParseObject(GetVconfStirng(key.c_str()), root) != ParseResult::Object) {
        LOG_ERROR_AT(338, "json parse error");
        return false;
    }
    root[member] = value;
    const std::string text = StyledText(root);
    LOG_ERROR_AT(345, "[general voice] %s value = %s", key.c_str(), text.c_str());
    vconf_set_str(key.c_str(), text.c_str());
    return true;
}

// ---------------------------------------------------------------------------------------------
// Texts
// ---------------------------------------------------------------------------------------------

namespace {

constexpr char FIRST_PLACEHOLDER[] = "<<A>>";
constexpr char SECOND_PLACEHOLDER[] = "<<B>>";

// Far above what a catalogue and a policy hold: a text has a few hundred bytes and two
// placeholders.
constexpr int MAX_REPLACEMENTS = 1000;
constexpr std::size_t MAX_REPLACED_SIZE = 65536;

// The search starts again at the beginning after each replacement, so that a placeholder which a
// replacement completes is replaced, too. Behind a replacement that holds the placeholder itself,
// as a policy may name an assistant, it goes on instead. Text around a replacement may complete one
// placeholder after the other without end: that is what the limits are for.
std::string ReplaceAll(std::string text, const std::string& placeholder,
                       const std::string& replacement) {
    const bool restart = replacement.find(placeholder) == std::string::npos;
    std::size_t found = text.find(placeholder);
    for (int count = 0; found != std::string::npos && count < MAX_REPLACEMENTS; ++count) {
        if (text.size() - placeholder.size() + replacement.size() > MAX_REPLACED_SIZE) {
            break;
        }
        text.replace(found, placeholder.size(), replacement);
        found = text.find(placeholder, restart ? 0 : found + replacement.size());
    }
    return text;
}

}  // namespace

std::string CSIMenuUtil::Replace(std::string text, const std::string& a) {
    return ReplaceAll(text, FIRST_PLACEHOLDER, a);
}

std::string CSIMenuUtil::Replace(std::string text, const std::string& a, const std::string& b) {
    return ReplaceAll(ReplaceAll(text, FIRST_PLACEHOLDER, a), SECOND_PLACEHOLDER, b);
}

std::string CSIMenuUtil::GetDeviceSID() {
    std::string deviceSid = GetFMSString(DEVICE_SID);
    if (!deviceSid.empty()) {
        return deviceSid;
    }
    if (GetFMSInt(MODULAR_VERSION) == 1) {
        return "REP.DEVICE.VANTELO.THE.SKELD";
    }
    if (GetFMSInt(MODULAR_VERSION) == 2) {
        return "TV_SID_MLED_CAOCT_NON_MICRO_LED";
    }
    if (GetFMSBool(PROJECTOR)) {
        return "PJT_SID_TV";
    }
    if (GetFMSBool(MONITOR)) {
        return "REP.DEVICE.TESSA.MONITOR";
    }
    return "REP.DEVICE.TV";
}

std::string CSIMenuUtil::GetTextTVScreenOrPJT(const char* tvSid, const char* screenSid,
                                              const char* otherSid) {
    if (GetDeviceSID() == "REP.DEVICE.TV") {
        return Translate(tvSid);
    }
    if (GetDeviceSID() == "REP.DEVICE.SCREEN") {
        return Translate(screenSid);
    }
    const char* text = Translate(otherSid);
    return Replace(text, Translate(GetDeviceSID().c_str()));
}

// ---------------------------------------------------------------------------------------------
// Microphone and pass-through
// ---------------------------------------------------------------------------------------------

bool CSIMenuUtil::isBuiltInMicActivated() {
    int value = 1;
    if (vconf_get_int(BUILT_IN_MIC, &value) != 0) {
        LOG_ERROR_AT(461, "vconf get failed");
        return false;
    }
    if (value != 0) {
        LOG_ERROR_AT(467, "builtInMic activated");
        return true;
    }
    LOG_ERROR_AT(472, "builtInMic in-activated");
    return false;
}

bool CSIMenuUtil::setPassthruEnabled(bool enable) {
    if (vconf_set_bool(setting::PASSTHRU, enable) != 0) {
        LOG_INFO_AT(412, "Failed to set %s", setting::PASSTHRU);
        return false;
    }
    LOG_ERROR_AT(415, "Passthru enable : %d", enable);
    return true;
}

// Only an explicit "active" undims it.
bool CSIMenuUtil::IsPassthruDimmed() {
    const std::string state = getValueOfJsonVconf(PASSTHRU_STATE, "state");
    if (state == "dim") {
        LOG_ERROR_AT(431, "Passthru dim");
        return true;
    }
    if (state == "active") {
        LOG_ERROR_AT(436, "Passthru undim");
        return false;
    }
    LOG_ERROR_AT(441, "Passthru dim value wrong - %s", state.c_str());
    return true;
}

std::string CSIMenuUtil::GetPassthruDimmedToastPopUpString() {
    const std::string text = getValueOfJsonVconf(PASSTHRU_STATE, "text");
    LOG_ERROR_AT(450, "Passthru dim string - %s", text.c_str());
    return text;
}

// ---------------------------------------------------------------------------------------------
// Setup of the assistants, sign-in, consent, network
// ---------------------------------------------------------------------------------------------

bool CSIMenuUtil::isExistFile(std::string path) {
    return access(path.c_str(), F_OK) == 0;
}

bool CSIMenuUtil::checkSetUpComplete_Alexa() {
    return isExistFile("/home/owner/share/.voice/alexa_login_success");
}

bool CSIMenuUtil::checkSetUpComplete_Google() {
    return isExistFile("/home/owner/share/.voice/ga_login_success");
}

bool CSIMenuUtil::checkSetUpComplete_Salute() {
    return isExistFile("/home/owner/share/.voice/salute_login_success");
}

// The member's presence counts, whatever its value.
bool CSIMenuUtil::checkSetUpComplete_Tencent() {
    Json::Value root;
    const ParseResult result = ParseObject(GetVconfStirng(TENCENT_SETTING), root);
    if (result == ParseResult::Broken) {
        LOG_ERROR_AT(296, "json parse error");
        return false;
    }
    if (result == ParseResult::NotAnObject || !root.isMember("onboarding_completed")) {
        return false;
    }
    LOG_INFO_AT(305, "tencent onboarding done");
    return true;
}

bool CSIMenuUtil::IsVASetupComplete(ASSISTANT_TYPE type) {
    switch (type) {
        case ASSISTANT_NONE:
            LOG_ERROR_AT(651, "[FATAL]VA not selected");
            return false;
        case ASSISTANT_ALEXA:
            return checkSetUpComplete_Alexa();
        case ASSISTANT_ORVIK:
        case ASSISTANT_SVA:
            return !VconfGetBool(setting::FIRST_TIME);
        case ASSISTANT_GVA:
            return checkSetUpComplete_Google();
        case ASSISTANT_SBER:
            return checkSetUpComplete_Salute();
        case ASSISTANT_TENCENT:
            return checkSetUpComplete_Tencent();
    }
    LOG_ERROR_AT(673, "[FATAL]Wrong type");
    return false;
}

bool CSIMenuUtil::IsSignedIn() {
    int state = 0;
    if (sso_get_login_state(&state) != 0) {
        LOG_ERROR_AT(204, "get logged in state failed");
        return false;
    }
    return state == 1;
}

bool CSIMenuUtil::IsTncPPAgreed() {
    return GetDisclaimerItemAgreement("tnc") > 0 && GetDisclaimerItemAgreement("pp") > 0;
}

bool CSIMenuUtil::IsNetworkConnected() {
    bool connected = false;
    return connection_profile_check_default_gateway(&connected) == 0 && connected;
}

// ---------------------------------------------------------------------------------------------
// Voice guide and speech engine
// ---------------------------------------------------------------------------------------------

std::list<std::string> CSIMenuUtil::m_listTTSLanguage;

namespace {

constexpr std::size_t LOCALE_LENGTH = 5;  // "en_US"

constexpr char NEURAL_ENGINE[] = "org.nemra.tts-engine-neural";
constexpr char LEGACY_LANGUAGES_METADATA[] =
    "com.vantelo/tv/metadata/tts-engine/legacy_tts_language";

constexpr const char* LEGACY_LANGUAGES[] = {"ko_KR", "en_US", "en_GB", "de_DE",
                                            "it_IT", "es_ES", "ru_RU", "pt_PT"};

// Pieces are taken as they are, blanks included. An empty text has no pieces.
std::list<std::string> SplitAtCommas(const std::string& text) {
    std::list<std::string> pieces;
    if (text.empty()) {
        return pieces;
    }
    std::size_t begin = 0;
    std::size_t comma = text.find(',');
    while (comma != std::string::npos) {
        pieces.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
        comma = text.find(',', begin);
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

struct AppInfo {
    explicit AppInfo(pkgmgrinfo_appinfo_h appInfo) : handle(appInfo) {}
    AppInfo(const AppInfo&) = delete;
    AppInfo& operator=(const AppInfo&) = delete;
    ~AppInfo() { pkgmgrinfo_appinfo_destroy_appinfo(handle); }

    const pkgmgrinfo_appinfo_h handle;
};

}  // namespace

bool CSIMenuUtil::IsMenuLanguageSupportTTS() {
    const std::string menuLanguage = GetOsdLanguage();
    if (menuLanguage.size() < LOCALE_LENGTH) {
        LOG_ERROR_AT(83, "Osd Language empty or length less than 5");
        return false;
    }

    const bool isSetupWizard = GetVconfStirng(WIZARD_MODE) == "PNP_SETUP";
    const bool isNeuralEngineFitted = GetFMSBool(NEURAL_TTS);
    std::list<std::string> languages;
    if (!(isSetupWizard && isNeuralEngineFitted)) {
        if (m_listTTSLanguage.empty()) {
            m_GetTTSSupportLanguage();
        }
        languages = m_listTTSLanguage;
    } else {
        std::string metadata;
        if (GetMetaData(NEURAL_ENGINE, LEGACY_LANGUAGES_METADATA, metadata) == 0) {
            LOG_INFO_AT(97, "legacy_tts_langagues [%s]", metadata.c_str());
            languages = SplitAtCommas(metadata);
        } else {
            LOG_INFO_AT(107, "deprecated logical: legacy tts langagues 8");
            languages.assign(std::begin(LEGACY_LANGUAGES), std::end(LEGACY_LANGUAGES));
        }
    }

    const std::string locale = menuLanguage.substr(0, LOCALE_LENGTH);
    bool supported = false;
    for (const std::string& language : languages) {
        supported = supported || language == locale;
    }
    LOG_INFO_AT(141, "Current language [%s] %s support voice guide", locale.c_str(),
                supported ? "do" : "do not");
    return supported;
}

void CSIMenuUtil::m_GetTTSSupportLanguage() {
    tts_h tts = nullptr;
    if (tts_create(&tts) != 0) {
        LOG_ERROR_AT(151, "[FATAL]Failed tts_create");
        tts = nullptr;
    }
    tts_foreach_supported_voices(tts, m_TTSSupportVoiceCb, nullptr);
    if (tts != nullptr && tts_destroy(tts) != 0) {
        LOG_ERROR_AT(162, "[FATAL]Failed tts_destroy");
    }
}

// The speech engine is C code: no exception may pass through it.
bool CSIMenuUtil::m_TTSSupportVoiceCb(tts_h, const char* language, int, void*) try {
    LOG_INFO_AT(170, "tts language = %s", Printable(language));
    if (language != nullptr) {
        m_listTTSLanguage.push_back(language);
    }
    return true;
}
NEUTRAL_ON_EXCEPTION(true)

int CSIMenuUtil::GetMetaData(const char* appId, const char* metadataKey, std::string& value) {
    pkgmgrinfo_appinfo_h handle = nullptr;
    const int found = pkgmgrinfo_appinfo_get_appinfo(appId, &handle);
    if (found != 0) {
        LOG_ERROR_AT(625, "error: [%d]", found);
        return -1;
    }
    const AppInfo appInfo(handle);

    char* metadata = nullptr;
    const int read = pkgmgrinfo_appinfo_get_metadata_value(appInfo.handle, metadataKey, &metadata);
    if (read != 0) {
        LOG_ERROR_AT(633, "error: [%d]", read);
        return -1;
    }
    if (metadata != nullptr) {
        value = metadata;
    }
    return 0;
}

void CSIMenuUtil::SetVoiceGuideOnOff(bool on) {
    LOG_ERROR_AT(596, "Turn %s", on ? "ON" : "OFF");
    vconf_set_bool(VOICE_GUIDE, on);
    avoc_set_sound_feedback(on ? 3 : 1, 1);
    elm_init(1, nullptr);
    elm_config_access_set(on);
    elm_config_save();
    elm_config_item_flush("ELM_ACCESS_MODE");
}

// ---------------------------------------------------------------------------------------------
// Other applications
// ---------------------------------------------------------------------------------------------

void CSIMenuUtil::LaunchApp(const char* appId) {
    bundle* arguments = bundle_create();
    aul_launch_app(appId, arguments);
    bundle_free(arguments);
}

void CSIMenuUtil::LaunchApp(const char* appId, const char* key, const char* value) {
    bundle* arguments = bundle_create();
    bundle_add_str(arguments, key, value);
    aul_launch_app(appId, arguments);
    bundle_free(arguments);
}

void CSIMenuUtil::ShowPopup(std::string text) {
    app_control_h control = nullptr;
    if (app_control_create(&control) != 0) {
        LOG_ERROR_AT(251, "app_control_create failed");
        return;
    }
    app_control_set_operation(control, APP_CONTROL_OPERATION_DEFAULT);
    app_control_set_app_id(control, "org.nemra.alert-syspopup");
    app_control_add_extra_data(control, "type", "notification");
    app_control_add_extra_data(control, "text", text.c_str());
    app_control_add_extra_data(control, "timeout", "7");
    if (app_control_send_launch_request(control, nullptr, nullptr) == 0) {
        LOG_ERROR_AT(262, "Succeeded to launch alert popup.");
    } else {
        LOG_ERROR_AT(266, "Failed to launch alert popup");
    }
    app_control_destroy(control);
}

void CSIMenuUtil::RefreshMenu() {
    if (vconf_set_int(REFRESH_MENU, 1) != 0) {
        LOG_INFO_AT(179, "Failed to set db/menu/refresh_menu, refresh menu failed");
    }
}

void CSIMenuUtil::SetVoiceAssistant(const char* appId) {
    const int result = vconf_set_str(setting::CURRENT_ASSISTANT, appId);
    LOG_ERROR_AT(615, "[%d]str: %s", result, Printable(appId));
}
