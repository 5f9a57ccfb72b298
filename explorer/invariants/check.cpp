// vtv explore check
#include "check.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "explorer/asking/command.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/memory.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"

namespace explorer {

std::vector<Case> CasesOf(const std::vector<const Invariant*>& invariants) {
    std::vector<Case> cases;
    for (const Invariant* invariant : invariants) {
        if (invariant->isAbout == nullptr) {
            cases.push_back({invariant, nullptr});
            continue;
        }
        for (const Question& question : Questions()) {
            if (invariant->isAbout(question)) {
                cases.push_back({invariant, &question});
            }
        }
    }
    return cases;
}

std::vector<const Invariant*> InvariantsOf(const std::vector<std::string>& names) {
    std::vector<const Invariant*> chosen;
    for (const std::string& name : names) {
        const auto found = std::find_if(Invariants().begin(), Invariants().end(),
                                        [&](const Invariant& one) { return name == one.name; });
        if (found == Invariants().end()) {
            throw CommandError(kExitNoSuch,
                               "no invariant \"" + name + "\": see vtv explore check --list");
        }
        chosen.push_back(&*found);
    }
    if (names.empty()) {
        for (const Invariant& invariant : Invariants()) {
            chosen.push_back(&invariant);
        }
    }
    return chosen;
}

namespace {

struct Violation {
    std::string what;
    std::uint64_t paths = 0;
    State smallest;
    std::string question;
};

struct Verdict {
    const Invariant* invariant = nullptr;
    std::uint64_t paths = 0;
    bool complete = true;
    int unfinished = 0;  // cases, counted for each policy, of which nothing has been heard
    std::vector<Violation> violations;  // one for each thing that is wrong
};

std::string NameOf(const Question* question) {
    return question != nullptr ? question->name : "the page";
}

void Note(std::vector<Violation>& violations, const Inputs& inputs, const Violation& one) {
    const auto known = std::find_if(violations.begin(), violations.end(),
                                    [&](const Violation& other) { return other.what == one.what; });
    if (known == violations.end()) {
        violations.push_back(one);
        return;
    }
    known->paths += one.paths;
    if (one.smallest.Weight(inputs) < known->smallest.Weight(inputs)) {
        known->smallest = one.smallest;
        known->question = one.question;
    }
}

// One case under one policy.
void CheckCase(const Inputs& inputs, const Subject& subject, const PolicyState& policyState,
               int policy, const Case& one, Shared& shared, BytesWriter& bytes, int index) {
    const Look look(subject, policyState);
    std::vector<Violation> violations;
    Coverage coverage;
    std::string wrong;
    const bool whole = ForEachPath(
        shared.choices, shared.runs,
        [&] {
            try {
                const ProviderMemory counted;
                wrong = one.invariant->check(look, one.question);
            } catch (const std::exception& exception) {
                wrong = std::string("an exception leaves the provider: ") + exception.what();
            }
        },
        [&] {
            coverage.Add(shared.choices.Path(), shared.choices.Depth());
            if (shared.choices.Diverged()) {
                wrong = "asks differently when it is asked again";
            }
            if (!wrong.empty()) {
                Note(violations, inputs,
                     {wrong, 1, CurrentState(policy, shared.choices), NameOf(one.question)});
            }
        });
    bytes.Number(static_cast<std::uint64_t>(index));
    bytes.Number(coverage.Paths());
    bytes.Number(whole && coverage.IsComplete() ? 1 : 0);
    bytes.Number(violations.size());
    for (const Violation& violation : violations) {
        bytes.Text(violation.what);
        bytes.Number(violation.paths);
        bytes.Text(ToBytes(violation.smallest));
        bytes.Text(violation.question);
    }
}

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

std::string WriteScenario(const Inputs& inputs, const CheckOptions& options, const Verdict& verdict,
                          const Violation& violation, std::size_t number) {
    std::filesystem::create_directories(options.scenarios);
    const std::string file = options.scenarios + "/" + verdict.invariant->name +
                             (number == 0 ? "" : "-" + std::to_string(number + 1)) + ".toml";
    const std::string steps =
        host::TomlComment(verdict.invariant->sentence) +
        host::TomlComment("Here: " + violation.question + ": " + violation.what) +
        "[[step]]\nsay = " +
        host::TomlText("look at " + violation.question + ": " + violation.what) + "\n";
    WriteScenarioFile(file,
                      ToScenario(inputs, violation.smallest, verdict.invariant->sentence, steps));
    return file;
}

Json::Value ToJson(const Inputs& inputs, const Violation& violation, const std::string& file) {
    Json::Value json;
    json["what"] = violation.what;
    json["question"] = violation.question;
    json["paths"] = Json::UInt64{violation.paths};
    json["scenario"] = file;
    for (const std::string& line : Describe(inputs, violation.smallest)) {
        json["smallestState"].append(line);
    }
    return json;
}

int Show(const Inputs& inputs, const CheckOptions& options, const std::vector<Verdict>& verdicts) {
    Json::Value root;
    root["invariants"] = Json::arrayValue;
    int violated = 0;
    for (const Verdict& verdict : verdicts) {
        Json::Value json;
        json["name"] = verdict.invariant->name;
        json["sentence"] = verdict.invariant->sentence;
        json["paths"] = Json::UInt64{verdict.paths};
        json["complete"] = verdict.complete;
        json["holds"] = verdict.violations.empty();
        json["violations"] = Json::arrayValue;
        violated += verdict.violations.empty() ? 0 : 1;
        const char* word = !verdict.violations.empty() ? "VIOLATED"
                           : verdict.complete          ? "holds"
                                                       : "unfinished";
        if (!options.json) {
            std::printf("%-9s %-32s %12s paths  %s\n", word, verdict.invariant->name,
                        BigNumber(verdict.paths).ToString().c_str(), verdict.invariant->sentence);
        }
        for (std::size_t i = 0; i < verdict.violations.size(); ++i) {
            const Violation& violation = verdict.violations[i];
            const std::string file = WriteScenario(inputs, options, verdict, violation, i);
            json["violations"].append(ToJson(inputs, violation, file));
            if (options.json) {
                continue;
            }
            std::printf("  %s: %s, on %s paths; smallest state:\n", violation.question.c_str(),
                        violation.what.c_str(), BigNumber(violation.paths).ToString().c_str());
            for (const std::string& line : Describe(inputs, violation.smallest)) {
                std::printf("      %s\n", line.c_str());
            }
            std::printf("  scenario: %s\n", file.c_str());
        }
        root["invariants"].append(json);
    }
    if (options.json) {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "  ";
        std::printf("%s\n", Json::writeString(builder, root).c_str());
    } else {
        std::printf("%zu invariants, %d violated\n", verdicts.size(), violated);
    }
    return violated == 0 ? kExitOk : kExitNo;
}

}  // namespace

int CheckMain(const CheckOptions& options) {
    const std::vector<const Invariant*> invariants = InvariantsOf(options.names);
    if (options.list) {
        for (const Invariant* invariant : invariants) {
            std::printf("%-32s %s\n", invariant->name, invariant->sentence);
        }
        return kExitOk;
    }
    const Inputs inputs = LoadInputs(InputsFile());
    CheckSubject(options.provider);
    const std::vector<Case> cases = CasesOf(invariants);
    std::vector<Verdict> verdicts;
    for (const Invariant* invariant : invariants) {
        Verdict verdict;
        verdict.invariant = invariant;
        verdicts.push_back(verdict);
    }
    const auto verdictOf = [&](std::size_t index) -> Verdict& {
        const auto place = std::find(invariants.begin(), invariants.end(), cases[index].invariant);
        return verdicts[static_cast<std::size_t>(place - invariants.begin())];
    };
    const int policies = static_cast<int>(inputs.policies.size());
    for (int unit = 0; unit < policies * static_cast<int>(cases.size()); ++unit) {
        if (options.shard.Has(unit)) {
            ++verdictOf(static_cast<std::size_t>(unit) % cases.size()).unfinished;
        }
    }
    std::set<std::string> unknown;
    std::vector<std::set<int>> skipped(inputs.policies.size());
    const auto task = [&](int policy, Shared& shared) {
        tv().Use(inputs);
        memoryBooks.poisoning = true;
        const Policy& published = inputs.policies[static_cast<std::size_t>(policy)];
        const PolicyState state = StateOf(published);
        const Subject subject(options.provider, published);
        BytesWriter bytes;
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const int index = static_cast<int>(i);
            shared.step = index;
            const int unit = policy * static_cast<int>(cases.size()) + index;
            if (options.shard.Has(unit) &&
                skipped[static_cast<std::size_t>(policy)].count(index) == 0) {
                CheckCase(inputs, subject, state, policy, cases[i], shared, bytes, index);
            }
        }
        BytesWriter whole;
        whole.Text(bytes.Bytes());
        for (const std::string& key : tv().UnknownKeys()) {
            whole.Text(key);
        }
        return whole.Bytes();
    };
    const auto finished = [&](const WorkerResult& result) {
        if (!result.trouble.empty()) {
            const auto step = static_cast<std::size_t>(result.step);
            State state;
            state.policy = result.task;
            state.path = result.path;
            Note(verdictOf(step).violations, inputs,
                 {result.trouble, 1, state, NameOf(cases[step].question)});
            --verdictOf(step).unfinished;
            skipped[static_cast<std::size_t>(result.task)].insert(result.step);
            return true;
        }
        BytesReader whole(result.bytes);
        const std::string parts = whole.Text();
        BytesReader bytes(parts);
        while (!bytes.AtEnd()) {
            Verdict& verdict = verdictOf(bytes.Number());
            --verdict.unfinished;
            verdict.paths += bytes.Number();
            verdict.complete = bytes.Number() == 1 && verdict.complete;
            for (std::uint64_t count = bytes.Number(); count > 0; --count) {
                Violation violation;
                violation.what = bytes.Text();
                violation.paths = bytes.Number();
                violation.smallest = StateFromBytes(bytes.Text());
                violation.question = bytes.Text();
                Note(verdict.violations, inputs, violation);
            }
        }
        while (!whole.AtEnd()) {
            unknown.insert(whole.Text());
        }
        return false;
    };
    WorkOptions work;
    work.workers = options.workers;
    work.progress = options.progress;
    work.what = "states";
    Work(policies, work, task, finished);
    for (Verdict& verdict : verdicts) {
        verdict.complete = verdict.complete && verdict.unfinished == 0;
    }
    const int code = Show(inputs, options, verdicts);
    ReportUnknownKeys(unknown, inputs);
    ReportRate(options.progress);
    if (IsInterrupted()) {
        std::fputs("vtv explore: interrupted; what was found so far is shown\n", stderr);
    }
    const bool isWhole = std::all_of(verdicts.begin(), verdicts.end(),
                                     [](const Verdict& verdict) { return verdict.complete; });
    return code == kExitOk && (IsInterrupted() || !unknown.empty() || !isWhole) ? kExitTrouble
                                                                                : code;
}

}  // namespace explorer
