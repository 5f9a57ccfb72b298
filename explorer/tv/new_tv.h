// A TV of a model as it comes out of its box: what the virtual TV makes of the model's file.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "inputs.h"
#include "virtual-tv/model/tv_model.h"

namespace explorer {

struct NewTv {
    vtv::Model model;
    std::string call;  // what a scenario calls the model: its name, or a whole path
    // Every input has a value here, by its index.
    std::map<int, Value> values;
    // What vtv::kPolicyKey holds; nothing on a TV whose model has no policy.
    std::optional<std::string> policy;

    // The machine's own network counts as one.
    bool IsOnline() const { return model.network != vtv::Network::kDisconnected; }
};

// Of the named models, or of all that come with the virtual TV. Throws vtv::Error.
std::vector<NewTv> LoadNewTvs(const Inputs& inputs, const std::vector<std::string>& namesOrFiles);

}  // namespace explorer
