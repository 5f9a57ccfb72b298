// How many of something, in words: "1 check", "2 checks".
#pragma once

#include <cstddef>
#include <string>

namespace program {

// For a number that is a text already, "12,345", or that has a plural of its own.
inline std::string Counted(const std::string& count, const std::string& one,
                           const std::string& several) {
    return count + " " + (count == "1" ? one : several);
}

inline std::string Counted(std::size_t count, const std::string& one) {
    return Counted(std::to_string(count), one, one + "s");
}

}  // namespace program
