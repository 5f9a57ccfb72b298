// Starting a program that is nobody's child.
#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "running_apps.h"

extern char** environ;

namespace vtv {

namespace {

// What the grandchild tells before it becomes the program.
struct Report {
    int pid;
    int error;  // of exec
};

void SendReport(int fd, const Report& report) {
    const ssize_t size = write(fd, &report, sizeof report);
    static_cast<void>(size);  // nobody is left to be told
}

// In the grandchild: only calls that are safe after fork() in a program with threads.
[[noreturn]] void BecomeProgram(const Program& program, char* const* argv, char* const* envp,
                                int log, int report) {
    const int null = open("/dev/null", O_RDWR);
    const int output = log >= 0 ? log : null;
    const bool isApart = null >= 0 && dup2(null, STDIN_FILENO) >= 0 &&
                         dup2(output, STDOUT_FILENO) >= 0 && dup2(output, STDERR_FILENO) >= 0;
    int error = isApart ? 0 : errno;
    // Whatever the starting program has open (a terminal, a pipe that somebody reads to its end).
    syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    if (error == 0 && program.record >= 0 &&
        (!LockRecord(program.record) || fcntl(program.record, F_SETFD, 0) != 0)) {
        error = errno;
    }
    if (error != 0) {
        SendReport(report, {getpid(), 0});
        SendReport(report, {getpid(), error});
        _exit(127);
    }
    sigset_t signals;
    sigemptyset(&signals);
    if (program.blockAppSignals) {
        // Told to finish before it has set itself up, it does so as soon as it has.
        for (const AppSignal signal :
             {AppSignal::kFinish, AppSignal::kCancel, AppSignal::kTerminate}) {
            sigaddset(&signals, NumberOf(signal));
        }
    }
    sigprocmask(SIG_SETMASK, &signals, nullptr);
    SendReport(report, {getpid(), 0});
    execve(argv[0], argv, envp);
    SendReport(report, {getpid(), errno});
    _exit(127);
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

bool ReadReport(int fd, Report* report) {
    ssize_t size;
    do {
        size = read(fd, report, sizeof *report);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(sizeof *report);
}

}  // namespace

int NumberOf(AppSignal signal) {
    switch (signal) {
        case AppSignal::kFinish:
            return SIGUSR1;
        case AppSignal::kCancel:
            return SIGUSR2;
        case AppSignal::kTerminate:
            return SIGTERM;
    }
    return SIGTERM;
}

int SpawnDetached(const Program& program, int* error) {
    std::vector<std::string> words = program.arguments;
    std::vector<std::string> variables = program.environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    const std::vector<char*> argv = Pointers(words);
    const std::vector<char*> envp = Pointers(variables);
    int pipes[2];
    if (pipe2(pipes, O_CLOEXEC) != 0) {
        *error = errno;
        return -1;
    }
    const int log = kApplicationsLog.OpenToAdd(program.tvDir);
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        // The child of a child that is gone belongs to init: it is no zombie of ours and is not
        // hung up with our terminal.
        const pid_t grandchild = fork();
        if (grandchild == 0) {
            BecomeProgram(program, argv.data(), envp.data(), log, pipes[1]);
        }
        _exit(grandchild < 0 ? 1 : 0);
    }
    *error = errno;
    close(pipes[1]);
    if (log >= 0) {
        close(log);
    }
    Report report{-1, 0};
    if (child > 0) {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        Report later;
        if (!ReadReport(pipes[0], &report)) {
            *error = EAGAIN;  // no grandchild
        } else if (ReadReport(pipes[0], &later)) {
            *error = later.error;  // exec failed
            report.pid = -1;
        }
    }
    close(pipes[0]);
    return report.pid;
}

}  // namespace vtv
