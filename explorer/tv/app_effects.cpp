#include "app_effects.h"

#include <json/json.h>

#include <algorithm>
#include <memory>

#include "keys.h"

namespace explorer {

namespace {

constexpr char NOTIFICATION[] = "org.nemra.alert-syspopup";
constexpr char WIZARD[] = "org.nemra.wizard";
constexpr char GENERIC_SETUP[] = "org.nemra.voice-onboarding";

constexpr char CHINA_FEATURE[] = "com.vantelo/featureconf/cn_ai_service_supported";

// Applications that set up one kind of assistant.
struct SetupApplication {
    const char* application;
    const char* assistant;
};
constexpr SetupApplication SETUP_APPLICATIONS[] = {
    {"com.vantelo.tv.voice-instant-app", "ORVIK2"},
    {"com.vantelo.tv.google-assistant", "GVA"},
    {"com.vantelo.tv.salute-assistant", "SBER"},
    {"com.vantelo.tv.tencent-voice-chrome", "TENCENT"},
};

struct Setup {
    const char* assistant;
    void (*finish)(ConcreteTv& tv, TvState& state);
};

bool ParseJson(const std::string& text, Json::Value& json) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    return reader->parse(text.data(), text.data() + text.size(), &json, &errors);
}

template <int MARKER>
void AddMarker(ConcreteTv& tv, TvState& state) {
    tv.Set(state, Input::Kind::kFile, keys::MARKERS[MARKER].file, NumberValue(1, "bool"));
}

void ClearFirstTime(ConcreteTv& tv, TvState& state) {
    tv.Set(state, Input::Kind::kSetting, keys::FIRST_TIME, NumberValue(0, "bool"));
}

void CompleteTencent(ConcreteTv& tv, TvState& state) {
    Json::Value json;
    if (!ParseJson(tv.TextOf(state, keys::TENCENT), json) || !json.isObject()) {
        json = Json::Value(Json::objectValue);
    }
    json["onboarding_completed"] = true;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    tv.Set(state, Input::Kind::kSetting, keys::TENCENT,
           TextValue(Json::writeString(builder, json)));
}

constexpr Setup SETUPS[] = {
    {keys::MARKERS[0].assistant, AddMarker<0>},
    {keys::MARKERS[1].assistant, AddMarker<1>},
    {keys::MARKERS[2].assistant, AddMarker<2>},
    {"ORVIK2", ClearFirstTime},
    {"SVA", ClearFirstTime},
    {"TENCENT", CompleteTencent},
};

const Setup* SetupOf(const std::string& assistant) {
    for (const Setup& setup : SETUPS) {
        if (assistant == setup.assistant) {
            return &setup;
        }
    }
    return nullptr;
}

bool SignsIn(const ConcreteTv& tv, const std::string& application) {
    return !tv.Model().accountUi.empty() && application == tv.Model().accountUi;
}

// The kind of assistant that an application of its own sets up; "" for all others. Without extras
// it is just the assistant that runs.
std::string AssistantOf(const std::string& launch) {
    const std::string application = ApplicationOf(launch);
    for (const SetupApplication& one : SETUP_APPLICATIONS) {
        if (application == one.application && launch.size() > application.size()) {
            return one.assistant;
        }
    }
    return "";
}

// As the policy in the store has them.
Json::Value Assistants(const ConcreteTv& tv) {
    Json::Value policy;
    const bool isList = ParseJson(tv.Model().policy.value_or(""), policy) && policy.isArray();
    return isList ? policy : Json::Value(Json::arrayValue);
}

std::string CurrentAssistant(const ConcreteTv& tv, const TvState& state) {
    const std::string current = tv.TextOf(state, keys::CURRENT);
    for (const Json::Value& assistant : Assistants(tv)) {
        if (assistant.isObject() && assistant["VAAppId"] == current) {
            return assistant["VAId"].asString();
        }
    }
    return "";
}

void AgreeToTerms(ConcreteTv& tv, TvState& state) {
    for (const char* item : {"tnc", "pp"}) {
        tv.Set(state, Input::Kind::kConsent, item, NumberValue(1, "int"));
    }
}

void ChooseFirstAssistant(ConcreteTv& tv, TvState& state) {
    const Json::Value assistants = Assistants(tv);
    if (tv.TextOf(state, keys::CURRENT).empty() && !assistants.empty() &&
        assistants[0].isObject() && assistants[0]["VAAppId"].isString()) {
        tv.Set(state, Input::Kind::kSetting, keys::CURRENT,
               TextValue(assistants[0]["VAAppId"].asString()));
    }
}

void SignIn(ConcreteTv& tv, TvState& state) {
    tv.Set(state, Input::Kind::kCall, keys::LOGIN, NumberValue(1, "int"));
}

bool IsInstalled(const NewTv& model, const std::string& application) {
    const bool sets =
        std::any_of(std::begin(SETUP_APPLICATIONS), std::end(SETUP_APPLICATIONS),
                    [&](const SetupApplication& one) { return application == one.application; });
    return sets || application == WIZARD || application == GENERIC_SETUP ||
           model.installed.count(application) != 0;
}

}  // namespace

