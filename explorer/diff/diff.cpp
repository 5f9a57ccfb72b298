// vtv explore diff
#include "diff.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "calls_file.h"
#include "comparison.h"
#include "explorer/asking/beyond.h"
#include "explorer/asking/source_place.h"
#include "explorer/engine/arena.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/lazy_tv.h"
#include "host/core/toml_writer.h"
#include "program/counted.h"
#include "replay.h"
#include "virtual-tv/model/json_text.h"
#include "walk_comparison.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

// Empty for a difference that no host sees on the page.
std::string ScenarioOf(const Inputs& inputs, const Difference& difference) {
    const Question* question = FindQuestion(difference.question);
    const std::string steps = question == nullptr ? ""
                                                  : ToReplay(inputs, difference.smallest, *question,
                                                             WithoutTracingOff(difference.recordA),
                                                             WithoutTracingOff(difference.recordB));
    if (steps.empty()) {
        return "";
    }
    std::string comment = "# The first provider, as is expected here:\n";
    for (const std::string& line : difference.onlyA) {
        comment += host::TomlComment("  " + line);
    }
    comment += "# The second provider:\n";
    for (const std::string& line : difference.onlyB) {
        comment += host::TomlComment("  " + line);
    }
    return ToScenario(inputs, difference.smallest, "The providers differ: " + difference.question,
                      comment + steps);
}

std::string JoinLines(const Lines& lines, const char* head) {
    std::string text;
    for (const std::string& line : lines) {
        text += head + line + "\n";
    }
    return text;
}

// A difference as it is shown: in the words of what led to it.
struct Shown {
    Difference difference;
    Lines calls;  // before the one that shows it
    std::string scenario;
    std::string callsFile;
};

std::string ToText(const Inputs& inputs, const Shown& shown, std::size_t number) {
    const Difference& difference = shown.difference;
    const std::string paths = BigNumber(difference.paths).ToString();
    std::string text = "Difference " + std::to_string(number) + ", on " + paths +
                       (paths == "1" ? " path of " : " paths of ") +
                       program::Counted(difference.questions.size(), "question") + "\n";
    text += JoinLines(difference.onlyA, "  - ");
    text += JoinLines(difference.onlyB, "  + ");
    if (!shown.calls.empty()) {
        text += "  shortest sequence:\n";
        int step = 0;
        for (const std::string& call : shown.calls) {
            text += "      " + std::to_string(++step) + ". " + call + "\n";
        }
        text += "      " + std::to_string(++step) + ". " + difference.question + "\n";
    }
    text += "  smallest state, asked for " + difference.question + ":\n";
    text += JoinLines(Describe(inputs, difference.smallest), "      ");
    std::string others;
    for (const std::string& question : difference.questions) {
        others += question == difference.question ? "" : (others.empty() ? "" : ", ") + question;
    }
    text += others.empty() ? "" : "  also: " + others + "\n";
    text += shown.scenario.empty() ? "" : "  scenario: " + shown.scenario + "\n";
    text += shown.callsFile.empty() ? "" : "  calls: " + shown.callsFile + "\n";
    return text + "\n";
}

Json::Value ToJson(const Inputs& inputs, const Shown& shown) {
    const Difference& difference = shown.difference;
    Json::Value json;
    json["onlyA"] = JsonList(difference.onlyA);
    json["onlyB"] = JsonList(difference.onlyB);
    json["questions"] = JsonList(difference.questions);
    json["paths"] = Json::UInt64{difference.paths};
    json["question"] = difference.question;
    json["sequence"] = JsonList(shown.calls);
    json["smallestState"] = JsonList(Describe(inputs, difference.smallest));
    if (!shown.scenario.empty()) {
        json["scenario"] = shown.scenario;
    }
    if (!shown.callsFile.empty()) {
        json["calls"] = shown.callsFile;
    }
    return json;
}

