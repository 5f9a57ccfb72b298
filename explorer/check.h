// Named invariants over all states.
#pragma once

#include <string>
#include <vector>

#include "exploration.h"

namespace explorer {

struct CheckOptions {
    std::string provider;
    std::vector<std::string> names;  // of invariants; empty: all
    bool list = false;
    bool json = false;
    std::string scenarios = ".";  // folder for the scenarios of violated invariants
    Shard shard;
    int workers = 0;
    bool progress = true;
};

// 0 all hold, 1 some do not.
int CheckMain(const CheckOptions& options);

}  // namespace explorer
