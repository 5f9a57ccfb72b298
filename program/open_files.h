// Whether the process can open the files that it needs.
#pragma once

#include <string>

namespace program {

// Far more than any program of the house has open at once.
inline constexpr int kOpenFiles = 64;

// Why not, which limit it is, and what to do; empty when all is well. A call that finds no
// descriptor in the middle of something could pass for an empty folder or a lock that nobody needs.
std::string OpenFilesProblem();

}  // namespace program
