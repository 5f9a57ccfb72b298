#include "state.h"

#include "host/core/toml_writer.h"
#include "lazy_tv.h"
#include "policy.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/policy.h"

namespace explorer {

namespace {

using host::TomlComment;
using host::TomlText;

std::string WithoutPrefix(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
}

// A value of a type, for a setting that is to be of the wrong one.
const char* SampleOf(const std::string& type) {
    return type == "int" ? "1" : type == "bool" ? "true" : "\"text\"";
}

std::string SettingStep(const Input& input, const Value& value, const std::string& text) {
    if (value.kind == Value::Kind::kFails && value.storedType.empty()) {
        return "unset = " + TomlText(input.key);
    }
    const std::string stored = value.kind == Value::Kind::kFails ? SampleOf(value.storedType)
                                                                 : TomlValue(StoredBy(value, text));
    const bool isForced = value.kind == Value::Kind::kFails;
    return "set." + TomlText(input.key) + " = " + stored + (isForced ? "\nforce = true" : "");
}

std::string FeatureStep(const Input& input, const Value& value, const std::string& text) {
    const std::string name = TomlText(WithoutPrefix(input.key, vtv::kFeaturePrefix));
    if (value.kind == Value::Kind::kFails && value.number == platform::NO_SUCH_FEATURE) {
        return "feature-missing = " + name;
    }
    if (value.kind == Value::Kind::kFails) {
        return "fault = { function = \"system_info_get_custom_" + input.type +
               "\", always = true, result = " + std::to_string(value.number) + " }";
    }
    return "feature." + name + " = " + TomlValue(StoredBy(value, text));
}

std::string CallStep(const Input& input, const Value& value) {
    // That something is to be started is what a scenario looks at: a failing start would hide it.
    if (input.key == "aul_launch_app" || input.key == "app_control_send_launch_request") {
        return "";
    }
    if (value.kind == Value::Kind::kFails) {
        return "fault = { function = " + TomlText(input.key) +
               ", always = true, result = " + std::to_string(value.number) + " }";
    }
    if (input.key == "sso_get_login_state") {
        return std::string("account = ") + (value.number == 1 ? "\"signed-in\"" : "\"signed-out\"");
    }
    if (input.key == "connection_profile_check_default_gateway") {
        return std::string("network = ") +
               (value.number != 0 ? "\"connected\"" : "\"disconnected\"");
    }
    return "";
}

std::string StepOf(const Input& input, const Value& value, const std::string& text) {
    switch (input.kind) {
        case Input::Kind::kSetting:
            return SettingStep(input, value, text);
        case Input::Kind::kFeature:
            return FeatureStep(input, value, text);
        case Input::Kind::kFile:  // a new TV of the model has none
            return value.number == 1
                       ? "file-add = " + TomlText(WithoutPrefix(input.key, vtv::kOwnerFolder))
                       : "";
        case Input::Kind::kConsent:
            return "consent." + input.key + " = " + (value.number > 0 ? "true" : "false");
        case Input::Kind::kCall:
            return CallStep(input, value);
        case Input::Kind::kWrite:
            return value.kind != Value::Kind::kFails
                       ? ""
                       : "fault = { function = \"vconf_set_str\", always = true }";
    }
    return "";
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
    std::string scenario = "title = " + TomlText(title) + "\nmodel = \"farfield-eu\"\n";
    scenario +=
        "\n[[step]]\nsay = \"applications are started, but not waited for\"\napplications = "
        "\"record\"\n";
    const Policy& policy = inputs.policies[static_cast<std::size_t>(state.policy)];
    // The provider of a scenario has known the model's policy: it is to forget the list and the
    // kinds.
    if (policy.published.empty() || !IsList(policy.published.front())) {
        Json::Value nobody;
        nobody[0][vtv::policy::kId] = "nobody";
        scenario += "\n[[step]]\npolicy = " + TomlText(vtv::CompactJson(nobody)) + "\n";
        scenario += "\n[[step]]\npolicy = \"[]\"\n";
    }
    for (const std::string& document : policy.published) {
        scenario += "\n[[step]]\npolicy = " + TomlText(document) + "\n";
    }
    for (std::size_t i = 0; i < state.path.size(); ++i) {
        const Input& input = inputs.inputs[state.path[i].input];
        const Value& value = input.values[state.path[i].value];
        const std::string step =
            input.key == MODE_CALL
                ? "state." + TomlText(vtv::kModeState + CurrentOf(inputs, state)) + " = " +
                      std::to_string(value.number) + "\nforce = true"
                : StepOf(input, value, i < state.texts.size() ? state.texts[i] : "");
        if (step.empty()) {
            scenario += "\n" + TomlComment(input.name + ": " + value.words);
        } else {
            scenario += "\n[[step]]\nsay = " + TomlText(input.name + ": " + value.words) + "\n" +
                        step + "\n";
        }
    }
    return scenario + "\n" + steps;
}

std::string TomlList(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + TomlText(text);
    }
    return "[" + list + "]";
}

std::string TomlValue(const vtv::Value& value) {
    const std::string* text = std::get_if<std::string>(&value);
    return text != nullptr ? TomlText(*text) : vtv::ToText(value);
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
