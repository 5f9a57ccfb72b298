// vtv validate: checks a provider against the host contract.
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/core/contract_checks.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr char kModel[] = "farfield-eu";

struct ValidateOptions {
    std::string file;
    std::string filter;
    bool list = false;
    int timeout = 20;  // seconds, for each check
};

struct Verdict {
    bool passed = false;
    std::string why;
    double seconds = 0;
};

// Runs in the child; what it writes to the pipe is why the check failed.
[[noreturn]] void RunCheck(const host::ContractCheck& check, const std::string& file, int pipe,
                           int timeout) {
    alarm(static_cast<unsigned>(timeout));
    // A provider that damages the heap is caught by the C library, which complains to the terminal.
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    std::string why;
    std::string folder = (fs::temp_directory_path() / "vtv-validate-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        _exit(kPlatform);
    }
    int code = kOk;
    try {
        vtv::Tv::Create(folder + "/tv", vtv::FindModel(kModel));
        PoweredTv powered(folder + "/tv");
        powered.tv.SetApplications(vtv::ApplicationMode::kRecord);
        check.run(file);
    } catch (const host::CheckFailed& failed) {
        code = kNo;
        why = failed.what();
    } catch (const host::ProviderError& error) {
        code = kNo;
        why = error.what();
    } catch (const std::exception& error) {
        code = kNo;
        why = std::string("an exception left the provider: ") + error.what();
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    const ssize_t written = write(pipe, why.data(), why.size());
    _exit(written == static_cast<ssize_t>(why.size()) ? code : kPlatform);
}

std::string ReadAll(int pipe) {
    std::string text;
    char buffer[4096];
    for (ssize_t size = read(pipe, buffer, sizeof buffer); size > 0;
         size = read(pipe, buffer, sizeof buffer)) {
        text.append(buffer, static_cast<size_t>(size));
    }
    return text;
}

Verdict Judge(const host::ContractCheck& check, const std::string& file, int timeout) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         std::string("no pipe: ") + std::strerror(errno));
    }
    std::cout.flush();
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        RunCheck(check, file, ends[1], timeout);
    }
    close(ends[1]);
    Verdict verdict;
    verdict.why = ReadAll(ends[0]);
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    verdict.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    verdict.passed = WIFEXITED(status) && WEXITSTATUS(status) == kOk;
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        verdict.why = signal == SIGALRM
                          ? "did not come to an end in " + std::to_string(timeout) + " seconds"
                          : std::string("crashed: ") + strsignal(signal);
    } else if (!verdict.passed && verdict.why.empty()) {
        verdict.why = "ended the process with " + std::to_string(WEXITSTATUS(status));
    }
    return verdict;
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
    const std::string file = options.file.empty() ? ProviderFile(common) : options.file;
    if (!fs::exists(file)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, file + ": there is no such provider library.");
    }
    Json::Value json(Json::arrayValue);
    int ran = 0;
    int failed = 0;
    for (const host::ContractCheck& check : host::ContractChecks()) {
        if (std::string(check.name).find(options.filter) == std::string::npos) {
            continue;
        }
        const Verdict verdict = Judge(check, file, options.timeout);
        ++ran;
        failed += verdict.passed ? 0 : 1;
        Json::Value entry;
        entry["name"] = check.name;
        entry["description"] = check.description;
        entry["passed"] = verdict.passed;
        entry["why"] = verdict.passed ? Json::Value() : Json::Value(verdict.why);
        entry["seconds"] = verdict.seconds;
        json.append(entry);
        if (!common.json) {
            std::cout << (verdict.passed ? Paint(Look::kGood, "passed  ")
                                         : Paint(Look::kBad, "FAILED  "))
                      << check.name << Paint(Look::kDim, std::string("  ") + check.description)
                      << '\n';
            if (!verdict.passed) {
                std::cout << "        " << verdict.why << '\n';
            }
        }
    }
    if (ran == 0) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch,
                         "There is no check \"" + options.filter + "\". See: vtv validate --list");
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << ran << " checks, " << failed << " failed\n";
    }
    common.exitCode = failed == 0 ? kOk : kNo;
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
                "Each check has a process and a TV of its own, so that a crash fails only itself.\n"
                "Ends with 1 when a check failed.",
                kProvider | kJson);
    verb->add_option("FILE", options->file,
                     "The provider library; when left out, the one that answers for the page");
    verb->add_option("--filter", options->filter, "Only checks whose name has this in it")
        ->type_name("TEXT");
    verb->add_flag("--list", options->list, "Only list the checks");
    verb->add_option("--timeout", options->timeout, "Seconds that a check may take")
        ->type_name("SECONDS")
        ->check(WholeNumber(1))
        ->capture_default_str();
    verb->callback([&common, options] { Validate(common, *options); });
}

}  // namespace cli
