#include "answering_platform.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/applications.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/speech.h"
#include "platform/toolkit.h"
#include "platform/trace_storage.h"

FuzzedDataProvider* answers = nullptr;
std::map<std::string, std::string> strings;
vconf_callback_fn policyCallback = nullptr;

namespace {

char traceBuffer[1 << 20];

constexpr const char* APPS[] = {"com.vantelo.tv.voice-instant-app",
                                "com.vantelo.tv.google-assistant", "a", ""};

int Failure() {
    return answers->ConsumeBool() ? 0 : -22;
}

// Half of the time an application that a policy may list, so that the two meet.
std::string AnyString() {
    return answers->ConsumeBool() ? answers->PickValueInArray(APPS)
                                  : answers->ConsumeRandomLengthString();
}

char* Copy(const std::string& text) {
    return strdup(text.c_str());
}

}  // namespace

extern "C" {

int vconf_get_int(const char*, int* value) {
    *value = answers->ConsumeIntegralInRange(-1, 3);
    return Failure();
}

int vconf_get_bool(const char*, int* value) {
    *value = answers->ConsumeIntegralInRange(0, 2);
    return Failure();
}

char* vconf_get_str(const char* key) {
    auto found = strings.find(key);
    if (found == strings.end()) {
        if (Failure() != 0) {
            return nullptr;
        }
        found = strings.emplace(key, AnyString()).first;
    }
    return Copy(found->second);
}

int vconf_set_int(const char*, int) {
    return Failure();
}
int vconf_set_bool(const char*, int) {
    return Failure();
}

int vconf_set_str(const char* key, const char* value) {
    if (Failure() != 0) {
        return -1;
    }
    strings[key] = value;
    return 0;
}

int vconf_notify_key_changed(const char*, vconf_callback_fn callback, void*) {
    policyCallback = callback;
    return Failure();
}

int vconf_ignore_key_changed(const char*, vconf_callback_fn) {
    return Failure();
}

int system_info_get_custom_bool(const char*, bool* value) {
    *value = answers->ConsumeBool();
    return Failure();
}

int system_info_get_custom_int(const char*, int* value) {
    *value = answers->ConsumeIntegralInRange(-1, 4);
    return Failure();
}

int system_info_get_custom_string(const char*, char** value) {
    const int result = Failure();
    if (result == 0 && answers->ConsumeBool()) {
        *value = Copy(AnyString());
    }
    return result;
}

// Reads every argument, as a log does.
int __dlog_print(int, int, const char*, const char* format, ...) {
    char record[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(record, sizeof(record), format, arguments);
    va_end(arguments);
    return length;
}

int app_control_create(app_control_h* control) {
    *control = nullptr;
    return Failure();
}
int app_control_set_operation(app_control_h, const char*) {
    return Failure();
}
int app_control_set_app_id(app_control_h, const char*) {
    return Failure();
}
int app_control_add_extra_data(app_control_h, const char*, const char*) {
    return Failure();
}
int app_control_send_launch_request(app_control_h, app_control_reply_cb, void*) {
    return Failure();
}
int app_control_destroy(app_control_h) {
    return Failure();
}
bundle* bundle_create(void) {
    return nullptr;
}
int bundle_add_str(bundle*, const char*, const char*) {
    return Failure();
}
int bundle_free(bundle*) {
    return Failure();
}
int aul_launch_app(const char*, bundle*) {
    return Failure();
}
int app_manager_get_app_context(const char*, app_context_h* context) {
    *context = nullptr;
    return Failure();
}
int app_manager_terminate_app(app_context_h) {
    return Failure();
}

int pkgmgrinfo_appinfo_get_appinfo(const char*, pkgmgrinfo_appinfo_h*) {
    return Failure();
}
int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h, const char*, char**) {
    return Failure();
}
int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h) {
    return Failure();
}

int tts_create(tts_h*) {
    return Failure();
}
int tts_foreach_supported_voices(tts_h, tts_supported_voice_cb, void*) {
    return Failure();
}
int tts_destroy(tts_h) {
    return Failure();
}
int avoc_set_sound_feedback(int, int) {
    return Failure();
}

int sso_get_login_state(int* state) {
    *state = answers->ConsumeIntegralInRange(0, 2);
    return Failure();
}

int sso_get_account_ui_application_package_id(char** id) {
    const int result = Failure();
    if (result == 0 && answers->ConsumeBool()) {
        *id = Copy("account");
    }
    return result;
}

int GetDisclaimerItemAgreement(const char*) {
    return answers->ConsumeIntegralInRange(-1, 1);
}

int connection_profile_check_default_gateway(bool* connected) {
    *connected = answers->ConsumeBool();
    return Failure();
}

int AOVSystemDataGetAOVMode(void) {
    return answers->ConsumeIntegralInRange(0, 2);
}
int AOVSystemDataSetAOVMode(const char*, int) {
    return Failure();
}

int elm_init(int, char**) {
    return 1;
}
void elm_config_access_set(unsigned char) {}
unsigned char elm_config_save(void) {
    return 1;
}
void elm_config_item_flush(const char*) {}

int access(const char*, int) {
    return Failure();
}

}  // extern "C"

std::atomic<bool> TIStorageManagerState::enabled = false;

std::string ht::TSDemangler::Demangle(const char* typeName) {
    return typeName;
}
void ht::TCStorage::SaveLocation(TCStorage*, const TCCallLocation&) {}
ht::TCThread* ht::TCStorage::ThreadHandle(TCStorage*) {
    return nullptr;
}
void* ht::TCStorage::PrepareCallBuffer(TCStorage*, TCThread*, size_t payloadSize, int, int) {
    return payloadSize <= sizeof(traceBuffer) && answers->ConsumeBool() ? traceBuffer : nullptr;
}
void ht::TCStorage::Commit(TCStorage*, TCThread*) {}

TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}
int TIStorageManager::NewLocationId() {
    static int id = 0;
    return ++id;
}
ht::TCStorage* TIStorageManager::CurrentStorage() {
    return nullptr;
}
