#include "supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>

#include "host/page/provider.h"
#include "process_tree.h"
#include "program/counted.h"
#include "verdict_frame.h"
#include "virtual-tv/virtual_tv.h"

namespace fs = std::filesystem;

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kLongestSpeech = size_t{64} * 1024;
constexpr size_t kLongestNote = 256;
constexpr int kCannotSay = 4;

// What the task's process does now; shared with its supervisor.
char* note = nullptr;

// ---------------------------------------------------------------------------------------------
// In the task's process
// ---------------------------------------------------------------------------------------------

struct Speaker {
    pid_t process = 0;
    int descriptor = -1;
    std::string token;
    bool passed = false;
} speaker;

void Say(Outcome outcome, std::string why) {
    why.resize(std::min(why.size(), kLongestSpeech / 4));
    const std::string frame = ToFrame(speaker.token, outcome, why);
    if (write(speaker.descriptor, frame.data(), frame.size()) !=
        static_cast<ssize_t>(frame.size())) {
        _exit(kCannotSay);
    }
}

[[noreturn]] void EndTask(Outcome outcome, const std::string& why) {
    if (getpid() == speaker.process) {
        Say(outcome, why);
    } else {
        Say(Outcome::kFailed,
            "a copy of the process, made by the library with fork(), came back to the host");
    }
    _exit(1);
}

// The first exit handler of the process and therefore the last to run: what the task has loaded has
// had its say, and could still end the process without a pass.
void SayPassedLast(int status, void*) {
    if (speaker.passed && status == 0 && getpid() == speaker.process) {
        Say(Outcome::kPassed, "");
    }
    _exit(status);
}

void PutAside(int descriptor, int flags) {
    const int nowhere = open("/dev/null", flags);
    if (nowhere >= 0) {
        dup2(nowhere, descriptor);
        close(nowhere);
    }
}

// Leaves the task nothing of the starting process's but what it needs.
void Prepare(const Supervision& supervision, int speech) {
    setsid();  // kill(0, ...) of the task ends only itself, and no terminal is its own
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        std::signal(signal, SIG_DFL);
    }
    PutAside(STDIN_FILENO, O_RDONLY);
    PutAside(STDOUT_FILENO, O_WRONLY);
    PutAside(STDERR_FILENO, O_WRONLY);
    close_range(3, static_cast<unsigned>(speech) - 1, 0);
    close_range(static_cast<unsigned>(speech) + 1, ~0U, 0);
    setenv("TMPDIR", supervision.folder.c_str(), 1);
    vtv::SyncNothing();
}

[[noreturn]] void RunTask(const Supervision& supervision, int speech, const std::string& token) {
    Prepare(supervision, speech);
    speaker = {getpid(), speech, token, false};
    on_exit(SayPassedLast, nullptr);
    Outcome outcome = Outcome::kFailed;
    std::string why;
    try {
        (*supervision.task)(supervision.folder);
        outcome = Outcome::kPassed;
    } catch (const ProviderError& error) {
        outcome = Outcome::kUnusable;
        why = error.what();
    } catch (const vtv::Error& error) {
        outcome = Outcome::kNotRun;
        why = error.what();
    } catch (const std::exception& error) {
        why = std::string("an exception left the provider: ") + error.what();
    } catch (...) {
        why = "an exception that is no std::exception left the provider";
    }
    if (outcome != Outcome::kPassed || getpid() != speaker.process) {
        EndTask(outcome, why);
    }
    speaker.passed = true;
    std::exit(0);
}

// ---------------------------------------------------------------------------------------------
// In its supervisor
// ---------------------------------------------------------------------------------------------

struct Ending {
    bool ended = false;      // in time
    bool abandoned = false;  // the starting process is gone
    int status = 0;
    size_t leftBehind = 0;
    std::string speech;
};

// Takes what is there; false at the end.
bool Hear(int speech, std::string* heard) {
    char buffer[4096];
    const ssize_t size = read(speech, buffer, sizeof buffer);
    if (size > 0 && heard->size() < kLongestSpeech) {
        heard->append(buffer, static_cast<size_t>(size));
    }
    return size > 0 || (size < 0 && (errno == EAGAIN || errno == EINTR));
}

int MillisecondsUntil(Clock::time_point time) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    return static_cast<int>(std::clamp<long>(left, 0, 1000));
}

// Until the task's process ends, the time is over, or the starting process is gone.
Ending Watch(pid_t task, const Supervision& supervision, int speech, int childSignals) {
    Ending ending;
    const Clock::time_point deadline = Clock::now() + supervision.limit;
    pollfd fds[] = {
        {speech, POLLIN, 0}, {childSignals, POLLIN, 0}, {supervision.lifeline, POLLIN, 0}};
    while (!ending.ended && !ending.abandoned && Clock::now() < deadline) {
        poll(fds, std::size(fds), MillisecondsUntil(deadline));
        if (fds[0].revents != 0 && !Hear(speech, &ending.speech)) {
            fds[0].fd = -1;
        }
        signalfd_siginfo ignored;
        while (read(childSignals, &ignored, sizeof ignored) > 0) {
        }
        int status = 0;
        for (pid_t pid = waitpid(-1, &status, WNOHANG); pid > 0;
             pid = waitpid(-1, &status, WNOHANG)) {
            if (pid == task) {
                ending.ended = true;
                ending.status = status;
            }
        }
        ending.abandoned = fds[2].revents != 0;
    }
    ending.leftBehind = RunningDescendants();
    EndDescendants();
    while (fds[0].fd >= 0 && poll(fds, 1, 0) > 0 && Hear(speech, &ending.speech)) {
    }
    return ending;
}