bool IsNotification(const std::string& application) {
    return application == NOTIFICATION;
}

void StartApplication(ConcreteTv& tv, TvState& state, const std::string& launch) {
    const NewTv& model = tv.Model();
    const std::string application = ApplicationOf(launch);
    if (IsNotification(application) || !IsInstalled(model, application) ||
        model.applications == NewTv::Applications::kRecord) {
        return;
    }
    if (model.applications == NewTv::Applications::kAuto) {
        if (CanFinish(tv, state, launch)) {
            FinishApplication(tv, state, launch);
        }
        return;
    }
    std::vector<std::string> running = tv.RunningIn(state);
    const bool runs = std::any_of(running.begin(), running.end(), [&](const std::string& one) {
        return ApplicationOf(one) == application;
    });
    if (!runs) {
        running.push_back(launch);
        tv.SetRunning(state, running);
    }
}

void EndApplication(ConcreteTv& tv, TvState& state, const std::string& application) {
    std::vector<std::string> running = tv.RunningIn(state);
    running.erase(
        std::remove_if(running.begin(), running.end(),
                       [&](const std::string& one) { return ApplicationOf(one) == application; }),
        running.end());
    tv.SetRunning(state, running);
}

bool CanFinish(const ConcreteTv& tv, const TvState& state, const std::string& launch) {
    const std::string application = ApplicationOf(launch);
    if (tv.Model().foreign.count(application) != 0) {
        return false;
    }
    if (application == GENERIC_SETUP) {
        return tv.Model().online && SetupOf(CurrentAssistant(tv, state)) != nullptr;
    }
    const bool needsNetwork = SignsIn(tv, application) || !AssistantOf(launch).empty();
    return tv.Model().online || !needsNetwork;
}

void FinishApplication(ConcreteTv& tv, TvState& state, const std::string& launch) {
    const std::string application = ApplicationOf(launch);
    if (application == WIZARD) {
        AgreeToTerms(tv, state);
        ChooseFirstAssistant(tv, state);
    } else if (SignsIn(tv, application)) {
        SignIn(tv, state);
    } else if (application == GENERIC_SETUP) {
        AgreeToTerms(tv, state);
        const std::string assistant = CurrentAssistant(tv, state);
        if (assistant == "ORVIK2" && !tv.IsOn(state, Input::Kind::kFeature, CHINA_FEATURE)) {
            SignIn(tv, state);
        }
        if (const Setup* setup = SetupOf(assistant)) {
            setup->finish(tv, state);
        }
    } else if (const Setup* setup = SetupOf(AssistantOf(launch))) {
        setup->finish(tv, state);
    }
}

}  // namespace explorer
