#include "steps.h"

#include <toml++/toml.h>

#include <algorithm>

#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

using Record = std::vector<RecordEntry>;

std::string TextAbout(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    return answer != nullptr ? answer->Text() : "";
}

bool IsTrue(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    return answer != nullptr && answer->value == Said(true);
}

vtv::Value NumberAbout(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    const int* number = answer != nullptr ? std::get_if<int>(&answer->value) : nullptr;
    return number != nullptr ? vtv::Value(*number) : "none";
}

// "NUMBER: TEXT" of each choice.
toml::array ChoicesIn(const Record& record) {
    std::vector<std::string> choices;
    for (const RecordEntry& entry : record) {
        const Numbered* choice = std::get_if<Numbered>(&entry.value);
        if (choice != nullptr && entry.Is(Entry::kAnswer, answers::CHOICE)) {
            choices.push_back(std::to_string(choice->number) + ": " + choice->text);
        }
    }
    return host::TomlList(choices);
}

// All that stands in a box: the title, the message, the buttons.
toml::array TextsOfBox(const Record& record) {
    std::vector<std::string> texts;
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kAnswer && entry.subject != answers::ACTION &&
            std::holds_alternative<std::string>(entry.value)) {
            texts.push_back(entry.Text());
        }
    }
    return host::TomlList(texts);
}

}  // namespace

toml::table AnswerIn(Asks kind, const Record& record) {
    switch (kind) {
        case Asks::kVisible:
            return toml::table{{"visible", IsTrue(record, answers::VISIBLE)}};
        case Asks::kEnabled:
            return toml::table{{"enabled", IsTrue(record, answers::ENABLED)}};
        case Asks::kValue:
            return host::TomlTable({{"value", NumberAbout(record, answers::VALUE)}});
        case Asks::kTitle:
            return toml::table{{"title", TextAbout(record, answers::TITLE)}};
        case Asks::kHelp:
            return toml::table{{"help", TextAbout(record, answers::HELP)}};
        case Asks::kReason:
            return toml::table{{"reason", IsTrue(record, answers::SHOWN)
                                              ? TextAbout(record, answers::REASON)
                                              : ""}};
        case Asks::kChoices:
            return toml::table{{"choices", ChoicesIn(record)}};
        case Asks::kConfirmation:
            return toml::table{{"box", TextsOfBox(record)}};
        case Asks::kPopup:
            return toml::table{{"popup", TextsOfBox(record)}};
        default:
            return {};
    }
}

namespace {

vtv::Value StoredValue(const RecordEntry& written) {
    return std::visit(
        [](const auto& value) -> vtv::Value {
            if constexpr (std::is_constructible_v<vtv::Value, decltype(value)>) {
                return value;
            }
            return "";
        },
        written.value);
}

}  // namespace

Effects EffectsIn(const Record& record) {
    Effects effects;
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kLaunch) {
            effects.launches.push_back(ExpectedLaunch(entry.subject, entry.extras));
        } else if (entry.kind == Entry::kPopup) {
            const auto text = std::find_if(entry.extras.begin(), entry.extras.end(),
                                           [](const auto& extra) { return extra.first == "text"; });
            effects.toasts.push_back(text != entry.extras.end() ? text->second : "");
        } else if (entry.kind == Entry::kWrite) {
            effects.settings[entry.subject] = StoredValue(entry);
        } else if (const int* mode = std::get_if<int>(&entry.value);
                   mode != nullptr && entry.kind == Entry::kMode) {
            effects.state[vtv::kModeState + entry.subject] = *mode;
        }
    }
    return effects;
}

toml::table HandStep(const char* item, int value) {
    return toml::table{{"hand", toml::table{{item, value}}}};
}

toml::table AnswerStep(const char* word, const char* item, const toml::table& answers) {
    return answers.empty()
               ? answers
               : toml::table{{word, toml::table{{"answer", toml::table{{item, answers}}}}}};
}

void AddEffects(const Effects& effects, const char* word, toml::table& step) {
    toml::table& met = *step.insert(word, toml::table()).first->second.as_table();
    met.insert("launched", host::TomlList(effects.launches));
    met.insert("toast", host::TomlList(effects.toasts));
    host::InsertAny(met, "state", host::TomlTable(effects.state));
    host::InsertAny(met, "setting", host::TomlTable(effects.settings));
    // Whatever a provider names is meant.
    if (!effects.launches.empty() || !effects.state.empty() || !effects.settings.empty()) {
        step.insert("force", true);
    }
}

}  // namespace explorer
