// The invariants by what they are about, and the names of the items that they look at.
#pragma once

#include <vector>

#include "invariants.h"

namespace explorer::rules {

inline constexpr char VOICE[] = "voice";
inline constexpr char ONBOARDING[] = "onboarding";
inline constexpr char ASSISTANT[] = "voice-assistant";
inline constexpr char WAKE_UP[] = "voice-wake-up";
inline constexpr char ALWAYS[] = "voice-always-wake-up";
inline constexpr char SCREEN_ON[] = "voice-screen-on-wake-up";
inline constexpr char HINT[] = "situational-hint";
inline constexpr char ORVIK[] = "voice-settings-orvik";
inline constexpr char ORVIK_CN[] = "voice-settings-orvik-cn";
inline constexpr const char* OUTSIDERS[] = {"voice-settings-tencent", "voice-settings-alexa",
                                            "voice-settings-google", "voice-settings-salute"};

// What the page shows, and how it behaves: each source has its rules and names them.
const std::vector<Invariant>& OfStates();
const std::vector<Invariant>& OfConduct();

}  // namespace explorer::rules
