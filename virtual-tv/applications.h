// Starting applications; behind app control, aul and the app manager.
#pragma once

#include <string>
#include <vector>

#include "tv_impl.h"

namespace vtv {

// Signals that a simulated application understands.
enum class AppSignal { kFinish, kCancel, kTerminate };
int NumberOf(AppSignal signal);

// Starts what the request names (appId, via, operation, extras), records it and returns it with its
// outcome. Does not wait for the application.
Launch StartApplication(Tv::Impl& tv, Launch request);
bool Succeeded(const Launch& launch);
void RecordLaunch(Tv::Impl& tv, const Launch& launch);

// Empty when the user has allowed the command of a package; otherwise why not, and what to do.
std::string WhyNotAllowed(const std::string& command);

struct Program {
    std::vector<std::string> arguments;
    std::vector<std::string> environment;  // besides this process's own
    std::string tvDir;                     // to whose log its output goes
    bool blockAppSignals = false;
    int record = -1;  // a descriptor for LockRecord(), which the program keeps open
};

// Starts a program that outlives this process and never becomes its zombie. Returns its process id,
// or -1 with *error set when it cannot be executed.
int SpawnDetached(const Program& program, int* error);

}  // namespace vtv
