// vtv explore check
#include "check.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdio>

#include "check_result.h"
#include "checking.h"
#include "explorer/asking/beyond.h"
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

// Fails on the provider that is at fault, where a page can show what is wrong.
std::string ScenarioOf(const Inputs& inputs, const Verdict& verdict, const Violation& violation) {
    const std::string what = violation.question + ": " + violation.what;
    const std::string steps = violation.steps.empty()
                                  ? "# No page shows it; this is the TV on which it was found.\n" +
                                        StepText(toml::table{{"say", "look at " + what}})
                                  : violation.steps;
    return ToScenario(inputs, violation.smallest, verdict.invariant->sentence,
                      host::TomlComment(verdict.invariant->sentence) +
                          host::TomlComment("Here: " + what) + steps);
}

CheckResult ResultOf(const Checking& checking, Inputs& inputs) {
    CheckResult result;
    result.count = checking.Walked().Count();
    for (const Verdict& verdict : checking.Verdicts(inputs)) {
        CheckedInvariant& invariant = result.invariants.emplace_back();
        invariant.name = verdict.invariant->name;
        invariant.sentence = verdict.invariant->sentence;
        invariant.paths = verdict.paths;
        for (const Violation& violation : verdict.violations) {
            invariant.violations.push_back({violation.what, violation.question, violation.paths,
                                            violation.calls, Describe(inputs, violation.smallest),
                                            ScenarioOf(inputs, verdict, violation),
                                            violation.nearness});
        }
    }
    return result;
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
    Inputs inputs = LoadInputs(InputsFile(), options.full);
    CheckSubject(options.provider);
    RequireArena();
    Checking checking(inputs, options, invariants);
    checking.Run();
    CheckResult result = ResultOf(checking, inputs);
    const std::vector<std::string> unnamed =
        AskBeyond(inputs, ShareOf(QuestionsOf({}), options.shard), options).troubles;
    result.count.open.insert(result.count.open.end(), unnamed.begin(), unnamed.end());
    const int code = Show(options, result);
    ReportUnknownKeys(checking.Walked().UnknownKeys(), inputs);
    ReportRate(options.quiet);
    ReportInterruption();
    return code;
}

}  // namespace explorer
