// What a policy means: the assistants that it leaves on the TV, worked out without the provider.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "inputs.h"
#include "virtual-tv/model/assistants.h"

namespace explorer {

using vtv::Assistant;

struct PolicyState {
    std::vector<Assistant> list;
    // Application id to assistant id; kept when an empty policy follows.
    std::map<std::string, std::string> kinds;

    // The first record with that application; null when there is none.
    const Assistant* Find(const std::string& appId) const;
    // "ORVIK2", "GVA", ...; "" for an application without a kind.
    std::string KindOf(const std::string& appId) const;
};

// After everything that was published.
PolicyState StateOf(const Policy& policy);
// What another document makes of it. A document that the TV refuses changes nothing.
void Publish(const std::string& document, PolicyState& state);

}  // namespace explorer
