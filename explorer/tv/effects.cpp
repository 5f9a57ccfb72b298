// What the provider makes happen: applications, popups, the toolkit, sound.
#include <string>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"
#include "platform/applications.h"
#include "platform/speech.h"
#include "platform/toolkit.h"

using explorer::Entry;
using explorer::PlatformMemory;
using explorer::tv;
using explorer::Value;

namespace {

std::string Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

// "appId key=value key=value"
std::string request;
std::string control;

int ResultOf(const char* function) {
    const Value& value = tv().ReadCall(function);
    return value.kind == Value::Kind::kFails ? value.number : 0;
}

void AddExtra(std::string& to, const char* key, const char* value) {
    to += ' ' + Printable(key) + "=\"" + Printable(value) + '"';
}

void RecordCall(const std::string& text) {
    const PlatformMemory own;
    tv().Append(Entry::kCall, text);
}

}  // namespace

extern "C" {

bundle* bundle_create(void) {
    const PlatformMemory own;
    request.clear();
    return reinterpret_cast<bundle*>(&request);
}

int bundle_add_str(bundle*, const char* key, const char* value) {
    const PlatformMemory own;
    AddExtra(request, key, value);
    return 0;
}

int bundle_free(bundle*) {
    const PlatformMemory own;
    request = " with a freed bundle";  // shows in whatever is started with it from now on
    return 0;
}

int aul_launch_app(const char* appId, bundle*) {
    const PlatformMemory own;
    tv().Append(Entry::kLaunch, Printable(appId) + request);
    return ResultOf("aul_launch_app");
}

int app_control_create(app_control_h* handle) {
    const PlatformMemory own;
    control.clear();
    const int result = ResultOf("app_control_create");
    if (result == 0) {
        *handle = reinterpret_cast<app_control_h>(&control);
    }
    return result;
}

int app_control_set_operation(app_control_h, const char* operation) {
    const PlatformMemory own;
    AddExtra(control, "operation", operation);
    return 0;
}

int app_control_set_app_id(app_control_h, const char* appId) {
    const PlatformMemory own;
    control.insert(0, Printable(appId));
    return 0;
}

int app_control_add_extra_data(app_control_h, const char* key, const char* value) {
    const PlatformMemory own;
    AddExtra(control, key, value);
    return 0;
}

int app_control_send_launch_request(app_control_h, app_control_reply_cb, void*) {
    const PlatformMemory own;
    tv().Append(Entry::kPopup, control);
    return ResultOf("app_control_send_launch_request");
}

int app_control_destroy(app_control_h) {
    return 0;
}

int app_manager_get_app_context(const char* appId, app_context_h* context) {
    const PlatformMemory own;
    const int result = ResultOf("app_manager_get_app_context");
    if (result == 0) {
        static std::string name;
        name = Printable(appId);
        *context = reinterpret_cast<app_context_h>(&name);
    }
    return result;
}

int app_manager_terminate_app(app_context_h context) {
    const PlatformMemory own;
    tv().Append(Entry::kTerminate, *reinterpret_cast<std::string*>(context));
    return ResultOf("app_manager_terminate_app");
}

int avoc_set_sound_feedback(int feedback, int priority) {
    RecordCall("avoc_set_sound_feedback " + std::to_string(feedback) + ' ' +
               std::to_string(priority));
    return 0;
}

int elm_init(int, char**) {
    RecordCall("elm_init");
    return 1;
}

void elm_config_access_set(unsigned char isAccess) {
    RecordCall("elm_config_access_set " + std::to_string(isAccess));
}

unsigned char elm_config_save(void) {
    RecordCall("elm_config_save");
    return 1;
}

void elm_config_item_flush(const char* item) {
    RecordCall("elm_config_item_flush " + Printable(item));
}

}  // extern "C"
