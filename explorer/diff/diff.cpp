// vtv explore diff
#include "diff.h"

#include <algorithm>

#include "calls_file.h"
#include "comparison.h"
#include "diff_result.h"
#include "explorer/asking/beyond.h"
#include "explorer/engine/arena.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/lazy_tv.h"
#include "host/core/toml_writer.h"
#include "replay.h"
#include "walk_comparison.h"

namespace explorer {

namespace {

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

// A difference in words. The texts of its files are left to whoever knows what it needs.
ShownDifference Shown(const Inputs& inputs, const Difference& difference) {
    ShownDifference shown;
    shown.onlyA = difference.onlyA;
    shown.onlyB = difference.onlyB;
    shown.questions = difference.questions;
    shown.paths = difference.paths;
    shown.question = difference.question;
    shown.smallest = Describe(inputs, difference.smallest);
    shown.nearness = difference.nearness;
    return shown;
}

// ---------------------------------------------------------------------------------------------
// In every pair of states
// ---------------------------------------------------------------------------------------------

DiffResult CompareWalking(Inputs& inputs, const DiffOptions& options,
                          const std::vector<const Question*>& questions) {
    WalkComparison comparison(inputs, options, questions);
    comparison.Run();
    const Walk& walk = comparison.Walked();
    DiffResult result;
    result.count = walk.Count();
    result.troubles = result.count.open;
    result.interrupted = IsInterrupted();
    ReportUnknownKeys(walk.UnknownKeys(), inputs);
    for (Difference& difference : comparison.Found()) {
        const Difference found = difference;
        difference.smallest.policy = PlaceOfPolicy(inputs, walk.PublishedIn(found.joint));
        ShownDifference& shown = result.differences.emplace_back(Shown(inputs, difference));
        shown.calls = walk.CallsTo(found.joint);
        if (!options.HasFiles()) {
            continue;
        }
        shown.scenario = walk.IsOfAPage(found.joint) ? ScenarioOf(inputs, difference) : "";
        if (!found.recordA.empty()) {
            shown.callsFile = ToCallsFile(inputs, options, comparison.AllCalls(), walk, found);
        }
    }
    return result;
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
        Merge(bytes.Next<std::vector<Difference>>(), differences_);
        unknown_.merge(bytes.Next<std::set<std::string>>());
        isClosed_ = bytes.Next<bool>() && isClosed_;
        return false;
    }
    // One of the two is at fault: that is a difference to look at, unless both are.
    bool NoteTrouble(const WorkerResult& result) {
        const auto step = static_cast<std::size_t>(result.step);
        Difference difference;
        difference.onlyB = {"one of them " + result.trouble};
        Place(difference, inputs_,
              step < questions_.size() ? questions_[step]->name : "delete_provider and its like",
              {result.task, result.path, {}});
        Add(differences_, difference);
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

DiffResult CompareInRounds(const Inputs& inputs, const DiffOptions& options,
                           const std::vector<const Question*>& questions) {
    Rounds rounds(inputs, options, questions);
    rounds.Run();
    DiffResult result;
    result.isWalked = false;
    result.count.questions = TotalRuns();
    for (const Difference& difference : rounds.Found()) {
        ShownDifference& shown = result.differences.emplace_back(Shown(inputs, difference));
        shown.scenario = options.HasFiles() ? ScenarioOf(inputs, difference) : "";
    }
    result.troubles = rounds.Troubles();
    result.interrupted = IsInterrupted();
    return result;
}

// Where values that no input names lead to: the first of each question.
std::vector<ShownDifference> DifferencesBeyond(const AnswersBeyond& a, const AnswersBeyond& b) {
    std::vector<ShownDifference> differences;
    for (const auto& [place, answers] : a.answers) {
        const auto& [question, policy, value] = place;
        const auto other = b.answers.find(place);
        const bool isAlike = other == b.answers.end() || other->second == answers;
        if (!isAlike && (differences.empty() || differences.back().question != question)) {
            ShownDifference& shown = differences.emplace_back();
            shown.onlyB = {"answers otherwise, with a value that no input names"};
            shown.question = question;
            shown.questions = {{0, question}};
            shown.paths = 1;
            shown.smallest = {"policy: " + policy, value};
        }
    }
    return differences;
}

}  // namespace

int DiffMain(const DiffOptions& options) {
    Inputs inputs = LoadInputs(InputsFile(), options.full);
    const std::vector<const Question*> questions = QuestionsOf(options.names, ThoroughQuestions());
    CheckSubject(options.provider);
    CheckSubject(options.other);
    DiffResult result = Arena::IsServed() ? CompareWalking(inputs, options, questions)
                                          : CompareInRounds(inputs, options, questions);
    if (result.differences.empty()) {
        CommonOptions other = options;
        other.provider = options.other;
        const std::vector<const Question*> mine = ShareOf(questions, options.shard);
        const AnswersBeyond a = AskBeyond(inputs, mine, options, options.records);
        const AnswersBeyond b = AskBeyond(inputs, mine, other, options.records);
        result.troubles.insert(result.troubles.end(), a.troubles.begin(), a.troubles.end());
        result.troubles.insert(result.troubles.end(), b.troubles.begin(), b.troubles.end());
        result.differences = DifferencesBeyond(a, b);
        result.interrupted = IsInterrupted();
    }
    ReportRate(options.quiet);
    return Show(options, result);
}

}  // namespace explorer
