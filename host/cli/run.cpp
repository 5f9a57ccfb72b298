// vtv run: plays scenarios.
#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "host/core/scenario.h"
#include "host/core/scenario_processes.h"
#include "host/core/temporary_folder.h"
#include "json_views.h"
#include "junit.h"
#include "other_program.h"
#include "program/counted.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

struct RunOptions {
    std::vector<std::string> files;
    std::string junit;
    std::string keep;
    int jobs = 0;
    bool check = false;
    bool window = false;
};

// Gone when the scenarios are through, unless it is wanted.
class Folder {
  public:
    explicit Folder(const std::string& kept) {
        if (kept.empty()) {
            path_ = temporary_.emplace("vtv-run").Path();
            vtv::SyncNothing();
        } else {
            path_ = fs::absolute(kept).string();
            std::error_code error;
            fs::create_directories(path_, error);
            if (error) {
                throw vtv::Error(vtv::ErrorKind::kPlatform,
                                 kept + ": the TVs cannot be kept there: " + error.message() +
                                     ". Name a folder that can be made.");
            }
        }
    }

    const std::string& Path() const { return path_; }
    // What is not wanted makes room as soon as its scenario is through.
    void DoneWith(const std::string& tv) const {
        if (temporary_) {
            std::error_code ignored;
            fs::remove_all(tv, ignored);
        }
    }

  private:
    std::string path_;
    std::optional<host::TemporaryFolder> temporary_;
};

// Shared with the processes that play, which a signal to this one does not reach.
std::atomic<int>* endingSignal = nullptr;

bool GoOn() {
    return *endingSignal == 0;
}

void OnEndingSignal(int signal) {
    *endingSignal = signal;
}

// What would end the program is noted, so that it goes only to the end of a scenario's step; who
// cannot wait for that sends it again.
void NoteEndingSignals() {
    void* const shared = mmap(nullptr, sizeof *endingSignal, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        throw std::bad_alloc();
    }
    endingSignal = new (shared) std::atomic<int>(0);
    struct sigaction action = {};
    action.sa_handler = OnEndingSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) {  // as nohup wants it
            sigaction(signal, &action, nullptr);
        }
    }
}

// Where they are looked for after a run that ends with 2 or 4, whatever else is printed.
void PrintProblems(const std::vector<std::string>& problems) {
    std::cout.flush();
    for (const std::string& problem : problems) {
        std::cerr << program::OneLine(problem) << '\n';
    }
}

void PrintHeading(Look look, const char* verdict, const std::string& title,
                  const std::string& file) {
    std::cout << Paint(look, verdict) << program::OneLine(title) << Paint(Look::kDim, "  " + file)
              << '\n';
}

void Print(const host::ScenarioResult& result) {
    PrintHeading(result.Passed() ? Look::kGood : Look::kBad,
                 result.Passed()            ? "passed  "
                 : !result.problems.empty() ? "BROKEN  "
                 : !result.error.empty()    ? "ERROR   "
                 : result.Failed()          ? "FAILED  "
                                            : "stopped ",
                 result.title, result.file);
    for (const host::StepResult& step : result.steps) {
        if (step.failures.empty() && step.beside.empty()) {
            continue;
        }
        std::cout << "  " << program::OneLine(step.name) << '\n';
        for (const std::string& beside : step.beside) {
            std::cout << Paint(Look::kDim, "    beside the window: " + program::OneLine(beside))
                      << '\n';
        }
        for (const std::string& failure : step.failures) {
            std::cout << "    " << program::OneLine(failure) << '\n';
        }
    }
}

std::string Count(size_t count) {
    return program::Counted(count, "scenario");
}

std::vector<host::Scenario> Read(const std::vector<std::string>& files) {
    std::vector<host::Scenario> scenarios;
    for (const std::string& file : files) {
        std::error_code error;
        if (fs::is_directory(file, error)) {
            for (host::Scenario& scenario : host::ReadScenarios(file)) {
                scenarios.push_back(std::move(scenario));
            }
        } else {
            scenarios.push_back(host::ReadScenario(file));
        }
    }
    return scenarios;
}

void Check(Common& common, const std::vector<host::Scenario>& scenarios) {
    Json::Value json(Json::arrayValue);
    size_t broken = 0;
    for (const host::Scenario& scenario : scenarios) {
        const bool isSound = scenario.problems.empty();
        broken += isSound ? 0 : 1;
        json.append(ToJson(scenario));
        if (!common.json) {
            PrintHeading(isSound ? Look::kGood : Look::kBad, isSound ? "sound   " : "BROKEN  ",
                         scenario.title, scenario.file);
        }
        PrintProblems(scenario.problems);
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << Count(scenarios.size()) << ", " << broken << " broken\n";
    }
    common.exitCode = broken == 0 ? kOk : kUsage;
}

host::ScenarioResult Play(const host::Scenario& scenario, const std::string& provider,
                          const std::string& dir) {
    return scenario.problems.empty() ? host::PlayScenario(scenario, provider, dir, GoOn)
                                     : host::Unplayed(scenario);
}

// What came of the scenarios so far, told as it comes.
class Results {
  public:
    explicit Results(const Common& common) : common_(common) {}

