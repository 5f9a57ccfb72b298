// vtv explore diff
#include "diff.h"

#include <json/json.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "explorer/asking/command.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/lazy_tv.h"
#include "platform/trace_storage.h"
#include "replay.h"

namespace explorer {

namespace {

using Lines = std::vector<std::string>;

// The lines of a record, with what was asked for beside it.
Lines LinesOf(std::string_view record) {
    Lines lines;
    for (const RecordEntry& entry : ReadRecord(record)) {
        lines.push_back(ToText(entry));
    }
    return lines;
}

// What is in the one and not in the other: answers and effects, then logs and traces.
Lines Only(const Lines& lines, Lines others) {
    Lines only;
    for (const std::string& line : lines) {
        const auto found = std::find(others.begin(), others.end(), line);
        if (found == others.end()) {
            only.push_back(line);
        } else {
            others.erase(found);
        }
    }
    std::stable_partition(only.begin(), only.end(), [](const std::string& line) {
        return line.rfind("logs ", 0) != 0 && line.rfind("traces ", 0) != 0;
    });
    return only;
}

// By what is different, in a worker and then over all of them.
using Differences = std::map<std::pair<Lines, Lines>, Difference>;

void Add(Differences& differences, const Inputs& inputs, const Lines& onlyA, const Lines& onlyB,
         const std::string& question, std::uint64_t paths, const State& state,
         const std::string& recordA, const std::string& recordB) {
    const auto [place, isNew] = differences.try_emplace({onlyA, onlyB});
    Difference& difference = place->second;
    difference.onlyA = onlyA;
    difference.onlyB = onlyB;
    difference.paths += paths;
    Lines& questions = difference.questions;
    if (std::find(questions.begin(), questions.end(), question) == questions.end()) {
        questions.push_back(question);
    }
    if (isNew || state.Weight(inputs) < difference.smallest.Weight(inputs)) {
        difference.smallest = state;
        difference.question = question;
        difference.recordA = recordA;
        difference.recordB = recordB;
    }
}

class PolicyComparer {
  public:
    PolicyComparer(const Inputs& inputs, const DiffOptions& options, int policy, Shared& shared)
        : inputs_(inputs), options_(options), policy_(policy), shared_(shared) {
        tv().logLevel = !options.logs   ? LogLevel::kNone
                        : options.lines ? LogLevel::kLines
                                        : LogLevel::kMessages;
        TIStorageManagerState::enabled = options.logs;
        const Policy& published = inputs.policies[static_cast<std::size_t>(policy)];
        a_ = std::make_unique<Subject>(options.a, published);
        b_ = std::make_unique<Subject>(options.b, published);
        CompareRecords(a_->StartRecord(), b_->StartRecord(), "create_provider");
    }

    // False when it may stop.
    bool Compare(const Question& question) {
        Choices& choices = shared_.choices;
        ForEachPath(
            choices, shared_.runs, [&] { Run(question); },
            [&] {
                if (differs_) {
                    // The state's documents are told as the first provider found them.
                    tv().Again();
                    Ask(*a_, question);
                    Note(recordA_, recordB_, question.name, CurrentState(policy_, choices));
                }
            });
        return !options_.brief || differences_.empty();
    }

    // After the last question.
    void CompareEnds() {
        const std::string end = a_->Delete();
        CompareRecords(end, b_->Delete(), "delete_provider");
    }

    const Differences& Found() const { return differences_; }

  private:
    void CompareRecords(const std::string& a, const std::string& b, const char* what) {
        if (a != b) {
            State state;
            state.policy = policy_;
            Note(a, b, what, state);
        }
    }

    void Run(const Question& question) {
        Ask(*a_, question);
        recordA_.assign(tv().Record());
        if (options_.reads) {
            recordA_.append(Reads());
        }
        tv().Again();
        Ask(*b_, question);
        recordB_.assign(tv().Record());
        if (options_.reads) {
            recordB_.append(Reads());
        }
        differs_ = recordA_ != recordB_;
    }

    std::string Reads() const {
        std::string reads;
        for (std::size_t i = 0; i < tv().TouchedSize(); ++i) {
            const int input = tv().Touched()[i];
            reads += "areads " + inputs_.inputs[static_cast<std::size_t>(input)].name + " " +
                     std::to_string(tv().ReadCount(input)) + " times" + '\0';
        }
        return reads;
    }

    void Note(const std::string& recordA, const std::string& recordB, const std::string& question,
              const State& state) {
        const Lines a = LinesOf(recordA);
        const Lines b = LinesOf(recordB);
        Lines onlyA = Only(a, b);
        Lines onlyB = Only(b, a);
        if (onlyA.empty() && onlyB.empty()) {
            onlyA = a;  // the same in another order
            onlyB = b;
        }
        Add(differences_, inputs_, onlyA, onlyB, question, 1, state, recordA, recordB);
    }

