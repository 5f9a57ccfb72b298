// A second process that tells when it has seen a change.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <functional>

namespace bench {

// The clock is the same for all processes of the machine.
inline int64_t Nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

class OtherProcess {
  public:
    // The body runs in the other process until it is killed, and calls its argument once when it is
    // ready and then each time it has seen a change.
    explicit OtherProcess(const std::function<void(const std::function<void()>&)>& body) {
        int ends[2];
        if (pipe(ends) != 0) {
            std::abort();
        }
        pid_ = fork();
        if (pid_ == 0) {
            close(ends[0]);
            body([report = ends[1]] {
                const int64_t now = Nanoseconds();
                if (write(report, &now, sizeof now) != sizeof now) {
                    _exit(1);
                }
            });
            _exit(0);
        }
        close(ends[1]);
        report_ = ends[0];
        Wait();
    }
    ~OtherProcess() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        close(report_);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    // When the other process saw the next change; 0 when it has ended.
    int64_t Wait() {
        int64_t seen = 0;
        return read(report_, &seen, sizeof seen) == sizeof seen ? seen : 0;
    }

  private:
    pid_t pid_ = -1;
    int report_ = -1;
};

}  // namespace bench
