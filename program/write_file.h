// Files that a program writes for its user.
#pragma once

#include <string>

namespace program {

// Writes the whole file or leaves it as it was, and tells why it could not be written; empty when
// it was. What is no plain file, such as /dev/stdout or a pipe, is written to as it stands.
std::string WriteFile(const std::string& file, const std::string& text);

}  // namespace program
