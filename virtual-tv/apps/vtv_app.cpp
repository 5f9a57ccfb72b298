// The applications that the Voice page starts, played: each does to the TV what the real one would
// have done by the time its viewer is through with it.
//
//     vtv-app [--tv TV] [--auto] [--] APPID [KEY=VALUE...]
//
// It shows what the viewer would see and waits to be finished (SIGUSR1, "vtv app finish"),
// cancelled (SIGUSR2, "vtv app cancel") or ended (SIGTERM, as the TV's application manager does).
// With --auto it finishes by itself. On a terminal Enter finishes and Ctrl-C cancels. What cannot
// do its work, as without a network, says so and waits on.
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <map>

#include "program/help.h"
#include "program/options.h"
#include "program/standard_output.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/virtual_tv.h"
#include "virtual-tv/whole_tvs.h"

namespace {

// What an application was started with.
struct Request {
    std::string appId;
    std::map<std::string, std::string> extras;
};

std::string StringSetting(const vtv::Tv& tv, const std::string& key) {
    const std::optional<vtv::Value> value = tv.Get(key);
    return value && std::holds_alternative<std::string>(*value) ? std::get<std::string>(*value)
                                                                : "";
}

// What the application does to the TV; also what it did before it could not go on.
void Finish(vtv::Tv& tv, const Request& request) {
    const vtv::Outcome outcome = vtv::Finish(
        request.appId, !request.extras.empty(),
        {tv.GetModel().accountUi, tv.Online(), tv.Feature(vtv::kChinaFeature) == vtv::Value(true),
         StringSetting(tv, vtv::kPolicyKey), StringSetting(tv, vtv::kCurrentAssistantKey),
         StringSetting(tv, vtv::kTencentKey)});
    for (const vtv::Deed& deed : outcome.deeds) {
        switch (deed.kind) {
            case vtv::Deed::Kind::kSetting:
                tv.Set(deed.name, deed.value);
                break;
            case vtv::Deed::Kind::kConsent:
                tv.SetConsent(deed.name, true);
                break;
            case vtv::Deed::Kind::kSignIn:
                tv.SetSignedIn(true);
                break;
            case vtv::Deed::Kind::kOwnerFile:
                tv.AddOwnerFile(deed.name);
                break;
        }
    }
    if (!outcome.failure.empty()) {
        throw vtv::Error(vtv::ErrorKind::kNo, outcome.failure);
    }
}

std::string Extra(const Request& request, const std::string& key) {
    const auto extra = request.extras.find(key);
    return extra != request.extras.end() ? extra->second : "";
}

std::string ScreenOf(const vtv::Tv& tv, const Request& request) {
    return request.appId == vtv::kNotification
               ? Extra(request, "text")
               : vtv::ScreenOf(request.appId, !request.extras.empty(), tv.GetModel().accountUi);
}

enum class End { kFinish, kCancel };

// Waits for a signal, for Enter on a terminal, or for the time to be up (0: no limit). Throws
// kPlatform when the TV is gone.
End WaitForEnd(vtv::Tv& tv, int signals, int seconds) {
    const bool terminal = isatty(STDIN_FILENO) != 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (;;) {
        int timeout = -1;
        if (seconds > 0) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) {
                return End::kFinish;
            }
            timeout = static_cast<int>(left.count());
        }
        pollfd sources[3] = {
            {signals, POLLIN, 0}, {tv.EventFd(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        if (poll(sources, terminal ? 3 : 2, timeout) <= 0) {
            continue;
        }
        if ((sources[0].revents & POLLIN) != 0) {
            signalfd_siginfo info{};
            if (read(signals, &info, sizeof info) == sizeof info) {
                return info.ssi_signo == SIGUSR1 ? End::kFinish : End::kCancel;
            }
        }
        if (sources[1].revents != 0) {
            tv.Dispatch();
        }
        if (terminal && sources[2].revents != 0) {
            return std::cin.get() == '\n' ? End::kFinish : End::kCancel;
        }
    }
}

// Blocked before anything else, so that none of these can end the process half-way.
int BlockSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGUSR1, SIGUSR2, SIGTERM, SIGINT}) {
        sigaddset(&set, signal);
    }
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

