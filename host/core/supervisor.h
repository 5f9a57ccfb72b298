// The process that watches one task; see supervised.h.
#pragma once

#include <optional>
#include <string>

#include "supervised.h"

namespace host {

struct Supervision {
    const SupervisedTask* task = nullptr;
    std::string folder;  // made and removed by the supervisor, with all that is in it
    std::chrono::seconds limit{0};
    int lifeline = -1;  // reads as ended when the starting process is gone
    int report = -1;    // takes the verdict
};

// Never returns; the calling process, a fork() of the starting one, becomes the supervisor.
[[noreturn]] void Supervise(const Supervision& supervision);

// What a supervisor has written to its report; absent when it was cut short.
std::optional<Verdict> ParseReport(const std::string& report);

}  // namespace host
