// Invariants after every sequence of a viewer's actions.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/command.h"

namespace explorer {

struct SequencesOptions : CommonOptions {
    std::vector<std::string> models;      // names or files; empty: all
    std::vector<std::string> invariants;  // names; empty: all
    int depth = -1;                       // actions; below 0: until no new state is found
    std::string scenarios = ".";          // folder for the scenarios of violated invariants
    std::string tour;  // folder for scenarios that take every kind of step; empty: none
};

// 0 all hold, 1 some do not, 3 no such model or invariant, 4 not to its end. Throws CommandError.
int SequencesMain(const SequencesOptions& options);

}  // namespace explorer
