// vtv validate: checks a provider against the host contract.
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/core/contract_checks.h"
#include "host/core/supervised.h"
#include "program/counted.h"
#include "program/findings.h"
#include "program/standard_output.h"
#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/model/text_file.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr char kModel[] = "farfield-eu";

struct ValidateOptions {
    std::string file;
    std::string filter;
    std::string format = "text";
    bool list = false;
    int timeout = 20;  // seconds, for each check
};

// A TV that stays on until the process ends, as it does for a settings application: the exit
// handlers of a provider may still ask it.
void TurnOnTv(const std::string& folder) {
    vtv::Tv::Create(folder + "/tv", vtv::FindModel(kModel));
    auto* powered = new PoweredTv(folder + "/tv");
    powered->tv.SetApplications(vtv::ApplicationMode::kRecord);
}

std::vector<host::ContractCheck> ChecksNamed(const std::string& filter) {
    std::vector<host::ContractCheck> checks;
    for (const host::ContractCheck& check : host::ContractChecks()) {
        if (std::string(check.name).find(filter) != std::string::npos) {
            checks.push_back(check);
        }
    }
    if (checks.empty()) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch,
                         "There is no check \"" + filter + "\". See: vtv validate --list");
    }
    return checks;
}

Json::Value CheckAsJson(const host::ContractCheck& check, const host::Verdict& verdict) {
    Json::Value json;
    json["name"] = check.name;
    json["description"] = check.description;
    json["passed"] = verdict.outcome == host::Outcome::kPassed;
    json["why"] = json["passed"].asBool() ? Json::Value() : Json::Value(verdict.why);
    json["seconds"] = verdict.seconds;
    return json;
}

void Print(const host::ContractCheck& check, const host::Verdict& verdict) {
    const bool passed = verdict.outcome == host::Outcome::kPassed;
    std::cout << (passed ? Paint(Look::kGood, "passed  ") : Paint(Look::kBad, "FAILED  "))
              << check.name << Paint(Look::kDim, std::string("  ") + check.description) << '\n';
    if (!passed) {
        std::cout << "        " << program::OneLine(verdict.why) << '\n';
    }
}

void RequireRun(const host::Verdict& verdict) {
    if (verdict.outcome == host::Outcome::kNotRun) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, verdict.why);
    }
}

// Whether the library can be loaded at all, before every check finds that it cannot. Throws
// ProviderError for a library that the loader refuses or that is no provider.
int TryToLoad(const std::string& file, std::chrono::seconds limit, host::Verdict* verdict) {
    const host::SupervisedTask load = [&file](const std::string& folder) {
        TurnOnTv(folder);
        host::ProviderLibrary(file).Entry();
    };
    const int signal = host::RunSupervised(
        {load}, limit, [verdict](size_t, const host::Verdict& told) { *verdict = told; });
    if (verdict->outcome == host::Outcome::kUnusable) {
        throw host::ProviderError(host::ProviderError::Kind::kUnusable, verdict->why);
    }
    RequireRun(*verdict);
    verdict->why = "while the library was loaded and unloaded: " + verdict->why;
    return signal;
}

int RunChecks(const std::vector<host::ContractCheck>& checks, const std::string& file,
              std::chrono::seconds limit,
              const std::function<void(size_t, const host::Verdict&)>& tell) {
    host::Verdict loading;
    const int signal = TryToLoad(file, limit, &loading);
    if (signal != 0) {
        return signal;
    }
    if (loading.outcome != host::Outcome::kPassed) {
        for (size_t i = 0; i < checks.size(); ++i) {
            tell(i, loading);
        }
        return 0;
    }
    std::vector<host::SupervisedTask> tasks;
    for (const host::ContractCheck& check : checks) {
        tasks.emplace_back([&check, &file](const std::string& folder) {
            TurnOnTv(folder);
            check.run(file);
        });
    }
    return host::RunSupervised(tasks, limit, tell);
}

void List(const Common& common) {
    Json::Value json(Json::arrayValue);
    for (const host::ContractCheck& check : host::ContractChecks()) {
        Json::Value entry;
        entry["name"] = check.name;
        entry["description"] = check.description;
        json.append(entry);
        if (!common.json) {
            std::cout << Paint(Look::kBold, check.name) << "\n    " << check.description << '\n';
        }
    }
    if (common.json) {
        PrintJson(json);
    }
}

// What the checks have shown so far, in the form that was asked for.
class Report {
  public:
    Report(std::string format, std::string file)
        : format_(std::move(format)), file_(std::move(file)) {}

