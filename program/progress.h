// How far a long work is, on standard error: one line that each following one takes the place of.
// Nothing where that is no terminal.
#pragma once

#include <string>

namespace program {

void ShowProgress(const std::string& line);
void ClearProgress();

}  // namespace program
