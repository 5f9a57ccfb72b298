// Requests to other applications: app control and bundles.
#include <algorithm>

#include "applications.h"
#include "platform/applications.h"
#include "serve.h"

struct app_control_s {
    vtv::Launch request;
};

struct bundle_s {
    vtv::Extras extras;
};

namespace vtv {

namespace {

// A key that is added again gets the new value at its old place.
void Put(Extras* extras, const char* key, const char* value) {
    const auto found =
        std::find_if(extras->begin(), extras->end(), [&](const auto& e) { return e.first == key; });
    if (found != extras->end()) {
        found->second = value;
    } else {
        extras->emplace_back(key, value);
    }
}

bool Launched(Tv::Impl& tv, Launch request) {
    const Launch launch = StartApplication(tv, std::move(request));
    if (Succeeded(launch)) {
        return true;
    }
    NoteFailure(tv, launch.appId + " could not be started: " + launch.outcome + ".");
    return false;
}

}  // namespace

}  // namespace vtv

using vtv::Serve;
using vtv::ServeOr;

extern "C" {

VTV_EXPORT int app_control_create(app_control_h* control) {
    return Serve("app_control_create", [&](vtv::Tv::Impl&) {
        if (control == nullptr) {
            return false;
        }
        auto made = std::make_unique<app_control_s>();
        made->request.via = "app-control";
        *control = made.release();
        return true;
    });
}

VTV_EXPORT int app_control_set_operation(app_control_h control, const char* operation) {
    return Serve("app_control_set_operation", [&](vtv::Tv::Impl&) {
        if (control == nullptr || operation == nullptr) {
            return false;
        }
        control->request.operation = operation;
        return true;
    });
}

VTV_EXPORT int app_control_set_app_id(app_control_h control, const char* appId) {
    return Serve("app_control_set_app_id", [&](vtv::Tv::Impl&) {
        if (control == nullptr || appId == nullptr) {
            return false;
        }
        control->request.appId = appId;
        return true;
    });
}

VTV_EXPORT int app_control_add_extra_data(app_control_h control, const char* key,
                                          const char* value) {
    return Serve("app_control_add_extra_data", [&](vtv::Tv::Impl&) {
        if (control == nullptr || key == nullptr || value == nullptr) {
            return false;
        }
        vtv::Put(&control->request.extras, key, value);
        return true;
    });
}

// There is no reply: the simulated applications give none.
VTV_EXPORT int app_control_send_launch_request(app_control_h control, app_control_reply_cb, void*) {
    return Serve("app_control_send_launch_request", [&](vtv::Tv::Impl& tv) {
        if (control == nullptr || control->request.appId.empty()) {
            return false;
        }
        return vtv::Launched(tv, control->request);
    });
}

VTV_EXPORT int app_control_destroy(app_control_h control) {
    // Also when the call is told to fail: what was handed out is given back.
    const std::unique_ptr<app_control_s> owned(control);
    return Serve("app_control_destroy", [&](vtv::Tv::Impl&) { return control != nullptr; });
}

VTV_EXPORT bundle* bundle_create(void) {
    return ServeOr<bundle*>(nullptr, "bundle_create",
                            [](vtv::Tv::Impl&) { return std::make_unique<bundle_s>().release(); });
}

VTV_EXPORT int bundle_add_str(bundle* b, const char* key, const char* value) {
    return Serve("bundle_add_str", [&](vtv::Tv::Impl&) {
        if (b == nullptr || key == nullptr || value == nullptr) {
            return false;
        }
        vtv::Put(&b->extras, key, value);
        return true;
    });
}

VTV_EXPORT int bundle_free(bundle* b) {
    const std::unique_ptr<bundle_s> owned(b);
    return Serve("bundle_free", [&](vtv::Tv::Impl&) { return b != nullptr; });
}

VTV_EXPORT int aul_launch_app(const char* appId, bundle* b) {
    return Serve("aul_launch_app", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr) {
            return false;
        }
        vtv::Launch request;
        request.appId = appId;
        request.via = "aul";
        if (b != nullptr) {
            request.extras = b->extras;
        }
        return vtv::Launched(tv, std::move(request));
    });
}

}  // extern "C"
