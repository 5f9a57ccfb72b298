// Files that a program writes for its user.
#pragma once

#include <string>

namespace program {

// Writes the whole file or leaves it as it was, and tells why it could not be written; empty when
// it was. A plain file is replaced, and keeps its mode and owner; links, folders and pipes are not.
// What the program has open already is written to as it stands: "-", /dev/stdout, /dev/fd/3; so are
// devices such as /dev/null.
std::string WriteFile(const std::string& file, const std::string& text);

// The errno of what failed; 0 when all of it was written.
int WriteAll(int descriptor, const std::string& text);

}  // namespace program
