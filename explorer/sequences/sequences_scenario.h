// Sequences of actions as scenarios that a virtual TV replays.
#pragma once

#include <string>
#include <vector>

#include "sequences_search.h"

namespace explorer {

// A scenario of these actions on a new TV. After each step it expects of the page, the settings and
// the applications what the TV in memory had then. With `crashes` nothing is carried out or looked
// at after the last step but one.
std::string ToScenario(const Stage& stage, ConcreteTv& tv, const std::string& title,
                       const std::vector<Action>& path, bool crashes = false);

// Sequences that together take at least one step of every kind that the search has found.
std::vector<std::vector<Action>> Tours(const Search& search);

// A fact in words: "agreed", "missing", a text.
std::string WordsOf(const Input& input, const Value& value);

}  // namespace explorer
