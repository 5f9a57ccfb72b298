// Columns that a UTF-8 text takes on a terminal, and cutting and wrapping by them.
#pragma once

#include <string>
#include <vector>

namespace program {

size_t Width(const std::string& text);
// Cut to at most that many columns, with an ellipsis where something was cut.
std::string Cut(const std::string& text, size_t columns);
// With spaces up to that many columns.
std::string Pad(const std::string& text, size_t columns);
// Lines of at most that many columns, broken at spaces, or anywhere between wide characters.
std::vector<std::string> Wrap(const std::string& text, size_t columns);

}  // namespace program
