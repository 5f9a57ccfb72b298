// A request to start an application.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "values.h"

namespace vtv {

using Extras = std::vector<std::pair<std::string, std::string>>;  // in the order they were added

struct Launch {
    TimePoint time;
    std::string appId;
    std::string via;        // "aul" or "app-control"
    std::string operation;  // app control only
    Extras extras;
    // "started", "resumed" (it was running), "recorded" (no process wanted), or "failed: " and why.
    std::string outcome;
    int pid = 0;  // 0 when there is no process
};

// Where a list of launches ended: the number of its file, which is another one once it was set
// aside, and how much that held. One that was made with nothing stands before every launch.
struct LaunchMark {
    std::uint64_t file = 0;
    std::int64_t size = 0;
};

}  // namespace vtv
