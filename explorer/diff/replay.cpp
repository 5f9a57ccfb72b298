#include "replay.h"

#include <algorithm>
#include <map>

#include "explorer/tv/keys.h"
#include "explorer/tv/lazy_tv.h"
#include "host/core/toml_writer.h"

namespace explorer {

namespace {

using host::TomlText;

constexpr char STEP[] = "[[step]]\n";
constexpr char POPUP_TEXT[] = " text=\"";

std::string AsTomlList(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + TomlText(text);
    }
    return "[" + list + "]";
}

std::string WithoutEnd(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0
               ? text.substr(0, text.size() - end.size())
               : text;
}

// The text in quotes behind `what: `; empty for "none".
std::string QuotedIn(const std::string& line) {
    const std::size_t begin = line.find(": \"");
    return begin == std::string::npos ? "" : WithoutEnd(line.substr(begin + 3), "\"");
}

std::string KindOf(const Question& question) {
    return question.name.substr(0, question.name.find(':'));
}

std::string AnswerStep(const Question& question, const std::vector<RecordEntry>& record) {
    std::vector<std::string> lines;
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kAnswer) {
            lines.push_back(entry.text);
        }
    }
    const std::string kind = KindOf(question);
    std::string answer;
    if (kind == "visible" || kind == "enabled") {
        const bool isYes = !lines.empty() && lines.front() == kind;
        answer = kind + " = " + (isYes ? "true" : "false");
    } else if (kind == "value") {
        const bool isNone = lines.empty() || lines.front() == "no value";
        answer = "value = " + (isNone ? "\"none\"" : lines.front().substr(sizeof("value: ") - 1));
    } else if (kind == "title" || kind == "help") {
        answer = kind + " = " + TomlText(lines.empty() ? "" : QuotedIn(lines.front()));
    } else if (kind == "reason") {
        const bool isShown = lines.size() == 2 && lines.front() == "shown: yes";
        answer = "reason = " + TomlText(isShown ? QuotedIn(lines.back()) : "");
    } else if (kind == "choices") {
        std::vector<std::string> choices;
        for (const std::string& line : lines) {
            const std::size_t colon = line.find(": \"");
            if (colon != std::string::npos) {
                choices.push_back(line.substr(sizeof("choice ") - 1, colon - 7) + ": " +
                                  QuotedIn(line));
            }
        }
        answer = "choices = " + AsTomlList(choices);
    } else if (kind == "confirmation" || kind == "popup") {
        std::vector<std::string> texts;
        for (const std::string& line : lines) {
            const bool isText = line.rfind("buttons:", 0) != 0 && line.rfind("action:", 0) != 0;
            if (isText) {
                texts.push_back(QuotedIn(line));
            }
        }
        answer = (kind == "popup" ? "popup = " : "box = ") + AsTomlList(texts);
    }
    return answer.empty()
               ? ""
               : std::string("expect.answer.") + question.item->name + " = { " + answer + " }\n";
}

// "KEY = TYPE TEXT" as it is written.
struct Written {
    std::string key;
    std::string type;
    std::string text;
};

Written ReadWritten(const std::string& text) {
    const std::size_t equals = text.find(" = ");
    const std::size_t type = text.find(' ', equals + 3);
    return {text.substr(0, equals), text.substr(equals + 3, type - equals - 3),
            text.substr(type + 1)};
}

std::string StoredText(const Written& written) {
    return written.type == "bool"  ? (written.text == "1" ? "true" : "false")
           : written.type == "int" ? written.text
                                   : TomlText(written.text);
}

// What a setting that the path decided holds before anything is written, as the step sets it.
std::string StoredBefore(const Inputs& inputs, const State& state, const std::string& key) {
    for (std::size_t i = 0; i < state.path.size(); ++i) {
        const Input& input = inputs.inputs[state.path[i].input];
        if (input.kind != Input::Kind::kSetting || input.key != key) {
            continue;
        }
        const Value& value = input.values[state.path[i].value];
        if (value.kind == Value::Kind::kText) {
            return TomlText(state.texts[i]);
        }
        if (value.kind == Value::Kind::kNumber) {
            return value.storedType == "bool" ? (value.number != 0 ? "true" : "false")
                                              : std::to_string(value.number);
        }
    }
    return "";
}

