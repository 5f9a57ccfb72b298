// Worker processes: each task runs in a process of its own, so that a provider that crashes or does
// not come to an end takes only its own question with it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "choices.h"

namespace explorer {

// What a worker and the starting process share.
struct Shared {
    std::atomic<std::uint64_t> runs;  // questions asked so far
    std::atomic<int> step;            // what the worker is at: an index of the caller's
    Choices choices;                  // the path that it is on
};

struct WorkerResult {
    int task = 0;
    std::string bytes;  // what the task returned
    // Why it ended early: "crashes (signal 11)", "does not come to an end"; empty when it did not.
    std::string trouble;
    int step = 0;
    std::vector<Decision> path;  // where it was then
};

struct WorkOptions {
    int workers = 0;       // 0: as many as there are processors
    bool progress = true;  // on a terminal
    const char* what = "questions";
    // True: no further task is begun.
    std::function<bool()> stop = nullptr;
};

// After how many seconds without a single run a worker is stopped: 20, unless it is set.
void SetPatience(double seconds);

// Set by SIGINT, SIGTERM and SIGHUP once Work() has begun; tasks look at it and return what they
// have. A second one ends the program at once.
bool IsInterrupted();
// The signal; 0 without one.
int EndingSignal();
// Questions asked by all workers since the program began, and the seconds that it took.
std::uint64_t TotalRuns();
double TotalSeconds();

// Runs the tasks 0..count-1 in worker processes. The task's own result is a text of bytes. A task
// for which `finished` returns true is run again (after a crash, to go on behind it).
void Work(int count, const WorkOptions& options,
          const std::function<std::string(int task, Shared& shared)>& task,
          const std::function<bool(const WorkerResult& result)>& finished);

}  // namespace explorer
