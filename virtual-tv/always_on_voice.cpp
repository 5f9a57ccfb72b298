// Always-on-voice mode, kept for each assistant application and answered for the current one.
#include "platform/always_on_voice.h"

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

std::string ModeKey(const std::string& appId) {
    return "always_on_voice/" + appId;
}

}  // namespace

int Tv::AlwaysOnVoice(const std::string& appId) const {
    return impl_->StateOr<int>(ModeKey(appId), 0);
}

void Tv::SetAlwaysOnVoice(const std::string& appId, int mode) {
    impl_->state.Write(ModeKey(appId), mode);
}

}  // namespace vtv

extern "C" {

VTV_EXPORT int AOVSystemDataGetAOVMode(void) {
    const int mode = vtv::Serve("AOVSystemDataGetAOVMode", [&](vtv::Tv::Impl& tv) {
        vtv::Value current;
        std::string problem;
        if (tv.settings.Read(vtv::kCurrentAssistantKey, &current, &problem) !=
                vtv::Store::Status::kOk ||
            !std::holds_alternative<std::string>(current)) {
            return 0;
        }
        return tv.StateOr<int>(vtv::ModeKey(std::get<std::string>(current)), 0);
    });
    vtv::NoteRead("AOVSystemDataGetAOVMode", nullptr, mode);
    return mode;
}

VTV_EXPORT int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    return vtv::Serve("AOVSystemDataSetAOVMode", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr) {
            return vtv::kFailed;
        }
        tv.state.Write(vtv::ModeKey(appId), mode);
        return 0;
    });
}

}  // extern "C"
