// Lines that the product fixes in its records, wherever the code stands: filters of field logs and
// dictionaries of traces are keyed by them. Any other line moves with the code.
#pragma once

#include <string_view>

namespace explorer {

// function: its name, or its full signature.
bool IsFixedLine(std::string_view file, std::string_view function, int line);
int FixedLines();

}  // namespace explorer
