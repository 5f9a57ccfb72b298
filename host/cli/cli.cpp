#include "cli.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "host/core/similar_items.h"
#include "program/help.h"
#include "program/standard_output.h"
#include "program/terminal.h"
#include "program/write_file.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/text_file.h"
#include "virtual-tv/whole_tvs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr char kDefaultTv[] = "default";
constexpr char kDefaultModel[] = "farfield-eu";

volatile sig_atomic_t interrupted = 0;
bool isQuiet = false;

void RequireOutput() {
    if (program::IsOutputLost()) {
        throw OutputLost();
    }
}

void OnSignal(int signal) {
    interrupted = signal;
}

}  // namespace

bool IsGivenBefore(const CLI::App& verb, const std::string& option) {
    for (const CLI::App* above = verb.get_parent(); above != nullptr; above = above->get_parent()) {
        const CLI::Option* same = above->get_option_no_throw(option);
        if (same != nullptr && same->count() > 0) {
            return true;
        }
    }
    return false;
}

void AddLookOptions(CLI::App& verb, const std::string& group) {
    const std::map<std::string, program::Colour> words = {{"auto", program::Colour::kAuto},
                                                          {"always", program::Colour::kAlways},
                                                          {"never", program::Colour::kNever}};
    verb.add_option_function<std::string>(
            "--color",
            [words](const std::string& word) {
                const auto found = words.find(word);
                if (found == words.end()) {
                    throw CLI::ValidationError("--color",
                                               "write auto, always or never, not \"" + word + "\"");
                }
                program::SetColour(found->second);
            },
            "auto: on a terminal, unless NO_COLOR is set; always; never")
        ->type_name("WHEN")
        ->group(group);
    verb.add_flag_callback(
            "-q,--quiet", [] { isQuiet = true; }, "Only what was asked for, and errors")
        ->group(group);
}

CLI::Option* AddProviderOption(CLI::App& verb, Common& common, const std::string& help) {
    const auto exists = [&verb](const std::string& file) {
        if (IsGivenBefore(verb, "--provider")) {
            return std::string("is given twice");
        }
        if (file.empty()) {
            return std::string("is empty");
        }
        if (!vtv::IsThere(file)) {
            throw host::ProviderError(host::ProviderError::Kind::kNoSuchFile,
                                      file + ": there is no such provider library.");
        }
        return std::string();
    };
    return verb.add_option("--provider", common.provider, help)
        ->check(exists)
        ->type_name("FILE")
        ->group(program::kCommonOptions);
}

CLI::App* AddVerb(CLI::App& app, Common& common, const std::string& name, const std::string& does,
                  const std::string& examples, unsigned takes) {
    CLI::App* verb = app.add_subcommand(name, does);
    if ((takes & kTv) != 0) {
        verb->add_option("--tv", common.tv,
                         "The TV: its folder, or its name as vtv list shows it [default: $VTV_TV, "
                         "else the TV \"default\", made at first use]")
            ->check([verb](const std::string&) {
                return IsGivenBefore(*verb, "--tv") ? "is given twice" : "";
            })
            ->type_name("TV")
            ->group(program::kCommonOptions);
    } else {
        verb->preparse_callback([verb](size_t) {
            if (IsGivenBefore(*verb, "--tv")) {
                throw CLI::ValidationError("--tv", "has no effect here");
            }
        });
    }
    CLI::Option* provider = AddProviderOption(
        *verb, common,
        "The provider library that answers for the page [default: $VTV_PROVIDER, else the one that "
        "comes with vtv]");
    if ((takes & kProvider) == 0) {
        provider->group("");  // taken, so that it can stand in an alias, but of no use here
    }
    if ((takes & kJson) != 0) {
        verb->add_flag("--json", common.json, "Print JSON for programs")
            ->group(program::kCommonOptions);
    }
    if ((takes & kRecord) != 0) {
        verb->add_option("--record", common.record,
                         "Add this to a scenario for vtv run, which is begun if it is not there")
            ->type_name("FILE")
            ->group(program::kCommonOptions);
    }
    AddLookOptions(*verb, program::kCommonOptions);
    if (!examples.empty()) {
        verb->footer("Examples:\n" + examples);
    }
    return verb;
}

