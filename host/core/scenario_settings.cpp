// What a step changes of the TV's settings and state.
#include <algorithm>

#include "scenario_members.h"
#include "tv_names.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy_fault.h"

namespace host {

bool IsForced(const toml::table& step) {
    const auto* force = step.get_as<bool>("force");
    return force != nullptr && force->get();
}

namespace {

Play ReadSet(const Reading& reading, const toml::node& node) {
    std::map<std::string, vtv::Value> settings;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string name(key.str());
        settings[name] = reading.reader.SettingValue(value, name);
        reading.reader.CheckSetting(key, value, vtv::TypeName(settings[name]),
                                    IsForced(reading.step));
    }
    return [settings](const StepScene& scene) {
        for (const auto& [key, value] : settings) {
            scene.tv.Set(key, value);
        }
    };
}

Play ReadForce(const Reading& reading, const toml::node& node) {
    const auto isThere = [&](const char* member) { return reading.step.contains(member); };
    constexpr const char* kForced[] = {"set",         "unset",  "policy", "state",
                                       "file-remove", "expect", "never"};
    if (reading.reader.Flag(node, reading.name) &&
        std::none_of(std::begin(kForced), std::end(kForced), isThere)) {
        reading.reader.Problem(node,
                               "\"force\" needs a \"set\", \"unset\", \"policy\", \"state\", "
                               "\"file-remove\", "
                               "\"expect\" or \"never\" in the same step.");
    }
    return nullptr;  // read by those whom it concerns
}

Play ReadUnset(const Reading& reading, const toml::node& node) {
    return [keys = reading.reader.SettingKeys(node, reading.name, IsForced(reading.step))](
               const StepScene& scene) {
        for (const std::string& key : keys) {
            scene.tv.Unset(key);
        }
    };
}

// What is wrong with the policy, told with the line of its assistant.
void CheckPolicy(const Reading& reading, const toml::array& list, const vtv::Value& policy) {
    Json::Value root;
    vtv::ParseJson(vtv::ToText(policy), &root);
    if (const std::optional<vtv::PolicyFault> fault = vtv::FindFault(root)) {
        const toml::node& where =
            fault->assistant ? list[*fault->assistant] : static_cast<const toml::node&>(list);
        reading.reader.Problem(where, fault->what + "." + kIfMeant);
    }
}

Play ReadPolicy(const Reading& reading, const toml::node& node) {
    const toml::array* list = node.as_array();
    const bool isPolicy =
        node.is_string() ||
        (list != nullptr && (list->empty() || list->is_homogeneous(toml::node_type::table)));
    if (!isPolicy) {
        reading.reader.Problem(node,
                               "\"policy\" must be a list of assistants, [{ VAOrder = 1, ... }], "
                               "or a text that is published as it stands.");
        return nullptr;
    }
    const vtv::Value policy = reading.reader.SettingValue(node, reading.name);
    if (list != nullptr && !IsForced(reading.step)) {
        CheckPolicy(reading, *list, policy);
    }
    return [policy](const StepScene& scene) { scene.tv.Set(vtv::kPolicyKey, policy); };
}

}  // namespace

vtv::Value ReadStateValue(const Reading& reading, const toml::key& key, const toml::node& node) {
    const vtv::Value value = reading.reader.Scalar(node, std::string(key.str()));
    const bool isMissing = value == vtv::Value(kMissing);
    reading.reader.CheckState(key, isMissing ? std::nullopt : std::optional(value),
                              IsForced(reading.step));
    return value;
}

namespace {

Play ReadState(const Reading& reading, const toml::node& node) {
    std::map<std::string, vtv::Value> state;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string name(key.str());
        state[name] = ReadStateValue(reading, key, value);
        // A recording takes it away where a snapshot was restored that has none.
        if (name == vtv::kModelNameState && state[name] != vtv::Value(kMissing)) {
            reading.reader.Problem(value,
                                   "\"model\" is the name under which the TV knows its model: name "
                                   "another one at the beginning of the scenario.");
        }
    }
    return [state](const StepScene& scene) {
        vtv::Snapshot snapshot = scene.tv.TakeSnapshot();
        for (const auto& [name, value] : state) {
            if (value == vtv::Value(kMissing)) {
                snapshot.state.erase(name);
            } else {
                snapshot.state[name] = value;
            }
        }
        scene.tv.Restore(snapshot);
    };
}

Play ReadFeatures(const Reading& reading, const toml::node& node) {
    std::map<std::string, vtv::Value> features;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string full = reading.reader.Feature(key.source(), std::string(key.str()));
        features[full] = reading.reader.FeatureValue(value, full);
    }
    return [features](const StepScene& scene) {
        for (const auto& [key, value] : features) {
            scene.tv.SetFeature(key, value);
        }
    };
}

