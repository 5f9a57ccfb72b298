// Runs tasks that may crash, hang, end their process or start others: each in a process of its own
// that a second process watches.
//
// A task has passed only when its process said so as its last act, after every exit handler of what
// the task has loaded. A process that ends in any other way, with whatever exit code, has not.
//
// It keeps accidents from being taken for a pass, and cleans up behind them. It is no sandbox: code
// that means harm can do all that the user who runs it can do.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace host {

enum class Outcome {
    kPassed,
    kFailed,
    kUnusable,  // a ProviderError: there was nothing to try
    kNotRun,    // a vtv::Error: the machine could not run it, whatever the task is
    kEnded,     // the process ended, crashed, hung, or left processes behind
};

struct Verdict {
    Outcome outcome = Outcome::kEnded;
    std::string why;  // empty when it passed
    double seconds = 0;
};

// Is given a folder of its own, which is removed behind it. Passes when it returns; ends with
// FailTask(), or throws ProviderError, vtv::Error or any exception, otherwise.
using SupervisedTask = std::function<void(const std::string& folder)>;

// Runs the tasks, as many at once as there are processors; `tell` hears the verdicts in the order
// of the tasks, each as soon as it can. Returns 0, or the number of the signal (SIGINT, SIGTERM,
// SIGHUP, SIGPIPE) that ended it before all were run. Ends every process
// below this one that it did not start itself, too. Throws std::runtime_error when the machine
// cannot.
int RunSupervised(const std::vector<SupervisedTask>& tasks, std::chrono::seconds limit,
                  const std::function<void(size_t task, const Verdict& verdict)>& tell);

// For tasks: says why it failed and ends the process at once. Nothing of what the task has loaded
// runs any more, so that no crash on the way out takes the place of the reason.
[[noreturn]] void FailTask(const std::string& why);

// For tasks: what is being done, so that a crash or a hang can be told where it happened.
void Doing(const std::string& what);

}  // namespace host
