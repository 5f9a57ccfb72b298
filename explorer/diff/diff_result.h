// What a comparison of two providers came to, as it is shown: of a whole one, of a part, and of all
// parts together.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "diff.h"
#include "explorer/asking/part.h"

namespace explorer {

struct ShownDifference {
    std::vector<std::string> onlyA;
    std::vector<std::string> onlyB;
    std::set<std::pair<int, std::string>> questions;
    std::uint64_t paths = 0;
    std::string question;               // of the smallest state
    std::vector<std::string> calls;     // before it
    std::vector<std::string> smallest;  // state
    std::string scenario;               // texts of files; empty: none
    std::string callsFile;
    Nearness nearness;
};

struct DiffResult {
    std::vector<ShownDifference> differences;
    std::vector<std::string> troubles;  // why it is not proven
    bool interrupted = false;
    bool isWalked = true;  // every call in every state; false: in rounds
    WalkCount count;
};

// Writes the files of the differences, and shows them. Returns the exit code.
int Show(const DiffOptions& options, const DiffResult& result);

// `diff` shown from the parts that it was done in. Returns the exit code; throws CommandError.
int ShowMergedDiff(const CommonOptions& options, const std::string& scenarios,
                   const std::vector<PartFile>& parts);

}  // namespace explorer
