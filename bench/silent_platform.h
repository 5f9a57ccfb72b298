// A platform that costs next to nothing: it answers from a tape that was recorded before, and the
// same calls can be made bare, without a provider.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

enum class Call : unsigned char {
    kGetInt,
    kGetBool,
    kGetString,
    kSetInt,
    kSetBool,
    kSetString,
    kFeatureBool,
    kFeatureInt,
    kFeatureString,
    kLog,
    kText,
    kFile,
    kOnline,
    kSignIn,
    kAccountApp,
    kAgreed,
    kGetMode,
    kSetMode,
    kMakeRequest,
    kFillRequest,
    kSendRequest,
    kEndRequest,
    kMakeBundle,
    kFillBundle,
    kLaunch,
    kEndBundle,
    kFindApp,
    kEndApp,
    kOpenPackage,
    kReadPackage,
    kClosePackage,
    kMakeSpeech,
    kListVoices,
    kEndSpeech,
    kSound,
    kToolkit,
    kTrace,
};

struct Step {
    Call call;
    int number = 0;         // what it answers, or is told
    bool hasText = false;   // a text that it answers; without one it fails
    std::string text = "";  // what it answers, or is told
    std::string key = "";
    std::size_t size = 0;  // of a trace event
};

using Tape = std::vector<Step>;

// What the TV is like while a tape is recorded.
struct SilentTv {
    std::string currentAssistant;
    std::string policy;
    bool tracing = false;
};

// The calls that `ask` makes, in order, on such a TV.
Tape Record(const SilentTv& tv, const std::function<void()>& ask);

// From here on the calls are answered from the beginning of the tape.
void Rewind(const Tape& tape);

// The same calls, without a provider; of a JSON text that is read, the parse as well, of one that
// is written, the writing. Rewind() the tape before.
void MakeBareCalls(const Tape& tape);

void SetTracing(bool on);

// Delivers the watch of the policy, as the settings store does.
void TellOfPolicy();

}  // namespace bench
