// The programs beside this one, as which a verb goes on.
#pragma once

#include <string>
#include <vector>

namespace cli {

// Throws kPlatform, with what to do, for one that is not there.
std::string ProgramBeside(const std::string& name, const std::string& whatToDo);
// The one that has the page's window.
std::string WindowProgram();
// Goes on as that program, so that its exit code, signals and terminal are this one's.
[[noreturn]] void Become(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace cli
