#include "record.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "explorer/engine/memory.h"
#include "fixed_lines.h"
#include "lazy_tv.h"

namespace explorer {

// ---------------------------------------------------------------------------------------------
// Written down as it happens: kind, type, subject, zero, value, zero
// ---------------------------------------------------------------------------------------------

// Called for every character of every log record: as a call it costs a seventh of `diff`.
[[gnu::always_inline]] inline void Tv::Put(std::string_view text) {
    const std::size_t length = std::min(text.size(), BUFFER - 1 - recordSize_);
    std::memcpy(record_ + recordSize_, text.data(), length);
    recordSize_ += length;
    if (length < text.size()) {
        NoteFullRecord();
    }
}

void Tv::NoteFullRecord() {
    NoteTooMuch(std::to_string(BUFFER - 1) + " bytes of answers and effects in one call");
}

void Tv::PutNumber(long long number) {
    char text[24];
    const std::to_chars_result end = std::to_chars(std::begin(text), std::end(text), number);
    Put({text, static_cast<std::size_t>(end.ptr - text)});
}

// As the C library prints it.
void Tv::PutFormatted(const char* format, std::va_list arguments) {
    const PlatformMemory own;
    char* const place = record_ + recordSize_;
    const std::size_t room = BUFFER - recordSize_;
    const int length = std::vsnprintf(place, room, format, arguments);
    recordSize_ += std::strlen(place);
    if (length >= static_cast<int>(room)) {
        NoteFullRecord();
    }
}

void Tv::Append(Entry kind, std::string_view subject, const Said& value) {
    const char head[] = {static_cast<char>(kind), static_cast<char>('0' + value.index())};
    Put({head, sizeof(head)});
    Put(subject);
    Put({"\0", 1});
    if (const bool* flag = std::get_if<bool>(&value)) {
        Put(*flag ? "1" : "0");
    } else if (const int* number = std::get_if<int>(&value)) {
        PutNumber(*number);
    } else if (const std::string* text = std::get_if<std::string>(&value)) {
        Put(*text);
    } else if (const Numbered* numbered = std::get_if<Numbered>(&value)) {
        PutNumber(numbered->number);
        Put(" ");
        Put(numbered->text);
    }
    Put({"\0", 1});
    switch (kind) {
        case Entry::kAnswer:
        case Entry::kRead:
        case Entry::kLog:
        case Entry::kTrace:
        case Entry::kNote:
        case Entry::kWrong:
            break;
        default:
            effects_ = true;
    }
}

std::string EntryBytes(Entry kind, std::string_view subject) {
    return std::string{static_cast<char>(kind), '0'} + std::string(subject) + std::string(2, '\0');
}

namespace {
constexpr char TRACING_IS_OFF[] = "and while tracing is off";
}

std::string WhileTracingIsOff(std::string_view record) {
    return EntryBytes(Entry::kNote, TRACING_IS_OFF) + std::string(record);
}

std::string_view WithoutTracingOff(std::string_view record) {
    return record.substr(0, record.find(EntryBytes(Entry::kNote, TRACING_IS_OFF)));
}

void Tv::Note(std::string_view call, const char* arguments) {
    if (!everything) {
        return;
    }
    const char head[] = {static_cast<char>(Entry::kNote), '0'};
    Put({head, sizeof(head)});
    Put(call);
    Put(" ");
    Put(arguments != nullptr ? arguments : "(null)");
    Put({"\0\0", 2});
}

void Tv::Note(std::string_view call, int argument) {
    const PlatformMemory own;
    Note(call, std::to_string(argument).c_str());
}

void Tv::AppendTrace(std::string_view event) {
    if (logLevel != LogLevel::kNone) {
        Append(Entry::kTrace, event);
    }
}

namespace {

constexpr char LOG_PREFIX[] = "%s: %s(%d) > ";
constexpr std::size_t LOG_PREFIX_SIZE = sizeof(LOG_PREFIX) - 1;

// Whether the message, behind the prefix, reports an exception.
bool ReportsException(const char* format) {
    return std::strncmp(format, "%s: %s(%d) > [EXCEPTION]", 24) == 0;
}

}  // namespace

void Tv::Log(int priority, const char* format, std::va_list arguments) {
    threw_ = threw_ || ReportsException(format);
    if (logLevel == LogLevel::kNone) {
        return;
    }
    constexpr std::size_t NUMBERED = std::variant_size_v<Said> - 1;
    const char head[] = {static_cast<char>(Entry::kLog), static_cast<char>('0' + NUMBERED)};
    Put({head, sizeof(head)});
    if (std::strncmp(format, LOG_PREFIX, LOG_PREFIX_SIZE) == 0) {
        const char* file = va_arg(arguments, const char*);
        const char* function = va_arg(arguments, const char*);
        const int line = va_arg(arguments, int);
        Put(file);
        Put(": ");
        Put(function);
        if (ShowsLine(file, function, line)) {
            Put("(");
            PutNumber(line);
            Put(")");
        }
        format += LOG_PREFIX_SIZE;
    }
    Put({"\0", 1});
    PutNumber(priority);
    Put(" ");
    for (const char* c = format; *c != '\0'; ++c) {
        const std::size_t plain = std::strcspn(c, "%");
        Put({c, plain});
        c += plain;
        if (*c == '\0') {
            break;
        }
        if (c[1] == 's') {
            const char* text = va_arg(arguments, const char*);
            Put(text != nullptr ? text : "(null)");
        } else if (c[1] == 'd') {
            PutNumber(va_arg(arguments, int));
        } else {
            PutFormatted(c, arguments);
            break;
        }
        ++c;
    }
    Put({"\0", 1});
}

bool Tv::ShowsLine(const char* file, const char* function, int line) const {
    return logLevel == LogLevel::kLines ||
           (logLevel == LogLevel::kFiles && IsFixedLine(file, function, line));
}

void Tv::AppendReads() {
    for (std::size_t i = 0; i < touchedSize_; ++i) {
        const int input = touched_[i];
        Append(Entry::kRead, inputs_->inputs[static_cast<std::size_t>(input)].name,
               ReadCount(input));
    }
}

// ---------------------------------------------------------------------------------------------
// Read back
// ---------------------------------------------------------------------------------------------

namespace {

Said ValueOf(int type, const std::string& text) {
    switch (type) {
        case 0:
            return {};
        case 1:
            return text == "1";
        case 2:
            return std::atoi(text.c_str());
        case 3:
            return text;
        default:
            return Numbered{std::atoi(text.c_str()), text.substr(text.find(' ') + 1)};
    }
}

}  // namespace

std::string RecordEntry::Text() const {
    const std::string* text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : "";
}

std::vector<RecordEntry> ReadRecord(std::string_view record) {
    const auto take = [&record](std::size_t size) {
        const std::string taken(record.substr(0, size));
        record.remove_prefix(std::min(taken.size() + 1, record.size()));
        return taken;
    };
    std::vector<RecordEntry> entries;
    while (record.size() > 1) {
        RecordEntry entry;
        entry.kind = static_cast<Entry>(record[0]);
        const int type = record[1] - '0';
        record.remove_prefix(2);
        entry.subject = take(record.find('\0'));
        entry.value = ValueOf(type, take(record.find('\0')));
        if (entry.kind == Entry::kExtra && !entries.empty()) {
            entries.back().extras.emplace_back(entry.subject, entry.Text());
        } else {
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

namespace {

void TakeOut(std::string_view mark, std::string& text) {
    for (std::size_t at = text.find(mark); at != text.npos; at = text.find(mark, at)) {
        text.erase(at, mark.size());
    }
}

void TakeMarksOut(std::string& text) {
    TakeOut(TRANSLATED_FROM, text);
    TakeOut(TRANSLATED_TO, text);
}

}  // namespace

std::vector<RecordEntry> WithIds(std::vector<RecordEntry> record) {
    for (RecordEntry& entry : record) {
        if (auto* text = std::get_if<std::string>(&entry.value)) {
            TakeMarksOut(*text);
        } else if (auto* numbered = std::get_if<Numbered>(&entry.value)) {
            TakeMarksOut(numbered->text);
        }
        for (auto& [key, value] : entry.extras) {
            TakeMarksOut(value);
        }
    }
    return record;
}

const RecordEntry* FindAnswer(const std::vector<RecordEntry>& record, std::string_view about) {
    const auto found = std::find_if(record.begin(), record.end(), [&](const RecordEntry& entry) {
        return entry.Is(Entry::kAnswer, about);
    });
    return found != record.end() ? &*found : nullptr;
}

// ---------------------------------------------------------------------------------------------
// In words
// ---------------------------------------------------------------------------------------------

namespace {

struct Words {
    std::string_view about;
    const char* yes;
    const char* no;
    const char* none;
};
constexpr Words ANSWER_WORDS[] = {
    {answers::VISIBLE, "visible", "hidden", ""},
    {answers::ENABLED, "enabled", "dimmed", ""},
    {answers::TRUTH, "true", "false", ""},
    {answers::SHOWN, "shown: yes", "shown: no", ""},
    {answers::CAUGHT, "an exception is caught and logged", "", ""},
    {answers::VALUE, "", "", "no value"},
    {answers::CHOICE, "", "", "no choices"},
};

std::string AnswerInWords(const RecordEntry& entry) {
    const Words* words = std::find_if(std::begin(ANSWER_WORDS), std::end(ANSWER_WORDS),
                                      [&](const Words& one) { return one.about == entry.subject; });
    const bool hasWords = words != std::end(ANSWER_WORDS);
    if (const bool* flag = std::get_if<bool>(&entry.value); flag != nullptr && hasWords) {
        return *flag ? words->yes : words->no;
    }
    if (const int* number = std::get_if<int>(&entry.value)) {
        return entry.subject + ": " + std::to_string(*number);
    }
    if (const auto* choice = std::get_if<Numbered>(&entry.value)) {
        return entry.subject + ' ' + std::to_string(choice->number) + ": \"" + choice->text + '"';
    }
    if (std::holds_alternative<std::string>(entry.value)) {
        return entry.subject + ": \"" + entry.Text() + '"';
    }
    return hasWords ? words->none : entry.subject + ": none";
}

std::string NumberText(const Said& value) {
    const int* number = std::get_if<int>(&value);
    return number != nullptr ? std::to_string(*number) : "";
}

// " = bool 1", as a store holds it.
std::string StoredInWords(const RecordEntry& entry) {
    if (const bool* flag = std::get_if<bool>(&entry.value)) {
        return std::string(" = bool ") + (*flag ? '1' : '0');
    }
    return std::holds_alternative<int>(entry.value) ? " = int " + NumberText(entry.value)
                                                    : " = string " + entry.Text();
}

constexpr std::pair<Entry, const char*> VERBS[] = {
    {Entry::kWrite, "writes "},   {Entry::kLaunch, "starts "},
    {Entry::kPopup, "asks for "}, {Entry::kTerminate, "ends "},
    {Entry::kCall, "calls "},     {Entry::kMode, "sets the always-on-voice mode of "},
    {Entry::kRead, "reads "},     {Entry::kLog, "logs "},
    {Entry::kTrace, "traces "},   {Entry::kNote, ""},
    {Entry::kWrong, "WRONG: "},
};

}  // namespace

std::string LaunchText(const std::string& application, const vtv::Extras& extras) {
    std::string text = application;
    for (const auto& [key, value] : extras) {
        text += ' ' + key + "=\"" + value + '"';
    }
    return text;
}

std::string WhatIsSaid(const RecordEntry& entry) {
    switch (entry.kind) {
        case Entry::kAnswer:
            return AnswerInWords(entry);
        case Entry::kWrite:
            return entry.subject + StoredInWords(entry);
        case Entry::kMode:
            return entry.subject + " to " + NumberText(entry.value);
        case Entry::kRead:
            return entry.subject + ' ' + NumberText(entry.value) + " times";
        case Entry::kLog: {
            const Numbered* record = std::get_if<Numbered>(&entry.value);
            return std::to_string(record->number) + ' ' + entry.subject +
                   (entry.subject.empty() ? "" : " > ") + record->text;
        }
        case Entry::kCall:
            return entry.subject + (entry.Text().empty() ? "" : ' ' + entry.Text());
        case Entry::kWrong: {
            const std::string count = NumberText(entry.value);
            return entry.subject + (count.empty() ? "" : ": " + count);
        }
        default:
            return LaunchText(entry.subject, entry.extras);
    }
}

std::string ToText(const RecordEntry& entry) {
    const auto* verb = std::find_if(std::begin(VERBS), std::end(VERBS),
                                    [&](const auto& one) { return one.first == entry.kind; });
    return (verb != std::end(VERBS) ? verb->second : "") + WhatIsSaid(entry);
}

std::vector<std::string> TextsOf(const std::vector<RecordEntry>& record) {
    std::vector<std::string> texts;
    for (const RecordEntry& entry : record) {
        texts.push_back(ToText(entry));
    }
    return texts;
}

}  // namespace explorer
