#include "violation_steps.h"

#include <toml++/toml.h>

#include "explorer/asking/steps.h"
#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"

namespace explorer {

namespace {

// What the items answered since something was handed over: the last of what was asked again.
toml::table AnswersIn(const Observed& observed) {
    toml::table answers;
    for (const Observed::Fact& fact : observed.facts) {
        toml::table& item =
            *answers.insert(fact.item->name, toml::table()).first->second.as_table();
        if (const auto* answer = std::get_if<vtv::Value>(&fact.answer)) {
            host::Insert(item, fact.what, *answer);
        } else {
            item.insert_or_assign(fact.what, host::TomlList(std::get<1>(fact.answer)));
        }
    }
    return answers;
}

// Met by every provider that comes to an end here: no title reads like that.
toml::table UnansweredStep(const Question& question) {
    toml::table answers =
        question.kind == Asks::kTitle ? toml::table() : AnswerIn(question.kind, {});
    answers.insert("title", "(none)");
    return AnswerStep("never", question.item->name, answers);
}

toml::table QuestionStep(const Question& question, const std::string& bytes) {
    const char* item = question.item->name;
    if (bytes.empty()) {
        return question.writes ? HandStep(item, question.value) : UnansweredStep(question);
    }
    const std::vector<RecordEntry> record = ReadRecord(bytes);
    const Effects effects = EffectsIn(record);
    const bool isSilent = effects.launches.empty() && effects.toasts.empty() &&
                          effects.settings.empty() && effects.state.empty();
    toml::table step = question.writes ? HandStep(item, question.value)
                                       : AnswerStep("never", item, AnswerIn(question.kind, record));
    if (question.writes || (!step.empty() && !isSilent)) {
        AddEffects(effects, "never", step);
    }
    return step;
}

// What was done since something was handed over, and what the TV held then.
Effects EffectsOf(const Observed& observed) {
    Effects effects = EffectsIn(ReadRecord(observed.record));
    for (const auto& [key, value] : observed.settings) {
        effects.settings[key] = value;
    }
    for (const auto& [name, value] : observed.state) {
        effects.state[name] = value;
    }
    return effects;
}

}  // namespace

std::string StepsOf(const Observed& observed) {
    if (observed.question != nullptr) {
        const Question& question = *observed.question;
        const bool isOfItem = question.item != nullptr && question.kind != Asks::kFunction;
        return isOfItem ? StepText(QuestionStep(question, observed.record)) : "";
    }
    std::string steps;
    toml::table step;
    for (const auto& [item, value] : observed.handed) {
        steps += StepText(step);
        step = HandStep(item->name, value);
    }
    const toml::table answers = AnswersIn(observed);
    if (!answers.empty()) {
        step.insert("never", toml::table{{"answer", answers}});
    }
    if (!observed.handed.empty()) {
        AddEffects(EffectsOf(observed), "never", step);
    }
    return steps + StepText(step);
}

Observed Unanswered(const Question* question) {
    Observed observed;
    observed.question = question;
    return observed;
}

}  // namespace explorer
