#include "diff_result.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

#include "explorer/asking/source_place.h"
#include "explorer/engine/coverage.h"
#include "program/counted.h"
#include "program/visible_text.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

namespace {

constexpr const char* SIDES[] = {"a", "b"};

// Where a difference's texts were written; empty for what was not.
struct Files {
    std::string scenario;
    std::string calls;
};

std::string WriteIfAny(const DiffOptions& options, std::size_t number, const char* end,
                       const std::string& text) {
    if (text.empty()) {
        return "";
    }
    std::filesystem::create_directories(options.scenarios);
    const std::string file = options.scenarios + "/difference-" + std::to_string(number) +
                             InFileName(options.shard) + end;
    WriteScenarioFile(file, text);
    return file;
}

std::vector<Files> WriteFiles(const DiffOptions& options, const DiffResult& result) {
    std::vector<Files> files(result.differences.size());
    for (std::size_t i = 0; i < files.size() && !options.scenarios.empty(); ++i) {
        const ShownDifference& difference = result.differences[i];
        files[i] = {WriteIfAny(options, i + 1, ".toml", difference.scenario),
                    WriteIfAny(options, i + 1, ".calls.toml", difference.callsFile)};
    }
    return files;
}

std::string JoinLines(const std::vector<std::string>& lines, const char* head) {
    std::string text;
    for (const std::string& line : lines) {
        text += head + line + "\n";
    }
    return text;
}

std::string ToText(const ShownDifference& difference, const Files& files, std::size_t number) {
    const std::string paths = BigNumber(difference.paths).ToString();
    std::string text = "Difference " + std::to_string(number) + ", on " + paths +
                       (paths == "1" ? " path of " : " paths of ") +
                       program::Counted(difference.questions.size(), "question") + "\n";
    text += JoinLines(difference.onlyA, "  - ");
    text += JoinLines(difference.onlyB, "  + ");
    if (!difference.calls.empty()) {
        text += "  shortest sequence:\n";
        int step = 0;
        for (const std::string& call : difference.calls) {
            text += "      " + std::to_string(++step) + ". " + call + "\n";
        }
        text += "      " + std::to_string(++step) + ". " + difference.question + "\n";
    }
    text += "  smallest state, asked for " + difference.question + ":\n";
    text += JoinLines(difference.smallest, "      ");
    std::string others;
    for (const auto& [place, question] : difference.questions) {
        others += question == difference.question ? "" : (others.empty() ? "" : ", ") + question;
    }
    text += others.empty() ? "" : "  also: " + others + "\n";
    text += files.scenario.empty() ? "" : "  scenario: " + files.scenario + "\n";
    text += files.calls.empty() ? "" : "  calls: " + files.calls + "\n";
    return text + "\n";
}

Json::Value ToJson(const DiffOptions& options, const ShownDifference& difference,
                   const Files& files) {
    Json::Value json;
    json["onlyA"] = JsonList(difference.onlyA);
    json["onlyB"] = JsonList(difference.onlyB);
    json["questions"] = Json::arrayValue;
    json["paths"] = Json::UInt64{difference.paths};
    json["question"] = difference.question;
    json["sequence"] = JsonList(difference.calls);
    json["smallestState"] = JsonList(difference.smallest);
    if (!files.scenario.empty()) {
        json["scenario"] = files.scenario;
    }
    if (!files.calls.empty()) {
        json["calls"] = files.calls;
    }
    if (options.shard.IsPart()) {
        json["part"]["nearness"] = ToJson(difference.nearness);
        json["part"]["places"] = Json::arrayValue;
        json["part"]["scenario"] = difference.scenario;
        json["part"]["calls"] = difference.callsFile;
    }
    for (const auto& [place, question] : difference.questions) {
        json["questions"].append(question);
        if (options.shard.IsPart()) {
            json["part"]["places"].append(place);
        }
    }
    return json;
}

WholeWork WorkOf(const DiffOptions& options) {
    WholeWork work = {
        "diff", options.names, {options.provider, options.other}, BoundsAsJson(options.bounds)};
    work.options["logs"] = options.records.logs;
    work.options["lines"] = options.records.lines;
    work.options["reads"] = options.records.reads;
    work.options["all"] = options.all;
    return work;
}

Json::Value CoverageAsJson(const WalkCount& count) {
    Json::Value json(Json::objectValue);
    for (const auto& [place, asked] : count.asked) {
        Json::Value& one = json[place.first][SIDES[place.second]];
        one["paths"] = Json::UInt64{asked.paths};
        one["states"] = asked.states.ToString();
    }
    return json;
}

std::string CoverageAsText(const WalkCount& count) {
    std::string text;
    for (const auto& [place, asked] : count.asked) {
        const auto& [question, side] = place;
        text += (side == 0 ? question + ": " : ", ") + std::string(SIDES[side]) + " " +
                program::Counted(BigNumber(asked.paths).ToString(), "path", "paths") + " for " +
                program::Counted(asked.states.ToString(), "state", "states");
        text += side + 1 == std::size(SIDES) ? "\n" : "";
    }
    return text;
}

Json::Value ToJson(const DiffOptions& options, const DiffResult& result,
                   const std::vector<Files>& files) {
    Json::Value json;
    json["differences"] = Json::arrayValue;
    for (std::size_t i = 0; i < files.size(); ++i) {
        json["differences"].append(ToJson(options, result.differences[i], files[i]));
    }
    const bool isProven =
        result.troubles.empty() && !result.interrupted && result.differences.empty();
    const bool isPart = options.shard.IsPart();
    json["alike"] = isProven && !isPart;
    json["closed"] = isProven && !isPart;
    json["questions"] = Json::UInt64{result.count.questions};
    json["pairs"] = Json::UInt64{result.count.joints};
    json["states"]["a"] = Json::UInt64{result.count.states[0]};
    json["states"]["b"] = Json::UInt64{result.count.states[1]};
    json["paths"] = Json::UInt64{result.count.paths};
    json["coverage"] = CoverageAsJson(result.count);
    json["troubles"] = JsonList(result.troubles);
    if (isPart) {
        json["part"] =
            PartAsJson(options, WorkOf(options), result.isWalked ? WayOf(result.count) : "");
        json["part"]["closed"] = isProven;
        json["part"]["interrupted"] = result.interrupted;
    }
    return json;
}

std::string ProofOf(const DiffResult& result) {
    const WalkCount& count = result.count;
    return !result.isWalked
               ? "as far as single questions show it: this program is built with a "
                 "sanitizer, so no state of theirs could be put back"
               : "closed with " + BigNumber(count.joints).ToString() + " pairs of states, " +
                     BigNumber(count.questions).ToString() + " questions in them and " +
                     BigNumber(count.paths).ToString() + " paths";
}

// What somebody who reads one line takes with them: a part alone is no proof.
std::string LastLine(const Shard& shard, const DiffResult& result) {
    const std::string in = shard.IsPart() ? " in " + InWords(shard) : "";
    if (!result.differences.empty()) {
        return "The providers differ.";
    }
    if (result.interrupted || !result.troubles.empty()) {
        return std::string(result.interrupted ? "Interrupted; alike" : "Alike") + " so far" + in +
               ", and not proven.";
    }
    if (shard.IsPart()) {
        return "Alike" + in + ": " + ProofOf(result) + ".";
    }
    return std::string("The providers are alike") +
           (result.isWalked ? " after every sequence of calls: " : ", ") + ProofOf(result) + ".";
}

// About the second provider, which is the one that somebody wants to ship.
program::Findings FindingsOf(const DiffOptions& options, const DiffResult& result,
                             const std::vector<Files>& files) {
    program::Findings findings = {"vtv explore diff", {}, result.troubles};
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string& question = result.differences[i].question;
        const SourcePlace place = PlaceOf(question, options.other);
        findings.list.push_back({question, "The providers answer " + question + " alike.",
                                 ToText(result.differences[i], files[i], i + 1), place.file,
                                 place.line});
    }
    if (result.interrupted) {
        findings.troubles.emplace_back("interrupted: not everything was compared");
    }
    if (options.shard.IsPart()) {
        findings.troubles.push_back("only " + InWords(options.shard) + " was done");
    }
    return findings;
}

}  // namespace

