#include "supervised.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

#include "process_tree.h"
#include "supervisor.h"
#include "temporary_folder.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

// A supervisor that takes so much longer than its task may was stopped or hindered itself.
constexpr std::chrono::seconds kGrace(15);

volatile sig_atomic_t endingSignal = 0;

void OnEndingSignal(int signal) {
    endingSignal = signal;
}

[[noreturn]] void ThrowErrno(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

// What would end the process is noted in place of ending it, and let in only by ppoll().
class NotedSignals {
  public:
    NotedSignals() {
        sigset_t blocked;
        sigemptyset(&blocked);
        for (size_t i = 0; i < std::size(kSignals); ++i) {
            sigaddset(&blocked, kSignals[i]);
        }
        sigprocmask(SIG_BLOCK, &blocked, &outside_);
        struct sigaction action = {};
        action.sa_handler = OnEndingSignal;
        for (size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &action, &before_[i]);
        }
    }
    ~NotedSignals() {
        for (size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &before_[i], nullptr);
        }
        sigprocmask(SIG_SETMASK, &outside_, nullptr);
    }
    NotedSignals(const NotedSignals&) = delete;
    NotedSignals& operator=(const NotedSignals&) = delete;

    const sigset_t* Outside() const { return &outside_; }

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};
    sigset_t outside_;
    struct sigaction before_[std::size(kSignals)];
};

struct Watched {
    size_t task = 0;
    pid_t supervisor = 0;
    int report = -1;
    std::string heard;
    Clock::time_point deadline;
};

class Run {
  public:
    Run(const std::vector<SupervisedTask>& tasks, std::chrono::seconds limit,
        const std::function<void(size_t, const Verdict&)>& tell)
        : tasks_(tasks), limit_(limit), tell_(tell) {
        if (pipe2(lifeline_, O_CLOEXEC) != 0) {
            ThrowErrno("no pipe");
        }
        AdoptOrphans();
    }
    ~Run() {
        Abandon();
        close(lifeline_[0]);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    int ToTheEnd() {
        const size_t width = std::max(1U, std::thread::hardware_concurrency());
        endingSignal = 0;
        while (!running_.empty() || (next_ < tasks_.size() && endingSignal == 0)) {
            while (endingSignal == 0 && running_.size() < width && next_ < tasks_.size()) {
                Start(next_++);
            }
            Wait();
            if (endingSignal != 0) {
                Abandon();
                return endingSignal;
            }
        }
        return 0;
    }

  private:
    void Start(size_t task);
    void Wait();
    // True when the supervisor has ended.
    bool Listen(Watched& watched, bool readable);
    Verdict Collect(const Watched& watched);
    void TellInOrder();
    // Ends the supervisors that run, with all that is below them.
    void Abandon();

    const std::vector<SupervisedTask>& tasks_;
    std::chrono::seconds limit_;
    const std::function<void(size_t, const Verdict&)>& tell_;
    NotedSignals signals_;
    TemporaryFolder folder_{"vtv-validate"};
    int lifeline_[2] = {-1, -1};
    size_t next_ = 0;
    size_t told_ = 0;
    std::vector<Watched> running_;
    std::map<size_t, Verdict> verdicts_;  // not told yet
};

void Run::Start(size_t task) {
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        ThrowErrno("no pipe");
    }
    std::cout.flush();
    const pid_t supervisor = fork();
    if (supervisor == 0) {
        close(report[0]);
        close(lifeline_[1]);
        Supervise({&tasks_[task], folder_.Path() + "/" + std::to_string(task), limit_, lifeline_[0],
                   report[1]});
    }
    close(report[1]);
    if (supervisor < 0) {
        close(report[0]);
        ThrowErrno("no process");
    }
    running_.push_back({task, supervisor, report[0], "", Clock::now() + limit_ + kGrace});
}

void Run::Wait() {
    std::vector<pollfd> fds;
    fds.reserve(running_.size());
    for (const Watched& watched : running_) {
        fds.push_back({watched.report, POLLIN, 0});
    }
    const timespec second = {1, 0};
    if (ppoll(fds.data(), fds.size(), &second, signals_.Outside()) < 0) {
        return;
    }
    std::vector<Watched> still;
    for (size_t i = 0; i < running_.size(); ++i) {
        if (Listen(running_[i], fds[i].revents != 0)) {
            verdicts_[running_[i].task] = Collect(running_[i]);
        } else {
            still.push_back(running_[i]);
        }
    }
    running_ = std::move(still);
    TellInOrder();
}

bool Run::Listen(Watched& watched, bool readable) {
    if (readable) {
        char buffer[4096];
        const ssize_t size = read(watched.report, buffer, sizeof buffer);
        if (size > 0) {
            watched.heard.append(buffer, static_cast<size_t>(size));
        }
        return size == 0;
    }
    return Clock::now() > watched.deadline;
}

Verdict Run::Collect(const Watched& watched) {
    close(watched.report);
    const std::optional<Verdict> verdict = ParseReport(watched.heard);
    if (verdict) {
        waitpid(watched.supervisor, nullptr, 0);
        return *verdict;
    }
    // The task has got at its supervisor: what was below that is this process's to end now.
    std::set<pid_t> others = {folder_.Watcher()};
    for (const Watched& other : running_) {
        if (other.supervisor != watched.supervisor) {
            others.insert(other.supervisor);
        }
    }
    EndDescendants(others);
    return {Outcome::kEnded, "ended or stopped the process that watched it", 0};
}

void Run::TellInOrder() {
    for (auto verdict = verdicts_.find(told_); verdict != verdicts_.end();
         verdict = verdicts_.find(told_)) {
        tell_(told_++, verdict->second);
        verdicts_.erase(verdict);
    }
}

void Run::Abandon() {
    close(lifeline_[1]);
    lifeline_[1] = -1;
    const Clock::time_point giveUp = Clock::now() + kGrace;
    for (const Watched& watched : running_) {
        close(watched.report);
        while (waitpid(watched.supervisor, nullptr, WNOHANG) == 0 && Clock::now() < giveUp) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    running_.clear();
    EndDescendants({folder_.Watcher()});
}

}  // namespace

int RunSupervised(const std::vector<SupervisedTask>& tasks, std::chrono::seconds limit,
                  const std::function<void(size_t task, const Verdict& verdict)>& tell) {
    return Run(tasks, limit, tell).ToTheEnd();
}

}  // namespace host
