// Named invariants over all states.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/asking/walk.h"
#include "invariants.h"

namespace explorer {

// One invariant, asked of one question or of the page.
struct Case {
    const Invariant* invariant = nullptr;
    const Question* question = nullptr;
};

// The named invariants; all when none is named. Throws CommandError.
std::vector<const Invariant*> InvariantsOf(const std::vector<std::string>& names);
std::vector<Case> CasesOf(const std::vector<const Invariant*>& invariants);

struct CheckOptions : CommonOptions {
    std::vector<std::string> names;  // of invariants; empty: all
    bool list = false;
    std::string scenarios = ".";  // folder for the scenarios of violated invariants
    WalkBounds bounds;
};

// 0 all hold, 1 some do not.
int CheckMain(const CheckOptions& options);

}  // namespace explorer
