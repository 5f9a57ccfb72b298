// Two providers asked the same in every state.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/tv/state.h"

namespace explorer {

struct DiffOptions {
    std::string a;
    std::string b;
    std::vector<std::string> names;  // items, functions, questions; empty: everything
    bool logs = true;                // log messages and trace events are compared
    bool lines = false;              // files and lines of log records as well
    bool reads = false;              // which inputs are read
    bool brief = false;              // stops at the first difference
    bool json = false;
    std::string scenarios;  // folder for scenario files; empty: none
    Shard shard;
    int workers = 0;
    bool progress = true;
};

// States in which the two differ in the same way.
struct Difference {
    std::vector<std::string> onlyA;  // what only the first does
    std::vector<std::string> onlyB;
    std::vector<std::string> questions;
    std::uint64_t paths = 0;
    State smallest;
    std::string question;  // of the smallest state
    std::string recordA;   // what the providers did there
    std::string recordB;
};

// Exit codes as those of diff: 0 alike, 1 different, 2 trouble.
int DiffMain(const DiffOptions& options);

}  // namespace explorer
