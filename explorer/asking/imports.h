// What a provider library takes from elsewhere.
#pragma once

#include <string>
#include <vector>

namespace explorer {

// The imports of the library that an address lies in that are neither the platform's calls, which
// this program serves, nor functions whose result follows from their arguments: what comes in
// through them is not seen.
std::vector<std::string> UnseenImports(const void* inside);

// What that library has that cannot be stored and put back, in words: storage of each thread's own,
// and variables that a process has once, whichever libraries bring them. Empty when there is none.
std::string UnstorableParts(const void* inside);

}  // namespace explorer
