// Always-on-voice mode, kept for each assistant application and answered for the current one.
#include "platform/always_on_voice.h"

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

std::string ModeKey(const std::string& appId) {
    return kModeState + appId;
}

// Empty when none is chosen; in an experiment the one that it supposes.
std::string CurrentAssistant(const Tv::Impl& tv) {
    Value current;
    std::string problem;
    if (const Read* supposed = SubstituteFor("vconf_get_str", kCurrentAssistantKey)) {
        current = supposed->value.value_or(std::string());
    } else if (tv.settings.Read(kCurrentAssistantKey, &current, &problem) != Store::Status::kOk) {
        return "";
    }
    return std::holds_alternative<std::string>(current) ? std::get<std::string>(current) : "";
}

}  // namespace

}  // namespace vtv

extern "C" {

VTV_EXPORT int AOVSystemDataGetAOVMode(void) {
    int mode = 0;
    const int result =
        vtv::ServeRead("AOVSystemDataGetAOVMode", nullptr, &mode, [&](vtv::Tv::Impl& tv) {
            mode = tv.StateOr<int>(vtv::ModeKey(vtv::CurrentAssistant(tv)), 0);
            return true;
        });
    return result == 0 ? mode : result;
}

VTV_EXPORT int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    return vtv::Serve("AOVSystemDataSetAOVMode", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr) {
            return false;
        }
        tv.state.Write(vtv::ModeKey(appId), mode);
        return true;
    });
}

}  // extern "C"
