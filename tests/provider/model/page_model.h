// The Voice page once more, as dull as can be: a TV is a struct, a rule is a question about it.
//
// Written from the product's description alone, to run beside the library. It parses nothing, calls
// nothing and shares nothing with the library; where the library reads a setting, the model looks
// at a member.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace model {

enum class Item {
    VOICE,
    ONBOARDING,
    ASSISTANT,
    WAKE_UP,
    ALWAYS,
    SCREEN_ON,
    HINT,
    ORVIK,
    ORVIK_CN,
    TENCENT,
    ALEXA,
    GOOGLE,
    SALUTE,
    COUNT
};

// One assistant of the policy.
struct Assistant {
    std::string id;
    std::string appId;
    bool farField;
};

// A JSON-valued setting: missing or unreadable, or its members' texts.
struct Entries {
    bool readable = false;
    std::map<std::string, std::string> texts;
};

struct State {
    // The model. Nothing: the feature cannot be read.
    std::optional<bool> voiceRecognition;
    std::optional<bool> orvikFeature;
    int orvikFeatureError = 0;  // when orvikFeature is nothing
    std::optional<int> farFieldType;
    std::optional<bool> passThroughModel;
    std::optional<bool> china;
    std::optional<int> microphoneType;

    // Settings. Nothing: the setting is missing.
    std::optional<int> block;
    std::optional<bool> legacy;
    std::optional<bool> firstTime;
    std::optional<bool> connected;
    std::optional<bool> passThrough;
    std::optional<bool> passThroughMic;
    std::optional<int> microphone;
    std::optional<std::string> current;
    Entries handsFree;
    Entries hints;
    Entries tencent;

    // The rest of the TV.
    std::optional<int> loginState;
    int tnc = 0;
    int pp = 0;
    bool alexaFile = false;
    bool googleFile = false;
    bool saluteFile = false;

    // The policy, and what is known of applications from it or from one before it.
    std::vector<Assistant> assistants;
    std::map<std::string, int> kinds;
};

// What a new policy makes of the state: an empty one forgets no kind.
void TakePolicy(State& state, const std::vector<Assistant>& assistants);

bool IsShown(const State& state, Item item);
bool CanBeSelected(const State& state, Item item);

}  // namespace model
