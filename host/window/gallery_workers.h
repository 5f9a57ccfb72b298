// Tasks in several processes, each of which takes the next one when it is through.
#pragma once

#include <json/json.h>

#include <functional>

namespace window {

// Returns the elements of what the tasks returned, each an array, in the order of the tasks. Throws
// vtv::Error when one of them throws, or its process ends before it is through.
Json::Value DoInProcesses(size_t count, size_t processes, bool tellsProgress,
                          const std::function<Json::Value(size_t task)>& act);

}  // namespace window
