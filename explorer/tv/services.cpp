// What the platform answers: settings, features, consents, the account, the network, marker files.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>

#include "lazy_tv.h"
#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/speech.h"

using explorer::Entry;
using explorer::Input;
using explorer::tv;
using explorer::Value;

namespace {

bool Fails(const Value& value) {
    return value.kind == Value::Kind::kFails;
}

// The caller frees it.
char* HandOut(const Value& value) {
    return value.kind == Value::Kind::kText ? strdup(tv().TextOf(value)) : nullptr;
}

int ReadNumber(Input::Kind kind, const char* key, int* number) {
    const Value& value = tv().Read(kind, key);
    if (Fails(value)) {
        return value.number;
    }
    *number = value.number;
    return 0;
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------------------------
// Settings store
// ---------------------------------------------------------------------------------------------

int vconf_get_int(const char* key, int* value) {
    return ReadNumber(Input::Kind::kSetting, key, value);
}

int vconf_get_bool(const char* key, int* value) {
    return ReadNumber(Input::Kind::kSetting, key, value);
}

char* vconf_get_str(const char* key) {
    if (const std::string* policy = tv().PolicyDocument(key)) {
        return policy->empty() ? nullptr : strdup(policy->c_str());
    }
    return HandOut(tv().Read(Input::Kind::kSetting, key));
}

int vconf_set_int(const char* key, int value) {
    return tv().WriteNumber(key, "int", value);
}

int vconf_set_bool(const char* key, int value) {
    return tv().WriteNumber(key, "bool", value);
}

int vconf_set_str(const char* key, const char* value) {
    return tv().WriteText(key, value);
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* userData) {
    return tv().AddWatch(key, callback, userData);
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    return tv().RemoveWatch(key, callback);
}

// ---------------------------------------------------------------------------------------------
// Feature configuration
// ---------------------------------------------------------------------------------------------

int system_info_get_custom_bool(const char* key, bool* value) {
    int number = 0;
    const int result = ReadNumber(Input::Kind::kFeature, key, &number);
    if (result == 0) {
        *value = number != 0;
    }
    return result;
}

int system_info_get_custom_int(const char* key, int* value) {
    return ReadNumber(Input::Kind::kFeature, key, value);
}

int system_info_get_custom_string(const char* key, char** value) {
    const Value& answer = tv().Read(Input::Kind::kFeature, key);
    if (Fails(answer)) {
        return answer.number;
    }
    *value = HandOut(answer);
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Account, consents, network, marker files, always-on voice
// ---------------------------------------------------------------------------------------------

int sso_get_login_state(int* state) {
    return ReadNumber(Input::Kind::kCall, "sso_get_login_state", state);
}

int sso_get_account_ui_application_package_id(char** id) {
    const Value& value = tv().ReadCall("sso_get_account_ui_application_package_id");
    if (Fails(value)) {
        return value.number;
    }
    *id = HandOut(value);
    return 0;
}

int GetDisclaimerItemAgreement(const char* item) {
    return tv().Read(Input::Kind::kConsent, item).number;
}

int connection_profile_check_default_gateway(bool* connected) {
    int number = 0;
    const int result =
        ReadNumber(Input::Kind::kCall, "connection_profile_check_default_gateway", &number);
    if (result == 0) {
        *connected = number != 0;
    }
    return result;
}

int access(const char* path, int mode) noexcept {
    if (std::strncmp(path, "/home/owner/", 12) == 0) {
        return tv().Read(Input::Kind::kFile, path).number == 1 ? 0 : -1;
    }
    return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, path, mode));
}

int AOVSystemDataGetAOVMode(void) {
    return tv().ReadCall("AOVSystemDataGetAOVMode").number;
}

int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    return tv().SetMode(appId, mode);
}

// ---------------------------------------------------------------------------------------------
// Packages and speech
// ---------------------------------------------------------------------------------------------

int pkgmgrinfo_appinfo_get_appinfo(const char*, pkgmgrinfo_appinfo_h* handle) {
    const Value& value = tv().ReadCall("pkgmgrinfo_appinfo_get_appinfo");
    if (Fails(value)) {
        return value.number;
    }
    static int package;
    *handle = &package;
    return 0;
}

int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h, const char*, char** value) {
    const Value& answer = tv().ReadCall("pkgmgrinfo_appinfo_get_metadata_value");
    if (Fails(answer)) {
        return answer.number;
    }
    *value = answer.kind == Value::Kind::kText ? const_cast<char*>(tv().TextOf(answer)) : nullptr;
    return 0;
}

int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h) {
    return 0;
}

int tts_create(tts_h* tts) {
    const Value& value = tv().ReadCall("tts_create");
    if (Fails(value)) {
        return value.number;
    }
    static int engine;
    *tts = reinterpret_cast<tts_h>(&engine);
    return 0;
}

int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* userData) {
    if (tts == nullptr) {
        return -1;
    }
    const Value& value = tv().ReadCall("tts_foreach_supported_voices");
    if (Fails(value)) {
        return value.number;
    }
    const char* rest = tv().TextOf(value);
    while (*rest != '\0') {
        char language[32] = "";
        const std::size_t size = std::strcspn(rest, ",");
        std::memcpy(language, rest, size < sizeof(language) ? size : sizeof(language) - 1);
        if (!callback(tts, language, 0, userData)) {
            return 0;
        }
        rest += size + (rest[size] == ',' ? 1 : 0);
    }
    return 0;
}

int tts_destroy(tts_h) {
    const Value& value = tv().ReadCall("tts_destroy");
    return Fails(value) ? value.number : 0;
}

// ---------------------------------------------------------------------------------------------
// Log
// ---------------------------------------------------------------------------------------------

int __dlog_print(int, int priority, const char*, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    tv().Log(priority, format, arguments);
    va_end(arguments);
    return 0;
}

// What is looked at is which text is chosen, not how it is translated.
char* dgettext(const char*, const char* id) noexcept {
    return const_cast<char*>(tv().Translate(id));
}

}  // extern "C"