// What diff came to.
struct Verdict {
    std::vector<Shown> differences;
    Lines troubles;  // why it is not proven
    bool interrupted = false;
    WalkCount count;
    std::string closed;  // what the proof rests on, in words
};

Json::Value ToJson(const Inputs& inputs, const Verdict& verdict) {
    Json::Value json;
    json["differences"] = Json::arrayValue;
    for (const Shown& shown : verdict.differences) {
        json["differences"].append(ToJson(inputs, shown));
    }
    const bool isProven = verdict.troubles.empty() && !verdict.interrupted;
    json["alike"] = verdict.differences.empty() && isProven;
    json["closed"] = isProven && verdict.differences.empty();
    json["questions"] = Json::UInt64{TotalRuns()};
    json["pairs"] = Json::UInt64{verdict.count.joints};
    json["states"]["a"] = Json::UInt64{verdict.count.states[0]};
    json["states"]["b"] = Json::UInt64{verdict.count.states[1]};
    json["calls"] = Json::UInt64{verdict.count.questions};
    json["paths"] = Json::UInt64{verdict.count.paths};
    json["troubles"] = JsonList(verdict.troubles);
    return json;
}

std::string LastLine(const Verdict& verdict) {
    return !verdict.differences.empty() ? "The providers differ."
           : verdict.interrupted        ? "Interrupted; alike so far, and not proven."
           : !verdict.troubles.empty()  ? "Alike so far, and not proven."
                                        : "The providers are alike" + verdict.closed + ".";
}

// About the second provider, which is the one that somebody wants to ship.
program::Findings FindingsOf(const Inputs& inputs, const DiffOptions& options,
                             const Verdict& verdict) {
    program::Findings findings = {"vtv explore diff", {}, verdict.troubles};
    std::size_t number = 0;
    for (const Shown& shown : verdict.differences) {
        const std::string& question = shown.difference.question;
        const SourcePlace place = PlaceOf(question, options.other);
        findings.list.push_back({question, "The providers answer " + question + " alike.",
                                 ToText(inputs, shown, ++number), place.file, place.line});
    }
    if (verdict.interrupted) {
        findings.troubles.emplace_back("interrupted: not everything was compared");
    }
    return findings;
}

int Show(const Inputs& inputs, const DiffOptions& options, const Verdict& verdict) {
    if (options.format == Format::kJson) {
        program::Print(vtv::PrettyJson(ToJson(inputs, verdict)) + "\n", program::Form::kJson);
    } else if (options.format != Format::kText) {
        PrintFindings(options.format, FindingsOf(inputs, options, verdict));
    } else if (!options.brief) {
        std::size_t number = 0;
        for (const Shown& shown : verdict.differences) {
            program::Print(ToText(inputs, shown, ++number), program::Form::kText);
        }
    }
    for (const std::string& trouble : verdict.troubles) {
        std::fprintf(stderr, "vtv explore diff: %s\n", program::OneLine(trouble).c_str());
    }
    if (options.format == Format::kText) {
        std::printf("%s\n", LastLine(verdict).c_str());
    }
    if (!verdict.differences.empty()) {
        return kExitNo;
    }
    return verdict.troubles.empty() && !verdict.interrupted ? kExitOk : kExitTrouble;
}

std::string FileOf(const DiffOptions& options, std::size_t number, const char* end) {
    std::filesystem::create_directories(options.scenarios);
    return options.scenarios + "/difference-" + std::to_string(number) + end;
}

// ---------------------------------------------------------------------------------------------
// In every pair of states
// ---------------------------------------------------------------------------------------------

