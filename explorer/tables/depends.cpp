// vtv explore depends
#include "depends.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "explorer/asking/exploration.h"
#include "facts.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

// What belongs to a name: inputs to an item, or items to an input.
using Names = std::map<std::string, std::set<std::string>>;

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
        names.insert(POLICY_SETTING);
    }
    return names;
}

// What is asked to see how the items look.
std::vector<const Question*> QuestionsOfLooks() {
    std::vector<const Question*> questions;
    for (const Question& question : Questions()) {
        if (question.item != nullptr && !question.writes) {
            questions.push_back(&question);
        }
    }
    return questions;
}

// By item, or by function for what belongs to none.
Names Collect(const Inputs& inputs, const Exploration& exploration) {
    Names depends;
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

Names Reversed(const Names& depends, const std::vector<std::string>& keys) {
    Names reversed;
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
            key == vtv::kPolicyKey || key == POLICY_SETTING ||
            std::any_of(inputs.inputs.begin(), inputs.inputs.end(), [&](const Input& input) {
                return key == input.key || key == std::string(ToText(input.kind)) + ' ' + input.key;
            });
        if (!isKnown) {
            throw CommandError(kExitNoSuch, "no input \"" + key + "\" in " + inputs.file);
        }
    }
}

std::string AsJson(const Names& depends) {
    Json::Value root(Json::objectValue);
    for (const auto& [name, others] : depends) {
        root[name] = Json::arrayValue;
        for (const std::string& other : others) {
            root[name].append(other);
        }
    }
    return vtv::PrettyJson(root) + "\n";
}

std::string AsText(const Names& depends) {
    std::string text;
    for (const auto& [name, others] : depends) {
        text += name + "\n";
        for (const std::string& other : others) {
            text += "    " + other + "\n";
        }
        text += others.empty() ? "    nothing\n" : "";
    }
    return text;
}

// host/core/page_dependencies.cpp, of the reversed dependencies.
std::string AsSource(const Names& depends) {
    std::string text =
        "// Generated: vtv-explore depends --source > host/core/page_dependencies.cpp\n"
        "#include \"page_dependencies.h\"\n\n"
        "namespace host {\n\n"
        "const std::vector<PageInput>& PageInputs() {\n"
        "    // clang-format off\n"
        "    static const std::vector<PageInput> inputs = {\n";
    for (const auto& [input, items] : depends) {
        text += "        {\"" + input + "\", {\n";
        for (const std::string& item : items) {
            text += "            \"" + item + "\",\n";
        }
        text += "        }},\n";
    }
    return text +
           "    };\n"
           "    // clang-format on\n"
           "    return inputs;\n"
           "}\n\n"
           "}  // namespace host\n";
}

}  // namespace

int DependsMain(const DependsOptions& options) {
    const Inputs inputs = LoadInputs(InputsFile());
    if (options.reverse) {
        CheckKeys(inputs, options.names);
    }
    const auto exploration = Explore(
        inputs,
        options.source ? QuestionsOfLooks()
                       : QuestionsOf(options.reverse ? std::vector<std::string>() : options.names),
        options);
    const bool isText = !options.source && options.format != Format::kJson;
    if (exploration->interrupted && !isText) {
        std::fputs(
            "vtv explore: interrupted; nothing is printed, for a part would read like the whole\n",
            stderr);
        return kExitTrouble;
    }
    Names depends = Collect(inputs, *exploration);
    if (options.reverse || options.source) {
        depends = Reversed(depends, options.names);
    }
    const std::string text = options.source                    ? AsSource(depends)
                             : options.format == Format::kJson ? AsJson(depends)
                                                               : AsText(depends);
    if (options.source) {
        program::Print(text, program::Form::kExact);
    } else {
        PrintDocument(text, options.format);
    }
    ReportUnknownKeys(exploration->unknownKeys, inputs);
    ReportRate(options.quiet);
    if (exploration->interrupted) {
        std::puts("(unfinished)");
        ReportInterruption();
    }
    return exploration->interrupted || !exploration->unknownKeys.empty() ? kExitTrouble : kExitOk;
}

}  // namespace explorer
