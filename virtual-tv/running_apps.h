// What runs on a TV, known to every process.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "applications.h"

namespace vtv {

// The running applications of a TV. What has ended is forgotten; a file that tells of none is left
// alone and added to damage, in words.
std::vector<RunningApplication> ListRunning(const std::string& tvDir,
                                            std::vector<std::string>* damage = nullptr);

// An application's file in the making. Only one at a time: the caller holds "apps/.lock".
class Registration {
  public:
    explicit Registration(const std::string& tvDir);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    // Error() tells why it could not be made; 0 when it could.
    int Error() const { return error_; }
    // What the application has to lock, see LockRecord(), before the file is published.
    int Descriptor() const { return descriptor_; }
    bool Publish(const RunningApplication& application);
    // Ends the process that was started and could not be published: nobody else could.
    void End(int pid) const;
    // For the process that holds the lock itself: it does so for as long as it lives.
    void KeepOpen();

  private:
    std::string tvDir_;
    std::string temporary_;  // empty when published
    int descriptor_ = -1;
    int error_ = 0;
};

// Makes the calling process the one that runs. May be called between fork and exec.
bool LockRecord(int descriptor);
bool IsRegistered(const std::string& tvDir, int pid);
void Unregister(const std::string& tvDir, int pid);

// The process of a running application, held so that it cannot come to mean another one.
class ApplicationProcess {
  public:
    ApplicationProcess(const std::string& tvDir, const RunningApplication& application);
    ~ApplicationProcess();
    ApplicationProcess(const ApplicationProcess&) = delete;
    ApplicationProcess& operator=(const ApplicationProcess&) = delete;

    // The errno of what failed; 0 also when the process has ended.
    int Signal(AppSignal signal) const;
    // Until it has ended, or something happens to the other descriptor (-1: none). False when the
    // time was over first.
    bool WaitForEnd(std::chrono::steady_clock::time_point deadline, int orUntil = -1) const;

  private:
    int fd_ = -1;
};

// Why an application could not do its work; read once. `kind` is kNo or kPlatform.
void LeaveFailure(const std::string& tvDir, int pid, const Error& failure);
std::optional<Error> TakeFailure(const std::string& tvDir, int pid);
// Where it is left, for those who wait for it.
std::string FailureFolder(const std::string& tvDir);
std::string FailureFileName(int pid);

}  // namespace vtv
