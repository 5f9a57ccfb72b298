// The applications that the Voice page starts, played: each does to the TV what the real one would
// have done by the time its viewer is through with it.
//
//     vtv-app [--tv DIR] [--auto] [--] APPID [KEY=VALUE...]
//
// It shows what the viewer would see and waits to be finished (SIGUSR1, "vtv app finish"),
// cancelled (SIGUSR2, "vtv app cancel") or ended (SIGTERM, as the TV's application manager does).
// With --auto it finishes by itself. On a terminal Enter finishes and Ctrl-C cancels.
#include <json/json.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>

#include "program/options.h"
#include "program/standard_output.h"
#include "virtual-tv/virtual_tv.h"

namespace {

constexpr char kPolicyKey[] = "db/menu/voice/mva_list";
constexpr char kCurrentKey[] = "db/multi-assistant/default_assistant_appid";
constexpr char kFirstTimeKey[] = "db/voice-app/activate_first_time";
constexpr char kTencentKey[] = "db/tencent-voice-assistant/voice-setting";
constexpr char kChinaFeature[] = "com.vantelo/featureconf/cn_ai_service_supported";

// What an application was started with.
struct Request {
    std::string appId;
    std::map<std::string, std::string> extras;
};

// One kind of application: what its screen says, and what finishing it does to the TV.
struct Application {
    std::string screen;
    std::function<void(vtv::Tv&)> finish;
};

void RequireNetwork(vtv::Tv& tv) {
    if (!tv.Online()) {
        throw vtv::Error(
            vtv::ErrorKind::kPlatform,
            "There is no network. Connect the TV (\"vtv network connected\") and try again.");
    }
}

void AgreeToTerms(vtv::Tv& tv) {
    tv.SetConsent("tnc", true);
    tv.SetConsent("pp", true);
}

bool ParseJson(const std::string& text, Json::Value* json) {
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    return reader->parse(text.data(), text.data() + text.size(), json, &errors);
}

std::string StringSetting(const vtv::Tv& tv, const std::string& key) {
    const std::optional<vtv::Value> value = tv.Get(key);
    return value && std::holds_alternative<std::string>(*value) ? std::get<std::string>(*value)
                                                                : "";
}

void CompleteTencent(vtv::Tv& tv) {
    Json::Value json;
    if (!ParseJson(StringSetting(tv, kTencentKey), &json) || !json.isObject()) {
        json = Json::Value(Json::objectValue);
    }
    json["onboarding_completed"] = true;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    tv.Set(kTencentKey, Json::writeString(builder, json));
}

void CompleteOrvik(vtv::Tv& tv) {
    tv.Set(kFirstTimeKey, false);
}

// The setup of each kind of assistant, by its id in the policy.
void SetUpAssistant(vtv::Tv& tv, const std::string& id) {
    static const std::map<std::string, std::function<void(vtv::Tv&)>> setups = {
        {"ALEXA", [](vtv::Tv& t) { t.AddOwnerFile("share/.voice/alexa_login_success"); }},
        {"GVA", [](vtv::Tv& t) { t.AddOwnerFile("share/.voice/ga_login_success"); }},
        {"SBER", [](vtv::Tv& t) { t.AddOwnerFile("share/.voice/salute_login_success"); }},
        {"ORVIK2", CompleteOrvik},
        {"SVA", CompleteOrvik},
        {"TENCENT", CompleteTencent},
    };
    const auto setup = setups.find(id);
    if (setup == setups.end()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         "The current assistant is none that could be set up.");
    }
    setup->second(tv);
}

// The policy's assistants; none when it is no list.
Json::Value Assistants(const vtv::Tv& tv) {
    Json::Value policy;
    const bool isList = ParseJson(StringSetting(tv, kPolicyKey), &policy) && policy.isArray();
    return isList ? policy : Json::Value(Json::arrayValue);
}

std::string CurrentAssistantId(const vtv::Tv& tv) {
    for (const Json::Value& assistant : Assistants(tv)) {
        if (assistant.isObject() && assistant["VAAppId"] == StringSetting(tv, kCurrentKey)) {
            return assistant["VAId"].asString();
        }
    }
    return "";
}

// The setup also lets its viewer choose an assistant, where none is chosen yet. This viewer takes
// the first.
void FinishWizard(vtv::Tv& tv) {
    AgreeToTerms(tv);
    const Json::Value assistants = Assistants(tv);
    if (StringSetting(tv, kCurrentKey).empty() && !assistants.empty() && assistants[0].isObject() &&
        assistants[0]["VAAppId"].isString()) {
        tv.Set(kCurrentKey, assistants[0]["VAAppId"].asString());
    }
}

// The one that stands in where an assistant's own application cannot: it asks for whatever is
// missing and then sets up the current assistant.
void FinishOnboarding(vtv::Tv& tv) {
    RequireNetwork(tv);
    AgreeToTerms(tv);
    const std::string id = CurrentAssistantId(tv);
    const bool china = tv.Feature(kChinaFeature) == vtv::Value(true);
    if (id == "ORVIK2" && !china) {
        tv.SetSignedIn(true);
    }
    SetUpAssistant(tv, id);
}

