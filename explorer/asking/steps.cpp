#include "steps.h"

#include <algorithm>

#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

using host::TomlText;

using Record = std::vector<RecordEntry>;

std::string TextAbout(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    return answer != nullptr ? answer->Text() : "";
}

bool IsTrue(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    return answer != nullptr && answer->value == Said(true);
}

std::string NumberAbout(const Record& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    const int* number = answer != nullptr ? std::get_if<int>(&answer->value) : nullptr;
    return number != nullptr ? std::to_string(*number) : TomlText("none");
}

// "[...]" of the choices "NUMBER: TEXT".
std::string ChoicesIn(const Record& record) {
    std::vector<std::string> choices;
    for (const RecordEntry& entry : record) {
        const Numbered* choice = std::get_if<Numbered>(&entry.value);
        if (choice != nullptr && entry.Is(Entry::kAnswer, answers::CHOICE)) {
            choices.push_back(std::to_string(choice->number) + ": " + choice->text);
        }
    }
    return TomlList(choices);
}

// "[...]" of all that stands in a box: the title, the message, the buttons.
std::string TextsOfBox(const Record& record) {
    std::vector<std::string> texts;
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kAnswer && entry.subject != answers::ACTION &&
            std::holds_alternative<std::string>(entry.value)) {
            texts.push_back(entry.Text());
        }
    }
    return TomlList(texts);
}

}  // namespace

std::string AnswerIn(Asks kind, const Record& record) {
    switch (kind) {
        case Asks::kVisible:
            return std::string("visible = ") +
                   (IsTrue(record, answers::VISIBLE) ? "true" : "false");
        case Asks::kEnabled:
            return std::string("enabled = ") +
                   (IsTrue(record, answers::ENABLED) ? "true" : "false");
        case Asks::kValue:
            return "value = " + NumberAbout(record, answers::VALUE);
        case Asks::kTitle:
            return "title = " + TomlText(TextAbout(record, answers::TITLE));
        case Asks::kHelp:
            return "help = " + TomlText(TextAbout(record, answers::HELP));
        case Asks::kReason:
            return "reason = " + TomlText(IsTrue(record, answers::SHOWN)
                                              ? TextAbout(record, answers::REASON)
                                              : "");
        case Asks::kChoices:
            return "choices = " + ChoicesIn(record);
        case Asks::kConfirmation:
            return "box = " + TextsOfBox(record);
        case Asks::kPopup:
            return "popup = " + TextsOfBox(record);
        default:
            return "";
    }
}

namespace {

std::string StoredText(const RecordEntry& written) {
    return std::visit(
        [](const auto& value) -> std::string {
            if constexpr (std::is_constructible_v<vtv::Value, decltype(value)>) {
                return TomlValue(value);
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
            effects.settings[entry.subject] = StoredText(entry);
        } else if (const int* mode = std::get_if<int>(&entry.value);
                   mode != nullptr && entry.kind == Entry::kMode) {
            effects.modes[entry.subject] = std::to_string(*mode);
        }
    }
    return effects;
}

std::string MembersOf(const std::string& word, const Effects& effects) {
    std::string lines = word + ".launched = " + TomlList(effects.launches) + "\n" + word +
                        ".toast = " + TomlList(effects.toasts) + "\n";
    for (const auto& [application, mode] : effects.modes) {
        lines += word + ".state." + TomlText(vtv::kModeState + application) + " = " + mode + "\n";
    }
    for (const auto& [key, value] : effects.settings) {
        lines += word + ".setting." + TomlText(key) + " = " + value + "\n";
    }
    // Whatever a provider names is meant.
    const bool isNamed =
        !effects.launches.empty() || !effects.modes.empty() || !effects.settings.empty();
    return lines + (isNamed ? "force = true\n" : "");
}

}  // namespace explorer