Verdict CompareWalking(Inputs& inputs, const DiffOptions& options,
                       const std::vector<const Question*>& questions) {
    WalkComparison comparison(inputs, options, questions);
    comparison.Run();
    const Walk& walk = comparison.Walked();
    const Calls& calls = comparison.AllCalls();
    Verdict verdict;
    verdict.count = walk.Count();
    verdict.troubles = verdict.count.open;
    verdict.interrupted = IsInterrupted();
    ReportUnknownKeys(walk.UnknownKeys(), inputs);
    for (const Difference& found : comparison.Found()) {
        Shown& shown = verdict.differences.emplace_back();
        shown.difference = found;
        shown.difference.smallest.policy = PlaceOfPolicy(inputs, walk.PublishedIn(found.joint));
        shown.calls = walk.CallsTo(found.joint);
        if (options.scenarios.empty()) {
            continue;
        }
        const std::size_t number = verdict.differences.size();
        const std::string scenario =
            walk.IsOfAPage(found.joint) ? ScenarioOf(inputs, shown.difference) : "";
        if (!scenario.empty()) {
            shown.scenario = FileOf(options, number, ".toml");
            WriteScenarioFile(shown.scenario, scenario);
        }
        if (!found.recordA.empty()) {
            shown.callsFile = FileOf(options, number, ".calls.toml");
            WriteScenarioFile(shown.callsFile, ToCallsFile(inputs, options, calls, walk, found));
        }
    }
    const WalkCount& count = verdict.count;
    verdict.closed = " after every sequence of calls: closed with " +
                     BigNumber(count.joints).ToString() + " pairs of states, " +
                     BigNumber(count.questions).ToString() + " questions in them and " +
                     BigNumber(count.paths).ToString() + " paths";
    if (options.shard.count > 1) {
        verdict.closed += ", in part " + std::to_string(options.shard.index + 1) + " of " +
                          std::to_string(options.shard.count) + " of the work";
    }
    return verdict;
}

// ---------------------------------------------------------------------------------------------
// In rounds, where no memory can be put back
// ---------------------------------------------------------------------------------------------

// A provider that remembers something else after each round is not asked for ever.
constexpr int MOST_ROUNDS = 4;

// In a worker: what differs under one policy, the keys that no input names, and whether what the
// providers remember stays as it is. Everything is asked at least twice: what one question leaves
// behind, others may find.
std::string CompareUnder(int policy, const Inputs& inputs, const DiffOptions& options,
                         const std::vector<const Question*>& questions,
                         const std::set<int>& skipped, Shared& shared) {
    tv().Use(inputs);
    PolicyComparer comparer(inputs, options, policy, shared);
    const int count = static_cast<int>(questions.size());
    const auto askAll = [&] {
        for (int i = 0; i < count; ++i) {
            shared.step = i;
            const bool isOurs = options.shard.Has(policy * count + i) && skipped.count(i) == 0;
            if (isOurs && !comparer.Compare(*questions[static_cast<std::size_t>(i)])) {
                break;
            }
        }
    };
    bool isClosed = false;
    for (int round = 0; round < MOST_ROUNDS && !isClosed && comparer.IsAlike(); ++round) {
        askAll();
        isClosed = comparer.IsClosed() && round > 0;
    }
    shared.step = count;
    if (comparer.IsAlike() && skipped.count(count) == 0) {
        comparer.Publish(
            inputs.policies[static_cast<std::size_t>(policy + 1) % inputs.policies.size()]);
        askAll();
        shared.step = count;
        comparer.CompareEnds();
    }
    return ToBytes(comparer.Found(), tv().UnknownKeys(), isClosed || !comparer.IsAlike());
}

// All policies, each in a process of its own.
class Rounds {
  public:
    Rounds(const Inputs& inputs, const DiffOptions& options,
           const std::vector<const Question*>& questions)
        : inputs_(inputs),
          options_(options),
          questions_(questions),
          skipped_(inputs.policies.size()) {}