void PrintsWithout(CLI::App& verb, const std::vector<CLI::Option*>& changing) {
    CLI::Option* json = verb.get_option_no_throw("--json");
    for (CLI::Option* option : changing) {
        if (json != nullptr) {
            json->excludes(option);
        }
    }
    if (CLI::Option* record = verb.get_option_no_throw("--record")) {
        record->check([changing](const std::string&) {
            const bool changes =
                std::any_of(changing.begin(), changing.end(),
                            [](const CLI::Option* option) { return option->count() > 0; });
            return changes ? "" : "there is nothing to record: nothing is changed";
        });
    }
}

std::string TvDir(const std::string& name) {
    const std::string dir = TvPath(name);
    vtv::RemoveLeftFolders(fs::path(dir).parent_path().string());
    if (!vtv::Tv::IsTv(dir)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch,
                         dir + ": there is no TV here. Make one with: vtv new " + name);
    }
    return dir;
}

std::string TvDir(const Common& common) {
    const char* environment = std::getenv("VTV_TV");
    const std::string name = !common.tv.empty()       ? common.tv
                             : environment != nullptr ? environment
                                                      : "";
    if (!name.empty()) {
        return TvDir(name);
    }
    std::string dir = TvPath(kDefaultTv);
    if (vtv::Tv::IsTv(dir)) {
        return TvDir(kDefaultTv);
    }
    try {
        vtv::Tv::Create(dir, vtv::FindModel(kDefaultModel));
    } catch (const vtv::Error&) {
        if (vtv::Tv::IsTv(dir)) {
            return dir;  // another process was faster
        }
        throw;
    }
    Note("Made the TV " + dir + " of the model " + kDefaultModel +
         ". For other models: vtv list --models");
    return dir;
}

void TellOfNewTv(const std::string& dir, const std::string& name) {
    if (!isQuiet) {
        std::cout << program::OneLine("Made " + dir + ". Look at it: vtv show --tv " + name)
                  << '\n';
    }
}

std::string ProviderFile(const Common& common) {
    if (!common.provider.empty()) {
        return common.provider;
    }
    const std::string file = host::DefaultProvider();
    if (!vtv::IsThere(file)) {
        throw host::ProviderError(
            host::ProviderError::Kind::kNoSuchFile,
            file + ": there is no such provider library. Name one with --provider FILE.so.");
    }
    return file;
}

bool IsQuiet() {
    return isQuiet;
}

void Note(const std::string& text) {
    if (!isQuiet) {
        std::cerr << program::OneLine(text) << '\n';
    }
}

void Warn(const std::string& text) {
    Note("vtv: warning: " + text);
}

void WarnOfProblems(const vtv::Tv& tv) {
    for (const std::string& problem : tv.Problems()) {
        Warn(problem);
    }
}

void PrintTried(const With& with) {
    std::string text;
    for (const std::string& one : with) {
        text += (text.empty() ? "" : ", ") + one;
    }
    if (!text.empty()) {
        std::cout << Paint(Look::kDim, "(tried with " + text + "; nothing was written)") << '\n';
    }
}

PoweredTv::PoweredTv(const std::string& dir, const With& with)
    : dir_(dir),
      trial_(with.empty() ? nullptr : std::make_unique<host::TrialTv>(dir)),
      tv(trial_ ? trial_->Dir() : dir) {
    WarnOfProblems(tv);
    host::TryOut(tv, with);
    vtv::PowerOn(tv);
}

PoweredTv::~PoweredTv() {
    vtv::PowerOff();
}

