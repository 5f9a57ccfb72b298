#include "model/page_model.h"

namespace model {

static int KindOfId(const std::string& id) {
    if (id == "ALEXA") {
        return ALEXA;
    }
    if (id == "ORVIK2") {
        return ORVIK;
    }
    if (id == "GVA") {
        return GOOGLE;
    }
    if (id == "SBER") {
        return SALUTE;
    }
    if (id == "SVA") {
        return SVA;
    }
    if (id == "TENCENT") {
        return TENCENT;
    }
    return NONE;
}

bool Yes(const std::optional<bool>& value) {
    return value.has_value() && *value;
}

static bool Positive(const std::optional<int>& value) {
    return value.has_value() && *value > 0;
}

std::string CurrentApp(const State& s) {
    return s.current.has_value() ? *s.current : "";
}

// The first record of the current application; null when it is not listed.
static const Assistant* CurrentRecord(const State& s) {
    for (const Assistant& assistant : s.assistants) {
        if (assistant.appId == CurrentApp(s)) {
            return &assistant;
        }
    }
    return nullptr;
}

bool CurrentIsOrvik(const State& s) {
    return CurrentRecord(s) != nullptr && CurrentRecord(s)->id == "ORVIK2";
}

bool CurrentHasFarField(const State& s) {
    return CurrentRecord(s) != nullptr && CurrentRecord(s)->farField;
}

int KindOf(const State& s, const std::string& appId) {
    const auto kind = s.kinds.find(appId);
    return kind != s.kinds.end() ? kind->second : NONE;
}

static int CurrentKind(const State& s) {
    return KindOf(s, CurrentApp(s));
}

static bool Has(const Entries& entries, const std::string& name) {
    return entries.readable && entries.texts.count(name) == 1;
}

std::string EntryOf(const Entries& entries, const std::string& name) {
    return Has(entries, name) ? entries.texts.at(name) : "";
}

bool SetUp(const State& s, int kind) {
    switch (kind) {
        case ALEXA:
            return s.alexaFile;
        case ORVIK:
            return !Yes(s.firstTime);
        case GOOGLE:
            return s.googleFile;
        case SALUTE:
            return s.saluteFile;
        case SVA:
            return !Yes(s.firstTime);
        case TENCENT:
            return Has(s.tencent, "onboarding_completed");
        default:
            return false;
    }
}

bool CurrentIsSetUp(const State& s) {
    return SetUp(s, CurrentKind(s));
}

bool TermsAgreed(const State& s) {
    return s.tnc > 0 && s.pp > 0;
}

bool SignedIn(const State& s) {
    return s.loginState.has_value() && *s.loginState == 1;
}

bool FarFieldTv(const State& s) {
    return Positive(s.farFieldType);
}

static bool MicrophoneOn(const State& s) {
    return s.microphone.has_value() && *s.microphone != 0;
}

static bool OrvikTv(const State& s) {
    if (!s.orvikFeature.has_value()) {
        return s.orvikFeatureError == -22;
    }
    return *s.orvikFeature;
}

static bool VoiceMenu(const State& s) {
    if (!Yes(s.voiceRecognition)) {
        return false;
    }
    if (s.block.has_value() && *s.block == 2) {
        return false;
    }
    const bool disabledByPolicy = TermsAgreed(s) && s.assistants.empty();
    return OrvikTv(s) || !disabledByPolicy;
}

static bool OnboardingInstead(const State& s) {
    if (!TermsAgreed(s)) {
        return true;
    }
    if (CurrentApp(s).empty()) {
        return true;
    }
    const bool single = s.assistants.size() == 1 || Yes(s.legacy);
    return single && !CurrentIsSetUp(s);
}

static bool WakeUpShown(const State& s) {
    if (Yes(s.legacy)) {
        return false;
    }
    if (FarFieldTv(s) && CurrentHasFarField(s)) {
        return true;
    }
    return CurrentIsOrvik(s) && Yes(s.passThroughModel);
}

bool MicrophoneSwitchedOff(const State& s) {
    return Positive(s.microphoneType) && !MicrophoneOn(s);
}

static bool RootEnabled(const State& s) {
    return !MicrophoneSwitchedOff(s);
}

static bool WakeUpEnabled(const State& s) {
    if (!CurrentIsOrvik(s)) {
        return CurrentIsSetUp(s) && MicrophoneOn(s);
    }
    if (!Yes(s.china) && !SignedIn(s)) {
        return false;
    }
    const bool passThroughInUse = Yes(s.connected) && Yes(s.passThrough);
    if (FarFieldTv(s)) {
        if (passThroughInUse && !Yes(s.passThroughMic)) {
            return false;
        }
        return !Yes(s.firstTime);
    }
    return passThroughInUse && Yes(s.passThroughMic) && !Yes(s.firstTime);
}

static bool SubItemEnabled(const State& s) {
    return WakeUpEnabled(s) && EntryOf(s.handsFree, CurrentApp(s)) == "on";
}

void TakePolicy(State& s, const std::vector<Assistant>& assistants) {
    s.assistants = assistants;
    if (assistants.empty()) {
        return;
    }
    s.kinds.clear();
    for (const Assistant& assistant : assistants) {
        if (KindOfId(assistant.id) != NONE) {
            s.kinds[assistant.appId] = KindOfId(assistant.id);
        }
    }
}

bool IsShown(const State& s, Item item) {
    switch (item) {
        case Item::VOICE:
            return VoiceMenu(s) && !OnboardingInstead(s);
        case Item::ONBOARDING:
            return VoiceMenu(s) && OnboardingInstead(s);
        case Item::ASSISTANT:
            return s.assistants.size() >= 2 && !Yes(s.legacy);
        case Item::WAKE_UP:
            return WakeUpShown(s);
        case Item::ALWAYS:
            return CurrentIsOrvik(s) && WakeUpShown(s);
        case Item::SCREEN_ON:
            return CurrentIsOrvik(s) && WakeUpShown(s);
        case Item::HINT:
            return !Yes(s.legacy) && !EntryOf(s.hints, CurrentApp(s)).empty();
        case Item::ORVIK:
            return !Yes(s.china) && (CurrentIsOrvik(s) || CurrentKind(s) == SVA);
        case Item::ORVIK_CN:
            return Yes(s.china) && CurrentIsOrvik(s);
        case Item::TENCENT:
            return CurrentKind(s) == TENCENT;
        case Item::ALEXA:
            return CurrentKind(s) == ALEXA;
        case Item::GOOGLE:
            return CurrentKind(s) == GOOGLE;
        case Item::SALUTE:
            return CurrentKind(s) == SALUTE;
        case Item::COUNT:
            break;
    }
    return false;
}

bool CanBeSelected(const State& s, Item item) {
    switch (item) {
        case Item::VOICE:
            return RootEnabled(s);
        case Item::ONBOARDING:
            return RootEnabled(s);
        case Item::ASSISTANT:
            return true;
        case Item::WAKE_UP:
            return WakeUpEnabled(s);
        case Item::ALWAYS:
            return SubItemEnabled(s);
        case Item::SCREEN_ON:
            return SubItemEnabled(s);
        case Item::HINT:
            return CurrentIsSetUp(s);
        case Item::ORVIK:
            return !Yes(s.china) && SignedIn(s) && !Yes(s.firstTime);
        case Item::ORVIK_CN:
            return Yes(s.china) && !Yes(s.firstTime);
        case Item::TENCENT:
            return SetUp(s, TENCENT);
        case Item::ALEXA:
            return SetUp(s, ALEXA);
        case Item::GOOGLE:
            return SetUp(s, GOOGLE);
        case Item::SALUTE:
            return SetUp(s, SALUTE);
        case Item::COUNT:
            break;
    }
    return false;
}

}  // namespace model