std::vector<std::string> FeatureNames(const Reading& reading, const toml::node& node) {
    std::vector<std::string> keys;
    for (const std::string& name : reading.reader.Some(node, reading.name)) {
        keys.push_back(reading.reader.Feature(node.source(), name));
    }
    return keys;
}

Play ReadMissingFeatures(const Reading& reading, const toml::node& node) {
    return [keys = FeatureNames(reading, node)](const StepScene& scene) {
        for (const std::string& key : keys) {
            scene.tv.SetFeature(key, std::nullopt);
        }
    };
}

Play ReadResetFeatures(const Reading& reading, const toml::node& node) {
    return [keys = FeatureNames(reading, node)](const StepScene& scene) {
        for (const std::string& key : keys) {
            scene.tv.ResetFeature(key);
        }
    };
}

Play ReadAccount(const Reading& reading, const toml::node& node) {
    const bool isSignedIn =
        reading.reader.OneOf(node, reading.name, {"signed-in", "signed-out"}) == "signed-in";
    return [isSignedIn](const StepScene& scene) { scene.tv.SetSignedIn(isSignedIn); };
}

Play ReadConsents(const Reading& reading, const toml::node& node) {
    const toml::table& table = reading.reader.Table(node, reading.name);
    std::map<std::string, bool> consents;
    for (const auto& [key, value] : table) {
        const std::string item(key.str());
        consents[item] = reading.reader.Flag(value, item);
    }
    if (reading.reader.model) {
        std::vector<std::string> known;
        for (const auto& [item, isAgreed] : reading.reader.model->consents) {
            known.push_back(item);
        }
        reading.reader.NoteUnknown(table, "consent", known);
    }
    return [consents](const StepScene& scene) {
        for (const auto& [item, isAgreed] : consents) {
            scene.tv.SetConsent(item, isAgreed);
        }
    };
}

Play ReadNetwork(const Reading& reading, const toml::node& node) {
    vtv::Network network = vtv::Network::kConnected;
    const std::string text = reading.reader.Text(node, reading.name);
    if (node.is_string()) {
        reading.reader.Noting(node.source(), [&] { network = vtv::ParseNetwork(text); });
    }
    return [network](const StepScene& scene) { scene.tv.SetNetwork(network); };
}

// Languages that nobody has translated are for "set", where nothing is taken for a slip.
Play ReadLanguage(const Reading& reading, const toml::node& node) {
    const std::string language = reading.reader.Text(node, reading.name);
    const std::string problem = ProblemOfLanguage(language);
    if (node.is_string() && !problem.empty()) {
        reading.reader.Problem(node, problem);
    }
    return [language](const StepScene& scene) { scene.tv.SetLanguage(language); };
}

Play ReadVoiceGuide(const Reading& reading, const toml::node& node) {
    const bool isOn = reading.reader.OneOf(node, reading.name, {"on", "off"}) == "on";
    return [isOn](const StepScene& scene) { scene.tv.Set(vtv::kVoiceGuideKey, isOn); };
}

Play ReadFileAdd(const Reading& reading, const toml::node& node) {
    return [files = reading.reader.OwnerFiles(node, reading.name)](const StepScene& scene) {
        for (const std::string& file : files) {
            scene.tv.AddOwnerFile(file);
        }
    };
}

Play ReadFileRemove(const Reading& reading, const toml::node& node) {
    return [files = reading.reader.OwnerFiles(node, reading.name),
            isForced = IsForced(reading.step)](const StepScene& scene) {
        for (const std::string& file : files) {
            if (!scene.tv.RemoveOwnerFile(file) && !isForced) {
                throw vtv::Error(vtv::ErrorKind::kNoSuch, file + ": there is no such file.");
            }
        }
    };
}

}  // namespace

const std::vector<StepMember>& SettingMembers() {
    static const std::vector<StepMember> members = {
        {"set", ReadSet},
        {"force", ReadForce},
        {"unset", ReadUnset},
        {"policy", ReadPolicy},
        {"state", ReadState},
        {"feature", ReadFeatures},
        {"feature-missing", ReadMissingFeatures},
        {"feature-reset", ReadResetFeatures},
        {"account", ReadAccount},
        {"consent", ReadConsents},
        {"network", ReadNetwork},
        {"language", ReadLanguage},
        {"voice-guide", ReadVoiceGuide},
        {"file-add", ReadFileAdd},
        {"file-remove", ReadFileRemove},
    };
    return members;
}

}  // namespace host
