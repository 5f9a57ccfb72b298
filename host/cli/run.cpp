// vtv run: plays scenarios.
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
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

void Print(const host::ScenarioResult& result) {
    std::cout << (result.Passed() ? Paint(Look::kGood, "passed  ") : Paint(Look::kBad, "FAILED  "))
              << result.title << Paint(Look::kDim, "  " + result.file) << '\n';
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

void Run(Common& common, const RunOptions& options) {
    std::vector<host::Scenario> scenarios;
    for (const std::string& file : options.files) {
        scenarios.push_back(host::LoadScenario(file));
    }
    const std::string provider = ProviderFile(common);
    const Folder folder(options.keep);
    std::vector<host::ScenarioResult> results;
    Json::Value json(Json::arrayValue);
    size_t failed = 0;
    for (const host::Scenario& scenario : scenarios) {
        const std::string dir = folder.Path() + "/" + std::to_string(results.size() + 1) + "-" +
                                fs::path(scenario.file).stem().string();
        results.push_back(host::PlayScenario(scenario, provider, dir));
        failed += results.back().Passed() ? 0 : 1;
        json.append(ToJson(results.back()));
        if (!common.json) {
            Print(results.back());
        }
    }
    if (!options.junit.empty()) {
        std::ofstream stream(options.junit);
        stream << JUnit(results);
        stream.close();
        if (!stream) {
            throw vtv::Error(vtv::ErrorKind::kPlatform, options.junit + ": cannot be written.");
        }
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << results.size() << (results.size() == 1 ? " scenario" : " scenarios") << ", "
                  << failed << " failed\n";
    }
    common.exitCode = failed == 0 ? kOk : kNo;
}

}  // namespace

void AddRun(CLI::App& app, Common& common) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* verb =
        AddVerb(app, common, "run", "Play scenarios, each on a new TV of its own",
                "  vtv run setup-google.toml\n"
                "  vtv run scenarios/*.toml --junit results.xml\n"
                "  vtv press voice-wake-up --record mine.toml && vtv run mine.toml\n\n"
                "docs/scenarios.md describes the file. Ends with 1 when a scenario failed.",
                kProvider | kJson);
    verb->add_option("FILE", options->files, "Scenarios (TOML)")->required();
    verb->add_option("--junit", options->junit, "Write the results as JUnit XML")
        ->type_name("FILE");
    verb->add_option("--keep", options->keep, "Keep the TVs, in this folder")->type_name("FOLDER");
    verb->callback([&common, options] { Run(common, *options); });
}

}  // namespace cli
