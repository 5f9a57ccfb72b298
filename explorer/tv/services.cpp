// What the platform answers: settings, features, consents, the account, the network, marker files.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"
#include "ledger.h"
#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/speech.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

using explorer::Input;
using explorer::tv;
using explorer::Value;
using platform::FailureOf;

namespace {

bool Fails(const Value& value) {
    return value.kind == Value::Kind::kFails;
}

// The caller frees it.
char* HandOut(const Value& value) {
    return value.kind == Value::Kind::kText ? strdup(tv().TextOf(value)) : nullptr;
}

int NumberOf(const Value& value, int* number) {
    if (Fails(value)) {
        return value.number;
    }
    *number = value.number;
    return 0;
}

bool IsSettingKey(const char* key) {
    return key != nullptr && vtv::IsSettingKey(key);
}

// A setting of another type is as good as none.
int ReadSetting(const char* key, const char* type, int* number) {
    const Value& value = tv().Read(Input::Kind::kSetting, key);
    return Fails(value) || value.storedType == type ? NumberOf(value, number)
                                                    : explorer::keys::FAILED;
}

int ReadFeature(const char* key, const char* type, int* number) {
    const Value& value = tv().Read(Input::Kind::kFeature, key);
    return Fails(value) || value.storedType == type ? NumberOf(value, number)
                                                    : platform::NO_SUCH_FEATURE;
}

int ResultOf(const Value& value) {
    return Fails(value) ? value.number : 0;
}

int ToFlag(int result, int number, bool* flag) {
    if (result == 0) {
        *flag = number != 0;
    }
    return result;
}

template <typename Handle>
int Lend(const char* call, Handle* handle) {
    if (handle == nullptr) {
        return FailureOf(call);
    }
    const int result = ResultOf(tv().ReadCall(call));
    if (result == 0) {
        *handle = reinterpret_cast<Handle>(explorer::HandOutHandle(call));
    }
    return result;
}

// The page asks for one such thing alone: the TV has no other.
bool IsTheKnown(const char* what, const char* name, std::string_view known) {
    if (name == nullptr || name != known) {
        const explorer::PlatformMemory own;
        tv().NoteUnknown(std::string(what) + " " + (name != nullptr ? name : "(null)"));
        return false;
    }
    return true;
}

// What a call is usually told is not worth a word.
void NoteUnlessUsual(const char* call, const char* argument, const char* usual) {
    if (argument == nullptr || std::strcmp(argument, usual) != 0) {
        tv().Note(call, argument);
    }
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------------------------
// Settings store
// ---------------------------------------------------------------------------------------------

int vconf_get_int(const char* key, int* value) {
    return value != nullptr ? ReadSetting(key, "int", value) : FailureOf(__func__);
}

int vconf_get_bool(const char* key, int* value) {
    return value != nullptr ? ReadSetting(key, "bool", value) : FailureOf(__func__);
}

char* vconf_get_str(const char* key) {
    if (explorer::Tv::IsPolicy(key)) {
        const std::string* policy = tv().ReadPolicyDocument();
        return policy != nullptr ? strdup(policy->c_str()) : nullptr;
    }
    return HandOut(tv().Read(Input::Kind::kSetting, key));
}

int vconf_set_int(const char* key, int value) {
    return IsSettingKey(key) ? tv().WriteNumber(key, value) : FailureOf(__func__);
}

int vconf_set_bool(const char* key, int value) {
    if (value != 0 && value != 1) {
        tv().Note("vconf_set_bool of the number", value);
    }
    return IsSettingKey(key) ? tv().WriteFlag(key, value != 0) : FailureOf(__func__);
}

int vconf_set_str(const char* key, const char* value) {
    return IsSettingKey(key) && value != nullptr ? tv().WriteText(key, value) : FailureOf(__func__);
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* userData) {
    if (!IsSettingKey(key) || callback == nullptr) {
        return FailureOf(__func__);
    }
    tv().AddWatch(key, callback, userData);
    return 0;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    return tv().RemoveWatch(key, callback) ? 0 : FailureOf(__func__);
}

// ---------------------------------------------------------------------------------------------
// Feature configuration
// ---------------------------------------------------------------------------------------------

int system_info_get_custom_bool(const char* key, bool* value) {
    if (value == nullptr) {
        return platform::NO_SUCH_FEATURE;
    }
    int number = 0;
    const int result = ReadFeature(key, "bool", &number);
    return ToFlag(result, number, value);
}

int system_info_get_custom_int(const char* key, int* value) {
    return value != nullptr ? ReadFeature(key, "int", value) : platform::NO_SUCH_FEATURE;
}

int system_info_get_custom_string(const char* key, char** value) {
    if (value == nullptr) {
        return platform::NO_SUCH_FEATURE;
    }
    const Value& answer = tv().Read(Input::Kind::kFeature, key);
    if (Fails(answer)) {
        return answer.number;
    }
    if (answer.kind == Value::Kind::kNumber) {
        return platform::NO_SUCH_FEATURE;
    }
    *value = HandOut(answer);
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Account, consents, network, marker files, always-on voice
// ---------------------------------------------------------------------------------------------

int sso_get_login_state(int* state) {
    return state != nullptr ? NumberOf(tv().ReadCall(explorer::keys::LOGIN), state)
                            : FailureOf(__func__);
}

int sso_get_account_ui_application_package_id(char** id) {
    if (id == nullptr) {
        return FailureOf(__func__);
    }
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
    if (connected == nullptr) {
        return FailureOf(__func__);
    }
    int number = 0;
    const int result = NumberOf(tv().ReadCall("connection_profile_check_default_gateway"), &number);
    return ToFlag(result, number, connected);
}

int access(const char* path, int mode) noexcept {
    // What the provider asks for is the TV's; others in this process mean the machine's own.
    if (explorer::memoryBooks.counting ||
        std::strncmp(path, vtv::kOwnerFolder, sizeof vtv::kOwnerFolder - 1) == 0) {
        if (mode != F_OK) {
            tv().Note("access() asks for more than that there is", mode);
        }
        return tv().Read(Input::Kind::kFile, path).number == 1 ? 0 : -1;
    }
    return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, path, mode));
}

int AOVSystemDataGetAOVMode(void) {
    return tv().ReadCall(explorer::MODE_CALL).number;
}

int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    return appId != nullptr ? tv().SetMode(appId, mode) : FailureOf(__func__);
}

