// Switching a TV's voice guide as the TV does: through what the provider exports for it.
#pragma once

#include <optional>
#include <string>

#include "host/page/provider.h"

namespace host {

// Absent: the provider can switch it; else why not, for people.
std::optional<std::string> WhyNoVoiceGuide(const Provider& provider);
// On the TV that is on. Does nothing with a provider that cannot.
void SwitchVoiceGuide(const Provider& provider, bool on);

}  // namespace host