int Report(vtv::Tv& tv, const Request& request, const vtv::Error& failure) {
    tv.Log(6, request.appId + ": " + failure.what());
    tv.ReportFailure(failure);
    return static_cast<int>(failure.kind());
}

// Returns the exit code; kNo when the viewer can try again.
int TryToFinish(vtv::Tv& tv, const Request& request) {
    try {
        Finish(tv, request);
        tv.Log(4, request.appId + " finished");
        return 0;
    } catch (const vtv::Error& error) {
        std::fprintf(stderr, "%s\n", program::OneLine(request.appId + ": " + error.what()).c_str());
        return Report(tv, request, error);
    }
}

int Play(const std::string& dir, const Request& request, bool automatic, int signals) {
    vtv::Tv tv(dir);
    tv.EnterApplication(request.appId, {request.extras.begin(), request.extras.end()});
    const std::string screen = ScreenOf(tv, request);
    std::printf("%s\n", program::OneLine(request.appId + ": " + screen).c_str());
    const std::string unseen = program::OutputProblem();
    tv.Log(4, request.appId + " shows: " + screen);

    const bool popup = request.appId == vtv::kNotification;
    const int timeout = popup ? std::max(1, std::atoi(Extra(request, "timeout").c_str())) : 0;
    int code = 0;
    if (!unseen.empty()) {  // nobody sees what this would wait for
        code = Report(tv, request, vtv::Error(vtv::ErrorKind::kPlatform, unseen));
    } else if (automatic && !popup) {
        code = TryToFinish(tv, request);
    } else {
        constexpr int kNotYet = static_cast<int>(vtv::ErrorKind::kNo);
        code = kNotYet;
        while (code == kNotYet && WaitForEnd(tv, signals, timeout) == End::kFinish) {
            code = TryToFinish(tv, request);
        }
        if (code == kNotYet) {
            tv.Log(4, request.appId + " cancelled");
            code = 0;
        }
    }
    tv.LeaveApplication();
    return code;
}

int Run(int argc, char** argv, int signals) {
    CLI::App cli("Plays an application of a virtual TV", "vtv-app");
    cli.formatter(std::make_shared<program::HelpFormatter>());
    cli.footer("Examples:\n  vtv-app --tv kitchen --auto org.nemra.wizard\n\nExit codes: " +
               program::ExitCodes());
    const char* environment = std::getenv("VTV_TV");
    std::string tv = environment != nullptr && *environment != '\0' ? environment : "default";
    bool automatic = false;
    std::string appId;
    std::vector<std::string> extras;
    cli.add_option("--tv", tv,
                   "The TV: its folder, or its name as vtv list shows it [default: $VTV_TV, else "
                   "the TV \"default\"]")
        ->type_name("TV");
    cli.add_flag("--auto", automatic, "Finish at once, without waiting for anybody");
    cli.add_option("APPID", appId, "The application, for example org.nemra.wizard")->required();
    cli.add_option("KEY=VALUE", extras, "What the application is started with")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return text.find('=') != std::string::npos ? std::string()
                                                           : '"' + text + "\": write KEY=VALUE";
            },
            ""));
    program::AddVersion(cli, "vtv-app");
    program::RefuseEmptyWords(cli);
    if (argc == 3 && std::string(argv[1]) == "__man") {
        const std::string problem = program::AppendToManPage(cli, argv[2]);
        std::fputs(problem.c_str(), stderr);
        return problem.empty() ? 0 : static_cast<int>(vtv::ErrorKind::kPlatform);
    }
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = cli.exit(error);
        return code == 0 ? 0 : static_cast<int>(vtv::ErrorKind::kUsage);
    }
    Request request;
    request.appId = appId;
    for (const std::string& extra : extras) {
        const size_t equals = extra.find('=');
        request.extras[extra.substr(0, equals)] = extra.substr(equals + 1);
    }
    try {
        return Play(vtv::TvPath(tv), request, automatic, signals);
    } catch (const vtv::Error& error) {
        std::fprintf(stderr, "vtv-app: %s\n", program::OneLine(error.what()).c_str());
        return static_cast<int>(error.kind());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vtv-app: %s\n", program::OneLine(error.what()).c_str());
        return static_cast<int>(vtv::ErrorKind::kPlatform);
    }
}

}  // namespace

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv-app", Run(argc, argv, BlockSignals()));
}
