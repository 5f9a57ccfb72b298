#include "violation_steps.h"

#include <map>

#include "explorer/asking/steps.h"
#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"

namespace explorer {

namespace {

constexpr char STEP[] = "[[step]]\n";

std::string HandStep(const Item& item, int value) {
    return std::string(STEP) + "hand = { " + item.name + " = " + std::to_string(value) + " }\n";
}

std::string AnswerOf(const Observed::Fact& fact) {
    const char* const yesOrNo = fact.number == 1 ? "true" : "false";
    switch (fact.kind) {
        case Asks::kVisible:
            return std::string("visible = ") + yesOrNo;
        case Asks::kEnabled:
            return std::string("enabled = ") + yesOrNo;
        case Asks::kChoices:
            return "choices = " + TomlList(fact.choices);
        default:
            return "value = " +
                   (fact.number == NO_VALUE ? host::TomlText("none") : std::to_string(fact.number));
    }
}

std::string NeverAnswered(const Item& item, const std::string& answers) {
    return std::string("never.answer.") + item.name + " = { " + answers + " }\n";
}

// All that was seen since something was handed over.
std::string FactsOf(const Observed& observed) {
    std::map<const Item*, std::map<Asks, std::string>> last;  // the last of those that repeat
    for (const Observed::Fact& fact : observed.facts) {
        last[fact.item][fact.kind] = AnswerOf(fact);
    }
    std::string lines;
    for (const Item& item : PageItems()) {
        std::string answers;
        for (const auto& [kind, answer] : last[&item]) {
            answers += (answers.empty() ? "" : ", ") + answer;
        }
        lines += answers.empty() ? "" : NeverAnswered(item, answers);
    }
    return lines;
}

// Met by every provider that comes to an end here: no title reads like that.
std::string UnansweredStep(const Question& question) {
    const std::string answer = question.kind == Asks::kTitle ? "" : AnswerIn(question.kind, {});
    return STEP + NeverAnswered(*question.item,
                                "title = \"(none)\"" + (answer.empty() ? "" : ", " + answer));
}

std::string QuestionStep(const Question& question, const std::string& bytes) {
    const std::vector<RecordEntry> record = ReadRecord(bytes);
    const Effects effects = EffectsIn(record);
    if (question.writes) {
        return HandStep(*question.item, question.value) +
               (bytes.empty() ? "" : MembersOf("never", effects));
    }
    if (bytes.empty()) {
        return UnansweredStep(question);
    }
    const std::string answer = AnswerIn(question.kind, record);
    const bool isSilent = effects.launches.empty() && effects.toasts.empty() &&
                          effects.settings.empty() && effects.modes.empty();
    return answer.empty() ? ""
                          : STEP + NeverAnswered(*question.item, answer) +
                                (isSilent ? "" : MembersOf("never", effects));
}

// What was done since something was handed over, and what the TV held then.
std::string EffectsOf(const Observed& observed) {
    Effects effects = EffectsIn(ReadRecord(observed.record));
    for (const auto& [key, value] : observed.settings) {
        effects.settings[key] = value;
    }
    for (const auto& [application, mode] : observed.modes) {
        effects.modes[application] = mode;
    }
    return MembersOf("never", effects);
}

}  // namespace

std::string StepsOf(const Observed& observed) {
    if (observed.question != nullptr) {
        const Question& question = *observed.question;
        const bool isOfItem = question.item != nullptr && question.kind != Asks::kFunction;
        return isOfItem ? QuestionStep(question, observed.record) : "";
    }
    std::string steps;
    for (const auto& [item, value] : observed.handed) {
        steps += (steps.empty() ? "" : "\n") + HandStep(*item, value);
    }
    const std::string facts = FactsOf(observed);
    if (!observed.handed.empty()) {
        return steps + facts + EffectsOf(observed);
    }
    return facts.empty() ? "" : STEP + facts;
}

Observed Unanswered(const Question* question) {
    Observed observed;
    observed.question = question;
    return observed;
}

}  // namespace explorer