std::string Extra(const Request& request, const std::string& key) {
    const auto extra = request.extras.find(key);
    return extra != request.extras.end() ? extra->second : "";
}

Application Setup(const std::string& screen, const std::string& id) {
    return {screen, [id](vtv::Tv& tv) {
                RequireNetwork(tv);
                SetUpAssistant(tv, id);
            }};
}

Application Find(const vtv::Tv& tv, const Request& request) {
    if (request.appId == "org.nemra.alert-syspopup") {
        return {Extra(request, "text"), [](vtv::Tv&) {}};
    }
    if (request.appId == "org.nemra.wizard") {
        return {"Setup: terms and conditions, privacy policy. Agree to both?", FinishWizard};
    }
    if (request.appId == tv.GetModel().accountUi) {
        return {"Sign in to your account.", [](vtv::Tv& t) {
                    RequireNetwork(t);
                    t.SetSignedIn(true);
                }};
    }
    if (request.appId == "org.nemra.voice-onboarding") {
        return {"Set up your voice assistant.", FinishOnboarding};
    }
    const bool onboarding = !request.extras.empty();
    if (request.appId == "com.vantelo.tv.voice-instant-app" && onboarding) {
        return Setup("Welcome to Orvik.", "ORVIK2");
    }
    if (request.appId == "com.vantelo.tv.google-assistant" && onboarding) {
        return Setup("Sign in to Google.", "GVA");
    }
    if (request.appId == "com.vantelo.tv.salute-assistant" && onboarding) {
        return Setup("Sign in to Salute.", "SBER");
    }
    if (request.appId == "com.vantelo.tv.tencent-voice-chrome" && onboarding) {
        return Setup("Set up Tencent Cloud Xiaowei.", "TENCENT");
    }
    return {"(" + request.appId + ")", [](vtv::Tv&) {}};  // just an application that runs
}

enum class End { kFinish, kCancel };

// Waits for a signal, for Enter on a terminal, or for the time to be up (0: no limit).
End WaitForEnd(int signals, int seconds) {
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
        pollfd sources[2] = {{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        if (poll(sources, terminal ? 2 : 1, timeout) <= 0) {
            continue;
        }
        if ((sources[0].revents & POLLIN) != 0) {
            signalfd_siginfo info{};
            if (read(signals, &info, sizeof info) == sizeof info) {
                return info.ssi_signo == SIGUSR1 ? End::kFinish : End::kCancel;
            }
        }
        if (terminal && sources[1].revents != 0) {
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

int Play(const std::string& dir, const Request& request, bool automatic, int signals) {
    vtv::Tv tv(dir);
    tv.EnterApplication(request.appId, {request.extras.begin(), request.extras.end()});
    const Application application = Find(tv, request);
    std::printf("%s: %s\n", request.appId.c_str(), application.screen.c_str());
    std::string failure = program::OutputProblem();
    tv.Log(4, request.appId + " shows: " + application.screen);

    const bool popup = request.appId == "org.nemra.alert-syspopup";
    const int timeout = popup ? std::max(1, std::atoi(Extra(request, "timeout").c_str())) : 0;
    if (!failure.empty()) {
        tv.Log(6, request.appId + ": " + failure);  // nobody sees what this would wait for
    } else if ((automatic && !popup) || WaitForEnd(signals, timeout) == End::kFinish) {
        try {
            application.finish(tv);
            tv.Log(4, request.appId + " finished");
        } catch (const vtv::Error& error) {
            failure = error.what();
            tv.Log(6, request.appId + ": " + failure);
            std::fprintf(stderr, "%s: %s\n", request.appId.c_str(), failure.c_str());
        }
    } else {
        tv.Log(4, request.appId + " cancelled");
    }
    tv.LeaveApplication(failure);
    return failure.empty() ? 0 : static_cast<int>(vtv::ErrorKind::kPlatform);
}

int Run(int argc, char** argv, int signals) {
    CLI::App cli("Plays an application of a virtual TV.", "vtv-app");
    const char* environment = std::getenv("VTV_TV");
    std::string dir = environment != nullptr ? environment : vtv::HomeDir() + "/default";
    bool automatic = false;
    std::string appId;
    std::vector<std::string> extras;
    cli.add_option("--tv", dir, "The TV's folder")->capture_default_str();
    cli.add_flag("--auto", automatic, "Finish at once, without waiting for anybody");
    cli.add_option("APPID", appId, "The application, for example org.nemra.wizard")->required();
    cli.add_option("KEY=VALUE", extras, "What the application is started with");
    program::RefuseEmptyWords(cli);
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
        request.extras[extra.substr(0, equals)] =
            equals == std::string::npos ? "" : extra.substr(equals + 1);
    }
    try {
        return Play(dir, request, automatic, signals);
    } catch (const vtv::Error& error) {
        std::fprintf(stderr, "vtv-app: %s\n", error.what());
        return static_cast<int>(error.kind());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vtv-app: %s\n", error.what());
        return static_cast<int>(vtv::ErrorKind::kPlatform);
    }
}

}  // namespace

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv-app", Run(argc, argv, BlockSignals()));
}
