#include "voice_guide.h"

namespace host {

namespace {

// CSIMenuUtil::SetVoiceGuideOnOff(bool), as the library exports it.
constexpr char kSwitch[] = "_ZN11CSIMenuUtil18SetVoiceGuideOnOffEb";

}  // namespace

std::optional<std::string> WhyNoVoiceGuide(const Provider& provider) {
    if (provider.Symbol(kSwitch) != nullptr) {
        return std::nullopt;
    }
    return provider.File() + " does not export CSIMenuUtil::SetVoiceGuideOnOff(bool).";
}

void SwitchVoiceGuide(const Provider& provider, bool on) {
    if (void* function = provider.Symbol(kSwitch)) {
        reinterpret_cast<void (*)(bool)>(function)(on);
    }
}

}  // namespace host