    void Run() {
        const WorkOptions work = {
            .workers = options_.workers, .progress = !options_.quiet, .stop = [this] {
                return options_.brief && !differences_.empty();
            }};
        Work(
            static_cast<int>(inputs_.policies.size()), work,
            [this](int policy, Shared& shared) {
                return CompareUnder(policy, inputs_, options_, questions_,
                                    skipped_[static_cast<std::size_t>(policy)], shared);
            },
            [this](const WorkerResult& result) {
                return result.trouble.empty() ? Take(BytesReader(result.bytes))
                                              : NoteTrouble(result);
            });
        ReportUnknownKeys(unknown_, inputs_);
    }

    std::vector<Difference> Found() const { return ListOf(differences_); }
    Lines Troubles() const {
        Lines troubles;
        if (!unknown_.empty()) {
            troubles.emplace_back("a provider asks for what the inputs do not name");
        }
        if (!isClosed_) {
            troubles.emplace_back(
                "what a provider remembers of questions goes on changing, so not all can be asked "
                "of it");
        }
        return troubles;
    }

  private:
    // Of both: whether the task is done again.
    bool Take(BytesReader bytes) {
        Merge(bytes.Next<std::vector<Difference>>(), inputs_, differences_);
        unknown_.merge(bytes.Next<std::set<std::string>>());
        isClosed_ = bytes.Next<bool>() && isClosed_;
        return false;
    }
    // One of the two is at fault: that is a difference to look at, unless both are.
    bool NoteTrouble(const WorkerResult& result) {
        const auto step = static_cast<std::size_t>(result.step);
        Difference difference;
        difference.onlyB = {"one of them " + result.trouble};
        difference.question =
            step < questions_.size() ? questions_[step]->name : "delete_provider and its like";
        difference.questions = {difference.question};
        difference.paths = 1;
        difference.smallest = {result.task, result.path, {}};
        Add(differences_, inputs_, difference);
        // What goes wrong without a question goes wrong again.
        const bool isNew =
            skipped_[static_cast<std::size_t>(result.task)].insert(result.step).second;
        return isNew && !options_.brief;
    }

    const Inputs& inputs_;
    const DiffOptions& options_;
    const std::vector<const Question*>& questions_;
    std::vector<std::set<int>> skipped_;  // by policy: steps
    Differences differences_;
    std::set<std::string> unknown_;
    bool isClosed_ = true;
};

Verdict CompareInRounds(const Inputs& inputs, const DiffOptions& options,
                        const std::vector<const Question*>& questions) {
    Rounds rounds(inputs, options, questions);
    rounds.Run();
    Verdict verdict;
    for (const Difference& difference : rounds.Found()) {
        Shown& shown = verdict.differences.emplace_back(Shown{difference, {}, "", ""});
        const std::string scenario =
            options.scenarios.empty() ? "" : ScenarioOf(inputs, difference);
        if (!scenario.empty()) {
            shown.scenario = FileOf(options, verdict.differences.size(), ".toml");
            WriteScenarioFile(shown.scenario, scenario);
        }
    }
    verdict.troubles = rounds.Troubles();
    verdict.interrupted = IsInterrupted();
    verdict.closed =
        ", as far as single questions show it: this program is built with a "
        "sanitizer, so no state of theirs could be put back";
    return verdict;
}

}  // namespace

int DiffMain(const DiffOptions& options) {
    Inputs inputs = LoadInputs(InputsFile(), options.full);
    const std::vector<const Question*> questions = QuestionsOf(options.names, ThoroughQuestions());
    CheckSubject(options.provider);
    CheckSubject(options.other);
    Verdict verdict = Arena::IsServed() ? CompareWalking(inputs, options, questions)
                                        : CompareInRounds(inputs, options, questions);
    if (verdict.differences.empty()) {
        CommonOptions other = options;
        other.provider = options.other;
        for (const CommonOptions& asked : {CommonOptions(options), other}) {
            const Lines unnamed = AskBeyond(inputs, questions, asked);
            verdict.troubles.insert(verdict.troubles.end(), unnamed.begin(), unnamed.end());
        }
    }
    ReportRate(options.quiet);
    return Show(inputs, options, verdict);
}

}  // namespace explorer
