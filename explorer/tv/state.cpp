#include "state.h"

#include <toml++/toml.h>

#include <stdexcept>

#include "host/core/toml_writer.h"
#include "lazy_tv.h"
#include "policy.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/policy.h"

namespace explorer {

namespace {

std::string WithoutPrefix(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
}

// A value of a type, for a setting that is to be of the wrong one.
vtv::Value SampleOf(const std::string& type) {
    return type == "int" ? vtv::Value(1) : type == "bool" ? vtv::Value(true) : "text";
}

toml::table FaultStep(const std::string& function, int result) {
    return toml::table{
        {"fault", toml::table{{"function", function}, {"always", true}, {"result", result}}}};
}

toml::table SettingStep(const Input& input, const Value& value, const std::string& text) {
    if (value.kind != Value::Kind::kFails) {
        return toml::table{{"set", host::TomlTable({{input.key, StoredBy(value, text)}})}};
    }
    if (value.storedType.empty()) {
        return toml::table{{"unset", input.key}};
    }
    return toml::table{{"set", host::TomlTable({{input.key, SampleOf(value.storedType)}})},
                       {"force", true}};
}

toml::table FeatureStep(const Input& input, const Value& value, const std::string& text) {
    const std::string name = WithoutPrefix(input.key, vtv::kFeaturePrefix);
    if (value.kind != Value::Kind::kFails) {
        return toml::table{{"feature", host::TomlTable({{name, StoredBy(value, text)}})}};
    }
    if (value.number == platform::NO_SUCH_FEATURE) {
        return toml::table{{"feature-missing", name}};
    }
    return FaultStep("system_info_get_custom_" + input.type, value.number);
}

toml::table CallStep(const Input& input, const Value& value) {
    // That something is to be started is what a scenario looks at: a failing start would hide it.
    if (input.key == "aul_launch_app" || input.key == "app_control_send_launch_request") {
        return {};
    }
    if (value.kind == Value::Kind::kFails) {
        return FaultStep(input.key, value.number);
    }
    if (input.key == "sso_get_login_state") {
        return toml::table{{"account", value.number == 1 ? "signed-in" : "signed-out"}};
    }
    if (input.key == "connection_profile_check_default_gateway") {
        return toml::table{{"network", value.number != 0 ? "connected" : "disconnected"}};
    }
    return {};
}

// Empty for what is so on a new TV of the model, and what cannot be made so.
toml::table StepOf(const Input& input, const Value& value, const std::string& text) {
    switch (input.kind) {
        case Input::Kind::kSetting:
            return SettingStep(input, value, text);
        case Input::Kind::kFeature:
            return FeatureStep(input, value, text);
        case Input::Kind::kFile:  // a new TV of the model has none
            return value.number != 1
                       ? toml::table()
                       : toml::table{{"file-add", WithoutPrefix(input.key, vtv::kOwnerFolder)}};
        case Input::Kind::kConsent:
            return toml::table{{"consent", toml::table{{input.key, value.number > 0}}}};
        case Input::Kind::kCall:
            return CallStep(input, value);
        case Input::Kind::kWrite:
            return value.kind != Value::Kind::kFails
                       ? toml::table()
                       : toml::table{{"fault", toml::table{{"function", "vconf_set_str"},
                                                           {"always", true}}}};
    }
    return {};
}

// Whether the document replaces whatever the provider knew before.
bool IsList(const std::string& document) {
    Policy policy;
    policy.published = {document};
    return !StateOf(policy).list.empty();
}

// The application of the current assistant: the path's, or that of the model.
std::string CurrentOf(const Inputs& inputs, const State& state) {
    for (std::size_t i = 0; i < state.path.size() && i < state.texts.size(); ++i) {
        if (inputs.inputs[state.path[i].input].isCurrentAssistant) {
            return state.texts[i];
        }
    }
    return vtv::FindKnownAssistant("ORVIK2")->appId;
}

}  // namespace

int State::Weight(const Inputs& inputs) const {
    int weight = policy == 0 ? 0 : 2;
    weight += static_cast<int>(inputs.policies[static_cast<std::size_t>(policy)].published.size());
    for (const Decision& decision : path) {
        const Value& value = inputs.inputs[decision.input].values[decision.value];
        const bool isFailure = value.kind == Value::Kind::kFails;
        weight += 1 + (decision.value == 0 ? 0 : 3) + (isFailure ? 2 : 0);
    }
    return weight;
}

State CurrentState(int policy, const Choices& choices) {
    State state;
    state.policy = policy;
    state.path.assign(choices.Path(), choices.Path() + choices.Depth());
    for (const Decision& decision : state.path) {
        state.texts.push_back(tv().FirstText(decision.input));
    }
    return state;
}

std::vector<std::string> Describe(const Inputs& inputs, const State& state) {
    std::vector<std::string> lines = {"policy: " +
                                      inputs.policies[static_cast<std::size_t>(state.policy)].name};
    for (const Decision& decision : state.path) {
        const Input& input = inputs.inputs[decision.input];
        lines.push_back(input.name + ": " + input.values[decision.value].words);
    }
    return lines;
}

std::string ToScenario(const Inputs& inputs, const State& state, const std::string& title,
                       const std::string& steps) {
    std::string scenario = host::ToToml(toml::table{{"title", title}, {"model", "farfield-eu"}});
    scenario += StepText(toml::table{{"say", "applications are started, but not waited for"},
                                     {"applications", "record"}});
    std::vector<std::string> documents =
        inputs.policies[static_cast<std::size_t>(state.policy)].published;
    // The provider of a scenario has known the model's policy: it is to forget the list and the
    // kinds.
    if (documents.empty() || !IsList(documents.front())) {
        Json::Value nobody;
        nobody[0][vtv::policy::kId] = "nobody";
        documents.insert(documents.begin(), {vtv::CompactJson(nobody), "[]"});
    }
    for (const std::string& document : documents) {
        scenario += StepText(toml::table{{"policy", document}});
    }
    for (std::size_t i = 0; i < state.path.size(); ++i) {
        const Input& input = inputs.inputs[state.path[i].input];
        const Value& value = input.values[state.path[i].value];
        toml::table step = StepOf(input, value, i < state.texts.size() ? state.texts[i] : "");
        if (input.key == MODE_CALL) {
            const std::string mode = vtv::kModeState + CurrentOf(inputs, state);
            step = toml::table{{"state", toml::table{{mode, value.number}}}, {"force", true}};
        }
        const std::string words = input.name + ": " + value.words;
        if (step.empty()) {
            scenario += "\n" + host::TomlComment(words);
        } else {
            step.insert("say", words);
            scenario += StepText(step);
        }
    }
    return scenario + "\n" + steps;
}

std::string StepText(const toml::table& step, const char* list) {
    try {
        return step.empty() ? "" : "\n" + host::ToToml(toml::table{{list, toml::array{step}}});
    } catch (const std::runtime_error& error) {
        return "\n" + host::TomlComment(error.what());
    }
}

std::string ExpectedLaunch(const std::string& application, const vtv::Extras& extras) {
    std::string launch = application;
    for (const auto& [key, value] : extras) {
        launch += ' ' + key + '=' + value;
    }
    return launch;
}

vtv::Value StoredBy(const Value& value, const std::string& text) {
    if (value.kind == Value::Kind::kText) {
        return text;
    }
    return value.storedType == "bool" ? vtv::Value(value.number != 0) : vtv::Value(value.number);
}

}  // namespace explorer
