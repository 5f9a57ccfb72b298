// TV models as the virtual TV has them (virtual-tv/tvs/*.toml): their features.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "inputs.h"
#include "policy.h"

namespace explorer {

struct TvModel {
    std::string name;
    std::string file;
    std::string call;                       // what a scenario calls it: its name, or a whole path
    std::map<std::string, Value> features;  // by full key
    std::map<std::string, Value> settings;  // that it comes with, but for JSON documents
};

// The named ones, or all that come with the virtual TV. Throws NoSuchFile and
// InputError.
std::vector<TvModel> LoadModels(const std::vector<std::string>& namesOrFiles);
// The model's value of every feature input; a feature that the model does not have fails with -22.
std::map<int, Value> ValuesOf(const Inputs& inputs, const TvModel& model);
// The model's value of the settings that its users have no hand in, such as the country.
std::map<int, Value> MarketValuesOf(const Inputs& inputs, const TvModel& model);
// Leaves each other input the values that a user's TV can have, one of each kind: broken documents,
// refused writes and failing services are left out. The current assistant is one of the policies'.
void KeepUserValues(Inputs& inputs, const std::vector<PolicyState>& policies);

}  // namespace explorer
