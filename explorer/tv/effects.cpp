// What the provider makes happen: applications, popups, the toolkit, sound.
#include <algorithm>
#include <string>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"
#include "ledger.h"
#include "platform/applications.h"
#include "platform/speech.h"
#include "platform/toolkit.h"
#include "virtual-tv/model/applications.h"

using explorer::Entry;
using explorer::Handle;
using explorer::PlatformMemory;
using explorer::tv;
using explorer::Value;
using platform::FailureOf;

namespace {

std::string Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

int ResultOf(const char* function) {
    const Value& value = tv().ReadCall(function);
    return value.kind == Value::Kind::kFails ? value.number : 0;
}

int AddExtra(const char* call, void* handle, const char* key, const char* value) {
    const PlatformMemory own;
    tv().Note(call, (Printable(key) + '=' + Printable(value)).c_str());
    Handle* known = explorer::UseHandle(call, handle);
    if (known == nullptr || key == nullptr || value == nullptr) {
        return FailureOf(call);
    }
    known->extras.emplace_back(key, value);
    return 0;
}

// The page starts what every TV has, assistants, and what the TV itself has named.
bool IsKnownApplication(const std::string& appId) {
    const std::vector<vtv::KnownAssistant>& assistants = vtv::KnownAssistants();
    return appId == vtv::kNotification || appId == vtv::kSetupWizard || appId == vtv::kOnboarding ||
           std::any_of(assistants.begin(), assistants.end(),
                       [&](const vtv::KnownAssistant& known) { return appId == known.appId; }) ||
           tv().HasToldOf(appId);
}

void RecordLaunch(Entry kind, const std::string& appId, const vtv::Extras& extras) {
    if (!IsKnownApplication(appId)) {
        tv().NoteUnknown("application " + appId);
    }
    tv().Append(kind, appId);
    for (const auto& [key, value] : extras) {
        tv().Append(Entry::kExtra, key, value);
    }
}

void RecordCall(const char* function, const std::string& arguments = "") {
    const PlatformMemory own;
    tv().Append(Entry::kCall, function, arguments);
}

}  // namespace

extern "C" {

bundle* bundle_create(void) {
    tv().Note("bundle_create");
    return reinterpret_cast<bundle*>(explorer::HandOutHandle(__func__));
}

int bundle_add_str(bundle* b, const char* key, const char* value) {
    return AddExtra(__func__, b, key, value);
}

int bundle_free(bundle* b) {
    tv().Note("bundle_free");
    return b != nullptr && explorer::TakeHandleBack(__func__, b) ? 0 : FailureOf(__func__);
}

int aul_launch_app(const char* appId, bundle* extras) {
    const PlatformMemory own;
    if (appId == nullptr) {
        return FailureOf(__func__);
    }
    const Handle* request = extras != nullptr ? explorer::UseHandle(__func__, extras) : nullptr;
    RecordLaunch(Entry::kLaunch, appId, request != nullptr ? request->extras : vtv::Extras());
    return ResultOf("aul_launch_app");
}

int app_control_create(app_control_h* handle) {
    const PlatformMemory own;
    if (handle == nullptr) {
        return FailureOf(__func__);
    }
    const int result = ResultOf("app_control_create");
    if (result == 0) {
        *handle = reinterpret_cast<app_control_h>(explorer::HandOutHandle(__func__));
    }
    return result;
}

// The operation is shown as one of the extras.
int app_control_set_operation(app_control_h handle, const char* operation) {
    return AddExtra(__func__, handle, "operation", operation);
}

int app_control_set_app_id(app_control_h handle, const char* appId) {
    const PlatformMemory own;
    tv().Note(__func__, appId);
    Handle* request = explorer::UseHandle(__func__, handle);
    if (request == nullptr || appId == nullptr) {
        return FailureOf(__func__);
    }
    request->appId = appId;
    return 0;
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    return AddExtra(__func__, handle, key, value);
}

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb reply,
                                    void* userData) {
    const PlatformMemory own;
    if (reply != nullptr || userData != nullptr) {
        tv().Note("app_control_send_launch_request", "wants a reply");
    }
    const Handle* request = explorer::UseHandle(__func__, handle);
    if (request == nullptr || request->appId.empty()) {
        return FailureOf(__func__);
    }
    RecordLaunch(Entry::kPopup, request->appId, request->extras);
    return ResultOf("app_control_send_launch_request");
}

int app_control_destroy(app_control_h handle) {
    tv().Note("app_control_destroy");
    return explorer::TakeHandleBack(__func__, handle) ? 0 : FailureOf(__func__);
}

int app_manager_get_app_context(const char* appId, app_context_h* context) {
    const PlatformMemory own;
    if (appId == nullptr || context == nullptr) {
        return FailureOf(__func__);
    }
    const int result = ResultOf("app_manager_get_app_context");
    tv().Note("app_manager_get_app_context", appId);
    if (result == 0) {
        Handle* handle = explorer::HandOutHandle(__func__);
        handle->appId = appId;
        handle->isOut = false;  // nobody gives it back
        *context = reinterpret_cast<app_context_h>(handle);
    }
    return result;
}

int app_manager_terminate_app(app_context_h context) {
    const PlatformMemory own;
    if (context == nullptr) {
        return FailureOf(__func__);
    }
    tv().Append(Entry::kTerminate, reinterpret_cast<Handle*>(context)->appId);
    return ResultOf("app_manager_terminate_app");
}

int avoc_set_sound_feedback(int feedback, int priority) {
    RecordCall("avoc_set_sound_feedback",
               std::to_string(feedback) + ' ' + std::to_string(priority));
    return 0;
}

int elm_init(int count, char** arguments) {
    if (count != 1 || arguments != nullptr) {
        tv().Note(arguments == nullptr ? "elm_init" : "elm_init with arguments", count);
    }
    RecordCall("elm_init");
    return 1;
}

void elm_config_access_set(unsigned char isAccess) {
    RecordCall("elm_config_access_set", std::to_string(isAccess));
}

unsigned char elm_config_save(void) {
    RecordCall("elm_config_save");
    return 1;
}

void elm_config_item_flush(const char* item) {
    RecordCall("elm_config_item_flush", Printable(item));
}

}  // extern "C"
