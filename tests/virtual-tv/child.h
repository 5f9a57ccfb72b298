// Another process of the same test.
#pragma once

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>

#include "tests/environment.h"

// Runs the body in a child and returns its exit code, or minus the signal that ended it.
inline int InChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// Starts it and goes on; the destructor waits.
class Child {
  public:
    explicit Child(const std::function<void()>& body) : pid_(fork()) {
        if (pid_ == 0) {
            body();
            _exit(0);
        }
    }
    ~Child() { Wait(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Pid() const { return pid_; }
    void Kill() { kill(pid_, SIGKILL); }
    int Wait() {
        int status = 0;
        if (pid_ > 0) {
            waitpid(pid_, &status, 0);
        }
        pid_ = -1;
        return status;
    }

  private:
    pid_t pid_;
};

// The first child that is started after this lives where no number of ours means anything, as in a
// container.
inline bool EnterProcessNamespace() {
    return unshare(CLONE_NEWPID) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWPID) == 0;
}

// First in a test that calls EnterProcessNamespace() in a child. Who is not root gets none in a
// chroot or a container, and such a test would show nothing there: it is skipped, but not in CI.
#define NEEDS_PROCESS_NAMESPACES()                                                  \
    if (Child([] { _exit(EnterProcessNamespace() ? 0 : 1); }).Wait() != 0) {        \
        constexpr char reason[] = "this machine allows no namespaces of processes"; \
        ASSERT_FALSE(InCi()) << reason;                                             \
        GTEST_SKIP() << reason;                                                     \
    }                                                                               \
    static_assert(true)
