// Starting applications and knowing what runs; behind app control, aul and the app manager.
#pragma once

#include <string>
#include <vector>

#include "tv_impl.h"

namespace vtv {

// Signals that a simulated application understands.
enum class AppSignal { kFinish, kCancel, kTerminate };

// Starts what the request names (appId, via, operation, extras), records it and returns it with its
// outcome. Does not wait for the application.
Launch StartApplication(Tv::Impl& tv, Launch request);
bool Succeeded(const Launch& launch);
void RecordLaunch(Tv::Impl& tv, const Launch& launch);

// Starts a program that outlives this process and never becomes its zombie. Output goes to logFile.
// Returns its process id, or -1 with *error set when it cannot be executed.
int SpawnDetached(const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment, const std::string& logFile,
                  bool blockAppSignals, int* error);

// The running applications of a TV, one file a process. A process that is gone is forgotten.
std::vector<RunningApplication> ListRunning(const std::string& tvDir);
void Register(const std::string& tvDir, const RunningApplication& application);
void Unregister(const std::string& tvDir, int pid);
bool SignalApplication(const RunningApplication& application, AppSignal signal);
int NumberOf(AppSignal signal);

// Why an application could not do its work; read once.
void LeaveFailure(const std::string& tvDir, int pid, const std::string& text);
std::string TakeFailure(const std::string& tvDir, int pid);

}  // namespace vtv
