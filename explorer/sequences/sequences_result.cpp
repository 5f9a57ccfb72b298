#include "sequences_result.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>

#include "explorer/asking/command.h"
#include "explorer/engine/coverage.h"
#include "explorer/tv/lazy_tv.h"
#include "host/core/toml_writer.h"
#include "program/counted.h"
#include "program/standard_output.h"
#include "program/text_width.h"
#include "sequences_scenario.h"
#include "virtual-tv/model/json_text.h"

namespace explorer {

namespace {

void AddFact(const ConcreteTv& tv, const TvState& state, int fact, Facts& facts) {
    const Input& input = tv.GetInputs().inputs[static_cast<std::size_t>(fact)];
    facts.emplace_back(input.name, WordsOf(input, tv.ValueOf(state, fact)));
}

Facts AllFacts(const ConcreteTv& tv, const TvState& state) {
    Facts facts;
    for (const Input& input : tv.GetInputs().inputs) {
        const int fact = tv.GetInputs().IndexOf(input);
        if (tv.CanChange(fact)) {
            AddFact(tv, state, fact, facts);
        }
    }
    for (const Started& started : tv.RunningIn(state)) {
        facts.emplace_back("waits for the viewer", LaunchText(started.application, started.extras));
    }
    return facts;
}

BrokenResult ResultOf(const Search& search, const BrokenSequence& broken, const Stage& stage,
                      ConcreteTv& tv) {
    BrokenResult result;
    const TvState& state = search.StateAt(broken.state);
    const std::vector<Action> path = search.PathTo(broken);
    result.invariant = broken.invariant->name;
    result.what = broken.what;
    result.question = broken.question;
    for (const Action& action : path) {
        result.actions.push_back(ToText(action));
    }
    result.state = AllFacts(tv, state);
    for (const int input : broken.inputs) {
        AddFact(tv, state, input, result.lookedAt);
    }
    if (broken.crashed) {
        result.lookedAt = result.state;  // what it looked at is lost
    }
    result.scenario = host::TomlComment(broken.invariant->sentence) +
                      host::TomlComment("Here: " + broken.question + ": " + broken.what) +
                      ToScenario(stage, tv, broken.invariant->sentence, path, broken.crashed);
    return result;
}

std::string Big(std::uint64_t number) {
    return BigNumber(number).ToString();
}

std::string Count(std::size_t number, const char* what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

}  // namespace

SequencesResult ResultOf(const Search& search, const Stage& stage, ConcreteTv& tv, bool tour) {
    SequencesResult result;
    result.model = tv.Model().model.name;
    result.states = search.States();
    result.transitions = search.Transitions();
    result.deepest = search.Deepest();
    result.closed = search.IsClosed();
    result.remembers = search.Remembers();
    for (const BrokenSequence& broken : search.Broken()) {
        result.broken.push_back(ResultOf(search, broken, stage, tv));
    }
    if (tour) {
        for (const std::vector<Action>& path : Tours(search)) {
            const std::string title = "A tour of " + tv.Model().model.name + ", part " +
                                      std::to_string(result.tours.size() + 1);
            result.tours.push_back(ToScenario(stage, tv, title, path));
        }
    }
    result.unknownKeys = explorer::tv().UnknownKeys();
    return result;
}

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

namespace {

const char* EndOf(const SequencesResult& result) {
    return !result.finished   ? "UNFINISHED"
           : result.remembers ? "UNPROVEN"
           : result.closed    ? "closed"
                              : "goes on";
}

void Print(const ShortestBreak& one) {
    const BrokenResult& broken = *one.broken;
    std::printf("\nVIOLATED  %s: %s\n", one.invariant->name, one.invariant->sentence);
    std::printf("  %s, after %s: %s (%s)\n", one.model->model.c_str(),
                Count(broken.actions.size(), "action").c_str(), broken.what.c_str(),
                broken.question.c_str());
    for (std::size_t i = 0; i < broken.actions.size(); ++i) {
        std::printf("    %zu. %s\n", i + 1, broken.actions[i].c_str());
    }
    std::printf("  state:%s\n", broken.lookedAt.empty() ? " any" : "");
    for (const auto& [name, words] : broken.lookedAt) {
        std::printf("    %s: %s\n", name.c_str(), words.c_str());
    }
    std::printf("  scenario: %s\n", one.file.c_str());
    for (std::size_t i = 0; i < one.alsoOn.size(); ++i) {
        std::printf("%s%s%s", i == 0 ? "  also on " : ", ", one.alsoOn[i].c_str(),
                    i + 1 == one.alsoOn.size() ? "\n" : "");
    }
}

Json::Value ToJson(const Facts& facts) {
    Json::Value json(Json::objectValue);
    for (const auto& [name, words] : facts) {
        json[name] = words;
    }
    return json;
}

Json::Value ToJson(const SequencesResult& result) {
    Json::Value json;
    json["model"] = result.model;
    json["states"] = Json::UInt64{result.states};
    json["transitions"] = Json::UInt64{result.transitions};
    json["deepest"] = result.deepest;
    json["closed"] = result.closed;
    json["finished"] = result.finished;
    json["remembers"] = result.remembers;
    json["seconds"] = result.seconds;
    return json;
}

Json::Value ToJson(const ShortestBreak& one) {
    Json::Value json;
    json["model"] = one.model->model;
    json["what"] = one.broken->what;
    json["question"] = one.broken->question;
    json["actions"] = JsonList(one.broken->actions);
    json["lookedAt"] = ToJson(one.broken->lookedAt);
    json["state"] = ToJson(one.broken->state);
    json["scenario"] = one.file;
    json["alsoOn"] = JsonList(one.alsoOn);
    return json;
}

}  // namespace

void PrintText(const std::vector<SequencesResult>& results,
               const std::vector<const Invariant*>& invariants,
               const std::vector<ShortestBreak>& breaks) {
    std::uint64_t states = 0;
    std::uint64_t transitions = 0;
    int deepest = 0;
    bool isClosed = true;
    for (const SequencesResult& result : results) {
        std::printf("%s %10s states %12s transitions  depth %2d  %-10s %6.2f s\n",
                    program::Pad(result.model, 22).c_str(), Big(result.states).c_str(),
                    Big(result.transitions).c_str(), result.deepest, EndOf(result), result.seconds);
        states += result.states;
        transitions += result.transitions;
        deepest = std::max(deepest, result.deepest);
        isClosed = isClosed && result.finished && result.closed;
    }
    for (const ShortestBreak& one : breaks) {
        Print(one);
    }
    std::printf("\n%s, %s states, %s transitions, depth %d: %s\n",
                Count(results.size(), "TV").c_str(), Big(states).c_str(), Big(transitions).c_str(),
                deepest,
                isClosed ? "no sequence, however long, leads anywhere else"
                         : "longer sequences may lead further");
    std::printf("%s, %zu violated\n", program::Counted(invariants.size(), "invariant").c_str(),
                breaks.size());
}

void PrintJson(const std::vector<SequencesResult>& results,
               const std::vector<const Invariant*>& invariants,
               const std::vector<ShortestBreak>& breaks) {
    Json::Value root;
    root["models"] = Json::arrayValue;
    for (const SequencesResult& result : results) {
        root["models"].append(ToJson(result));
    }
    root["invariants"] = Json::arrayValue;
    for (const Invariant* invariant : invariants) {
        Json::Value json;
        json["name"] = invariant->name;
        json["sentence"] = invariant->sentence;
        json["holds"] = std::none_of(breaks.begin(), breaks.end(), [&](const ShortestBreak& one) {
            return one.invariant == invariant;
        });
        root["invariants"].append(json);
    }
    root["violations"] = Json::arrayValue;
    for (const ShortestBreak& one : breaks) {
        Json::Value json = ToJson(one);
        json["invariant"] = one.invariant->name;
        root["violations"].append(json);
    }
    program::Print(vtv::PrettyJson(root) + "\n", program::Form::kJson);
}

}  // namespace explorer
