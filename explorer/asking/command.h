// What the verbs of the command line share.
#pragma once

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "explorer/tv/inputs.h"
#include "question.h"

namespace explorer {

enum ExitCode {
    kExitOk = 0,
    kExitNo = 1,  // the answer is no
    kExitUsage = 2,
    kExitNoSuch = 3,   // no such item, function, file
    kExitTrouble = 4,  // the work could not be done, or not to its end
};

// A command that cannot be carried out. what() is for people.
class CommandError : public std::runtime_error {
  public:
    CommandError(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

// What the names mean; all questions without a name. Throws CommandError with similar names.
std::vector<const Question*> QuestionsOf(const std::vector<std::string>& names);
// Throws CommandError.
void WriteTextFile(const std::string& file, const std::string& text);
// Only what can be read again.
void WriteScenarioFile(const std::string& file, const std::string& text);
// Keys that the provider reads and the inputs do not name, to standard error.
void ReportUnknownKeys(const std::set<std::string>& keys, const Inputs& inputs);
// "489,216 questions in 1.6 s: 310,053 a second", to standard error.
void ReportRate(bool wanted);

// The command `vtv explore` and `vtv impact`, without its first word. Returns the exit code.
int ExploreMain(int argc, char** argv);

}  // namespace explorer
