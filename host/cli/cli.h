// What the verbs share: the common options, the TV and the provider that they name, and how things
// are printed.
#pragma once

#include <json/json.h>
#include <CLI/CLI.hpp>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/core/json_text.h"
#include "host/core/page.h"
#include "host/core/provider.h"
#include "host/core/recording.h"
#include "virtual-tv/virtual_tv.h"

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
// The folder that a name or path stands for, whether or not there is a TV.
std::string TvPath(const std::string& nameOrDir);
std::string ProviderFile(const Common& common);

// Prints a warning for each damaged file.
void WarnOfProblems(const vtv::Tv& tv);

// Adds what a verb does to the scenario that --record names, if it names one. Make it before the
// thing is done, which is not to be done when this throws; tell it when it is done.
class Recorder {
  public:
    Recorder(const Common& common, const vtv::Tv& tv, const host::Recording::Step& step);
    void Done();
    void Done(const host::PressResult& result);

  private:
    std::optional<host::Recording> recording_;
};

// A TV that is on for as long as this lives.
class PoweredTv {
  public:
    explicit PoweredTv(const Common& common) : PoweredTv(TvDir(common)) {}
    explicit PoweredTv(const std::string& dir);
    ~PoweredTv();
    PoweredTv(const PoweredTv&) = delete;
    PoweredTv& operator=(const PoweredTv&) = delete;

    vtv::Tv tv;
};

// A TV that is on, with the provider that answers for its page.
class Session : public PoweredTv {
  public:
    explicit Session(const Common& common) : PoweredTv(common), provider(ProviderFile(common)) {}

    host::Provider provider;
};

// A check for options that take a number.
CLI::Validator WholeNumber(int atLeast);
// Throws kNoSuch with the names that come close.
const host::Item& RequireItem(const std::string& nameOrKey);
bool ParseSwitch(const std::string& text);  // on, off; throws kUsage

// Waits until the TV has something to tell, or until SIGINT or SIGTERM; false for the latter.
// Throws OutputLost.
bool WaitForTv(const vtv::Tv& tv);

void PrintJson(const Json::Value& value);
// One line; for streams of documents.
void PrintJsonLine(const Json::Value& value);
Json::Value ToJson(const vtv::Value& value);
std::string ReadFile(const std::string& file);  // "-" is the standard input
host::JsonText ReadJsonFile(const std::string& file);
// The whole file or none of it.
void WriteFile(const std::string& file, const std::string& text);

// Words in colour where the standard output is a terminal and NO_COLOR is not set.
enum class Look { kPlain, kBold, kDim, kGood, kBad, kNote };
std::string Paint(Look look, const std::string& text);
// "file.cpp:12 function ", where something was recorded; empty without a function.
std::string PaintPlace(const std::string& file, int line, const std::string& function);

}  // namespace cli
