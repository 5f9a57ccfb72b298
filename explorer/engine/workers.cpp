#include "workers.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

#include "program/progress.h"

namespace explorer {

namespace {

using Clock = std::chrono::steady_clock;

// Shared with the workers, so that they see it even when only the starting process got the signal.
std::atomic<int>* interrupted = nullptr;
double patience = 20;
std::uint64_t totalRuns = 0;
const Clock::time_point programBegan = Clock::now();

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Who cannot wait for the end of what was begun sends the signal again.
void OnInterrupt(int signal) {
    std::signal(signal, SIG_DFL);
    if (interrupted != nullptr) {
        *interrupted = signal;
    }
}

template <typename T>
T* NewShared() {
    void* memory =
        mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory for a worker");
    }
    return new (memory) T();
}

struct Worker {
    int task = 0;
    pid_t pid = 0;
    int pipe = -1;
    Shared* shared = nullptr;
    std::string bytes;
    std::uint64_t lastRuns = 0;
    Clock::time_point lastProgress = Clock::now();
    bool killed = false;
};

void WriteAll(int file, const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t size = write(file, bytes.data() + written, bytes.size() - written);
        if (size <= 0) {
            _exit(3);
        }
        written += static_cast<std::size_t>(size);
    }
}

Worker Start(int task, const std::function<std::string(int, Shared&)>& run) {
    Worker worker;
    worker.task = task;
    worker.shared = NewShared<Shared>();
    int ends[2];
    std::fflush(nullptr);
    worker.pid = pipe(ends) == 0 ? fork() : -1;
    if (worker.pid < 0) {
        throw std::runtime_error("cannot start a worker process");
    }
    if (worker.pid == 0) {
        close(ends[0]);
        for (const int signal : kEndingSignals) {
            std::signal(signal, SIG_IGN);
        }
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::string bytes;
        try {
            bytes = run(task, *worker.shared);
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "vtv explore: %s\n", exception.what());
            _exit(2);
        }
        WriteAll(ends[1], bytes);
        _exit(0);
    }
    close(ends[1]);
    worker.pipe = ends[0];
    return worker;
}

WorkerResult Finish(Worker& worker) {
    WorkerResult result;
    int status = 0;
    waitpid(worker.pid, &status, 0);
    close(worker.pipe);
    result.task = worker.task;
    result.bytes = std::move(worker.bytes);
    result.step = worker.shared->step;
    if (worker.killed) {
        result.trouble = "does not come to an end";
    } else if (WIFSIGNALED(status)) {
        result.trouble = "crashes (signal " + std::to_string(WTERMSIG(status)) + ")";
    } else if (WEXITSTATUS(status) != 0) {
        munmap(worker.shared, sizeof(Shared));
        throw std::runtime_error("a worker process failed");
    }
    const Choices& choices = worker.shared->choices;
    result.path.assign(choices.Path(), choices.Path() + choices.Depth());
    totalRuns += worker.shared->runs;
    munmap(worker.shared, sizeof(Shared));
    return result;
}

void CheckForHang(Worker& worker) {
    const std::uint64_t runs = worker.shared->runs;
    if (runs != worker.lastRuns) {
        worker.lastRuns = runs;
        worker.lastProgress = Clock::now();
    } else if (std::chrono::duration<double>(Clock::now() - worker.lastProgress).count() >
               patience) {
        worker.killed = true;
        kill(worker.pid, SIGKILL);
    }
}

void TellProgress(const std::deque<Worker>& workers, const WorkOptions& options, int done,
                  int count) {
    static Clock::time_point told;
    if (!options.progress || Clock::now() - told < std::chrono::milliseconds(200)) {
        return;
    }
    told = Clock::now();
    std::uint64_t runs = totalRuns;
    for (const Worker& worker : workers) {
        runs += worker.shared->runs;
    }
    const double rate = static_cast<double>(runs) / std::max(TotalSeconds(), 0.001);
    program::ShowProgress(std::to_string(done) + " of " + std::to_string(count) + " parts, " +
                          std::to_string(runs) + ' ' + options.what + ", " +
                          std::to_string(static_cast<std::uint64_t>(rate)) + " a second");
}

}  // namespace

void SetPatience(double seconds) {
    patience = seconds;
}

bool IsInterrupted() {
    return EndingSignal() != 0;
}

int EndingSignal() {
    return interrupted != nullptr ? interrupted->load() : 0;
}

std::uint64_t TotalRuns() {
    return totalRuns;
}

double TotalSeconds() {
    return std::chrono::duration<double>(Clock::now() - programBegan).count();
}

void Work(int count, const WorkOptions& options,
          const std::function<std::string(int, Shared&)>& task,
          const std::function<bool(const WorkerResult&)>& finished) {
    if (interrupted == nullptr) {
        interrupted = NewShared<std::atomic<int>>();
        for (const int signal : kEndingSignals) {
            if (std::signal(signal, OnInterrupt) == SIG_IGN) {
                std::signal(signal, SIG_IGN);  // as nohup wants it
            }
        }
        std::signal(SIGPIPE, SIG_IGN);
    }
    std::deque<int> waiting;
    for (int i = 0; i < count; ++i) {
        waiting.push_back(i);
    }
    const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t limit =
        options.workers > 0 ? static_cast<std::size_t>(options.workers) : processors;
    std::deque<Worker> workers;
    int done = 0;
    const auto goOn = [&] {
        return !waiting.empty() && !IsInterrupted() && !(options.stop && options.stop());
    };
    while (!workers.empty() || goOn()) {
        while (workers.size() < limit && goOn()) {
            workers.push_back(Start(waiting.front(), task));
            waiting.pop_front();
        }
        std::vector<pollfd> files;
        files.reserve(workers.size());
        for (const Worker& worker : workers) {
            files.push_back({worker.pipe, POLLIN, 0});
        }
        poll(files.data(), files.size(), 200);
        for (std::size_t i = files.size(); i-- > 0;) {
            Worker& worker = workers[i];
            CheckForHang(worker);
            if (files[i].revents == 0) {
                continue;
            }
            char buffer[1 << 16];
            const ssize_t size = read(worker.pipe, buffer, sizeof(buffer));
            if (size > 0) {
                worker.bytes.append(buffer, static_cast<std::size_t>(size));
                continue;
            }
            const WorkerResult result = Finish(worker);
            workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(i));
            if (finished(result)) {
                waiting.push_front(result.task);
            } else {
                ++done;
            }
        }
        TellProgress(workers, options, done, count);
    }
    if (options.progress) {
        program::ClearProgress();
    }
}

}  // namespace explorer
