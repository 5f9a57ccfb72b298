// vtv run: plays scenarios.
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/core/scenario.h"
#include "json_views.h"
#include "junit.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

struct RunOptions {
    std::vector<std::string> files;
    std::string junit;
    std::string keep;
    bool check = false;
};

// Gone when the scenarios are through, unless it is wanted.
class Folder {
  public:
    explicit Folder(const std::string& kept) : kept_(!kept.empty()) {
        if (kept_) {
            path_ = fs::absolute(kept).string();
            fs::create_directories(path_);
            return;
        }
        path_ = (fs::temp_directory_path() / "vtv-run-XXXXXX").string();
        if (mkdtemp(path_.data()) == nullptr) {
            throw vtv::Error(vtv::ErrorKind::kPlatform,
                             path_ + ": cannot be made: " + std::strerror(errno));
        }
    }
    ~Folder() {
        std::error_code ignored;
        if (!kept_) {
            fs::remove_all(path_, ignored);
        }
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& Path() const { return path_; }

  private:
    bool kept_;
    std::string path_;
};

// Where they are looked for after a run that ends with 2, whatever else is printed.
void PrintProblems(const std::vector<std::string>& problems) {
    std::cout.flush();
    for (const std::string& problem : problems) {
        std::cerr << problem << '\n';
    }
}

void PrintHeading(Look look, const char* verdict, const std::string& title,
                  const std::string& file) {
    std::cout << Paint(look, verdict) << title << Paint(Look::kDim, "  " + file) << '\n';
}

void Print(const host::ScenarioResult& result) {
    PrintHeading(result.Passed() ? Look::kGood : Look::kBad,
                 result.Passed()           ? "passed  "
                 : result.problems.empty() ? "FAILED  "
                                           : "BROKEN  ",
                 result.title, result.file);
    for (const host::StepResult& step : result.steps) {
        if (step.failures.empty()) {
            continue;
        }
        std::cout << "  " << step.name << '\n';
        for (const std::string& failure : step.failures) {
            std::cout << "    " << failure << '\n';
        }
    }
}

std::string Count(size_t count) {
    return std::to_string(count) + (count == 1 ? " scenario" : " scenarios");
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
    if (scenario.problems.empty()) {
        return host::PlayScenario(scenario, provider, dir);
    }
    host::ScenarioResult result;
    result.file = scenario.file;
    result.title = scenario.title;
    result.problems = scenario.problems;
    return result;
}

void Run(Common& common, const RunOptions& options) {
    const std::vector<host::Scenario> scenarios = Read(options.files);
    if (options.check) {
        Check(common, scenarios);
        return;
    }
    const std::string provider = ProviderFile(common);
    const Folder folder(options.keep);
    std::vector<host::ScenarioResult> results;
    Json::Value json(Json::arrayValue);
    size_t failed = 0;
    size_t broken = 0;
    for (const host::Scenario& scenario : scenarios) {
        const std::string dir = folder.Path() + "/" + std::to_string(results.size() + 1) + "-" +
                                fs::path(scenario.file).stem().string();
        results.push_back(Play(scenario, provider, dir));
        const host::ScenarioResult& result = results.back();
        broken += result.problems.empty() ? 0 : 1;
        failed += result.Passed() || !result.problems.empty() ? 0 : 1;
        json.append(ToJson(result));
        if (!common.json) {
            Print(result);
        }
        PrintProblems(result.problems);
    }
    if (!options.junit.empty()) {
        WriteFile(options.junit, JUnit(results));
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << Count(results.size()) << ", " << failed << " failed"
                  << (broken == 0 ? "" : ", " + std::to_string(broken) + " broken") << '\n';
    }
    common.exitCode = broken != 0 ? kUsage : failed != 0 ? kNo : kOk;
}

}  // namespace

void AddRun(CLI::App& app, Common& common) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* verb =
        AddVerb(app, common, "run", "Play scenarios, each on a new TV of its own",
                "  vtv run setup-google.toml\n"
                "  vtv run scenarios --junit results.xml          all scenarios of a folder\n"
                "  vtv run --check setup-google.toml              only: is it written right?\n"
                "  vtv press voice-wake-up --record mine.toml && vtv run mine.toml\n\n"
                "docs/scenarios.md describes the file. Ends with 1 when a scenario failed, with 2 "
                "when one is broken: all that is wrong with it is told, and the others are played.",
                kProvider | kJson);
    verb->add_option("FILE", options->files, "Scenarios (TOML), or folders of them")->required();
    CLI::Option* check =
        verb->add_flag("--check", options->check, "Check the scenarios whole, and play none")
            ->excludes(verb->get_option("--provider"));
    verb->add_option("--junit", options->junit, "Write the results as JUnit XML")
        ->type_name("FILE")
        ->excludes(check);
    verb->add_option("--keep", options->keep, "Keep the TVs, in this folder")
        ->type_name("FOLDER")
        ->excludes(check);
    verb->callback([&common, options] { Run(common, *options); });
}

}  // namespace cli
