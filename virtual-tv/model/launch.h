// A request to start an application.
#pragma once

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

}  // namespace vtv
