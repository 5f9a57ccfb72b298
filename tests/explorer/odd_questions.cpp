// The calls of the platform with nulls and with names that no TV knows.
#include <climits>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/applications.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/speech.h"
#include "platform/toolkit.h"
#include "platform_questions.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace {

constexpr char UNHEARD_OF_KEY[] = "db/unheard-of";
constexpr char UNHEARD_OF_APP[] = "org.example.unheard-of";

// No key of a settings store, each in its own way.
const char* const NO_KEYS[] = {nullptr, "", "unheard-of", "db", "/db/unheard-of"};
const char* const UNKNOWN_NAMES[] = {nullptr, "", "unheard-of"};

std::string Named(const char* name) {
    return name != nullptr ? '"' + std::string(name) + '"' : "(null)";
}

void Hear(keynode*, void*) {}

bool TakeVoice(tts_h, const char*, int, void*) {
    return true;
}

}  // namespace

void OddQuestions::Result(const char* call, const std::string& asked, int result) {
    line_(call, asked, std::to_string(result));
}

void OddQuestions::AskAll() {
    Settings();
    Features();
    Services();
    Packages();
    Speech();
    Requests();
    Bundles();
    Toolkit();
}

void OddQuestions::Settings() {
    const char* key = key_.c_str();
    Result("vconf_get_int", key_ + " (null)", vconf_get_int(key, nullptr));
    Result("vconf_get_bool", key_ + " (null)", vconf_get_bool(key, nullptr));
    Result("vconf_set_str", key_ + " (null)", vconf_set_str(key, nullptr));
    line_("vconf_get_str", key_, vconf_get_str(key) == nullptr ? "null" : "a text");
    Result("vconf_notify_key_changed", key_ + " callback (null)",
           vconf_notify_key_changed(key, nullptr, nullptr));
    Result("vconf_ignore_key_changed", key_ + " callback (null)",
           vconf_ignore_key_changed(key, nullptr));
    for (const char* none : NO_KEYS) {
        int number = INT_MIN;
        Result("vconf_get_int", Named(none), vconf_get_int(none, &number));
        Result("vconf_get_bool", Named(none), vconf_get_bool(none, &number));
        line_("vconf_get_str", Named(none), vconf_get_str(none) == nullptr ? "null" : "a text");
        line_("vconf_get_int", Named(none), number == INT_MIN ? "unwritten" : "written");
        Result("vconf_set_int", Named(none), vconf_set_int(none, 1));
        Result("vconf_set_bool", Named(none), vconf_set_bool(none, 1));
        Result("vconf_set_str", Named(none), vconf_set_str(none, "x"));
        Result("vconf_notify_key_changed", Named(none),
               vconf_notify_key_changed(none, Hear, nullptr));
        Result("vconf_ignore_key_changed", Named(none), vconf_ignore_key_changed(none, Hear));
    }
    Result("vconf_set_int", UNHEARD_OF_KEY, vconf_set_int(UNHEARD_OF_KEY, 1));
    Result("vconf_set_bool", UNHEARD_OF_KEY, vconf_set_bool(UNHEARD_OF_KEY, 1));
    Result("vconf_set_str", UNHEARD_OF_KEY, vconf_set_str(UNHEARD_OF_KEY, "x"));
    Result("vconf_ignore_key_changed", UNHEARD_OF_KEY,
           vconf_ignore_key_changed(UNHEARD_OF_KEY, Hear));
    Result("vconf_notify_key_changed", UNHEARD_OF_KEY,
           vconf_notify_key_changed(UNHEARD_OF_KEY, Hear, nullptr));
}

void OddQuestions::Features() {
    for (const char* name : UNKNOWN_NAMES) {
        bool flag = false;
        int number = 0;
        char* text = nullptr;
        Result("system_info_get_custom_bool", Named(name),
               system_info_get_custom_bool(name, &flag));
        Result("system_info_get_custom_int", Named(name),
               system_info_get_custom_int(name, &number));
        Result("system_info_get_custom_string", Named(name),
               system_info_get_custom_string(name, &text));
    }
    // Known or not, there is nowhere to write to.
    for (const char* name : {vtv::kVoiceFeature, vtv::kFarFieldFeature, vtv::kDeviceNameFeature}) {
        const std::string asked = std::string(name) + " value (null)";
        Result("system_info_get_custom_bool", asked, system_info_get_custom_bool(name, nullptr));
        Result("system_info_get_custom_int", asked, system_info_get_custom_int(name, nullptr));
        Result("system_info_get_custom_string", asked,
               system_info_get_custom_string(name, nullptr));
    }
}

void OddQuestions::Services() {
    Result("sso_get_login_state", "(null)", sso_get_login_state(nullptr));
    Result("sso_get_account_ui_application_package_id", "(null)",
           sso_get_account_ui_application_package_id(nullptr));
    Result("connection_profile_check_default_gateway", "(null)",
           connection_profile_check_default_gateway(nullptr));
    for (const char* item : UNKNOWN_NAMES) {
        Result("GetDisclaimerItemAgreement", Named(item), GetDisclaimerItemAgreement(item));
    }
    Result("AOVSystemDataSetAOVMode", "(null)", AOVSystemDataSetAOVMode(nullptr, 1));
    for (const char* appId : {"", UNHEARD_OF_APP}) {
        Result("AOVSystemDataSetAOVMode", Named(appId), AOVSystemDataSetAOVMode(appId, -7));
    }
    for (const int number : {0, -1, INT_MAX}) {
        Result("avoc_set_sound_feedback", std::to_string(number),
               avoc_set_sound_feedback(number, number));
    }
    // Behind a pointer, the compiler does not object to the null.
    int (*const print)(int, int, const char*, const char*, ...) = __dlog_print;
    line_("__dlog_print", "tag (null)", print(0, 4, nullptr, "x") >= 0 ? "taken" : "refused");
    Result("__dlog_print", "format (null)", print(0, 4, "SI-MENU", nullptr));
}

