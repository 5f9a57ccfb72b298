// Two providers asked the same in every state.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/asking/nearness.h"
#include "explorer/asking/records.h"
#include "explorer/asking/walk.h"
#include "explorer/tv/state.h"

namespace explorer {

struct DiffOptions : CommonOptions {
    std::string other;               // provider
    std::vector<std::string> names;  // items, functions, questions; empty: everything
    RecordOptions records;
    bool brief = false;     // stops at any difference and says nothing of it
    bool all = false;       // does not stop at the first difference
    bool coverage = false;  // how far each question went is told
    WalkBounds bounds;
    std::string scenarios;  // folder for scenario files; empty: none

    // A part's are written where all parts are merged.
    bool HasFiles() const { return !scenarios.empty() || shard.IsPart(); }
    // No part knows what the others find: it ends with what is nearest only where that is all that
    // is asked.
    bool FindsAll() const { return all || (shard.IsPart() && !brief); }
};

// States in which the two differ in the same way.
struct Difference {
    std::vector<std::string> onlyA;  // what only the first does
    std::vector<std::string> onlyB;
    std::set<std::pair<int, std::string>> questions;  // with their places among the calls
    std::uint64_t paths = 0;
    State smallest;
    std::string question;  // of the smallest state
    std::string recordA;   // what the providers did there
    std::string recordB;
    int joint = -1;  // what they remember then; -1: as Subject creates them
    int call = -1;   // that shows it
    Nearness nearness;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(onlyA, onlyB, questions, paths, smallest, question, recordA, recordB, joint, call,
              nearness);
    }
};

// Exit codes as those of diff: 0 alike, 1 different, 2 trouble.
int DiffMain(const DiffOptions& options);

}  // namespace explorer
