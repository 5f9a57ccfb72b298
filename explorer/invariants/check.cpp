// vtv explore check
#include "check.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "checking.h"
#include "explorer/asking/beyond.h"
#include "explorer/asking/source_place.h"
#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"
#include "program/counted.h"
#include "virtual-tv/model/json_text.h"

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
    json["sequence"] = JsonList(violation.calls);
    json["scenario"] = file;
    json["smallestState"] = JsonList(Describe(inputs, violation.smallest));
    return json;
}

program::Finding FindingOf(const Inputs& inputs, const CheckOptions& options,
                           const Verdict& verdict, const Violation& violation,
                           const std::string& file) {
    std::string message = violation.question + ": " + violation.what + "\nsmallest state:";
    for (const std::string& line : Describe(inputs, violation.smallest)) {
        message += "\n  " + line;
    }
    for (const std::string& call : violation.calls) {
        message += "\nafter: " + call;
    }
    const SourcePlace place = PlaceOf(violation.question, options.provider);
    return {verdict.invariant->name, verdict.invariant->sentence, message + "\nscenario: " + file,
            place.file, place.line};
}

void Print(const Inputs& inputs, const Violation& violation) {
    std::printf("  %s, on %s paths; smallest state:\n",
                program::OneLine(violation.question + ": " + violation.what).c_str(),
                BigNumber(violation.paths).ToString().c_str());
    for (const std::string& line : Describe(inputs, violation.smallest)) {
        std::printf("      %s\n", program::OneLine(line).c_str());
    }
    int step = 0;
    for (const std::string& call : violation.calls) {
        std::printf("    after %d. %s\n", ++step, program::OneLine(call).c_str());
    }
}

int Show(const Inputs& inputs, const CheckOptions& options, const std::vector<Verdict>& verdicts,
         const WalkCount& count) {
    const bool isClosed = count.open.empty();
    Json::Value root;
    root["invariants"] = Json::arrayValue;
    program::Findings findings = {"vtv explore check", {}, count.open};
    int violated = 0;
    for (const Verdict& verdict : verdicts) {
        Json::Value json;
        json["name"] = verdict.invariant->name;
        json["sentence"] = verdict.invariant->sentence;
        json["paths"] = Json::UInt64{verdict.paths};
        json["complete"] = isClosed;
        json["holds"] = verdict.violations.empty();
        json["violations"] = Json::arrayValue;
        violated += verdict.violations.empty() ? 0 : 1;
        const char* word = !verdict.violations.empty() ? "VIOLATED"
                           : isClosed                  ? "holds"
                                                       : "unfinished";
        if (options.format == Format::kText) {
            std::printf("%-9s %-32s %12s paths  %s\n", word, verdict.invariant->name,
                        BigNumber(verdict.paths).ToString().c_str(), verdict.invariant->sentence);
        }
        for (std::size_t i = 0; i < verdict.violations.size(); ++i) {
            const Violation& violation = verdict.violations[i];
            const std::string file = WriteScenario(inputs, options, verdict, violation, i);
            json["violations"].append(ToJson(inputs, violation, file));
            findings.list.push_back(FindingOf(inputs, options, verdict, violation, file));
            if (options.format == Format::kText) {
                Print(inputs, violation);
                std::printf("  scenario: %s\n", file.c_str());
            }
        }
        root["invariants"].append(json);
    }
    root["closed"] = isClosed;
    root["states"] = Json::UInt64{count.joints};
    root["questions"] = Json::UInt64{count.questions};
    root["paths"] = Json::UInt64{count.paths};
    root["open"] = JsonList(count.open);
    if (options.format == Format::kJson) {
        program::Print(vtv::PrettyJson(root) + "\n", program::Form::kJson);
    } else if (options.format == Format::kText) {
        std::printf(
            "%s, %d violated; %s: %s states of the provider, %s questions in them, %s paths\n",
            program::Counted(verdicts.size(), "invariant").c_str(), violated,
            isClosed ? "closed" : "not closed", BigNumber(count.joints).ToString().c_str(),
            BigNumber(count.questions).ToString().c_str(),
            BigNumber(count.paths).ToString().c_str());
    }
    PrintFindings(options.format, findings);
    for (const std::string& reason : count.open) {
        std::fprintf(stderr, "vtv explore check: not proven: %s\n",
                     program::OneLine(reason).c_str());
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
    Inputs inputs = LoadInputs(InputsFile(), options.full);
    CheckSubject(options.provider);
    RequireArena();
    Checking checking(inputs, options, invariants);
    checking.Run();
    WalkCount count = checking.Walked().Count();
    const std::vector<std::string> unnamed = AskBeyond(inputs, QuestionsOf({}), options);
    count.open.insert(count.open.end(), unnamed.begin(), unnamed.end());
    const int code = Show(inputs, options, checking.Verdicts(inputs), count);
    ReportUnknownKeys(checking.Walked().UnknownKeys(), inputs);
    ReportRate(options.quiet);
    if (IsInterrupted()) {
        std::fputs("vtv explore: interrupted; what was found so far is shown\n", stderr);
    }
    return code == kExitOk && !count.open.empty() ? kExitTrouble : code;
}

}  // namespace explorer
