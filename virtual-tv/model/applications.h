// The applications that the Voice page starts: what each needs, and what it has done to the TV by
// the time its viewer is through with it.
#pragma once

#include <string>
#include <vector>

#include "assistants.h"
#include "launch.h"
#include "tv_model.h"

namespace vtv {

// A text that is shown for some seconds and waits for nobody.
inline constexpr char kNotification[] = "org.nemra.alert-syspopup";
inline constexpr char kSetupWizard[] = "org.nemra.wizard";
// It stands in where an assistant's own application cannot.
inline constexpr char kOnboarding[] = "org.nemra.voice-onboarding";
// The neural speech engine, and the item of its metadata that names its languages.
inline constexpr char kNeuralEngine[] = "org.nemra.tts-engine-neural";
inline constexpr char kEngineLanguages[] = "com.vantelo/tv/metadata/tts-engine/legacy_tts_language";

// What signs in, on a TV whose model does not say otherwise.
inline constexpr char kUsualAccountUi[] = "com.vantelo.account-ui";

// An application with what the page tells it when it starts it.
struct PageLaunch {
    std::string application;
    Extras extras;
};
// All that the page may start.
const std::vector<PageLaunch>& PageLaunches();

// Null for an application that the model does not bring.
const Package* FindPackage(const Model& model, const std::string& appId);
// Those that can be started on a TV of the model, sorted.
std::vector<std::string> InstalledApplications(const Model& model);
bool IsInstalled(const Model& model, const std::string& appId);
// Whether the model runs it with a command of its own; nobody knows what that does to the TV.
bool IsForeign(const Package* package);

// A change that an application makes.
struct Deed {
    enum class Kind {
        kSetting,
        kConsent,  // the item is agreed to
        kSignIn,
        kOwnerFile,  // the file is left
    };
    Kind kind;
    std::string name;  // settings key, item, or path below kOwnerFolder
    Value value;       // of a setting
};

// What tells that an assistant is set up, or (done false) that it is not. The settings are what
// Tencent's were.
std::vector<Deed> SetUpDeeds(const std::string& assistant, bool done,
                             const std::string& tencentSettings);

// What an application finds when its viewer goes through with it.
struct Surroundings {
    std::string accountUi;  // the TV's application that signs in; empty when it has none
    bool isOnline = false;
    bool isChina = false;
    std::string policy;            // kPolicyKey
    std::string currentAssistant;  // kCurrentAssistantKey
    std::string tencentSettings;   // kTencentKey
};

struct Outcome {
    std::vector<Deed> deeds;  // in this order, also when it fails in the end
    std::string failure;      // why it could not go on, for people; empty when it could
};

// What the viewer sees. An assistant's application that was started without extras is just the
// assistant.
std::string ScreenOf(const std::string& appId, bool hasExtras, const std::string& accountUi);
Outcome Finish(const std::string& appId, bool hasExtras, const Surroundings& tv);

}  // namespace vtv
