// Plain values of a TV, and their texts.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <variant>

#include "error.h"

namespace vtv {

using Value = std::variant<bool, int, std::string>;

// "bool", "int" or "string".
const char* TypeName(const Value& value);
// "a bool", "an int", "a string".
std::string WithArticle(std::string_view type);
// What to write for a value of the type: "true or false", "a whole number", "a text in quotes".
const char* ExampleOf(std::string_view type);
// "true", "false", a decimal number, or the text as it is.
std::string ToText(const Value& value);
// The reverse. Throws kUsage for a type that is none of the three ("str" also means "string", and 1
// and 0 also mean true and false), and for a text that is no value of the type.
Value ParseValue(const std::string& type, const std::string& text);

using TimePoint = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;
// "2026-03-29T07:15:02.123456Z".
std::string ToText(TimePoint time);

// What starting an application does.
enum class ApplicationMode {
    kRecord,   // the launch is only recorded
    kProcess,  // a process is started; it waits to be finished or cancelled
    kAuto,     // a process is started and finishes its work by itself
};
const char* ToText(ApplicationMode mode);                       // "record", "process", "auto"
ApplicationMode ParseApplicationMode(const std::string& text);  // throws kUsage

enum class Network { kConnected, kDisconnected, kHost /* as this machine's default route */ };
const char* ToText(Network network);            // "connected", "disconnected", "host"
Network ParseNetwork(const std::string& text);  // throws kUsage

}  // namespace vtv
