#include "check_result.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <tuple>

#include "explorer/asking/source_place.h"
#include "explorer/engine/coverage.h"
#include "program/counted.h"
#include "program/text_width.h"
#include "program/visible_text.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

namespace {

std::string WriteScenario(const CheckOptions& options, const CheckedInvariant& invariant,
                          std::size_t number) {
    std::filesystem::create_directories(options.scenarios);
    const std::string file = options.scenarios + "/" + invariant.name +
                             (number == 0 ? "" : "-" + std::to_string(number + 1)) +
                             InFileName(options.shard) + ".toml";
    WriteScenarioFile(file, invariant.violations[number].scenario);
    return file;
}

Json::Value ToJson(const CheckOptions& options, const ShownViolation& violation,
                   const std::string& file) {
    Json::Value json;
    json["what"] = violation.what;
    json["question"] = violation.question;
    json["paths"] = Json::UInt64{violation.paths};
    json["sequence"] = JsonList(violation.calls);
    json["scenario"] = file;
    json["smallestState"] = JsonList(violation.smallest);
    if (options.shard.IsPart()) {
        json["part"]["nearness"] = ToJson(violation.nearness);
        json["part"]["scenario"] = violation.scenario;
    }
    return json;
}

program::Finding FindingOf(const CheckOptions& options, const CheckedInvariant& invariant,
                           const ShownViolation& violation, const std::string& file) {
    std::string message = violation.question + ": " + violation.what + "\nsmallest state:";
    for (const std::string& line : violation.smallest) {
        message += "\n  " + line;
    }
    for (const std::string& call : violation.calls) {
        message += "\nafter: " + call;
    }
    const SourcePlace place = PlaceOf(violation.question, options.provider);
    return {invariant.name, invariant.sentence, message + "\nscenario: " + file, place.file,
            place.line};
}

void Print(const ShownViolation& violation, const std::string& file) {
    std::printf("  %s, on %s paths; smallest state:\n",
                program::OneLine(violation.question + ": " + violation.what).c_str(),
                BigNumber(violation.paths).ToString().c_str());
    for (const std::string& line : violation.smallest) {
        std::printf("      %s\n", program::OneLine(line).c_str());
    }
    int step = 0;
    for (const std::string& call : violation.calls) {
        std::printf("    after %d. %s\n", ++step, program::OneLine(call).c_str());
    }
    std::printf("  scenario: %s\n", file.c_str());
}

// What somebody who reads one line takes with them: no part holds for all.
void PrintLine(const CheckOptions& options, const CheckedInvariant& invariant, bool isClosed) {
    const char* word = !invariant.violations.empty() ? "VIOLATED"
                       : !isClosed                   ? "unfinished"
                       : options.shard.IsPart()      ? "in part"
                                                     : "holds";
    std::printf("%-9s %s %12s paths  %s\n", word, program::Pad(invariant.name, 32).c_str(),
                BigNumber(invariant.paths).ToString().c_str(), invariant.sentence.c_str());
}

void PrintLastLine(const CheckOptions& options, const CheckResult& result, int violated) {
    const std::string inPart = options.shard.IsPart() ? " in " + InWords(options.shard) : "";
    std::printf(
        "%s, %d violated%s; %s: %s states of the provider, %s questions in them, %s paths\n",
        program::Counted(result.invariants.size(), "invariant").c_str(), violated, inPart.c_str(),
        result.count.open.empty() ? "closed" : "not closed",
        BigNumber(result.count.joints).ToString().c_str(),
        BigNumber(result.count.questions).ToString().c_str(),
        BigNumber(result.count.paths).ToString().c_str());
}

WholeWork WorkOf(const CheckOptions& options) {
    return {"check", options.names, {options.provider}, BoundsAsJson(options.bounds)};
}

// Without the invariants.
Json::Value ToJson(const CheckOptions& options, const WalkCount& count) {
    const bool isClosed = count.open.empty();
    Json::Value root;
    root["invariants"] = Json::arrayValue;
    root["closed"] = isClosed && !options.shard.IsPart();
    root["states"] = Json::UInt64{count.joints};
    root["questions"] = Json::UInt64{count.questions};
    root["paths"] = Json::UInt64{count.paths};
    root["open"] = JsonList(count.open);
    if (options.shard.IsPart()) {
        root["part"] = PartAsJson(options, WorkOf(options), WayOf(count));
        root["part"]["closed"] = isClosed;
    }
    return root;
}

}  // namespace