std::string Noted() {
    const std::string what(note, strnlen(note, kLongestNote));
    return what.empty() ? "" : " (" + what + ")";
}

Verdict JudgeEnding(const Ending& ending, const Supervision& supervision,
                    const std::string& token) {
    const std::optional<Verdict> said = ParseFrames(token, ending.speech);
    if (!ending.ended) {
        return {Outcome::kEnded, "did not come to an end in " +
                                     program::Counted(supervision.limit.count(), "second") +
                                     Noted()};
    }
    if (WIFSIGNALED(ending.status)) {
        return {Outcome::kEnded,
                std::string("crashed: ") + strsignal(WTERMSIG(ending.status)) + Noted()};
    }
    const std::string code = std::to_string(WEXITSTATUS(ending.status));
    if (!said) {
        return {Outcome::kEnded,
                "ended the process with " + code + " before the check was done" + Noted()};
    }
    if (said->outcome != Outcome::kPassed) {
        return *said;
    }
    if (WEXITSTATUS(ending.status) != 0) {
        return {Outcome::kEnded, "ended the process with " + code + " after the check was done"};
    }
    if (ending.leftBehind > 0) {
        return {Outcome::kEnded, "left a process of its own running"};
    }
    return *said;
}

void RemoveFolder(const std::string& folder) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

void Report(int report, const Verdict& verdict) {
    char head[32];
    std::snprintf(head, sizeof head, "%d %f\n", static_cast<int>(verdict.outcome), verdict.seconds);
    const std::string text = head + verdict.why + '\0';
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t size = write(report, text.data() + written, text.size() - written);
        if (size <= 0) {
            return;
        }
        written += static_cast<size_t>(size);
    }
}

Verdict Supervised(const Supervision& supervision, bool* abandoned) {
    const Clock::time_point start = Clock::now();
    const std::string token = RandomToken();
    int speech[2];
    sigset_t childSignal;
    sigemptyset(&childSignal);
    sigaddset(&childSignal, SIGCHLD);
    sigprocmask(SIG_BLOCK, &childSignal, nullptr);
    const int childSignals = signalfd(-1, &childSignal, SFD_NONBLOCK | SFD_CLOEXEC);
    note = static_cast<char*>(
        mmap(nullptr, kLongestNote, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (mkdir(supervision.folder.c_str(), 0700) != 0 || pipe2(speech, O_CLOEXEC) != 0 ||
        childSignals < 0 || note == MAP_FAILED) {
        return {Outcome::kNotRun, std::string("a check could not be run: ") + std::strerror(errno)};
    }
    const pid_t task = fork();
    if (task == 0) {
        RunTask(supervision, speech[1], token);
    }
    close(speech[1]);
    if (task < 0) {
        return {Outcome::kNotRun, std::string("a check could not be run: ") + std::strerror(errno)};
    }
    fcntl(speech[0], F_SETFL, O_NONBLOCK);
    const Ending ending = Watch(task, supervision, speech[0], childSignals);
    *abandoned = ending.abandoned;
    Verdict verdict = JudgeEnding(ending, supervision, token);
    verdict.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return verdict;
}

}  // namespace

void Supervise(const Supervision& supervision) {
    setpgid(0, 0);  // Ctrl-C is for the starting process, which ends this one
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        std::signal(signal, SIG_IGN);
    }
    AdoptOrphans();
    bool abandoned = false;
    Verdict verdict;
    try {
        verdict = Supervised(supervision, &abandoned);
    } catch (const std::exception& error) {
        verdict = {Outcome::kNotRun, std::string("a check could not be run: ") + error.what(), 0};
    }
    RemoveFolder(supervision.folder);
    if (!abandoned) {
        Report(supervision.report, verdict);
    }
    pollfd lifeline = {supervision.lifeline, POLLIN, 0};
    if (poll(&lifeline, 1, 0) > 0) {
        // Where the task has ended the watcher of the run's folder as well, nobody else removes it;
        // the last supervisor finds it empty.
        rmdir(fs::path(supervision.folder).parent_path().c_str());
    }
    _exit(0);
}

std::optional<Verdict> ParseReport(const std::string& report) {
    Verdict verdict;
    int outcome = 0;
    const size_t headEnd = report.find('\n');
    if (headEnd == std::string::npos || report.back() != '\0' ||
        std::sscanf(report.c_str(), "%d %lf", &outcome, &verdict.seconds) != 2) {
        return std::nullopt;
    }
    verdict.outcome = static_cast<Outcome>(outcome);
    verdict.why = report.substr(headEnd + 1, report.size() - headEnd - 2);
    return verdict;
}

void FailTask(const std::string& why) {
    EndTask(Outcome::kFailed, why);
}

void Doing(const std::string& what) {
    if (note != nullptr) {
        std::snprintf(note, kLongestNote, "%s", what.c_str());
    }
}

}  // namespace host
