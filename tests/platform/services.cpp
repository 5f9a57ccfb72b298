// Settings, features, log, account, consents, network, always-on voice, toolkit, texts, files.
#include <fcntl.h>
#include <libintl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/settings_store.h"
#include "platform/toolkit.h"
#include "recorder.h"
#include "virtual-tv/model/keys.h"

namespace recording {

namespace {

struct Watch {
    std::string key;
    vconf_callback_fn callback;
    void* userData;
};

std::vector<Watch>& watches() {
    static std::vector<Watch> instance;
    return instance;
}

template <typename Value, typename Map>
const Value* Find(const Map& map, const char* key) {
    const auto found = map.find(View(key));
    return found != map.end() ? std::get_if<Value>(&found->second) : nullptr;
}

bool IsSettingKey(const char* key) {
    return key != nullptr && vtv::IsSettingKey(key);
}

int Store(const Call& call, const char* key, SettingValue value) {
    if (call.Fails() || !IsSettingKey(key)) {
        return call.Code();
    }
    tv().settings[key] = std::move(value);
    if (tv().notifies) {
        Notify(key);
    }
    return 0;
}

template <typename Value>
int ReadFeature(const Call& call, const char* key, Value* value) {
    if (call.Fails()) {
        return call.Code();
    }
    if (const FeatureError* error = Find<FeatureError>(tv().features, key)) {
        return error->code;
    }
    const Value* found = Find<Value>(tv().features, key);
    if (found == nullptr || value == nullptr) {
        return platform::NO_SUCH_FEATURE;
    }
    *value = *found;
    return 0;
}

// A translation stays valid as a catalogue's does: one text for every id ever asked for.
std::map<std::string, std::set<std::string>>& texts() {
    static std::map<std::string, std::set<std::string>> instance;
    return instance;
}

// "general_voice_dataprovider.cpp: get_int(12) > text" as "FILE FUNCTION LINE text".
std::string LogLine(const std::string& text) {
    const std::size_t file = text.find(": ");
    const std::size_t line = text.find('(', file);
    const std::size_t message = text.find(") > ", line);
    if (file == std::string::npos || line == std::string::npos || message == std::string::npos) {
        return "[without prefix] " + text;
    }
    return text.substr(0, file) + ' ' + text.substr(file + 2, line - file - 2) + ' ' +
           text.substr(line + 1, message - line - 1) + ' ' + text.substr(message + 4);
}

}  // namespace

int AlwaysOnMode() {
    const std::string* current = Find<std::string>(tv().settings, vtv::kCurrentAssistantKey);
    const auto found = tv().aovModes.find(current != nullptr ? *current : "");
    return found != tv().aovModes.end() ? found->second : tv().aovMode;
}

int WatchCount(std::string_view key) {
    int count = 0;
    for (const Watch& watch : watches()) {
        count += watch.key == key ? 1 : 0;
    }
    return count;
}

void Notify(std::string_view key) {
    std::vector<Watch> called;
    {
        PlatformCode inside;
        for (const Watch& watch : watches()) {
            if (watch.key == key) {
                called.push_back(watch);
            }
        }
    }
    for (const Watch& watch : called) {
        const int depth = platformDepth;
        platformDepth = 0;  // the callback is the provider's code
        watch.callback(nullptr, watch.userData);
        platformDepth = depth;
    }
    PlatformCode inside;
    called = {};
}

void Publish(const std::string& key, const std::string& text) {
    {
        PlatformCode inside;
        tv().settings[key] = text;
    }
    Notify(key);
}

void ResetServices() {
    watches() = {};
    texts() = {};
}

}  // namespace recording

using namespace recording;

