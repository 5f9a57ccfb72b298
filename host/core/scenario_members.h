// The members of a step: each is a row that checks it and makes what plays it, so that what is
// checked and what is played cannot differ.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scenario_steps.h"

namespace host {

// Stands for what is not there.
inline constexpr char kMissing[] = "(missing)";

using Play = std::function<void(const StepScene&)>;

struct Reading {
    ScenarioReader& reader;
    const toml::table& step;  // for what a member means only beside another
    std::string name;         // of the member
};

struct StepMember {
    const char* name;
    // Null for what there is nothing to do for by itself.
    Play (*read)(const Reading& reading, const toml::node& node);
    bool usesPage = false;
};

// In the order in which they come about within a step.
const std::vector<StepMember>& SettingMembers();
const std::vector<StepMember>& PlatformMembers();
const std::vector<StepMember>& PageMembers();

// Whether what nobody knows is meant.
bool IsForced(const toml::table& step);
// The value of an entry of the TV's raw state, or kMissing.
vtv::Value ReadStateValue(const Reading& reading, const toml::key& key, const toml::node& node);

}  // namespace host
