// How many things a file of others may hold: far more than any TV has, and few enough that nobody
// waits for hours until they are written, played or explained.
#pragma once

#include <cstddef>
#include <string>

namespace vtv {

inline constexpr size_t kMostAssistants = 1000;
inline constexpr size_t kMostSteps = 10000;    // of a scenario
inline constexpr size_t kMostEntries = 10000;  // of any other list: settings, features, files, ...

// Empty when it is not too many. what: "assistants".
inline std::string TooMany(const std::string& what, size_t count, size_t most) {
    return count <= most ? ""
                         : std::to_string(count) + " " + what + " are too many: at most " +
                               std::to_string(most) + ".";
}

}  // namespace vtv