int Show(const CheckOptions& options, const CheckResult& result) {
    const bool isClosed = result.count.open.empty();
    const bool isText = options.format == Format::kText;
    Json::Value root = ToJson(options, result.count);
    program::Findings findings = {"vtv explore check", {}, result.count.open};
    if (options.shard.IsPart()) {
        findings.troubles.push_back("only " + InWords(options.shard) + " was done");
    }
    int violated = 0;
    for (const CheckedInvariant& invariant : result.invariants) {
        Json::Value json;
        json["name"] = invariant.name;
        json["sentence"] = invariant.sentence;
        json["paths"] = Json::UInt64{invariant.paths};
        json["complete"] = isClosed && !options.shard.IsPart();
        // Neither yes nor no where not everything was looked at.
        json["holds"] = !invariant.violations.empty()         ? Json::Value(false)
                        : isClosed && !options.shard.IsPart() ? Json::Value(true)
                                                              : Json::Value();
        json["violations"] = Json::arrayValue;
        violated += invariant.violations.empty() ? 0 : 1;
        if (isText) {
            PrintLine(options, invariant, isClosed);
        }
        for (std::size_t i = 0; i < invariant.violations.size(); ++i) {
            const ShownViolation& violation = invariant.violations[i];
            const std::string file = WriteScenario(options, invariant, i);
            json["violations"].append(ToJson(options, violation, file));
            if (isText) {
                Print(violation, file);
            } else if (options.format != Format::kJson) {
                findings.list.push_back(FindingOf(options, invariant, violation, file));
            }
        }
        root["invariants"].append(json);
    }
    if (options.format == Format::kJson) {
        program::Print(vtv::PrettyJson(root) + "\n", program::Form::kJson);
    } else if (isText) {
        PrintLastLine(options, result, violated);
    }
    PrintFindings(options.format, findings);
    for (const std::string& reason : result.count.open) {
        std::fprintf(stderr, "vtv explore check: not proven: %s\n",
                     program::OneLine(reason).c_str());
    }
    return violated > 0 ? kExitNo : isClosed ? kExitOk : kExitTrouble;
}

// ---------------------------------------------------------------------------------------------
// Merged
// ---------------------------------------------------------------------------------------------

namespace {

ShownViolation ViolationOf(const Json::Value& json) {
    ShownViolation violation;
    violation.what = MemberOf(json, "what").asString();
    violation.question = MemberOf(json, "question").asString();
    violation.paths = MemberOf(json, "paths").asUInt64();
    violation.calls = TextsOf(json, "sequence");
    violation.smallest = TextsOf(json, "smallestState");
    violation.scenario = MemberOf(MemberOf(json, "part"), "scenario").asString();
    violation.nearness = NearnessOf(MemberOf(MemberOf(json, "part"), "nearness"));
    return violation;
}

CheckResult CheckResultOf(const Json::Value& root) {
    CheckResult result;
    result.count.joints = MemberOf(root, "states").asUInt();
    result.count.questions = MemberOf(root, "questions").asUInt64();
    result.count.paths = MemberOf(root, "paths").asUInt64();
    result.count.open = TextsOf(root, "open");
    for (const Json::Value& json : ListOf(root, "invariants")) {
        CheckedInvariant& invariant = result.invariants.emplace_back();
        invariant.name = MemberOf(json, "name").asString();
        invariant.sentence = MemberOf(json, "sentence").asString();
        invariant.paths = MemberOf(json, "paths").asUInt64();
        for (const Json::Value& violation : ListOf(json, "violations")) {
            invariant.violations.push_back(ViolationOf(violation));
        }
    }
    return result;
}

void Add(const ShownViolation& one, std::vector<ShownViolation>& to) {
    const auto known = std::find_if(
        to.begin(), to.end(), [&](const ShownViolation& other) { return other.what == one.what; });
    if (known == to.end()) {
        to.push_back(one);
        return;
    }
    const std::uint64_t paths = known->paths + one.paths;
    if (one.nearness < known->nearness) {
        *known = one;
    }
    known->paths = paths;
}

void Add(const CheckResult& one, CheckResult& to) {
    if (to.invariants.empty()) {
        to = one;
        return;
    }
    if (one.invariants.size() != to.invariants.size()) {
        throw std::runtime_error("its invariants are not those of the other parts");
    }
    AddCount(one.count, to.count);
    for (std::size_t i = 0; i < to.invariants.size(); ++i) {
        to.invariants[i].paths += one.invariants[i].paths;
        for (const ShownViolation& violation : one.invariants[i].violations) {
            Add(violation, to.invariants[i].violations);
        }
    }
}

}  // namespace

int ShowMergedCheck(const CommonOptions& options, const std::string& scenarios,
                    const std::vector<PartFile>& parts) {
    CheckResult result;
    ForEachPart(parts, [&](const Json::Value& root) { Add(CheckResultOf(root), result); });
    for (CheckedInvariant& invariant : result.invariants) {
        std::sort(invariant.violations.begin(), invariant.violations.end(),
                  [](const ShownViolation& a, const ShownViolation& b) {
                      return std::tie(a.nearness, a.what) < std::tie(b.nearness, b.what);
                  });
    }
    CheckOptions shown;
    shown.format = options.format;
    shown.scenarios = scenarios.empty() ? shown.scenarios : scenarios;
    return Show(shown, result);
}

}  // namespace explorer