void OddQuestions::Packages() {
    Result("pkgmgrinfo_appinfo_get_appinfo", "neural engine, handle (null)",
           pkgmgrinfo_appinfo_get_appinfo(vtv::kNeuralEngine, nullptr));
    pkgmgrinfo_appinfo_h info = nullptr;
    for (const char* appId : {static_cast<const char*>(nullptr), "", UNHEARD_OF_APP}) {
        Result("pkgmgrinfo_appinfo_get_appinfo", Named(appId),
               pkgmgrinfo_appinfo_get_appinfo(appId, &info));
    }
    line_("pkgmgrinfo_appinfo_get_appinfo", "writes", info == nullptr ? "nothing" : "a handle");
    char* value = nullptr;
    Result("pkgmgrinfo_appinfo_get_metadata_value", "handle (null)",
           pkgmgrinfo_appinfo_get_metadata_value(nullptr, vtv::kEngineLanguages, &value));
    Result("pkgmgrinfo_appinfo_destroy_appinfo", "(null)",
           pkgmgrinfo_appinfo_destroy_appinfo(nullptr));
    if (pkgmgrinfo_appinfo_get_appinfo(vtv::kNeuralEngine, &info) != 0) {
        return;
    }
    for (const char* key : UNKNOWN_NAMES) {
        Result("pkgmgrinfo_appinfo_get_metadata_value", Named(key),
               pkgmgrinfo_appinfo_get_metadata_value(info, key, &value));
    }
    Result("pkgmgrinfo_appinfo_get_metadata_value", "value (null)",
           pkgmgrinfo_appinfo_get_metadata_value(info, vtv::kEngineLanguages, nullptr));
    pkgmgrinfo_appinfo_destroy_appinfo(info);
}

void OddQuestions::Speech() {
    Result("tts_create", "(null)", tts_create(nullptr));
    Result("tts_foreach_supported_voices", "handle (null)",
           tts_foreach_supported_voices(nullptr, TakeVoice, nullptr));
    Result("tts_destroy", "(null)", tts_destroy(nullptr));
    tts_h tts = nullptr;
    tts_create(&tts);
    Result("tts_foreach_supported_voices", "callback (null)",
           tts_foreach_supported_voices(tts, nullptr, nullptr));
    tts_destroy(tts);
}

void OddQuestions::Requests() {
    Result("app_control_create", "(null)", app_control_create(nullptr));
    Result("app_control_set_operation", "handle (null)",
           app_control_set_operation(nullptr, APP_CONTROL_OPERATION_DEFAULT));
    Result("app_control_set_app_id", "handle (null)", app_control_set_app_id(nullptr, "x"));
    Result("app_control_add_extra_data", "handle (null)",
           app_control_add_extra_data(nullptr, "key", "value"));
    Result("app_control_send_launch_request", "handle (null)",
           app_control_send_launch_request(nullptr, nullptr, nullptr));
    Result("app_control_destroy", "(null)", app_control_destroy(nullptr));
    app_control_h control = nullptr;
    app_control_create(&control);
    Result("app_control_set_operation", "operation (null)",
           app_control_set_operation(control, nullptr));
    Result("app_control_set_app_id", "id (null)", app_control_set_app_id(control, nullptr));
    Result("app_control_add_extra_data", "key (null)",
           app_control_add_extra_data(control, nullptr, "value"));
    Result("app_control_add_extra_data", "value (null)",
           app_control_add_extra_data(control, "key", nullptr));
    Result("app_control_add_extra_data", "empty", app_control_add_extra_data(control, "", ""));
    Result("app_control_send_launch_request", "without an addressee, callback (null)",
           app_control_send_launch_request(control, nullptr, nullptr));
    app_control_destroy(control);
    app_context_h context = nullptr;
    for (const char* appId : {static_cast<const char*>(nullptr), "", UNHEARD_OF_APP}) {
        Result("app_manager_get_app_context", Named(appId),
               app_manager_get_app_context(appId, &context));
    }
    Result("app_manager_get_app_context", "context (null)",
           app_manager_get_app_context(vtv::kNotification, nullptr));
    Result("app_manager_terminate_app", "(null)", app_manager_terminate_app(nullptr));
}

void OddQuestions::Bundles() {
    Result("bundle_add_str", "bundle (null)", bundle_add_str(nullptr, "key", "value"));
    Result("bundle_free", "(null)", bundle_free(nullptr));
    bundle* extras = bundle_create();
    line_("bundle_create", "", extras != nullptr ? "one" : "none");
    Result("bundle_add_str", "key (null)", bundle_add_str(extras, nullptr, "value"));
    Result("bundle_add_str", "value (null)", bundle_add_str(extras, "key", nullptr));
    Result("bundle_add_str", "empty", bundle_add_str(extras, "", ""));
    Result("aul_launch_app", "id (null)", aul_launch_app(nullptr, extras));
    Result("aul_launch_app", "notification, bundle (null)",
           aul_launch_app(vtv::kNotification, nullptr));
    bundle_free(extras);
}

// What it answers is the machine's own; here it is only said that it takes what it is asked.
void OddQuestions::Toolkit() {
    elm_init(1, nullptr);
    line_("elm_init", "(null)", "asked");
    elm_config_access_set(1);
    elm_config_access_set(0);
    line_("elm_config_access_set", "", "asked");
    elm_config_save();
    line_("elm_config_save", "", "asked");
    elm_config_item_flush("x");
    elm_config_item_flush(nullptr);
    line_("elm_config_item_flush", "(null)", "asked");
}