// ---------------------------------------------------------------------------------------------
// Packages and speech
// ---------------------------------------------------------------------------------------------

int pkgmgrinfo_appinfo_get_appinfo(const char* appId, pkgmgrinfo_appinfo_h* handle) {
    tv().Note(__func__, appId);
    return IsTheKnown("package", appId, vtv::kNeuralEngine) ? Lend(__func__, handle)
                                                            : FailureOf(__func__);
}

int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                          char** value) {
    tv().Note(__func__, key);
    if (explorer::UseHandle(__func__, handle) == nullptr || value == nullptr ||
        !IsTheKnown("metadata", key, vtv::kEngineLanguages)) {
        return FailureOf(__func__);
    }
    const Value& answer = tv().ReadCall("pkgmgrinfo_appinfo_get_metadata_value");
    if (Fails(answer)) {
        return answer.number;
    }
    *value = answer.kind == Value::Kind::kText ? const_cast<char*>(tv().TextOf(answer)) : nullptr;
    return 0;
}

int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle) {
    tv().Note(__func__);
    return explorer::TakeHandleBack(__func__, handle) ? 0 : FailureOf(__func__);
}

int tts_create(tts_h* tts) {
    return Lend(__func__, tts);
}

int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* userData) {
    if (userData != nullptr) {
        tv().Note("tts_foreach_supported_voices", "with data");
    }
    if (tts == nullptr) {
        tv().Note("tts_foreach_supported_voices", nullptr);
    }
    if (tts == nullptr || callback == nullptr) {
        return FailureOf(__func__);
    }
    explorer::UseHandle(__func__, tts);
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

int tts_destroy(tts_h tts) {
    return explorer::TakeHandleBack(__func__, tts) ? ResultOf(tv().ReadCall("tts_destroy"))
                                                   : FailureOf(__func__);
}

// ---------------------------------------------------------------------------------------------
// Log
// ---------------------------------------------------------------------------------------------

int __dlog_print(int id, int priority, const char* tag, const char* format, ...) {
    if (id != 0) {
        tv().Note("__dlog_print with the log", id);
    }
    NoteUnlessUsual("__dlog_print with the tag", tag, "SI-MENU");
    if (format == nullptr) {
        return FailureOf(__func__);
    }
    va_list arguments;
    va_start(arguments, format);
    tv().Log(priority, format, arguments);
    va_end(arguments);
    return 0;
}

// What is looked at is which text is chosen and that it is translated, not what it says then.
char* dgettext(const char* domain, const char* id) noexcept {
    NoteUnlessUsual("dgettext of the domain", domain, "si-ready");
    tv().Note("dgettext", id);
    return const_cast<char*>(tv().Translate(id));
}

}  // extern "C"