std::string EffectSteps(const Inputs& inputs, const State& state, const Question& question,
                        const std::vector<RecordEntry>& record,
                        const std::vector<RecordEntry>& other) {
    std::vector<std::string> launches;
    std::vector<std::string> toasts;
    std::map<std::string, std::string> settings;
    std::string modes;
    std::string before;
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kLaunch) {
            std::string launch = entry.text;
            launch.erase(std::remove(launch.begin(), launch.end(), '"'), launch.end());
            launches.push_back(launch);
        } else if (entry.kind == Entry::kPopup) {
            const std::size_t begin = entry.text.find(POPUP_TEXT) + sizeof(POPUP_TEXT) - 1;
            toasts.push_back(entry.text.substr(begin, entry.text.find('"', begin) - begin));
        } else if (entry.kind == Entry::kWrite) {
            const Written written = ReadWritten(entry.text);
            settings[written.key] = StoredText(written);
        } else if (entry.kind == Entry::kMode) {
            const std::size_t to = entry.text.find(" to ");
            modes += "expect.state." + TomlText("always_on_voice/" + entry.text.substr(0, to)) +
                     " = " + entry.text.substr(to + 4) + "\n";
        }
    }
    for (const RecordEntry& entry : other) {
        const std::string key = entry.kind == Entry::kWrite ? ReadWritten(entry.text).key : "";
        if (!key.empty() && settings.count(key) == 0) {
            const std::string stored = StoredBefore(inputs, state, key);
            settings[key] = stored.empty() ? "\"(missing)\"" : stored;
            before += stored.empty() ? std::string(STEP) + "unset = " + TomlText(key) + "\n\n" : "";
        }
    }
    const char* item = question.item != nullptr ? question.item->name : "voice";
    std::string step = before + STEP;
    if (question.writes) {
        step += std::string("hand = { ") + item + " = " + std::to_string(question.value) + " }\n";
    } else {
        step += AnswerStep(question, record);
    }
    step += "expect.launched = " + AsTomlList(launches) + "\nexpect.toast = " + AsTomlList(toasts) +
            "\n" + modes;
    for (const auto& [key, value] : settings) {
        step += "expect.setting." + TomlText(key) + " = " + value + "\n";
    }
    return step;
}

bool IsLog(const RecordEntry& entry) {
    return entry.kind == Entry::kLog;
}

// What a host can see of it: no trace and no leak. A scenario has no application that runs already
// and could be ended.
bool IsSeen(const RecordEntry& entry) {
    return !IsLog(entry) && entry.kind != Entry::kTrace && entry.kind != Entry::kWrong &&
           entry.kind != Entry::kTerminate;
}

bool IsTermination(const RecordEntry& entry) {
    return entry.kind == Entry::kTerminate;
}

std::vector<std::string> TextsOf(const std::vector<RecordEntry>& record,
                                 bool (*isWanted)(const RecordEntry&)) {
    std::vector<std::string> texts;
    for (const RecordEntry& entry : record) {
        if (isWanted(entry)) {
            texts.push_back(ToText(entry));
        }
    }
    return texts;
}

// "logs 6 function > message" as the log of a TV has it.
std::vector<std::string> MessagesOf(const std::vector<std::string>& lines) {
    std::vector<std::string> messages;
    for (const std::string& line : lines) {
        const std::size_t end = std::min(line.find(" > "), line.size() - 3);
        messages.push_back(line.substr(7, end - 7) + ": " + line.substr(end + 3));
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

std::string LogStep(const Question& question, const std::vector<std::string>& logs,
                    const std::vector<std::string>& others) {
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
    if (run.empty() || isTranslated) {
        return "";
    }
    const std::string hand = question.writes ? std::string("hand = { ") + question.item->name +
                                                   " = " + std::to_string(question.value) + " }\n"
                                             : "";
    return STEP + hand + "expect.log-run = " + AsTomlList(run) + "\n" +
           (absent.empty() ? "" : "expect.no-log = " + AsTomlList(absent) + "\n");
}

}  // namespace

std::string ToReplay(const Inputs& inputs, const State& state, const Question& question,
                     std::string_view record, std::string_view other) {
    const bool isPress = KindOf(question) == "press";
    if (question.item == nullptr && !isPress) {
        return "";
    }
    const std::vector<RecordEntry> entries = ReadRecord(record);
    const std::vector<RecordEntry> others = ReadRecord(other);
    if (TextsOf(entries, IsSeen) != TextsOf(others, IsSeen)) {
        return EffectSteps(inputs, state, question, entries, others);
    }
    const std::vector<std::string> logs = TextsOf(entries, IsLog);
    const std::vector<std::string> otherLogs = TextsOf(others, IsLog);
    const bool isPossible = !isPress && TextsOf(entries, IsTermination).empty() &&
                            TextsOf(others, IsTermination).empty();
    return logs == otherLogs || !isPossible ? "" : LogStep(question, logs, otherLogs);
}

}  // namespace explorer
