// When a process is ready to be ended by a signal.
#pragma once

#include <unistd.h>

#include <fstream>
#include <string>

// Waits, at most a minute, until the process has a handler of its own for the signal: one that is
// sent sooner just ends it, however long a busy machine takes to start it.
inline bool WaitUntilCaught(pid_t pid, int signal) {
    const std::string name = "SigCgt:";
    for (int i = 0; i < 6000; ++i) {
        std::ifstream status("/proc/" + std::to_string(pid) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind(name, 0) == 0 &&
                (std::stoull(line.substr(name.size()), nullptr, 16) >> (signal - 1) & 1U) != 0) {
                return true;
            }
        }
        usleep(10000);
    }
    return false;
}
