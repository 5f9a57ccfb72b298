// How much a file of others may ask for: far more than any TV has, and so little that nobody waits
// for hours until it is written, played or explained.
#pragma once

#include <cstddef>
#include <string>

namespace vtv {

inline constexpr size_t kMostAssistants = 1000;
inline constexpr size_t kMostEntries = 10000;   // of any other list: settings, features, steps, ...
inline constexpr size_t kMostTvFiles = 100000;  // and folders: more than all lists of a TV together

// Of a value, in bytes: far above every policy, and what a page still reads at once.
inline constexpr size_t kLargestValue = size_t{1024} * 1024;
inline constexpr int kLongestDelayMs = 5000;  // of a platform call that was told to be slow

// Empty when a platform call can be made to take so much longer.
inline std::string DelayProblem(int ms) {
    return ms >= 1 && ms <= kLongestDelayMs ? ""
                                            : "a call cannot be slow by " + std::to_string(ms) +
                                                  " milliseconds: write a whole number from 1 to " +
                                                  std::to_string(kLongestDelayMs) + ".";
}

// Empty when a value has not too many bytes.
inline std::string TooLong(const std::string& key, size_t size) {
    return size <= kLargestValue
               ? ""
               : "The value of \"" + key + "\" is too long: " + std::to_string(size) +
                     " bytes; at most " + std::to_string(kLargestValue) + ".";
}

// A file name has room for 255 bytes, and a key may need three of them for each of its own.
inline constexpr size_t kMaxEncodedKey = 240;

constexpr bool IsPlainInAKey(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
}

// Empty when a file can have the key's name.
inline std::string KeyProblem(const std::string& key) {
    size_t size = key.rfind('.', 0) == 0 ? 2 : 0;
    for (const char c : key) {
        size += IsPlainInAKey(c) ? 1 : 3;
    }
    return key.empty() ? "A key must not be empty."
           : size <= kMaxEncodedKey
               ? ""
               : "The key \"" + key.substr(0, 60) + "...\" is too long: at most " +
                     std::to_string(kMaxEncodedKey) +
                     " bytes, where all but letters, digits, '_', '-' and "
                     "'.' count three.";
}

// Empty when it is not too many. what: "assistants".
inline std::string TooMany(const std::string& what, size_t count, size_t most) {
    return count <= most ? ""
                         : std::to_string(count) + " " + what + " are too many: at most " +
                               std::to_string(most) + ".";
}

}  // namespace vtv
