// What the verbs of the command line share.
#pragma once

#include <json/json.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "explorer/engine/workers.h"
#include "explorer/tv/inputs.h"
#include "program/findings.h"
#include "program/standard_output.h"
#include "question.h"

namespace explorer {

enum ExitCode {
    kExitOk = 0,
    kExitNo = 1,  // the answer is no
    kExitUsage = 2,
    kExitNoSuch = 3,   // no such item, function, file
    kExitTrouble = 4,  // the work could not be done, or not to its end
};

// A command that cannot be carried out. what() is for people.
class CommandError : public std::runtime_error {
  public:
    CommandError(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

// The part of the work that this process does: part `index` of `count`.
struct Shard {
    int index = 0;
    int count = 1;
    bool Has(int unit) const { return unit % count == index; }
    bool IsPart() const { return count > 1; }
};

// "2/8": the second of eight parts. Throws CommandError.
Shard ParseShard(const std::string& text);

enum class Format { kText, kJson, kHtml, kMarkdown, kSarif, kGithub };

// What several verbs can be told.
struct CommonOptions {
    std::string provider;
    Format format = Format::kText;
    Shard shard;
    bool full = false;   // with the values and policies that cost more than they tell
    int beyond = 0;      // values that are drawn for each input beside those that it names
    int workers = 0;     // 0: as many as there are processors
    bool quiet = false;  // no progress and no rate
};

// Pages as they stand in a file, in UTF-8 whatever the locale. Bytes of a provider that are none
// are shown as text shows them.
void PrintDocument(const std::string& text, Format format);

// By its name among program::kFindingsFormats.
Format FindingsFormat(const std::string& name);
// What a check found, in one of the formats that other programs show: kSarif, kGithub.
void PrintFindings(Format format, const program::Findings& findings);

// What the names mean; all of the questions without a name. Throws CommandError with similar names.
std::vector<const Question*> QuestionsOf(const std::vector<std::string>& names,
                                         const std::vector<Question>& all = Questions());
// Those of a part.
std::vector<const Question*> ShareOf(const std::vector<const Question*>& questions,
                                     const Shard& shard);
// The same in a file. Throws CommandError.
void WriteTextFile(const std::string& file, const std::string& text, Format format = Format::kText);
// Only what can be read again.
void WriteScenarioFile(const std::string& file, const std::string& text);
Json::Value JsonList(const std::vector<std::string>& texts);
// Keys that the provider reads and the inputs do not name, to standard error.
void ReportUnknownKeys(const std::set<std::string>& keys, const Inputs& inputs);
// To standard error, when somebody has ended the work before its time.
void ReportInterruption();
// "489,216 questions in 1.6 s: 310,053 a second", to standard error, unless it is to be
// quiet.
void ReportRate(bool quiet, std::uint64_t count = TotalRuns(), const char* what = "questions");

// The command `vtv explore` and `vtv impact`, without its first word. Returns the exit code.
int ExploreMain(int argc, char** argv);

}  // namespace explorer
