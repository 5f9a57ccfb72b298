// One state of the TV, as a path found it: for people, and as a scenario that a virtual TV replays.
#pragma once

#include <toml++/impl/forward_declarations.h>

#include <string>
#include <vector>

#include "explorer/engine/choices.h"
#include "inputs.h"
#include "virtual-tv/model/launch.h"

namespace explorer {

// What a path says about the TV. Inputs that are not named do not matter.
struct State {
    int policy = 0;
    std::vector<Decision> path;
    // The texts of the path's inputs, the current assistant put in; as long as the path.
    std::vector<std::string> texts;

    // How far it is from a TV on which all is well: fewer unusual values are easier to understand.
    int Weight(const Inputs& inputs) const;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(policy, path, texts);
    }
};

// The state that the TV's current run is in.
State CurrentState(int policy, const Choices& choices);
// "policy: all six", "terms: not agreed", ...; the usual values as well.
std::vector<std::string> Describe(const Inputs& inputs, const State& state);
// A scenario: brings a virtual TV into the state. `steps` is what follows, as TOML.
std::string ToScenario(const Inputs& inputs, const State& state, const std::string& title,
                       const std::string& steps);

// A step, or another list's element, behind an empty line; a comment where TOML cannot hold it.
// Nothing for what has no members.
std::string StepText(const toml::table& step, const char* list = "step");
// A launch as a scenario expects it: "APP key=value".
std::string ExpectedLaunch(const std::string& application, const vtv::Extras& extras);
// What a store holds for a value; the text is the value's, the current assistant put in.
vtv::Value StoredBy(const Value& value, const std::string& text);

}  // namespace explorer
