// The rules behind the invariants. Each returns what is wrong, or nothing.
#pragma once

#include <string>

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

inline constexpr char CURRENT_KEY[] = "db/multi-assistant/default_assistant_appid";
inline constexpr char LEGACY_KEY[] = "db/menu/voice/is_k_voice";
inline constexpr char VOICE_FEATURE[] = "com.vantelo/featureconf/voice.voice_recognition_support";
inline constexpr char ORVIK_FEATURE[] =
    "com.vantelo/featureconf/voice.voice_recognition_orvik_support";

// What the page shows: invariant_states.cpp.
std::string NeverBoth(const Look& look, const Question* question);
std::string ExactlyOne(const Look& look, const Question* question);
std::string NothingWithoutVoice(const Look& look, const Question* question);
std::string RootNeedsConsent(const Look& look, const Question* question);
std::string SubItemsFollowWakeUp(const Look& look, const Question* question);
std::string SubItemsTogether(const Look& look, const Question* question);
std::string LegacyHides(const Look& look, const Question* question);
std::string OneOrvikItem(const Look& look, const Question* question);
std::string OneOutsider(const Look& look, const Question* question);
std::string AChoiceToMake(const Look& look, const Question* question);
std::string SubItemsEnabledWithWakeUp(const Look& look, const Question* question);
std::string SubItemsEnabledWhileOn(const Look& look, const Question* question);
std::string SubItemsEnabledTogether(const Look& look, const Question* question);
std::string EntriesEnabledTogether(const Look& look, const Question* question);
std::string AtMostOneMode(const Look& look, const Question* question);
std::string OneModeWhileOn(const Look& look, const Question* question);
std::string SwitchesReadTheirValues(const Look& look, const Question* question);
std::string AssistantReadsItsNumber(const Look& look, const Question* question);
std::string WriteBack(const Look& look, const Question* question);
std::string ChosenBecomesCurrent(const Look& look, const Question* question);
std::string SwitchesKeepWhatIsWritten(const Look& look, const Question* question);
std::string OffEndsAlways(const Look& look, const Question* question);

// How the page behaves: invariant_conduct.cpp.
std::string PopupLeadsToLaunch(const Look& look, const Question* question);
std::string LaunchesAreKnown(const Look& look, const Question* question);
std::string OneLaunchAtMost(const Look& look, const Question* question);
std::string WritesAreKnown(const Look& look, const Question* question);
std::string ModeNamesTheCurrent(const Look& look, const Question* question);
std::string PopupIsWhole(const Look& look, const Question* question);
std::string ReasonIsShown(const Look& look, const Question* question);
std::string EveryItemHasATitle(const Look& look, const Question* question);
std::string ReadsDoNotWrite(const Look& look, const Question* question);
std::string AnswersRepeat(const Look& look, const Question* question);
std::string TracingChangesNothing(const Look& look, const Question* question);
std::string NothingGoesWrong(const Look& look, const Question* question);
std::string NoException(const Look& look, const Question* question);
std::string NoReread(const Look& look, const Question* question);
std::string UnknownKeysAreNothing(const Look& look, const Question* question);

}  // namespace explorer::rules
