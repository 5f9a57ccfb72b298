// What happens on the TV and what the provider answers, as typed values: what it is, what it is
// about, and the value. A record holds them as bytes, so that two runs can be compared without
// understanding them. Words are made here and nowhere else, for people.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "virtual-tv/model/launch.h"

namespace explorer {

enum class Entry : char {
    kWrite = 'w',      // a setting was written: its key, and what it is now
    kLaunch = 'l',     // an application was started, with extras
    kPopup = 'p',      // the same through app control
    kTerminate = 't',  // an application was ended
    kMode = 'm',       // the always-on-voice mode of an application was set: the number
    kCall = 'c',       // another effect: a function of the sound or the toolkit, its arguments
    kAnswer = 'a',     // part of the answer: one of answers::, and what it is
    kRead = 'r',       // an input was read: its name, how often
    kLog = 'g',        // a log record: where it was made, its priority and the message
    kTrace = 'e',      // a trace event
    kNote = 'n',       // another call of the platform with its arguments, reads among them
    kWrong = 'x',      // what must not happen: an exception, a leak, ...
    kExtra = '+',      // of the launch before it, of which ReadRecord() makes it a part
};

// What answers are about; a few answers name something else, such as a function.
namespace answers {
inline constexpr char VISIBLE[] = "visible";
inline constexpr char ENABLED[] = "enabled";
inline constexpr char TITLE[] = "title";
inline constexpr char HELP[] = "help";
inline constexpr char VALUE[] = "value";
inline constexpr char CHOICE[] = "choice";
inline constexpr char REASON[] = "reason";
inline constexpr char SHOWN[] = "shown";  // the flag beside the reason
// Of boxes.
inline constexpr char BUTTONS[] = "buttons";
inline constexpr char MESSAGE[] = "message";
inline constexpr char FIRST[] = "first";
inline constexpr char SECOND[] = "second";
inline constexpr char ACTION[] = "action";
// Of functions.
inline constexpr char TRUTH[] = "truth";
inline constexpr char TEXT[] = "text";  // also of a confirmation
inline constexpr char RESULT[] = "result";
inline constexpr char CAUGHT[] = "caught";  // an exception, which is then logged
}  // namespace answers

// A choice of a list, or a log message with its priority.
struct Numbered {
    int number = 0;
    std::string text;
    bool operator==(const Numbered&) const = default;
};

using Said = std::variant<std::monostate, bool, int, std::string, Numbered>;

struct RecordEntry {
    Entry kind = Entry::kWrong;
    std::string subject;
    Said value;
    vtv::Extras extras;  // of a launch

    bool operator==(const RecordEntry&) const = default;
    bool Is(Entry wanted, std::string_view about) const {
        return kind == wanted && subject == about;
    }
    // Empty when the value is none.
    std::string Text() const;
};

// What stands around a translated text where Tv::marksTexts is set.
inline constexpr char TRANSLATED_FROM[] = "\u00AB";
inline constexpr char TRANSLATED_TO[] = "\u00BB";
// The entries with the ids of texts instead.
std::vector<RecordEntry> WithIds(std::vector<RecordEntry> record);

// The bytes of an entry of that kind.
std::string EntryBytes(Entry kind, std::string_view subject);
// What a call did is followed by what it does while tracing is off, when that was tried.
std::string WhileTracingIsOff(std::string_view record);
std::string_view WithoutTracingOff(std::string_view record);
// The entries of a record in order.
std::vector<RecordEntry> ReadRecord(std::string_view record);
// The first answer about that; null when there is none.
const RecordEntry* FindAnswer(const std::vector<RecordEntry>& record, std::string_view about);

// "writes db/...", "starts ...", ... : one line for people.
std::string ToText(const RecordEntry& entry);
// The same without its verb: what is wrong, of whom.
std::string WhatIsSaid(const RecordEntry& entry);
// One line each.
std::vector<std::string> TextsOf(const std::vector<RecordEntry>& record);
// "APP key="value"".
std::string LaunchText(const std::string& application, const vtv::Extras& extras);

}  // namespace explorer
