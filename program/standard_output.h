// A program's standard output, of which nothing is lost unnoticed: what could not be written ends
// the program with an exit code of its own, whatever else the program has to say.
#pragma once

#include <string>

namespace program {

inline constexpr int kOutputFailed = 4;  // the exit code

// The first thing in main(). What the machine says is in its user's language from here on,
// std::cout and stdout remember why a write failed, and a file that the program opens never gets
// the number of a standard stream that was closed.
void Begin();

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
