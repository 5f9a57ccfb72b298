// Two providers asked the same in every state.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/asking/walk.h"
#include "explorer/tv/state.h"

namespace explorer {

struct DiffOptions : CommonOptions {
    std::string other;               // provider
    std::vector<std::string> names;  // items, functions, questions; empty: everything
    bool logs = true;                // log messages and trace events are compared
    bool lines = false;              // files and lines of log records as well
    bool reads = true;               // which inputs are read, and in which order
    bool brief = false;              // stops at any difference and says nothing of it
    bool all = false;                // does not stop at the first difference
    WalkBounds bounds;
    std::string scenarios;  // folder for scenario files; empty: none
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
    int joint = -1;  // what they remember then; -1: as Subject creates them
    int call = -1;   // that shows it
    int length = 1;  // calls up to that one

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(onlyA, onlyB, questions, paths, smallest, question, recordA, recordB, joint, call,
              length);
    }
    // The shortest sequence, then the state nearest to a usual TV.
    bool IsNearerThan(const Difference& other, const Inputs& inputs) const;
};

// Exit codes as those of diff: 0 alike, 1 different, 2 trouble.
int DiffMain(const DiffOptions& options);

}  // namespace explorer
