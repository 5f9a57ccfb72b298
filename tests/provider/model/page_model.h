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
    ONBOARDING,
    COUNT
};

// One assistant of the policy.
struct Assistant {
    std::string id;
    std::string appId;
    bool farField;
    int order = 0;
    std::string name = "";
};

// A JSON-valued setting: missing or unreadable, or its members' texts.
struct Entries {
    bool readable = false;
    std::map<std::string, std::string> texts;
    std::string comment = "";  // in front of the document
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

    // What only values, texts, effects and other programs depend on.
    Entries passThroughState;
    std::optional<std::string> country;
    std::optional<std::string> menuLanguage;
    std::optional<std::string> wizardMode;
    std::optional<int> productType;
    std::optional<std::string> deviceSid;
    std::optional<int> modularVersion;
    std::optional<bool> projector;
    std::optional<bool> monitor;
    std::optional<bool> neuralEngine;
    std::optional<std::string> accountApp;
    std::optional<bool> network;
    int alwaysOnMode = 0;
    bool previousAppRuns = false;
    bool popupCanBeAsked = false;
    bool speechEngineStarts = false;
    std::optional<std::vector<std::string>> voices;
    bool neuralPackageInstalled = false;
    bool legacyLanguagesReadable = false;
    std::vector<std::string> legacyLanguages;

    // Whether the store and the platform take a write.
    bool takesCurrent = false;
    bool takesHandsFree = false;
    bool takesHints = false;
    bool takesPassThrough = false;
    bool takesMode = false;

    // The policy, and what is known of applications from it or from one before it.
    std::vector<Assistant> assistants;
    std::map<std::string, int> kinds;
};

// What a new policy makes of the state: an empty one forgets no kind.
void TakePolicy(State& state, const std::vector<Assistant>& assistants);

bool IsShown(const State& state, Item item);
bool CanBeSelected(const State& state, Item item);

// What the rules ask of a TV, for what else depends on it.
int KindOf(const State& state, const std::string& appId);  // 0: none, else as in Kind
bool CurrentIsOrvik(const State& state);
bool CurrentHasFarField(const State& state);
bool CurrentIsSetUp(const State& state);
bool SetUp(const State& state, int kind);
bool TermsAgreed(const State& state);
bool SignedIn(const State& state);
bool FarFieldTv(const State& state);
bool MicrophoneSwitchedOff(const State& state);
bool Yes(const std::optional<bool>& value);
std::string CurrentApp(const State& state);
std::string EntryOf(const Entries& entries, const std::string& name);
enum Kind { NONE = 0, ALEXA = 1, ORVIK = 2, GOOGLE = 3, SALUTE = 4, SVA = 5, TENCENT = 6 };

}  // namespace model