extern "C" {

// --- Settings store ---

int vconf_get_int(const char* key, int* value) {
    Call call("vconf_get_int", key);
    const int* found = Find<int>(tv().settings, key);
    if (call.Fails() || found == nullptr || value == nullptr) {
        return call.Code();
    }
    *value = *found;
    return 0;
}

int vconf_get_bool(const char* key, int* value) {
    Call call("vconf_get_bool", key);
    const StoredBool* found = Find<StoredBool>(tv().settings, key);
    if (call.Fails() || found == nullptr || value == nullptr) {
        return call.Code();
    }
    *value = found->number;
    return 0;
}

char* vconf_get_str(const char* key) {
    Call call("vconf_get_str", key);
    const std::string* found = Find<std::string>(tv().settings, key);
    if (call.Fails() || found == nullptr) {
        return nullptr;
    }
    return HandOut(call, *found);
}

int vconf_set_int(const char* key, int value) {
    Call call("vconf_set_int", key, value);
    return Store(call, key, value);
}

int vconf_set_bool(const char* key, int value) {
    Call call("vconf_set_bool", key, value);
    return Store(call, key, StoredBool{value != 0});
}

int vconf_set_str(const char* key, const char* value) {
    Call call("vconf_set_str", key, value);
    return value != nullptr ? Store(call, key, value) : call.Code();
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* userData) {
    Call call("vconf_notify_key_changed", key, userData == nullptr ? "(null)" : "user data");
    if (call.Fails() || !IsSettingKey(key) || callback == nullptr) {
        return call.Code();
    }
    for (Watch& watch : watches()) {
        if (watch.key == key && watch.callback == callback) {
            watch.userData = userData;
            return 0;
        }
    }
    watches().push_back({key, callback, userData});
    return 0;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    Call call("vconf_ignore_key_changed", key);
    if (call.Fails()) {
        return call.Code();
    }
    const auto removed = std::erase_if(watches(), [&](const Watch& watch) {
        return watch.key == View(key) && watch.callback == callback;
    });
    return removed > 0 ? 0 : call.Code();
}

// --- Features ---

int system_info_get_custom_bool(const char* key, bool* value) {
    Call call("system_info_get_custom_bool", key);
    return ReadFeature(call, key, value);
}

int system_info_get_custom_int(const char* key, int* value) {
    Call call("system_info_get_custom_int", key);
    return ReadFeature(call, key, value);
}

int system_info_get_custom_string(const char* key, char** value) {
    Call call("system_info_get_custom_string", key);
    if (!call.Fails() && value != nullptr && Find<NullText>(tv().features, key) != nullptr) {
        *value = nullptr;
        return 0;
    }
    std::string text;
    const int result = ReadFeature(call, key, value != nullptr ? &text : nullptr);
    if (result == 0 && value != nullptr) {
        *value = HandOut(call, text);
    }
    return result;
}

// --- Log ---

int __dlog_print(int logId, int priority, const char* tag, const char* format, ...) {
    Call call(Call::Unwritten(), "__dlog_print");
    if (call.Fails() || format == nullptr) {
        return call.Code();
    }
    if (!IsRecording()) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);

    std::string line = "log ";
    line += priority == 6 ? "E" : priority == 4 ? "I" : "priority " + std::to_string(priority);
    if (logId != 0 || View(tag) != "SI-MENU") {
        line += " [log " + std::to_string(logId) + " tag " + Printable(tag) + "]";
    }
    RecordLine(line + ' ' + LogLine(text));
    return length;
}

// --- Account, consents, network, always-on voice ---

int sso_get_login_state(int* state) {
    Call call("sso_get_login_state");
    if (call.Fails() || state == nullptr) {
        return call.Code();
    }
    *state = tv().loginState;
    return 0;
}

int sso_get_account_ui_application_package_id(char** id) {
    Call call("sso_get_account_ui_application_package_id");
    if (call.Fails() || id == nullptr) {
        return call.Code();
    }
    *id = tv().accountApp ? HandOut(call, *tv().accountApp) : nullptr;
    return 0;
}

int GetDisclaimerItemAgreement(const char* item) {
    Call call("GetDisclaimerItemAgreement", item);
    if (call.Fails() || !vtv::IsConsent(View(item))) {
        return call.Code();
    }
    const auto found = tv().consents.find(View(item));
    return found != tv().consents.end() ? found->second : 0;
}

int connection_profile_check_default_gateway(bool* connected) {
    Call call("connection_profile_check_default_gateway");
    if (call.Fails() || connected == nullptr) {
        return call.Code();
    }
    *connected = tv().online;
    return 0;
}

int AOVSystemDataGetAOVMode(void) {
    Call call("AOVSystemDataGetAOVMode");
    return call.Fails() ? call.Code() : AlwaysOnMode();
}

int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    Call call("AOVSystemDataSetAOVMode", appId, mode);
    if (call.Fails() || appId == nullptr) {
        return call.Code();
    }
    tv().aovModes[appId] = mode;
    return 0;
}

// --- Toolkit ---

int elm_init(int argc, char** argv) {
    Call call("elm_init", argc, argv == nullptr ? "(null)" : "arguments");
    return call.Fails() ? 0 : 1;
}

void elm_config_access_set(unsigned char isAccess) {
    Call call("elm_config_access_set", static_cast<int>(isAccess));
}

unsigned char elm_config_save(void) {
    Call call("elm_config_save");
    return call.Fails() ? 0 : 1;
}

void elm_config_item_flush(const char* item) {
    Call call("elm_config_item_flush", item);
}

// --- Texts and files ---

char* dgettext(const char* domain, const char* id) noexcept {
    Call call("dgettext", domain, id);
    if (call.Fails()) {
        return nullptr;
    }
    const auto found = tv().translations.find(View(id));
    const std::string text =
        found != tv().translations.end() ? found->second : "tr(" + Printable(id) + ")";
    return const_cast<char*>(texts()[Printable(id)].insert(text).first->c_str());
}

int access(const char* path, int mode) noexcept {
    Call call("access", path, mode);
    if (call.Fails() || View(path).data() == nullptr) {
        errno = EACCES;
        return -1;
    }
    if (tv().files.contains(View(path))) {
        return 0;
    }
    if (View(path).starts_with("/home/owner/")) {
        errno = ENOENT;
        return -1;
    }
    return faccessat(AT_FDCWD, path, mode, 0);
}

}  // extern "C"
