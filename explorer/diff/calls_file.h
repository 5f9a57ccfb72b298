// A sequence of calls as a file that vtv-explore replay plays on any provider.
#pragma once

#include <string>

#include "diff.h"

namespace explorer {

// The calls that lead to the difference, the one that shows it, and what the first provider does
// then.
std::string ToCallsFile(const Inputs& inputs, const DiffOptions& options, const Calls& calls,
                        const Walk& walk, const Difference& difference);

struct ReplayOptions : CommonOptions {
    std::string file;
};
// 0: the provider does what the file expects, 1: it does not.
int ReplayMain(const ReplayOptions& options);

}  // namespace explorer
