#include "cli.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "help.h"
#include "host/core/similar_items.h"
#include "program/standard_output.h"
#include "program/write_file.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr char kDefaultTv[] = "default";
constexpr char kDefaultModel[] = "farfield-eu";

fs::path ProgramDir() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

volatile sig_atomic_t interrupted = 0;

void RequireOutput() {
    if (program::IsOutputLost()) {
        throw OutputLost();
    }
}

void OnSignal(int) {
    interrupted = 1;
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

CLI::Option* AddProviderOption(CLI::App& verb, Common& common, const std::string& help) {
    const auto exists = [&verb](const std::string& file) {
        if (IsGivenBefore(verb, "--provider")) {
            return std::string("is given twice");
        }
        if (file.empty()) {
            return std::string("is empty");
        }
        std::error_code ignored;
        if (!fs::exists(file, ignored)) {
            throw host::ProviderError(host::ProviderError::Kind::kNoSuchFile,
                                      file + ": there is no such provider library.");
        }
        return std::string();
    };
    return verb.add_option("--provider", common.provider, help)
        ->check(exists)
        ->type_name("FILE")
        ->group(kCommonOptions);
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
            ->group(kCommonOptions);
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
        verb->add_flag("--json", common.json, "Print JSON for programs")->group(kCommonOptions);
    }
    if ((takes & kRecord) != 0) {
        verb->add_option("--record", common.record,
                         "Add this to a scenario for vtv run, which is begun if it is not there")
            ->type_name("FILE")
            ->group(kCommonOptions);
    }
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

std::string TvPath(const std::string& nameOrDir) {
    if (nameOrDir.find('/') != std::string::npos || nameOrDir == "." || nameOrDir == ".." ||
        vtv::Tv::IsTv(nameOrDir)) {
        return fs::absolute(nameOrDir).lexically_normal().string();
    }
    return vtv::HomeDir() + "/" + nameOrDir;
}

std::string TvDir(const Common& common) {
    std::string name = common.tv;
    if (name.empty()) {
        const char* environment = std::getenv("VTV_TV");
        name = environment != nullptr ? environment : "";
    }
    const std::string dir = TvPath(name.empty() ? kDefaultTv : name);
    if (vtv::Tv::IsTv(dir)) {
        return dir;
    }
    if (!name.empty()) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch,
                         dir + ": there is no TV here. Make one with: vtv new " + name);
    }
    try {
        vtv::Tv::Create(dir, vtv::FindModel(kDefaultModel));
    } catch (const vtv::Error&) {
        if (vtv::Tv::IsTv(dir)) {
            return dir;  // another process was faster
        }
        throw;
    }
    std::cerr << "Made the TV " << dir << " of the model " << kDefaultModel
              << ". For other models: vtv list --models\n";
    return dir;
}

std::string ProviderFile(const Common& common) {
    if (!common.provider.empty()) {
        return common.provider;
    }
    if (const char* environment = std::getenv("VTV_PROVIDER")) {
        return environment;
    }
    constexpr char kName[] = "libsi-ready.so";
    const fs::path program = ProgramDir();
    for (const fs::path& candidate :
         {program / kName, program / "../lib" / kName, program / "../lib/vtv" / kName}) {
        if (fs::exists(candidate)) {
            return candidate.lexically_normal().string();
        }
    }
    throw host::ProviderError(host::ProviderError::Kind::kNoSuchFile,
                              std::string("The provider ") + kName + " is not beside " +
                                  program.string() + "/vtv. Name one with --provider FILE.so.");
}

Recorder::Recorder(const Common& common, const vtv::Tv& tv, const host::Recording::Step& step) {
    if (!common.record.empty()) {
        recording_.emplace(common.record, tv, step);
    }
}

void Recorder::Done() {
    if (recording_) {
        recording_->Done();
    }
}

void Recorder::Done(const host::PressResult& result) {
    if (recording_) {
        recording_->Done(result);
    }
}