    void Add(const host::ScenarioResult& result) {
        results_.push_back(result);
        broken_ += result.problems.empty() ? 0 : 1;
        failed_ += result.Failed() ? 1 : 0;
        notPlayed_ += result.error.empty() ? 0 : 1;
        if (!common_.json) {
            Print(result);
        }
        PrintProblems(result.problems);
        if (!result.error.empty()) {
            PrintProblems({result.error});
        }
        std::cout.flush();
    }

    void Conclude(const RunOptions& options) const {
        if (!options.junit.empty()) {
            WriteFile(options.junit, JUnit(results_));
        }
        if (common_.json) {
            Json::Value json(Json::arrayValue);
            for (const host::ScenarioResult& result : results_) {
                json.append(ToJson(result));
            }
            PrintJson(json);
        } else {
            std::cout << Count(results_.size()) << ", " << failed_ << " failed"
                      << (broken_ == 0 ? "" : ", " + std::to_string(broken_) + " broken")
                      << (notPlayed_ == 0
                              ? ""
                              : ", " + std::to_string(notPlayed_) + " could not be played")
                      << '\n';
        }
    }

    int ExitCode() const {
        return notPlayed_ != 0 ? kPlatform : broken_ != 0 ? kUsage : failed_ != 0 ? kNo : kOk;
    }

    // Of which all is told.
    std::string Whole() const {
        const auto isWhole = [](const host::ScenarioResult& result) {
            return result.Passed() || result.Failed() || !result.problems.empty() ||
                   !result.error.empty();
        };
        return std::to_string(std::count_if(results_.begin(), results_.end(), isWhole));
    }

  private:
    const Common& common_;
    std::vector<host::ScenarioResult> results_;
    size_t failed_ = 0;
    size_t broken_ = 0;
    size_t notPlayed_ = 0;  // to their end, although they are sound
};

// In a process of its own: it becomes the program that has the window. What would end this one goes
// to the end of the scenario there.
[[noreturn]] void PlayInWindow(const std::string& program, const host::Scenario& scenario,
                               const std::string& provider, const std::string& dir, int answer) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_IGN);
    }
    fcntl(answer, F_SETFD, 0);
    Become(program, {"play", "--provider", provider, "--tv", dir, "--answer",
                     std::to_string(answer), "--", scenario.file});
}

size_t Processes(int jobs) {
    return jobs > 0 ? static_cast<size_t>(jobs) : std::max(1U, std::thread::hardware_concurrency());
}

void Run(Common& common, const RunOptions& options) {
    const std::vector<host::Scenario> scenarios = Read(options.files);
    if (options.check) {
        Check(common, scenarios);
        return;
    }
    const std::string provider = ProviderFile(common);
    NoteEndingSignals();
    const Folder folder(options.keep);
    Results results(common);
    const std::string window = options.window ? WindowProgram() : "";
    const auto dirOf = [&](size_t i) {
        return folder.Path() + "/" + std::to_string(i + 1) + "-" +
               fs::path(scenarios[i].file).stem().string();
    };
    const auto play = [&](size_t i, int answer) {
        if (options.window && scenarios[i].problems.empty()) {
            PlayInWindow(window, scenarios[i], provider, dirOf(i), answer);
        }
        host::TellResult(answer, [&] { return Play(scenarios[i], provider, dirOf(i)); });
    };
    size_t told = 0;
    const auto tell = [&](const host::ScenarioResult& result) {
        results.Add(result);
        folder.DoneWith(dirOf(told++));
    };
    host::PlayInProcesses(scenarios, Processes(options.jobs), play, GoOn, tell);
    results.Conclude(options);
    common.exitCode = results.ExitCode();
    if (!GoOn()) {
        TellOfSignal(common, *endingSignal, results.Whole() + " of " + Count(scenarios.size()));
    }
}

}  // namespace

void AddRun(CLI::App& app, Common& common) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* verb =
        AddVerb(app, common, "run", "Play scenarios, each on a new TV of its own",
                "  vtv run setup-google.toml\n"
                "  vtv run scenarios --junit results.xml          all scenarios of a folder\n"
                "  vtv run scenarios --jobs 1                     one after the other\n"
                "  vtv run scenarios --window                     by the keys of the window\n"
                "  vtv run --check setup-google.toml              only: is it written right?\n"
                "  vtv press voice-wake-up --record mine.toml && vtv run mine.toml\n\n"
                "docs/scenarios.md describes the file. Ends with 1 when a scenario failed, with 2 "
                "when one is broken (all that is wrong with it is told), and with 4 when one could "
                "not be played to its end; the others are played all the same.",
                kProvider | kJson);
    verb->add_option("FILE", options->files, "Scenarios (TOML), or folders of them")->required();
    CLI::Option* check =
        verb->add_flag("--check", options->check, "Check the scenarios whole, and play none")
            ->excludes(verb->get_option("--provider"));
    verb->add_option("--junit", options->junit, "Write the results as JUnit XML")
        ->type_name("FILE")
        ->excludes(check);
    program::AddJobs(*verb, options->jobs)->excludes(check);
    verb->add_flag("--window", options->window,
                   "Play them in the window of vtv window, by its keys and without a display")
        ->excludes(check);
    verb->add_option("--keep", options->keep, "Keep the TVs, in this folder")
        ->type_name("FOLDER")
        ->excludes(check);
    verb->callback([&common, options] { Run(common, *options); });
}

}  // namespace cli