const host::Item& RequireItem(const std::string& nameOrKey) {
    if (const host::Item* item = host::FindItem(nameOrKey)) {
        return *item;
    }
    std::string text = "There is no item \"" + nameOrKey + "\" on the Voice page.";
    const std::vector<std::string> similar = host::SimilarItems(nameOrKey);
    for (size_t i = 0; i < similar.size() && i < 3; ++i) {
        text += (i == 0 ? " Did you mean " : " or ") + similar[i];
    }
    text += similar.empty() ? " vtv show --all lists the items." : "?";
    throw vtv::Error(vtv::ErrorKind::kNoSuch, text);
}

void TellOfSignal(Common& common, int signal, const std::string& after) {
    constexpr int kSignalled = 128;
    std::cout.flush();
    std::cerr << "vtv: ended by a signal (" << strsignal(signal) << ") after " << after << '\n';
    common.exitCode = kSignalled + signal;
}

namespace {

// The signals are let in only while waiting, so that none is lost between the test and the wait.
Woken WaitFor(std::vector<pollfd> sources,
              std::optional<std::chrono::steady_clock::time_point> deadline) {
    sigset_t blocked;
    sigset_t old;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &old);
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    timespec rest{};
    if (deadline) {
        const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(
            *deadline - std::chrono::steady_clock::now());
        const auto left = std::max(nanoseconds, std::chrono::nanoseconds(0)).count();
        rest = {static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
    }
    int ready = 1;
    if (interrupted == 0) {
        ready = ppoll(sources.data(), sources.size(), deadline ? &rest : nullptr, &old);
    }
    sigprocmask(SIG_SETMASK, &old, nullptr);
    return interrupted != 0 ? Woken::kBySignal : ready == 0 ? Woken::kByTime : Woken::kByTv;
}

}  // namespace

Woken WaitForAny(const vtv::Tv& tv, const std::vector<int>& others,
                 std::optional<std::chrono::steady_clock::time_point> deadline) {
    std::vector<pollfd> sources = {{tv.EventFd(), POLLIN, 0}};
    for (const int fd : others) {
        sources.push_back({fd, POLLIN, 0});
    }
    return WaitFor(std::move(sources), deadline);
}

int EndingSignal() {
    return interrupted;
}

bool WaitForTv(const vtv::Tv& tv) {
    RequireOutput();
    // Whoever waits shows what comes; a pipe without a reader wakes it up as well.
    const Woken woken = WaitFor({{tv.EventFd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}, std::nullopt);
    RequireOutput();
    return woken != Woken::kBySignal;
}

void PrintJson(const Json::Value& value) {
    program::Print(vtv::PrettyJson(value) + "\n", program::Form::kJson);
}

void PrintJsonLine(const Json::Value& value) {
    program::Print(vtv::CompactJson(value) + "\n", program::Form::kJson);
}

Json::Value ToJson(const vtv::Value& value) {
    return std::visit([](const auto& v) { return Json::Value(v); }, value);
}

void WriteFile(const std::string& file, const std::string& text) {
    const std::string problem = program::WriteFile(file, text);
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
}

vtv::JsonText ReadJsonFile(const std::string& file) {
    return {file, vtv::ReadTextFile(file)};
}

std::string TimeOfDay(const std::string& time, size_t length) {
    const size_t date = time.find('T');
    return date == std::string::npos ? time : time.substr(date + 1, length);
}

std::string Paint(Look look, const std::string& text) {
    const char* code = look == Look::kBold   ? "1"
                       : look == Look::kDim  ? "2"
                       : look == Look::kGood ? "32"
                       : look == Look::kBad  ? "31"
                       : look == Look::kNote ? "36"
                                             : "";
    const std::string line = program::OneLine(text);
    return *code == '\0' || !program::IsColoured()
               ? line
               : program::Control(std::string("[") + code + "m") + line + program::Control("[0m");
}

std::string PaintPlace(const std::string& file, int line, const std::string& function) {
    if (function.empty()) {
        return "";
    }
    return Paint(Look::kDim, fs::path(file).filename().string() + ":" + std::to_string(line)) +
           " " + Paint(Look::kNote, function) + " ";
}

}  // namespace cli
