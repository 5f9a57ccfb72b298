#include "gallery_workers.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <vector>

#include "host/core/temporary_folder.h"
#include "program/progress.h"
#include "program/write_file.h"
#include "virtual-tv/model/error.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/text_file.h"

namespace window {

namespace {

struct Shared {
    std::atomic<size_t> next{0};
};

std::string ResultFile(const std::string& folder, size_t task) {
    return folder + "/" + std::to_string(task);
}

// Takes tasks until there are none; the exit code of its process.
int Work(Shared& shared, size_t count, const std::string& folder, int done,
         const std::function<Json::Value(size_t task)>& act) {
    try {
        for (size_t task = shared.next++; task < count; task = shared.next++) {
            const std::string result = vtv::CompactJson(act(task));
            const std::string problem = program::WriteFile(ResultFile(folder, task), result);
            if (!problem.empty() || write(done, ".", 1) != 1) {
                throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
            }
        }
        return 0;
    } catch (const std::exception& error) {
        program::WriteFile(folder + "/failure", error.what());
        return 1;
    }
}

void WaitForAll(const std::vector<pid_t>& workers, int done, size_t count, bool tellsProgress) {
    size_t through = 0;
    char bytes[64];
    for (ssize_t more = read(done, bytes, sizeof bytes); more > 0;
         more = read(done, bytes, sizeof bytes)) {
        through += static_cast<size_t>(more);
        if (tellsProgress) {
            program::ShowProgress(std::to_string(through) + " of " + std::to_string(count));
        }
    }
    if (tellsProgress) {
        program::ClearProgress();
    }
    bool failed = false;
    int status = 0;
    for (const pid_t worker : workers) {
        failed = waitpid(worker, &status, 0) != worker || !WIFEXITED(status) ||
                 WEXITSTATUS(status) != 0 || failed;
    }
    if (failed || through < count) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "");
    }
}

}  // namespace

Json::Value DoInProcesses(size_t count, size_t processes, bool tellsProgress,
                          const std::function<Json::Value(size_t task)>& act) {
    const host::TemporaryFolder folder("vtv-tasks");
    void* memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    int done[2] = {-1, -1};
    if (memory == MAP_FAILED || pipe(done) != 0) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "No memory is left, or no descriptor.");
    }
    auto* shared = new (memory) Shared;
    const pid_t parent = getpid();
    std::vector<pid_t> workers;
    for (size_t i = 0; i < processes; ++i) {
        workers.push_back(fork());
        if (workers.back() == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            close(done[0]);
            const int code =
                getppid() == parent ? Work(*shared, count, folder.Path(), done[1], act) : 1;
            // What was made in the process is let go as its own end does.
            std::_Exit(code);
        }
    }
    close(done[1]);
    try {
        WaitForAll(workers, done[0], count, tellsProgress);
    } catch (const vtv::Error&) {
        std::string why = "A process ended before it was through.";
        try {
            why = vtv::ReadTextFile(folder.Path() + "/failure");
        } catch (const vtv::Error&) {
            why += " Make the gallery again with --jobs 1.";
        }
        throw vtv::Error(vtv::ErrorKind::kPlatform, why);
    }
    close(done[0]);
    munmap(memory, sizeof(Shared));
    Json::Value all(Json::arrayValue);
    for (size_t task = 0; task < count; ++task) {
        const std::string file = ResultFile(folder.Path(), task);
        const Json::Value result = vtv::JsonText(file, vtv::ReadTextFile(file)).Root();
        for (const Json::Value& one : result) {
            all.append(one);
        }
    }
    return all;
}

}  // namespace window
