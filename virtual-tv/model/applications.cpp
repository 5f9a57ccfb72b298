#include "applications.h"

#include <algorithm>
#include <set>

#include "json_text.h"
#include "keys.h"
#include "policy.h"

namespace vtv {

namespace {

enum class Step {
    kNetwork,         // needs the network
    kTerms,           // agrees to terms and privacy policy
    kFirstAssistant,  // takes the first assistant that is offered, where none is chosen yet
    kSignIn,
    kSignInForOrvik,  // where the current assistant is Orvik, but in China
    kSetUpAssistant,  // its own
    kSetUpCurrent,
};

struct Application {
    std::string screen;
    std::vector<Step> steps;
    std::string assistant;  // its own, by id
};

Application FindApplication(const std::string& appId, bool hasExtras,
                            const std::string& accountUi) {
    if (appId == kSetupWizard) {
        return {"Setup: terms and conditions, privacy policy. Agree to both?",
                {Step::kTerms, Step::kFirstAssistant},
                ""};
    }
    if (appId == accountUi) {
        return {"Sign in to your account.", {Step::kNetwork, Step::kSignIn}, ""};
    }
    if (appId == kOnboarding) {
        return {"Set up your voice assistant.",
                {Step::kNetwork, Step::kTerms, Step::kSignInForOrvik, Step::kSetUpCurrent},
                ""};
    }
    for (const KnownAssistant& known : KnownAssistants()) {
        if (appId == known.appId && hasExtras && known.setupScreen != nullptr) {
            return {known.setupScreen, {Step::kNetwork, Step::kSetUpAssistant}, known.id};
        }
    }
    return {"(" + appId + ")", {}, ""};  // just an application that runs
}

std::string IdOfCurrent(const Surroundings& tv) {
    for (const PolicyEntry& entry : PolicyEntries(tv.policy)) {
        if (entry.appId == tv.currentAssistant) {
            return entry.id;
        }
    }
    return "";
}

std::string CompletedTencent(const std::string& settings) {
    Json::Value json;
    if (!ParseJson(settings, &json) || !json.isObject()) {
        json = Json::Value(Json::objectValue);
    }
    json["onboarding_completed"] = true;
    return CompactJson(json);
}

// False when the application cannot go on; the outcome tells why.
bool Take(Step step, const Application& application, const Surroundings& tv, Outcome* outcome) {
    const auto setUp = [&](const std::string& assistant) {
        const std::vector<Deed> deeds = SetUpDeeds(assistant, true, tv.tencentSettings);
        outcome->deeds.insert(outcome->deeds.end(), deeds.begin(), deeds.end());
        outcome->failure =
            deeds.empty() ? "The current assistant is none that could be set up." : "";
    };
    switch (step) {
        case Step::kNetwork:
            if (!tv.isOnline) {
                outcome->failure =
                    "There is no network. Connect the TV (\"vtv network connected\") and try "
                    "again.";
            }
            break;
        case Step::kTerms:
            for (const char* item : kConsents) {
                outcome->deeds.push_back({Deed::Kind::kConsent, item, true});
            }
            break;
        case Step::kFirstAssistant:
            if (const std::vector<PolicyEntry> entries = PolicyEntries(tv.policy);
                tv.currentAssistant.empty() && !entries.empty() && !entries[0].appId.empty() &&
                entries[0].appId != "?") {
                outcome->deeds.push_back(
                    {Deed::Kind::kSetting, kCurrentAssistantKey, entries[0].appId});
            }
            break;
        case Step::kSignInForOrvik:
            if (tv.isChina || IdOfCurrent(tv) != "ORVIK2") {
                break;
            }
            [[fallthrough]];
        case Step::kSignIn:
            outcome->deeds.push_back({Deed::Kind::kSignIn, "", true});
            break;
        case Step::kSetUpAssistant:
            setUp(application.assistant);
            break;
        case Step::kSetUpCurrent:
            setUp(IdOfCurrent(tv));
            break;
    }
    return outcome->failure.empty();
}

}  // namespace

const std::vector<PageLaunch>& PageLaunches() {
    static const std::vector<PageLaunch> launches = [] {
        std::vector<PageLaunch> all = {{kSetupWizard, {{"type", "PIVORA_SETUP"}}},
                                       {kOnboarding, {{"type", "ONBOARDING_SETUP"}}},
                                       {kUsualAccountUi, {}}};
        for (const KnownAssistant& known : KnownAssistants()) {
            if (known.setupKey != nullptr) {
                all.push_back({known.appId, {{known.setupKey, known.setupValue}}});
            }
        }
        return all;
    }();
    return launches;
}

const Package* FindPackage(const Model& model, const std::string& appId) {
    for (const Package& package : model.packages) {
        if (package.appId == appId) {
            return &package;
        }
    }
    return nullptr;
}

std::vector<std::string> InstalledApplications(const Model& model) {
    std::set<std::string> ids = {kNotification, kSetupWizard, kOnboarding};
    for (const KnownAssistant& known : KnownAssistants()) {
        if (known.setupScreen != nullptr) {
            ids.insert(known.appId);
        }
    }
    if (!model.accountUi.empty()) {
        ids.insert(model.accountUi);
    }
    for (const Assistant& assistant : model.assistants) {
        ids.insert(assistant.appId);
    }
    for (const Package& package : model.packages) {
        ids.insert(package.appId);
    }
    return {ids.begin(), ids.end()};
}

bool IsInstalled(const Model& model, const std::string& appId) {
    const std::vector<std::string> ids = InstalledApplications(model);
    return std::binary_search(ids.begin(), ids.end(), appId);
}

bool IsForeign(const Package* package) {
    return package != nullptr && !package->command.empty();
}

std::vector<Deed> SetUpDeeds(const std::string& assistant, bool done,
                             const std::string& tencentSettings) {
    const KnownAssistant* known = FindKnownAssistant(assistant);
    if (known == nullptr) {
        return {};
    }
    if (known->marker != nullptr) {
        return done ? std::vector<Deed>{{Deed::Kind::kOwnerFile, known->marker, true}}
                    : std::vector<Deed>();
    }
    if (assistant == "TENCENT") {
        return {{Deed::Kind::kSetting, kTencentKey,
                 done ? CompletedTencent(tencentSettings) : std::string("{}")}};
    }
    return {{Deed::Kind::kSetting, kFirstTimeKey, !done}};
}

std::string ScreenOf(const std::string& appId, bool hasExtras, const std::string& accountUi) {
    return FindApplication(appId, hasExtras, accountUi).screen;
}

Outcome Finish(const std::string& appId, bool hasExtras, const Surroundings& tv) {
    const Application application = FindApplication(appId, hasExtras, tv.accountUi);
    Outcome outcome;
    for (const Step step : application.steps) {
        if (!Take(step, application, tv, &outcome)) {
            break;
        }
    }
    return outcome;
}

}  // namespace vtv
