// What a check came to, as it is shown: of a whole one, of a part, and of all parts together.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check.h"
#include "explorer/asking/nearness.h"
#include "explorer/asking/part.h"

namespace explorer {

struct ShownViolation {
    std::string what;
    std::string question;
    std::uint64_t paths = 0;
    std::vector<std::string> calls;     // that lead there
    std::vector<std::string> smallest;  // state
    std::string scenario;               // the text of its file
    Nearness nearness;
};

struct CheckedInvariant {
    std::string name;
    std::string sentence;
    std::uint64_t paths = 0;
    std::vector<ShownViolation> violations;  // nearest first
};

struct CheckResult {
    std::vector<CheckedInvariant> invariants;
    WalkCount count;
};

// Writes the scenarios, and shows what was found. Returns the exit code.
int Show(const CheckOptions& options, const CheckResult& result);

// `check` shown from the parts that it was done in. Returns the exit code; throws CommandError.
int ShowMergedCheck(const CommonOptions& options, const std::string& scenarios,
                    const std::vector<PartFile>& parts);

}  // namespace explorer