void WarnOfProblems(const vtv::Tv& tv) {
    for (const std::string& problem : tv.Problems()) {
        std::cerr << "vtv: warning: " << problem << '\n';
    }
}

PoweredTv::PoweredTv(const std::string& dir) : tv(dir) {
    WarnOfProblems(tv);
    vtv::PowerOn(tv);
}

PoweredTv::~PoweredTv() {
    vtv::PowerOff();
}

CLI::Validator WholeNumber(int atLeast) {
    const auto problem = [atLeast](const std::string& text) -> std::string {
        int number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error == std::errc() && end == text.data() + text.size() && number >= atLeast) {
            return "";
        }
        return "\"" + text + "\" is no whole number" +
               (atLeast == INT_MIN ? "" : " from " + std::to_string(atLeast) + " up") + ".";
    };
    return {problem, ""};
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

bool ParseSwitch(const std::string& text) {
    if (text == "on" || text == "true" || text == "1") {
        return true;
    }
    if (text == "off" || text == "false" || text == "0") {
        return false;
    }
    throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + text + "\": write on or off.");
}

bool WaitForTv(const vtv::Tv& tv) {
    RequireOutput();
    // The signals are let in only while waiting, so that none is lost between the test and the
    // wait.
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
    // Whoever waits shows what comes; a pipe without a reader wakes it up as well.
    pollfd sources[2] = {{tv.EventFd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    if (interrupted == 0) {
        ppoll(sources, 2, nullptr, &old);
    }
    sigprocmask(SIG_SETMASK, &old, nullptr);
    RequireOutput();
    return interrupted == 0;
}

namespace {

std::string WriteJson(const Json::Value& value, const char* indentation) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = indentation;
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

}  // namespace

void PrintJson(const Json::Value& value) {
    std::cout << WriteJson(value, "  ") << '\n';
}

void PrintJsonLine(const Json::Value& value) {
    std::cout << WriteJson(value, "") << std::endl;
}

Json::Value ToJson(const vtv::Value& value) {
    return std::visit([](const auto& v) { return Json::Value(v); }, value);
}

std::string ReadFile(const std::string& file) {
    std::ostringstream text;
    if (file == "-") {
        std::copy(std::istreambuf_iterator<char>(std::cin), {},
                  std::ostreambuf_iterator<char>(text));
        if (std::ferror(stdin) != 0) {
            throw vtv::Error(
                vtv::ErrorKind::kPlatform,
                std::string("the standard input cannot be read: ") + std::strerror(errno));
        }
        return text.str();
    }
    if (fs::is_directory(file)) {
        throw vtv::Error(vtv::ErrorKind::kUsage, file + ": this is a folder; name a file.");
    }
    std::ifstream stream(file, std::ios::binary);
    if (stream && stream.peek() != std::ifstream::traits_type::eof()) {
        text << stream.rdbuf();
    }
    if (!stream.is_open() || stream.bad()) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        throw vtv::Error(isMissing ? vtv::ErrorKind::kNoSuch : vtv::ErrorKind::kPlatform,
                         file + ": cannot be read: " + std::strerror(errno));
    }
    return text.str();
}

void WriteFile(const std::string& file, const std::string& text) {
    const std::string problem = program::WriteFile(file, text);
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
}

host::JsonText ReadJsonFile(const std::string& file) {
    return {file, ReadFile(file)};
}

std::string Paint(Look look, const std::string& text) {
    static const bool colour = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    const char* code = look == Look::kBold   ? "1"
                       : look == Look::kDim  ? "2"
                       : look == Look::kGood ? "32"
                       : look == Look::kBad  ? "31"
                       : look == Look::kNote ? "36"
                                             : "";
    return !colour || *code == '\0' ? text : std::string("\033[") + code + "m" + text + "\033[0m";
}

std::string PaintPlace(const std::string& file, int line, const std::string& function) {
    if (function.empty()) {
        return "";
    }
    return Paint(Look::kDim, fs::path(file).filename().string() + ":" + std::to_string(line)) +
           " " + Paint(Look::kNote, function) + " ";
}

}  // namespace cli
