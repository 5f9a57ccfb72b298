// Launching and ending applications, package metadata, the speech engine.
#include "platform/applications.h"

#include <cstdlib>

#include "platform/packages.h"
#include "platform/speech.h"
#include "recorder.h"

namespace {

// What is put into a request until it is launched, by handle.
std::map<const void*, recording::Launch>& requests() {
    static std::map<const void*, recording::Launch> instance;
    return instance;
}

// The package that a metadata handle was opened for.
std::map<const void*, std::string>& openPackages() {
    static std::map<const void*, std::string> instance;
    return instance;
}

const char* HandleName(const void* handle) {
    return handle == nullptr ? "(null)" : "handle";
}

int AddExtra(const recording::Call& call, const void* request, const char* key, const char* value) {
    if (call.Fails() || !recording::IsHandle(call, request) || key == nullptr || value == nullptr) {
        return call.Code();
    }
    requests()[request].extras[key] = value;
    return 0;
}

app_context_h ContextOfRunningApp() {
    static char context;
    return reinterpret_cast<app_context_h>(&context);
}

}  // namespace

namespace recording {

void ResetApplications() {
    requests().clear();
    openPackages().clear();
}

}  // namespace recording

using namespace recording;

extern "C" {

int app_control_create(app_control_h* control) {
    Call call("app_control_create");
    if (call.Fails() || control == nullptr) {
        return call.Code();
    }
    *control = static_cast<app_control_h>(NewHandle(call));
    requests()[*control] = {};
    return 0;
}

int app_control_set_operation(app_control_h control, const char* operation) {
    Call call("app_control_set_operation", operation);
    const bool isTaken = operation != nullptr && IsHandle(call, control);
    return call.Fails() || !isTaken ? call.Code() : 0;
}

int app_control_set_app_id(app_control_h control, const char* appId) {
    Call call("app_control_set_app_id", appId);
    if (call.Fails() || !IsHandle(call, control) || appId == nullptr) {
        return call.Code();
    }
    requests()[control].appId = appId;
    return 0;
}

int app_control_add_extra_data(app_control_h control, const char* key, const char* value) {
    Call call("app_control_add_extra_data", key, value);
    return AddExtra(call, control, key, value);
}

int app_control_send_launch_request(app_control_h control, app_control_reply_cb callback,
                                    void* userData) {
    Call call("app_control_send_launch_request", callback == nullptr ? "(null)" : "callback",
              userData == nullptr ? "(null)" : "user data");
    if (call.Fails() || !IsHandle(call, control) || requests()[control].appId.empty()) {
        return call.Code();
    }
    AddLaunch(requests()[control]);
    return 0;
}

int app_control_destroy(app_control_h control) {
    Call call("app_control_destroy");
    return !EndHandle(call, control) || call.Fails() ? call.Code() : 0;
}

bundle* bundle_create(void) {
    Call call("bundle_create");
    if (call.Fails()) {
        return nullptr;
    }
    bundle* b = static_cast<bundle*>(NewHandle(call));
    requests()[b] = {};
    return b;
}

int bundle_add_str(bundle* b, const char* key, const char* value) {
    Call call("bundle_add_str", key, value);
    return AddExtra(call, b, key, value);
}

// A null is no debt: nobody handed one out.
int bundle_free(bundle* b) {
    Call call("bundle_free");
    const bool isTaken = b != nullptr && EndHandle(call, b);
    return call.Fails() || !isTaken ? call.Code() : 0;
}

int aul_launch_app(const char* appId, bundle* b) {
    Call call("aul_launch_app", appId);
    if (call.Fails() || appId == nullptr) {
        return call.Code();
    }
    Launch launch = IsHandle(call, b) ? requests()[b] : Launch();
    launch.appId = appId;
    AddLaunch(launch);
    return 0;
}

int app_manager_get_app_context(const char* appId, app_context_h* context) {
    Call call("app_manager_get_app_context", appId);
    if (call.Fails() || context == nullptr || !tv().runningApps.contains(Printable(appId))) {
        return call.Code();
    }
    *context = ContextOfRunningApp();
    return 0;
}

int app_manager_terminate_app(app_context_h context) {
    Call call("app_manager_terminate_app", HandleName(context));
    return call.Fails() || context != ContextOfRunningApp() ? call.Code() : 0;
}

int pkgmgrinfo_appinfo_get_appinfo(const char* appId, pkgmgrinfo_appinfo_h* handle) {
    Call call("pkgmgrinfo_appinfo_get_appinfo", appId);
    if (call.Fails() || handle == nullptr || !tv().packages.contains(Printable(appId))) {
        return call.Code();
    }
    *handle = NewHandle(call);
    openPackages()[*handle] = Printable(appId);
    return 0;
}

int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                          char** value) {
    Call call("pkgmgrinfo_appinfo_get_metadata_value", key);
    if (call.Fails() || value == nullptr || !IsHandle(call, handle)) {
        return call.Code();
    }
    const auto& items = tv().packages[openPackages()[handle]];
    const auto item = items.find(Printable(key));
    if (item == items.end()) {
        return call.Code();
    }
    // The text lives as long as the handle may: until the package changes.
    *value = item->second ? const_cast<char*>(item->second->c_str()) : nullptr;
    return 0;
}

int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle) {
    Call call("pkgmgrinfo_appinfo_destroy_appinfo");
    return !EndHandle(call, handle) || call.Fails() ? call.Code() : 0;
}

int tts_create(tts_h* tts) {
    Call call("tts_create");
    if (call.Fails() || tts == nullptr) {
        return call.Code();
    }
    *tts = static_cast<tts_h>(NewHandle(call));
    return 0;
}

int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* userData) {
    Call call("tts_foreach_supported_voices", HandleName(tts),
              userData == nullptr ? "(null)" : "user data");
    if (call.Fails() || callback == nullptr || !IsHandle(call, tts)) {
        return call.Code();
    }
    const int depth = platformDepth;
    for (const char* language : tv().voices) {
        platformDepth = 0;  // the callback is the provider's code
        const bool goOn = callback(tts, language, 0, userData);
        platformDepth = depth;
        if (!goOn) {
            break;
        }
    }
    return 0;
}

int tts_destroy(tts_h tts) {
    Call call("tts_destroy");
    return !EndHandle(call, tts) || call.Fails() ? call.Code() : 0;
}

int avoc_set_sound_feedback(int feedback, int priority) {
    Call call("avoc_set_sound_feedback", feedback, priority);
    return call.Fails() ? call.Code() : 0;
}

}  // extern "C"
