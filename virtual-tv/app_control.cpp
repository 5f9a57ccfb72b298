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

int ServeLaunch(Tv::Impl& tv, Launch request) {
    const Launch launch = StartApplication(tv, std::move(request));
    if (Succeeded(launch)) {
        return 0;
    }
    NoteFailure(tv, launch.appId + " could not be started: " + launch.outcome + ".");
    return kFailed;
}

}  // namespace

}  // namespace vtv

using vtv::kFailed;
using vtv::Serve;
using vtv::ServeOr;

extern "C" {

VTV_EXPORT int app_control_create(app_control_h* control) {
    return Serve("app_control_create", [&](vtv::Tv::Impl&) {
        if (control == nullptr) {
            return kFailed;
        }
        auto made = std::make_unique<app_control_s>();
        made->request.via = "app-control";
        *control = made.release();
        return 0;
    });
}

VTV_EXPORT int app_control_set_operation(app_control_h control, const char* operation) {
    return Serve("app_control_set_operation", [&](vtv::Tv::Impl&) {
        if (control == nullptr || operation == nullptr) {
            return kFailed;
        }
        control->request.operation = operation;
        return 0;
    });
}

VTV_EXPORT int app_control_set_app_id(app_control_h control, const char* appId) {
    return Serve("app_control_set_app_id", [&](vtv::Tv::Impl&) {
        if (control == nullptr || appId == nullptr) {
            return kFailed;
        }
        control->request.appId = appId;
        return 0;
    });
}

VTV_EXPORT int app_control_add_extra_data(app_control_h control, const char* key,
                                          const char* value) {
    return Serve("app_control_add_extra_data", [&](vtv::Tv::Impl&) {
        if (control == nullptr || key == nullptr || value == nullptr) {
            return kFailed;
        }
        vtv::Put(&control->request.extras, key, value);
        return 0;
    });
}

// There is no reply: the simulated applications give none.
VTV_EXPORT int app_control_send_launch_request(app_control_h control, app_control_reply_cb, void*) {
    return Serve("app_control_send_launch_request", [&](vtv::Tv::Impl& tv) {
        if (control == nullptr || control->request.appId.empty()) {
            return kFailed;
        }
        return vtv::ServeLaunch(tv, control->request);
    });
}

VTV_EXPORT int app_control_destroy(app_control_h control) {
    // Also when the call is told to fail: what was handed out is given back.
    const std::unique_ptr<app_control_s> owned(control);
    return Serve("app_control_destroy",
                 [&](vtv::Tv::Impl&) { return control != nullptr ? 0 : kFailed; });
}

VTV_EXPORT bundle* bundle_create(void) {
    return ServeOr<bundle*>(nullptr, "bundle_create",
                            [](vtv::Tv::Impl&) { return std::make_unique<bundle_s>().release(); });
}

VTV_EXPORT int bundle_add_str(bundle* b, const char* key, const char* value) {
    return Serve("bundle_add_str", [&](vtv::Tv::Impl&) {
        if (b == nullptr || key == nullptr || value == nullptr) {
            return kFailed;
        }
        vtv::Put(&b->extras, key, value);
        return 0;
    });
}

VTV_EXPORT int bundle_free(bundle* b) {
    const std::unique_ptr<bundle_s> owned(b);
    return Serve("bundle_free", [&](vtv::Tv::Impl&) { return b != nullptr ? 0 : kFailed; });
}

VTV_EXPORT int aul_launch_app(const char* appId, bundle* b) {
    return Serve("aul_launch_app", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr) {
            return kFailed;
        }
        vtv::Launch request;
        request.appId = appId;
        request.via = "aul";
        if (b != nullptr) {
            request.extras = b->extras;
        }
        return vtv::ServeLaunch(tv, std::move(request));
    });
}

}  // extern "C"
