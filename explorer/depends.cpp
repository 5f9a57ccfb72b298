// vtv explore depends
#include "depends.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "command.h"
#include "exploration.h"

namespace explorer {

namespace {

constexpr char POLICY[] = "setting db/menu/voice/mva_list";

// Inputs of an item's look, as "setting db/...": what makes it worth asking again.
std::set<std::string> InputsOf(const Inputs& inputs, const QuestionResult& result) {
    std::set<std::string> names;
    for (const int input : result.order) {
        const Input& one = inputs.inputs[static_cast<std::size_t>(input)];
        names.insert(std::string(ToText(one.kind)) + ' ' + one.key);
    }
    // The policy is read before the question: it matters when policies lead to different answers.
    if (std::any_of(result.roots.begin(), result.roots.end(),
                    [&](NodeId root) { return root != result.roots.front(); })) {
        names.insert(POLICY);
    }
    return names;
}

// By item, or by function for what belongs to none.
std::map<std::string, std::set<std::string>> Collect(const Inputs& inputs,
                                                     const Exploration& exploration) {
    std::map<std::string, std::set<std::string>> depends;
    for (const QuestionResult& result : exploration.results) {
        const Question& question = *result.question;
        // What pressing it does is no part of how an item looks.
        if (question.item != nullptr && question.writes) {
            continue;
        }
        std::set<std::string>& names =
            depends[question.item != nullptr ? question.item->name : question.name];
        names.merge(InputsOf(inputs, result));
    }
    return depends;
}

std::map<std::string, std::set<std::string>> Reversed(
    const std::map<std::string, std::set<std::string>>& depends,
    const std::vector<std::string>& keys) {
    std::map<std::string, std::set<std::string>> reversed;
    for (const auto& [item, inputs] : depends) {
        for (const std::string& input : inputs) {
            const std::string key = input.substr(input.find(' ') + 1);
            const bool isWanted = keys.empty() ||
                                  std::find(keys.begin(), keys.end(), key) != keys.end() ||
                                  std::find(keys.begin(), keys.end(), input) != keys.end();
            if (isWanted) {
                reversed[input].insert(item);
            }
        }
    }
    return reversed;
}

void CheckKeys(const Inputs& inputs, const std::vector<std::string>& keys) {
    for (const std::string& key : keys) {
        const bool isKnown =
            key == "db/menu/voice/mva_list" || key == POLICY ||
            std::any_of(inputs.inputs.begin(), inputs.inputs.end(), [&](const Input& input) {
                return key == input.key || key == std::string(ToText(input.kind)) + ' ' + input.key;
            });
        if (!isKnown) {
            throw CommandError(kExitNoSuch, "no input \"" + key + "\" in " + inputs.file);
        }
    }
}

}  // namespace

int DependsMain(const DependsOptions& options) {
    const Inputs inputs = LoadInputs(InputsFile());
    if (options.reverse) {
        CheckKeys(inputs, options.names);
    }
    ExplorationOptions exploring;
    exploring.provider = options.provider;
    exploring.workers = options.workers;
    exploring.progress = options.progress;
    const auto exploration =
        Explore(inputs, QuestionsOf(options.reverse ? std::vector<std::string>() : options.names),
                exploring);
    std::map<std::string, std::set<std::string>> depends = Collect(inputs, *exploration);
    if (options.reverse) {
        depends = Reversed(depends, options.names);
    }
    if (options.json) {
        Json::Value root(Json::objectValue);
        for (const auto& [name, others] : depends) {
            root[name] = Json::arrayValue;
            for (const std::string& other : others) {
                root[name].append(other);
            }
        }
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "  ";
        std::printf("%s\n", Json::writeString(builder, root).c_str());
    } else {
        for (const auto& [name, others] : depends) {
            std::printf("%s\n", name.c_str());
            for (const std::string& other : others) {
                std::printf("    %s\n", other.c_str());
            }
            if (others.empty()) {
                std::printf("    nothing\n");
            }
        }
    }
    ReportUnknownKeys(exploration->unknownKeys, inputs);
    ReportRate(options.progress);
    return exploration->interrupted || !exploration->unknownKeys.empty() ? kExitTrouble : kExitOk;
}

}  // namespace explorer
