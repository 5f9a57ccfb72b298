// A provider is a guest in the settings application's process and leaves it as it was.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>

#include "contract_subject.h"
#include "process_tree.h"
#include "program/counted.h"
#include "virtual-tv/virtual_tv.h"

extern char** environ;

namespace host {

namespace {

namespace fs = std::filesystem;

void LiveAndDie(const std::string& file) {
    const Provider provider(file);
    UsePage(provider);
}

std::string TemporaryFile() {
    return (fs::temp_directory_path() / "printed").string();
}

void PrintsNothing(const std::string& file) {
    const int printed = open(TemporaryFile().c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    Require(printed >= 0, "no temporary file");
    dup2(printed, STDOUT_FILENO);
    dup2(printed, STDERR_FILENO);
    LiveAndDie(file);
    std::fflush(nullptr);
    struct stat info = {};
    fstat(printed, &info);
    Require(info.st_size == 0, program::Counted(static_cast<size_t>(info.st_size), "byte") +
                                   (info.st_size == 1 ? " is" : " are") +
                                   " printed to the host's output");
}

bool SameAction(const struct sigaction& a, const struct sigaction& b) {
    return a.sa_handler == b.sa_handler && a.sa_flags == b.sa_flags;
}

void LeavesSignalsAlone(const std::string& file) {
    std::map<int, struct sigaction> before;
    for (int signal = 1; signal < NSIG; ++signal) {
        sigaction(signal, nullptr, &before[signal]);
    }
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    LiveAndDie(file);
    for (const auto& [signal, action] : before) {
        struct sigaction now = {};
        sigaction(signal, nullptr, &now);
        Require(SameAction(action, now),
                std::string("the host's handling of a signal is changed: ") + strsignal(signal));
    }
    sigset_t maskNow;
    sigprocmask(SIG_SETMASK, nullptr, &maskNow);
    for (int signal = 1; signal < NSIG; ++signal) {
        Require(sigismember(&mask, signal) == sigismember(&maskNow, signal),
                std::string("a signal is blocked or let in: ") + strsignal(signal));
    }
}

void LeavesTimersAlone(const std::string& file) {
    constexpr unsigned kSeconds = 3600;
    alarm(kSeconds);
    LiveAndDie(file);
    const unsigned left = alarm(0);
    Require(left > kSeconds - 600 && left <= kSeconds,
            "the host's alarm() in " + std::to_string(kSeconds) + " seconds is now in " +
                std::to_string(left));
}

mode_t FileMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

void LeavesFolderAlone(const std::string& file) {
    const fs::path folder = fs::current_path();
    const mode_t mask = FileMask();
    LiveAndDie(file);
    Require(fs::current_path() == folder,
            "the host's working folder is now " + fs::current_path().string());
    Require(FileMask() == mask, "the host's umask is changed");
}

std::vector<std::string> Environment() {
    std::vector<std::string> all;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        all.emplace_back(*variable);
    }
    std::sort(all.begin(), all.end());
    return all;
}

void LeavesEnvironmentAlone(const std::string& file) {
    const std::vector<std::string> before = Environment();
    LiveAndDie(file);
    const std::vector<std::string> after = Environment();
    std::vector<std::string> changed;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(changed));
    Require(changed.empty(), "the host's environment is changed: " +
                                 (changed.empty() ? "" : changed.front().substr(0, 60)));
}

void LeavesLocaleAlone(const std::string& file) {
    const std::string before = setlocale(LC_ALL, nullptr);
    LiveAndDie(file);
    const std::string after = setlocale(LC_ALL, nullptr);
    Require(before == after, "the host's locale was " + before + " and is now " + after);
}

std::map<int, std::string> Descriptors() {
    std::map<int, std::string> open;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = fs::read_symlink(entry.path(), ignored).string();
        if (target.find("/fd") == std::string::npos) {  // the directory that is being read
            open[std::atoi(entry.path().filename().c_str())] = target;
        }
    }
    return open;
}

void LeavesDescriptorsAlone(const std::string& file) {
    LiveAndDie(file);  // the TV opens some of its own when it is first asked
    const std::map<int, std::string> before = Descriptors();
    LiveAndDie(file);
    const std::map<int, std::string> after = Descriptors();
    for (const auto& [descriptor, target] : before) {
        const auto now = after.find(descriptor);
        Require(now != after.end() && now->second == target,
                "descriptor " + std::to_string(descriptor) + " of the host is closed or another");
    }
    for (const auto& [descriptor, target] : after) {
        Require(before.count(descriptor) == 1,
                "descriptor " + std::to_string(descriptor) + " is left open: " + target);
    }
}

void StartsNoThread(const std::string& file) {
    const Provider provider(file);
    UsePage(provider);
    const auto threads = std::distance(fs::directory_iterator("/proc/self/task"), {});
    Require(threads == 1,
            "the process has " + std::to_string(threads) + " threads in place of one");
}

void StartsNoProcess(const std::string& file) {
    const Provider provider(file);
    UsePage(provider);
    Require(RunningDescendants() == 0, "a process is started that the TV does not know of");
}

}  // namespace

std::vector<ContractCheck> ProcessChecks() {
    return {
        {"prints-nothing", "Nothing is printed: the standard streams are the host's.",
         PrintsNothing},
        {"leaves-signals-alone", "The handling and blocking of signals stays the host's.",
         LeavesSignalsAlone},
        {"leaves-timers-alone", "The host's alarm() stays set.", LeavesTimersAlone},
        {"leaves-the-folder-alone", "The working folder and the umask stay the host's.",
         LeavesFolderAlone},
        {"leaves-the-environment-alone", "The environment variables stay the host's.",
         LeavesEnvironmentAlone},
        {"leaves-the-locale-alone", "The locale stays the host's.", LeavesLocaleAlone},
        {"leaves-descriptors-alone",
         "No descriptor of the host is closed, and none is left open by a life.",
         LeavesDescriptorsAlone},
        {"starts-no-thread", "The provider has no thread of its own.", StartsNoThread},
        {"starts-no-process", "The provider starts no process but through the TV.",
         StartsNoProcess},
    };
}

}  // namespace host
