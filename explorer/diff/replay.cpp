#include "replay.h"

#include <toml++/toml.h>

#include <algorithm>
#include <optional>

#include "explorer/asking/steps.h"
#include "host/core/toml_writer.h"

namespace explorer {

namespace {

using Record = std::vector<RecordEntry>;

// What a setting that the path decided holds before anything is written, as the step sets it.
std::optional<vtv::Value> StoredBefore(const Inputs& inputs, const State& state,
                                       const std::string& key) {
    for (std::size_t i = 0; i < state.path.size(); ++i) {
        const Input& input = inputs.inputs[state.path[i].input];
        if (input.kind != Input::Kind::kSetting || input.key != key) {
            continue;
        }
        const Value& value = input.values[state.path[i].value];
        if (value.kind == Value::Kind::kText || value.kind == Value::Kind::kNumber) {
            return StoredBy(value, state.texts[i]);
        }
    }
    return std::nullopt;
}

std::string EffectSteps(const Inputs& inputs, const State& state, const Question& question,
                        const Record& record, const Record& other) {
    Effects effects = EffectsIn(record);
    std::string before;
    for (const RecordEntry& entry : other) {
        if (entry.kind == Entry::kWrite && effects.settings.count(entry.subject) == 0) {
            const std::optional<vtv::Value> stored = StoredBefore(inputs, state, entry.subject);
            effects.settings[entry.subject] = stored.value_or("(missing)");
            before += stored ? "" : StepText(toml::table{{"unset", entry.subject}});
        }
    }
    toml::table step;
    if (question.writes) {
        step = HandStep(question.item != nullptr ? question.item->name : "voice", question.value);
    } else if (question.item != nullptr) {
        step = AnswerStep("expect", question.item->name, AnswerIn(question.kind, record));
    }
    AddEffects(effects, "expect", step);
    return before + StepText(step);
}

bool IsLog(const RecordEntry& entry) {
    return entry.kind == Entry::kLog;
}

// What a host can see of it: no trace and no leak. A scenario has no application that runs already
// and could be ended.
bool IsSeen(const RecordEntry& entry) {
    return !IsLog(entry) && entry.kind != Entry::kTrace && entry.kind != Entry::kNote &&
           entry.kind != Entry::kWrong && entry.kind != Entry::kTerminate;
}

bool IsTermination(const RecordEntry& entry) {
    return entry.kind == Entry::kTerminate;
}

Record Those(const Record& record, bool (*areWanted)(const RecordEntry&)) {
    Record those;
    std::copy_if(record.begin(), record.end(), std::back_inserter(those), areWanted);
    return those;
}

// "Function" of "File.cpp: Function(68)".
std::string FunctionOf(const std::string& place) {
    const std::size_t file = place.find(": ");
    const std::string function = file != std::string::npos ? place.substr(file + 2) : place;
    return function.substr(0, function.find('('));
}

// "function: message" as the log of a TV has it.
std::vector<std::string> MessagesOf(const Record& logs) {
    std::vector<std::string> messages;
    for (const RecordEntry& entry : logs) {
        messages.push_back(FunctionOf(entry.subject) + ": " + std::get<Numbered>(entry.value).text);
    }
    return messages;
}

// Whether only a writer logs it: looking at the page afterwards does not.
bool IsOfWriter(const std::string& message) {
    for (const char* function : {"setnode_", "set_int", "LaunchOnboarding", "_Launch", "showVA"}) {
        if (message.rfind(function, 0) == 0) {
            return true;
        }
    }
    return false;
}

std::string LogStep(const Question& question, const Record& logs, const Record& others) {
    const std::vector<std::string> run = MessagesOf(logs);
    std::vector<std::string> absent;
    for (const std::string& message : MessagesOf(others)) {
        if (IsOfWriter(message) && std::find(run.begin(), run.end(), message) == run.end()) {
            absent.push_back(message);
        }
    }
    // The texts of items are translated in a TV's log.
    const bool isTranslated = std::any_of(run.begin(), run.end(), [](const std::string& message) {
        return message.find("SID_") != std::string::npos;
    });
    // Places in the sources are not what a scenario expects.
    if (run.empty() || isTranslated || run == MessagesOf(others)) {
        return "";
    }
    toml::table expect{{"log-run", host::TomlList(run)}};
    host::InsertAny(expect, "no-log", host::TomlList(absent));
    toml::table step =
        question.writes ? HandStep(question.item->name, question.value) : toml::table();
    step.insert("expect", expect);
    return StepText(step);
}

}  // namespace

std::string ToReplay(const Inputs& inputs, const State& state, const Question& question,
                     std::string_view record, std::string_view other) {
    const bool isPress = question.kind == Asks::kPress;
    const bool isOfPage = question.item != nullptr && question.kind != Asks::kFunction;
    if (!isOfPage && !isPress) {
        return "";
    }
    const Record entries = WithIds(ReadRecord(record));
    const Record others = WithIds(ReadRecord(other));
    if (Those(entries, IsSeen) != Those(others, IsSeen)) {
        return EffectSteps(inputs, state, question, entries, others);
    }
    const Record logs = Those(entries, IsLog);
    const Record otherLogs = Those(others, IsLog);
    const bool isPossible =
        !isPress && Those(entries, IsTermination).empty() && Those(others, IsTermination).empty();
    return logs == otherLogs || !isPossible ? "" : LogStep(question, logs, otherLogs);
}

}  // namespace explorer
