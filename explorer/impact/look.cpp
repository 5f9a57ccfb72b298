#include "look.h"

#include <algorithm>

#include "explorer/asking/question.h"
#include "explorer/tv/lazy_tv.h"

namespace explorer {

namespace {

// "title: \"Voice\"" as the name "title" and the text "Voice" behind it.
std::pair<std::string, std::string> PartOf(const std::string& answer) {
    const std::size_t colon = answer.find(": ");
    if (colon == std::string::npos) {
        return {answer, ""};
    }
    std::string text = answer.substr(colon + 2);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    }
    return {answer.substr(0, colon), text};
}

std::vector<std::pair<std::string, std::string>> AnswersTo(const Subject& subject,
                                                           const std::string& question) {
    const std::size_t before = tv().Record().size();
    Ask(subject, *FindQuestion(question));
    std::vector<std::pair<std::string, std::string>> answers;
    for (const RecordEntry& entry : ReadRecord(tv().Record().substr(before))) {
        answers.push_back(PartOf(entry.text));
    }
    return answers;
}

// The choices by name, and the value by the name of its choice.
void AddValue(const Subject& subject, const std::string& item, ItemWords& look) {
    std::string value;
    for (const auto& [name, text] : AnswersTo(subject, "value:" + item)) {
        value = name == "value" ? text : "";
    }
    const std::string current = "choice " + value;
    std::string choices;
    std::string chosen = "none";
    for (const auto& [name, text] : AnswersTo(subject, "choices:" + item)) {
        if (name.rfind("choice ", 0) == 0) {
            choices += (choices.empty() ? "" : ", ") + text;
            chosen = name == current ? text : chosen;
        }
    }
    if (!choices.empty()) {
        look.parts.emplace_back("choices", choices);
        look.parts.emplace_back("current choice", chosen);
    } else if (!value.empty()) {
        look.parts.emplace_back("switch", value == "1" ? "on" : value == "0" ? "off" : value);
    }
}

std::string TextOf(const ItemWords& look, const std::string& part) {
    for (const auto& [name, text] : look.parts) {
        if (name == part) {
            return text.empty() ? "empty" : text;
        }
    }
    return "none";
}

}  // namespace

std::string Join(const std::vector<std::string>& lines, const char* separator) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : separator) + line;
    }
    return text;
}

ItemWords LookAt(const Subject& subject, const Item& item) {
    ItemWords look;
    look.visible = subject.checkVisible(item.key, 0) == 1;
    if (!look.visible) {
        return look;
    }
    look.enabled = subject.checkEnabled(item.key, 0) == 1;
    const std::string name = item.name;
    for (const std::string kind : {"title:", "help:"}) {
        for (const auto& part : AnswersTo(subject, kind + name)) {
            look.parts.push_back(part);
        }
    }
    AddValue(subject, name, look);
    if (!look.enabled) {
        for (const std::string kind : {"reason:", "popup:"}) {
            for (const auto& [part, text] : AnswersTo(subject, kind + name)) {
                look.parts.emplace_back("dimmed " + part, text);
            }
        }
    }
    return look;
}

std::string ChangeOf(const ItemWords& before, const ItemWords& after) {
    if (before.visible != after.visible) {
        return after.visible ? "appears" : "vanishes";
    }
    if (before.enabled != after.enabled) {
        return after.enabled ? "is enabled" : "is dimmed";
    }
    std::vector<std::string> names;
    for (const ItemWords* look : {&before, &after}) {
        for (const auto& [name, text] : look->parts) {
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    std::vector<std::string> changes;
    for (const std::string& name : names) {
        const std::string was = TextOf(before, name);
        const std::string is = TextOf(after, name);
        if (was != is) {
            changes.push_back(name);
            changes.back().append(": ").append(was).append(" -> ").append(is);
        }
    }
    return changes.empty() ? "" : "changes " + Join(changes, "; ");
}

}  // namespace explorer