int Show(const DiffOptions& options, const DiffResult& result) {
    const std::vector<Files> files = WriteFiles(options, result);
    if (options.format == Format::kJson) {
        program::Print(vtv::PrettyJson(ToJson(options, result, files)) + "\n",
                       program::Form::kJson);
    } else if (options.format != Format::kText) {
        PrintFindings(options.format, FindingsOf(options, result, files));
    } else if (!options.brief) {
        for (std::size_t i = 0; i < files.size(); ++i) {
            program::Print(ToText(result.differences[i], files[i], i + 1), program::Form::kText);
        }
    }
    for (const std::string& trouble : result.troubles) {
        std::fprintf(stderr, "vtv explore diff: %s\n", program::OneLine(trouble).c_str());
    }
    if (options.coverage) {
        program::Print(CoverageAsText(result.count), program::Form::kText);
    }
    if (options.format == Format::kText) {
        std::printf("%s\n", LastLine(options.shard, result).c_str());
    }
    if (!result.differences.empty()) {
        return kExitNo;
    }
    return result.troubles.empty() && !result.interrupted ? kExitOk : kExitTrouble;
}

// ---------------------------------------------------------------------------------------------
// Merged
// ---------------------------------------------------------------------------------------------

namespace {

ShownDifference DifferenceOf(const Json::Value& json) {
    ShownDifference difference;
    difference.onlyA = TextsOf(json, "onlyA");
    difference.onlyB = TextsOf(json, "onlyB");
    difference.paths = MemberOf(json, "paths").asUInt64();
    difference.question = MemberOf(json, "question").asString();
    difference.calls = TextsOf(json, "sequence");
    difference.smallest = TextsOf(json, "smallestState");
    const Json::Value& part = MemberOf(json, "part");
    difference.nearness = NearnessOf(MemberOf(part, "nearness"));
    difference.scenario = MemberOf(part, "scenario").asString();
    difference.callsFile = MemberOf(part, "calls").asString();
    const std::vector<std::string> questions = TextsOf(json, "questions");
    const Json::Value& places = ListOf(part, "places");
    for (Json::ArrayIndex i = 0; i < questions.size(); ++i) {
        difference.questions.emplace(places[i].asInt(), questions[i]);
    }
    return difference;
}

std::map<std::pair<std::string, std::size_t>, Asked> CoverageOf(const Json::Value& json) {
    std::map<std::pair<std::string, std::size_t>, Asked> asked;
    for (const std::string& question : json.getMemberNames()) {
        for (std::size_t i = 0; i < std::size(SIDES); ++i) {
            const Json::Value& one = MemberOf(json[question], SIDES[i]);
            asked[{question, i}] = {MemberOf(one, "paths").asUInt64(),
                                    BigNumber::Parse(MemberOf(one, "states").asString())};
        }
    }
    return asked;
}

DiffResult DiffResultOf(const Json::Value& root) {
    DiffResult result;
    result.troubles = TextsOf(root, "troubles");
    result.interrupted = MemberOf(MemberOf(root, "part"), "interrupted").asBool();
    result.count.joints = MemberOf(root, "pairs").asUInt();
    result.count.states = {MemberOf(MemberOf(root, "states"), "a").asUInt(),
                           MemberOf(MemberOf(root, "states"), "b").asUInt()};
    result.count.questions = MemberOf(root, "questions").asUInt64();
    result.count.paths = MemberOf(root, "paths").asUInt64();
    result.count.asked = CoverageOf(MemberOf(root, "coverage"));
    result.count.open = result.troubles;
    for (const Json::Value& difference : ListOf(root, "differences")) {
        result.differences.push_back(DifferenceOf(difference));
    }
    return result;
}

using ShownDifferences =
    std::map<std::pair<std::vector<std::string>, std::vector<std::string>>, ShownDifference>;

void Add(const ShownDifference& one, ShownDifferences& to) {
    const auto [place, isNew] = to.try_emplace({one.onlyA, one.onlyB}, one);
    if (isNew) {
        return;
    }
    ShownDifference& known = place->second;
    ShownDifference merged = one.nearness < known.nearness ? one : known;
    merged.paths = known.paths + one.paths;
    merged.questions = known.questions;
    merged.questions.insert(one.questions.begin(), one.questions.end());
    known = std::move(merged);
}

std::vector<ShownDifference> NearestFirst(const ShownDifferences& differences) {
    std::vector<ShownDifference> list;
    for (const auto& [key, difference] : differences) {
        list.push_back(difference);
    }
    std::stable_sort(
        list.begin(), list.end(),
        [](const ShownDifference& a, const ShownDifference& b) { return a.nearness < b.nearness; });
    return list;
}

}  // namespace

int ShowMergedDiff(const CommonOptions& options, const std::string& scenarios,
                   const std::vector<PartFile>& parts) {
    DiffResult result;
    ShownDifferences differences;
    DiffOptions shown;
    bool isFirst = true;
    ForEachPart(parts, [&](const Json::Value& root) {
        const DiffResult one = DiffResultOf(root);
        for (const ShownDifference& difference : one.differences) {
            Add(difference, differences);
        }
        if (isFirst) {
            result = one;
            isFirst = false;
        } else {
            AddCount(one.count, result.count);
            result.interrupted = result.interrupted || one.interrupted;
        }
        shown.all = MemberOf(root["part"]["work"]["options"], "all").asBool();
    });
    result.troubles = result.count.open;
    result.differences = NearestFirst(differences);
    if (!shown.all && result.differences.size() > 1) {
        result.differences.resize(1);
    }
    shown.format = options.format;
    shown.scenarios = scenarios;
    return Show(shown, result);
}

}  // namespace explorer
