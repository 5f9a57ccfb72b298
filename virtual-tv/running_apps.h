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

    // False when it has ended.
    bool Signal(AppSignal signal) const;
    bool WaitForEnd(std::chrono::steady_clock::time_point deadline) const;

  private:
    int fd_ = -1;
};

// Why an application could not do its work; read once.
void LeaveFailure(const std::string& tvDir, int pid, const std::string& text);
std::string TakeFailure(const std::string& tvDir, int pid);

}  // namespace vtv
