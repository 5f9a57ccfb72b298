#include "process_tree.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "virtual-tv/model/error.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr std::chrono::seconds kGiveUp(5);

struct Process {
    pid_t pid = 0;
    char state = ' ';
};
using ProcessesByParent = std::multimap<pid_t, Process>;

// "123 (any name, also with ) in it) S 122 ..."
bool ParseStat(const std::string& stat, Process* process, pid_t* parent) {
    const size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string::npos) {
        return false;
    }
    process->pid = std::atoi(stat.c_str());
    std::istringstream rest(stat.substr(nameEnd + 1));
    return static_cast<bool>(rest >> process->state >> *parent);
}

// With an error when they cannot be told: what was found until then is not all.
ProcessesByParent AllProcesses(std::error_code& error) {
    ProcessesByParent all;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        // A process that ends meanwhile makes the read fail: then there is nothing to parse.
        std::ostringstream stat;
        stat << std::ifstream(entry->path() / "stat").rdbuf();
        Process process;
        pid_t parent = 0;
        if (ParseStat(stat.str(), &process, &parent)) {
            all.emplace(parent, process);
        }
    }
    return all;
}

std::vector<Process> Descendants(const std::set<pid_t>& spare, std::error_code& error) {
    const ProcessesByParent all = AllProcesses(error);
    std::vector<Process> found;
    std::vector<pid_t> parents = {getpid()};
    while (!parents.empty()) {
        const auto [begin, end] = all.equal_range(parents.back());
        parents.pop_back();
        for (auto child = begin; child != end; ++child) {
            if (spare.count(child->second.pid) == 0) {
                found.push_back(child->second);
                parents.push_back(child->second.pid);
            }
        }
    }
    return found;
}

}  // namespace

void AdoptOrphans() {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

size_t RunningDescendants() {
    size_t running = 0;
    std::error_code error;
    const std::vector<Process> descendants = Descendants({}, error);
    if (error) {  // nobody may take it for "none"
        throw vtv::Error(vtv::ErrorKind::kPlatform, "/proc: cannot be read: " + error.message());
    }
    for (const Process& process : descendants) {
        running += process.state != 'Z' && process.state != 'X' ? 1 : 0;
    }
    return running;
}

void EndDescendants(const std::set<pid_t>& spare) {
    const auto giveUp = std::chrono::steady_clock::now() + kGiveUp;
    std::error_code unknown;  // then those that were found are ended
    std::vector<Process> left = Descendants(spare, unknown);
    while (!left.empty() && std::chrono::steady_clock::now() < giveUp) {
        for (const Process& process : left) {
            kill(process.pid, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        // Only this process's own children can be collected; the others become its children.
        for (const Process& process : left) {
            waitpid(process.pid, nullptr, WNOHANG);
        }
        left = Descendants(spare, unknown);
    }
}

}  // namespace host
