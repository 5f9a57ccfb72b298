// What the verbs share: the common options, the TV and the provider that they name, and how things
// are printed.
#pragma once

#include <json/json.h>
#include <CLI/CLI.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/core/recorder.h"
#include "host/core/trial.h"
#include "host/page/page.h"
#include "host/page/provider.h"
#include "program/options.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/virtual_tv.h"
#include "virtual-tv/whole_tvs.h"

namespace cli {

// Exit codes; the platform's and the usage's are those of vtv::ErrorKind.
inline constexpr int kOk = 0;
inline constexpr int kNo = 1;
inline constexpr int kUsage = 2;
inline constexpr int kNoSuch = 3;
inline constexpr int kPlatform = 4;

// The answer is no: what was asked for is understood and refused. Ends the program with kNo.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What a verb goes on printing reaches nobody. The end of main() tells why.
class OutputLost {};

// The options that every verb takes.
struct Common {
    std::string tv;        // a folder, or the name of a TV in vtv::HomeDir(); empty: the default TV
    std::string provider;  // a library; empty: the one that comes with vtv
    std::string record;    // a scenario that is written from what is done; empty: none
    bool json = false;
    int exitCode = kOk;  // what a verb wants to end with
};

// Which of the options a verb makes use of. Every verb accepts --provider, so that an alias can
// carry it; only those that ask the page load it and show it in their help. A --tv before a verb
// that has no use for it is refused.
enum Takes : unsigned { kTv = 1, kProvider = 2, kJson = 4, kRecord = 8 };
// Whether an option was given to the program, or to a group of verbs, before this verb.
bool IsGivenBefore(const CLI::App& verb, const std::string& option);
// --color and --quiet, which hold for the program and each verb alike.
void AddLookOptions(CLI::App& verb, const std::string& group);
// --provider FILE; a file that is not there ends the program at once.
CLI::Option* AddProviderOption(CLI::App& verb, Common& common, const std::string& help);
// Adds a verb with its help. `examples` is shown below the options.
CLI::App* AddVerb(CLI::App& app, Common& common, const std::string& name, const std::string& does,
                  const std::string& examples, unsigned takes);

// For a verb that prints, unless one of these is given: then it changes something. --json belongs
// to the one, --record to the other.
void PrintsWithout(CLI::App& verb, const std::vector<CLI::Option*>& changing);

// The folder of the TV that --tv names: made from the default model when none is named and there is
// none yet. Throws kNoSuch.
std::string TvDir(const Common& common);
// The folder of the TV of a name or path. Throws kNoSuch.
std::string TvDir(const std::string& nameOrDir);
// Says so after a TV was made.
void TellOfNewTv(const std::string& dir, const std::string& name);
using vtv::TvPath;
std::string ProviderFile(const Common& common);

// On the standard error; nothing of it with --quiet.
void Note(const std::string& text);
void Warn(const std::string& text);
bool IsQuiet();
// Prints a warning for each damaged file.
void WarnOfProblems(const vtv::Tv& tv);

// Adds what a verb does to the scenario that --record names, and to the one that the TV is being
// recorded into.
class Recorder : public host::Recorder {
  public:
    Recorder(const Common& common, const vtv::Tv& tv, const host::Recording::Step& step)
        : Recorder(common, tv, [&step] { return step; }) {}
    Recorder(const Common& common, const vtv::Tv& tv,
             const std::function<host::Recording::Step()>& step)
        : host::Recorder(common.record, tv, step) {}
};

// What is tried on a copy of the TV, which is as it was before: NAME=VALUE.
using With = std::vector<std::string>;
using program::AddWith;
// Below what was printed: what it holds for.
void PrintTried(const With& with);

// A TV that is on for as long as this lives; a copy of it where something is tried.
class PoweredTv {
  public:
    explicit PoweredTv(const Common& common, const With& with = {})
        : PoweredTv(TvDir(common), with) {}
    explicit PoweredTv(const std::string& dir, const With& with = {});
    ~PoweredTv();
    PoweredTv(const PoweredTv&) = delete;
    PoweredTv& operator=(const PoweredTv&) = delete;

    // The folder of the TV that was meant, also while something is tried.
    const std::string& Dir() const { return dir_; }

  private:
    std::string dir_;
    std::unique_ptr<host::TrialTv> trial_;

  public:
    vtv::Tv tv;
};

// A TV that is on, with the provider that answers for its page.
class Session : public PoweredTv {
  public:
    explicit Session(const Common& common, const With& with = {})
        : PoweredTv(common, with), provider(ProviderFile(common)) {}

    host::Provider provider;
};

using program::WholeNumber;
// Throws kNoSuch with the names that come close.
const host::Item& RequireItem(const std::string& nameOrKey);

// For a verb that was ended by a signal and keeps what it has found: says after what, and exits as
// shells say it.
void TellOfSignal(Common& common, int signal, const std::string& after);

// Waits until the TV has something to tell, or until SIGINT or SIGTERM; false for the latter.
// Throws OutputLost.
bool WaitForTv(const vtv::Tv& tv);

// What ended a wait.
enum class Woken { kByTv /* or one of the others */, kBySignal, kByTime };
// The same for a verb that prints nothing meanwhile, also until one of the other descriptors is
// readable, or until the deadline.
Woken WaitForAny(const vtv::Tv& tv, const std::vector<int>& others,
                 std::optional<std::chrono::steady_clock::time_point> deadline);
// The signal of Woken::kBySignal.
int EndingSignal();

// Always JSON in UTF-8: a byte of a value that is none becomes U+FFFD.
void PrintJson(const Json::Value& value);
// One line, written at once; for streams of documents.
void PrintJsonLine(const Json::Value& value);
Json::Value ToJson(const vtv::Value& value);
vtv::JsonText ReadJsonFile(const std::string& file);  // "-" is the standard input
// The whole file or none of it.
void WriteFile(const std::string& file, const std::string& text);

// The first of "hh:mm:ss.uuuuuu" in a time as JSON has it, of whatever year.
std::string TimeOfDay(const std::string& time, size_t length);

// Words on one line, in colour where program::IsColoured().
enum class Look { kPlain, kBold, kDim, kGood, kBad, kNote };
std::string Paint(Look look, const std::string& text);
// "file.cpp:12 function ", where something was recorded; empty without a function.
std::string PaintPlace(const std::string& file, int line, const std::string& function);

}  // namespace cli
