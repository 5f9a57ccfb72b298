// Which of several findings that say the same is shown: the one that is easiest to come to.
#pragma once

#include <compare>
#include <string>
#include <utility>
#include <vector>

#include "explorer/tv/state.h"

namespace explorer {

// Smaller is nearer. No two findings are equally near, so that the same one is shown whichever
// worker, or machine, was faster.
struct Nearness {
    int length = 0;  // calls that lead there
    int weight = 0;  // of the TV's state
    std::string question;
    int joint = -1;
    int call = -1;
    std::vector<std::pair<int, int>> path;  // inputs, and the place of their values

    auto operator<=>(const Nearness& other) const = default;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(length, weight, question, joint, call, path);
    }
};

// Of a state, before anything else is said of it.
inline Nearness NearnessOf(const Inputs& inputs, const State& state) {
    Nearness nearness;
    nearness.weight = state.Weight(inputs);
    for (const Decision& decision : state.path) {
        nearness.path.emplace_back(decision.input, decision.value);
    }
    return nearness;
}

}  // namespace explorer
