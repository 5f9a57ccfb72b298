#include "step_to.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "scenario_members.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/known_settings.h"

namespace host {

namespace {

// What is in the first list and not in the second.
std::vector<std::string> Missing(const std::vector<std::string>& all,
                                 const std::vector<std::string>& some) {
    std::vector<std::string> missing;
    for (const std::string& one : all) {
        if (std::find(some.begin(), some.end(), one) == some.end()) {
            missing.push_back(one);
        }
    }
    return missing;
}

std::vector<std::string> KeysOf(const std::map<std::string, vtv::Value>& values) {
    std::vector<std::string> keys;
    keys.reserve(values.size());
    for (const auto& [key, value] : values) {
        keys.push_back(key);
    }
    return keys;
}

bool IsFeature(const std::string& state, std::string_view prefix, std::string* feature) {
    if (state.rfind(prefix, 0) != 0) {
        return false;
    }
    *feature = state.substr(prefix.size());
    return true;
}

// A member of the step, unless it is empty.
template <typename Values>
void Add(const char* name, const Values& values, Recording::Step* step) {
    if (!values.empty()) {
        (*step)[name] = values;
    }
}

// What changes of a TV's state; features by the steps that know how the two entries of one go
// together.
void AddState(const std::map<std::string, vtv::Value>& now,
              const std::map<std::string, vtv::Value>& wanted,
              const std::map<std::string, vtv::Value>& differing, Recording::Step* step) {
    std::map<std::string, vtv::Value> state;
    std::map<std::string, vtv::Value> features;
    std::vector<std::string> missing;
    std::vector<std::string> reset;
    std::string feature;
    for (const auto& [name, value] : differing) {
        if (IsFeature(name, vtv::kFeatureState, &feature)) {
            features[feature] = value;
        } else if (IsFeature(name, vtv::kAbsentFeatureState, &feature)) {
            missing.push_back(feature);
        } else if (name != vtv::kModelNameState) {
            state[name] = value;
        }
    }
    for (const std::string& name : Missing(KeysOf(now), KeysOf(wanted))) {
        if (!IsFeature(name, vtv::kFeatureState, &feature) &&
            !IsFeature(name, vtv::kAbsentFeatureState, &feature)) {
            state[name] = kMissing;
        } else if (wanted.count(vtv::kFeatureState + feature) == 0 &&
                   wanted.count(vtv::kAbsentFeatureState + feature) == 0) {
            reset.push_back(feature);
        }
    }
    Add("state", state, step);
    Add("feature", features, step);
    Add("feature-missing", missing, step);
    Add("feature-reset", reset, step);
}

}  // namespace

Recording::Step StepTo(const vtv::Snapshot& wanted, const vtv::Snapshot& now) {
    Recording::Step step;
    const auto differing = [](const auto& all, const auto& present) {
        std::map<std::string, vtv::Value> values;
        for (const auto& [key, value] : all) {
            const auto found = present.find(key);
            if (found == present.end() || found->second != value) {
                values[key] = value;
            }
        }
        return values;
    };
    Add("set", differing(wanted.settings, now.settings), &step);
    Add("unset", Missing(KeysOf(now.settings), KeysOf(wanted.settings)), &step);
    AddState(now.state, wanted.state, differing(wanted.state, now.state), &step);
    Add("file-add", Missing(wanted.ownerFiles, now.ownerFiles), &step);
    Add("file-remove", Missing(now.ownerFiles, wanted.ownerFiles), &step);
    if (step.count("file-remove") != 0) {
        step["force"] = true;  // some were left by what a scenario does without
    }
    return step;
}

}  // namespace host
