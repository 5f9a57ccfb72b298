// vtv validate: checks a provider against the host contract.
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/core/contract_checks.h"
#include "host/core/supervised.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr char kModel[] = "farfield-eu";
constexpr int kSignalled = 128;  // plus the signal's number, as shells do

struct ValidateOptions {
    std::string file;
    std::string filter;
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

Json::Value ToJson(const host::ContractCheck& check, const host::Verdict& verdict) {
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
        std::cout << "        " << verdict.why << '\n';
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
        const host::ProviderLibrary library(file);
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

void Validate(Common& common, const ValidateOptions& options) {
    if (options.list) {
        List(common);
        return;
    }
    const std::string named = options.file.empty() ? ProviderFile(common) : options.file;
    if (!fs::exists(named)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, named + ": there is no such provider library.");
    }
    const std::string file = fs::absolute(named).string();
    const std::vector<host::ContractCheck> checks = ChecksNamed(options.filter);
    Json::Value json(Json::arrayValue);
    size_t failed = 0;
    const auto tell = [&](size_t i, const host::Verdict& verdict) {
        RequireRun(verdict);
        failed += verdict.outcome == host::Outcome::kPassed ? 0 : 1;
        json.append(ToJson(checks[i], verdict));
        if (!common.json) {
            Print(checks[i], verdict);
        }
    };
    int signal = 0;
    try {
        signal = RunChecks(checks, file, std::chrono::seconds(options.timeout), tell);
    } catch (const host::ProviderError& error) {
        if (common.json) {
            Json::Value document;
            document["error"] = error.what();
            PrintJson(document);
        }
        throw;
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << json.size() << " checks, " << failed << " failed\n";
    }
    common.exitCode = failed == 0 ? kOk : kNo;
    if (signal != 0) {
        std::cout.flush();
        std::cerr << "vtv: ended by a signal (" << strsignal(signal) << ") after " << json.size()
                  << " of " << checks.size() << " checks\n";
        common.exitCode = kSignalled + signal;
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
    CLI::Option* provider = verb->get_option("--provider");
    list->excludes(file)->excludes(filter)->excludes(timeout)->excludes(provider);
    file->excludes(provider);
    verb->callback([&common, options] { Validate(common, *options); });
}

}  // namespace cli
