// How much a file of others may ask for: far more than any TV has, and so little that nobody waits
// for hours until it is written, played or explained.
#pragma once

#include <cstddef>
#include <string>

namespace vtv {

inline constexpr size_t kMostAssistants = 1000;
inline constexpr size_t kMostSteps = 10000;    // of a scenario
inline constexpr size_t kMostEntries = 10000;  // of any other list: settings, features, files, ...

inline constexpr int kLongestDelayMs = 5000;  // of a platform call that was told to be slow

// Empty when a platform call can be made to take so much longer.
inline std::string DelayProblem(int ms) {
    return ms >= 1 && ms <= kLongestDelayMs ? ""
                                            : "a call cannot be slow by " + std::to_string(ms) +
                                                  " milliseconds: write a whole number from 1 to " +
                                                  std::to_string(kLongestDelayMs) + ".";
}

// Empty when it is not too many. what: "assistants".
inline std::string TooMany(const std::string& what, size_t count, size_t most) {
    return count <= most ? ""
                         : std::to_string(count) + " " + what + " are too many: at most " +
                               std::to_string(most) + ".";
}

}  // namespace vtv
