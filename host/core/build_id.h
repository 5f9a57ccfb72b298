// Telling builds of a library apart.
#pragma once

#include <string>

namespace host {

// The id that the linker gave to a library that this process has loaded, in hexadecimal digits.
// Empty when the library is not loaded or has no id.
std::string BuildIdOf(const std::string& file);

}  // namespace host
