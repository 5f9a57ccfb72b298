// A program's standard output, of which nothing is lost unnoticed: what could not be written ends
// the program with an exit code of its own, whatever else the program has to say.
#pragma once

#include <string>

#include "visible_text.h"

namespace program {

inline constexpr int kOutputFailed = 4;  // the exit code, also of what cannot begin

// A program that uses this and lacks memory ends at once with kOutputFailed and says so. Nothing is
// undone: what a killed process may leave, the next one finds in order.

// The first thing in main(). Ends the program where it cannot open the files that it needs. What
// the machine says is in its user's language from here on, std::cout and stdout remember why a
// write failed, and a file that the program opens never gets the number of a standard stream that
// was closed. Whatever is printed on stdout, stderr and their C++ streams is Form::kText, wherever
// it goes, and in the character set of the user's locale.
void Begin();

// Prints on the standard output in another form. On a terminal even what is exact is shown as text.
void Print(const std::string& text, Form form);

// Writes what is buffered, and tells why anything that was printed so far could not be written.
// Empty when all is well.
std::string OutputProblem();

// Whether somebody who goes on printing should stop: what was printed could not be written, or
// nobody is left who could read on. The latter ends the program quietly, as any write would, where
// SIGPIPE is not ignored.
bool IsOutputLost();

// The last thing in main(): the exit code, after a complaint when the output is not whole.
int End(const std::string& programName, int code);

}  // namespace program
