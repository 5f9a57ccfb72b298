// vtv explore merge
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/command.h"

namespace explorer {

struct MergeOptions : CommonOptions {
    std::vector<std::string> files;
    std::string scenarios;  // folder; empty: where one run would write
};

// Shows what one run shows, and returns its exit code.
int MergeMain(const MergeOptions& options);

}  // namespace explorer