    void Add(const host::ContractCheck& check, const host::Verdict& verdict) {
        ++checks_;
        if (verdict.outcome != host::Outcome::kPassed) {
            findings_.list.push_back({check.name, check.description, verdict.why, file_});
        }
        json_.append(CheckAsJson(check, verdict));
        if (format_ == "text") {
            Print(check, verdict);
        }
    }
    size_t Checks() const { return checks_; }
    size_t Failed() const { return findings_.list.size(); }

    // Also where the checks were ended before they were through.
    void Close(const std::string& trouble) {
        if (!trouble.empty()) {
            findings_.troubles.push_back(trouble);
        }
        if (format_ == "text") {
            std::cout << program::Counted(checks_, "check") << ", " << Failed() << " failed\n";
        } else if (format_ == "json") {
            PrintJson(json_);
        } else {
            PrintFindings();
        }
    }
    // Where there is nothing to check.
    void CloseWithError(const std::string& error) {
        findings_.troubles.push_back(error);
        if (format_ == "json") {
            Json::Value document;
            document["error"] = error;
            PrintJson(document);
        } else if (format_ != "text") {
            PrintFindings();
        }
    }

  private:
    void PrintFindings() const {
        if (format_ == "sarif") {
            PrintJson(program::Sarif(findings_));
        } else {
            program::Print(program::Annotations(findings_), program::Form::kText);
        }
    }

    const std::string format_;
    const std::string file_;
    size_t checks_ = 0;
    Json::Value json_ = Json::arrayValue;
    program::Findings findings_{"vtv validate", {}, {}};
};

void Validate(Common& common, const ValidateOptions& options) {
    if (options.list) {
        List(common);
        return;
    }
    const std::string named = options.file.empty() ? ProviderFile(common) : options.file;
    if (!vtv::IsThere(named)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, named + ": there is no such provider library.");
    }
    const std::string file = fs::absolute(named).string();
    const std::vector<host::ContractCheck> checks = ChecksNamed(options.filter);
    Report report(common.json ? "json" : options.format, file);
    const auto tell = [&](size_t i, const host::Verdict& verdict) {
        RequireRun(verdict);
        report.Add(checks[i], verdict);
    };
    int signal = 0;
    try {
        signal = RunChecks(checks, file, std::chrono::seconds(options.timeout), tell);
    } catch (const host::ProviderError& error) {
        report.CloseWithError(error.what());
        throw;
    }
    const std::string done =
        std::to_string(report.Checks()) + " of " + program::Counted(checks.size(), "check");
    report.Close(signal == 0 ? "" : "ended by a signal after " + done);
    common.exitCode = report.Failed() == 0 ? kOk : kNo;
    if (signal != 0) {
        TellOfSignal(common, signal, done);
    }
}

}  // namespace

void AddValidate(CLI::App& app, Common& common) {
    const auto options = std::make_shared<ValidateOptions>();
    CLI::App* verb =
        AddVerb(app, common, "validate", "Check a provider library against the host contract",
                "  vtv validate                          the one that vtv uses\n"
                "  vtv validate my-provider.so\n"
                "  vtv validate my-provider.so --filter list\n"
                "  vtv validate my-provider.so --format sarif > validate.sarif\n"
                "  vtv validate --list\n\n"
                "Each check has a process and a TV of its own, so that a crash fails only itself;\n"
                "as many run at once as there are processors. It is no sandbox: run only\n"
                "libraries that you trust as much as any program. Ends with 1 when a check\n"
                "failed, and with 4 when the library cannot be loaded.",
                kProvider | kJson);
    CLI::Option* file =
        verb->add_option("FILE", options->file,
                         "The provider library; when left out, the one that answers for the page");
    CLI::Option* filter =
        verb->add_option("--filter", options->filter, "Only checks whose name has this in it")
            ->type_name("TEXT");
    CLI::Option* list = verb->add_flag("--list", options->list, "Only list the checks");
    CLI::Option* timeout =
        verb->add_option("--timeout", options->timeout, "Seconds that a check may take")
            ->type_name("SECONDS")
            ->check(WholeNumber(1))
            ->capture_default_str();
    CLI::Option* format = program::AddFindingsFormat(*verb, options->format);
    format->excludes(verb->get_option("--json"));
    CLI::Option* provider = verb->get_option("--provider");
    list->excludes(file)->excludes(filter)->excludes(timeout)->excludes(format)->excludes(provider);
    file->excludes(provider);
    verb->callback([&common, options] { Validate(common, *options); });
}

}  // namespace cli