    const Inputs& inputs_;
    const DiffOptions& options_;
    const int policy_;
    Shared& shared_;
    std::unique_ptr<Subject> a_;
    std::unique_ptr<Subject> b_;
    Differences differences_;
    std::string recordA_;
    std::string recordB_;
    bool differs_ = false;
};

void WriteLines(BytesWriter& bytes, const Lines& lines) {
    bytes.Number(lines.size());
    for (const std::string& line : lines) {
        bytes.Text(line);
    }
}

Lines ReadLines(BytesReader& bytes) {
    Lines lines(bytes.Number());
    for (std::string& line : lines) {
        line = bytes.Text();
    }
    return lines;
}

std::string ToBytes(const Differences& differences) {
    BytesWriter bytes;
    for (const auto& [key, difference] : differences) {
        WriteLines(bytes, difference.onlyA);
        WriteLines(bytes, difference.onlyB);
        WriteLines(bytes, difference.questions);
        bytes.Number(difference.paths);
        bytes.Text(ToBytes(difference.smallest));
        bytes.Text(difference.question);
        bytes.Text(difference.recordA);
        bytes.Text(difference.recordB);
    }
    return bytes.Bytes();
}

void MergeBytes(const std::string& text, const Inputs& inputs, Differences& into) {
    BytesReader bytes(text);
    while (!bytes.AtEnd()) {
        const Lines onlyA = ReadLines(bytes);
        const Lines onlyB = ReadLines(bytes);
        const Lines questions = ReadLines(bytes);
        const std::uint64_t paths = bytes.Number();
        const State smallest = StateFromBytes(bytes.Text());
        const std::string question = bytes.Text();
        const std::string recordA = bytes.Text();
        const std::string recordB = bytes.Text();
        Add(into, inputs, onlyA, onlyB, question, paths, smallest, recordA, recordB);
        for (const std::string& other : questions) {
            Add(into, inputs, onlyA, onlyB, other, 0, smallest, recordA, recordB);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

// As a comment of TOML, which takes only text: a trace event has bytes of every kind.
std::string Commented(const std::string& line) {
    std::string comment = "#   ";
    for (const char c : line) {
        const bool isText = c >= ' ' && c <= '~';
        comment += c == '\n' ? "\n#   " : isText ? std::string(1, c) : "?";
    }
    return comment + "\n";
}

// Empty for a difference that no host sees on the page.
std::string ScenarioOf(const Inputs& inputs, const Difference& difference) {
    const Question* question = FindQuestion(difference.question);
    const std::string steps = question == nullptr
                                  ? ""
                                  : ToReplay(inputs, difference.smallest, *question,
                                             difference.recordA, difference.recordB);
    if (steps.empty()) {
        return "";
    }
    std::string comment = "# The first provider, as is expected here:\n";
    for (const std::string& line : difference.onlyA) {
        comment += Commented(line);
    }
    comment += "# The second provider:\n";
    for (const std::string& line : difference.onlyB) {
        comment += Commented(line);
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

std::string ToText(const Inputs& inputs, const Difference& difference, std::size_t number,
                   const std::string& file) {
    std::string text = "Difference " + std::to_string(number) + ", on " +
                       BigNumber(difference.paths).ToString() + " paths of " +
                       std::to_string(difference.questions.size()) + " questions\n";
    text += JoinLines(difference.onlyA, "  - ");
    text += JoinLines(difference.onlyB, "  + ");
    text += "  smallest state, asked for " + difference.question + ":\n";
    text += JoinLines(Describe(inputs, difference.smallest), "      ");
    std::string others;
    for (const std::string& question : difference.questions) {
        others += question == difference.question ? "" : (others.empty() ? "" : ", ") + question;
    }
    text += others.empty() ? "" : "  also: " + others + "\n";
    text += file.empty() ? "" : "  scenario: " + file + "\n";
    return text + "\n";
}

Json::Value ToJson(const Lines& lines) {
    Json::Value array(Json::arrayValue);
    for (const std::string& line : lines) {
        array.append(line);
    }
    return array;
}

Json::Value ToJson(const Inputs& inputs, const Difference& difference, const std::string& file) {
    Json::Value json;
    json["onlyA"] = ToJson(difference.onlyA);
    json["onlyB"] = ToJson(difference.onlyB);
    json["questions"] = ToJson(difference.questions);
    json["paths"] = Json::UInt64{difference.paths};
    json["question"] = difference.question;
    json["smallestState"] = ToJson(Describe(inputs, difference.smallest));
    if (!file.empty()) {
        json["scenario"] = file;
    }
    return json;
}

int Show(const Inputs& inputs, const DiffOptions& options, const Differences& found,
         const Lines& troubles, bool interrupted) {
    std::vector<const Difference*> differences;
    for (const auto& [key, difference] : found) {
        differences.push_back(&difference);
    }
    std::stable_sort(differences.begin(), differences.end(), [&](const auto* a, const auto* b) {
        return a->smallest.Weight(inputs) < b->smallest.Weight(inputs);
    });
    Json::Value json;
    json["differences"] = Json::arrayValue;
    std::string text;
    std::size_t number = 0;
    for (const Difference* difference : differences) {
        ++number;
        std::string file;
        const std::string scenario =
            options.scenarios.empty() ? "" : ScenarioOf(inputs, *difference);
        if (!scenario.empty()) {
            std::filesystem::create_directories(options.scenarios);
            file = options.scenarios + "/difference-" + std::to_string(number) + ".toml";
            WriteScenarioFile(file, scenario);
        }
        text += ToText(inputs, *difference, number, file);
        json["differences"].append(ToJson(inputs, *difference, file));
    }
    json["alike"] = differences.empty() && troubles.empty() && !interrupted;
    json["questions"] = Json::UInt64{TotalRuns()};
    json["troubles"] = ToJson(troubles);
    if (options.json) {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "  ";
        std::printf("%s\n", Json::writeString(builder, json).c_str());
    } else if (!options.brief) {
        std::fputs(text.c_str(), stdout);
    }
    for (const std::string& trouble : troubles) {
        std::fprintf(stderr, "vtv explore diff: %s\n", trouble.c_str());
    }
    if (!options.json && (options.brief || differences.empty())) {
        std::printf("%s\n", !differences.empty() ? "The providers differ."
                            : interrupted        ? "Interrupted; alike so far."
                                                 : "The providers are alike.");
    }
    if (!differences.empty()) {
        return kExitNo;
    }
    return troubles.empty() && !interrupted ? kExitOk : kExitTrouble;
}

}  // namespace

int DiffMain(const DiffOptions& options) {
    const Inputs inputs = LoadInputs(InputsFile());
    const std::vector<const Question*> questions = QuestionsOf(options.names);
    CheckSubject(options.a);
    CheckSubject(options.b);
    // The loader opens a file only once: a provider that is compared with itself needs a copy.
    DiffOptions own = options;
    std::error_code error;
    std::string copy;
    if (std::filesystem::equivalent(options.a, options.b, error)) {
        copy = std::filesystem::temp_directory_path() /
               ("vtv-explore-" + std::to_string(getpid()) + ".so");
        std::filesystem::copy_file(options.b, copy,
                                   std::filesystem::copy_options::overwrite_existing);
        own.b = copy;
    }
    Differences differences;
    Lines troubles;
    std::set<std::string> unknown;
    std::vector<std::set<int>> skipped(inputs.policies.size());
    const auto task = [&](int policy, Shared& shared) {
        tv().Use(inputs);
        PolicyComparer comparer(inputs, own, policy, shared);
        for (std::size_t i = 0; i < questions.size(); ++i) {
            const int unit = policy * static_cast<int>(questions.size()) + static_cast<int>(i);
            shared.step = static_cast<int>(i);
            const bool isSkipped =
                skipped[static_cast<std::size_t>(policy)].count(shared.step) != 0;
            if (options.shard.Has(unit) && !isSkipped && !comparer.Compare(*questions[i])) {
                break;
            }
        }
        comparer.CompareEnds();
        BytesWriter bytes;
        bytes.Text(ToBytes(comparer.Found()));
        for (const std::string& key : tv().UnknownKeys()) {
            bytes.Text(key);
        }
        return bytes.Bytes();
    };
    const auto finished = [&](const WorkerResult& result) {
        if (!result.trouble.empty()) {
            // One of the two is at fault: that is a difference to look at, unless both are.
            const std::string question = questions[static_cast<std::size_t>(result.step)]->name;
            State state;
            state.policy = result.task;
            state.path = result.path;
            Add(differences, inputs, {}, {"one of them " + result.trouble}, question, 1, state, "",
                "");
            skipped[static_cast<std::size_t>(result.task)].insert(result.step);
            return !options.brief;
        }
        BytesReader bytes(result.bytes);
        MergeBytes(bytes.Text(), inputs, differences);
        while (!bytes.AtEnd()) {
            unknown.insert(bytes.Text());
        }
        return false;
    };
    WorkOptions work;
    work.workers = options.workers;
    work.progress = options.progress;
    work.stop = [&] { return options.brief && !differences.empty(); };
    Work(static_cast<int>(inputs.policies.size()), work, task, finished);
    if (!copy.empty()) {
        std::filesystem::remove(copy, error);
    }
    ReportUnknownKeys(unknown, inputs);
    if (!unknown.empty()) {
        troubles.push_back("a provider asks for what the inputs do not name");
    }
    ReportRate(options.progress);
    return Show(inputs, options, differences, troubles, IsInterrupted());
}

}  // namespace explorer
