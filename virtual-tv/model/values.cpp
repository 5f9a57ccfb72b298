#include "values.h"

#include <charconv>
#include <cstdio>
#include <ctime>

namespace vtv {

Error::~Error() = default;

std::string Error::WithoutNul(const std::string& text) {
    std::string visible;
    for (const char c : text) {
        visible += c == '\0' ? "\\u0000" : std::string(1, c);
    }
    return visible;
}

const char* TypeName(const Value& value) {
    static const char* const names[] = {"bool", "int", "string"};
    return names[value.index()];
}

std::string WithArticle(std::string_view type) {
    return (type == "int" ? "an " : "a ") + std::string(type);
}

const char* ExampleOf(std::string_view type) {
    return type == "bool" ? "true or false" : type == "int" ? "a whole number" : "a text in quotes";
}

std::string ToText(const Value& value) {
    if (const bool* flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    if (const int* number = std::get_if<int>(&value)) {
        return std::to_string(*number);
    }
    return std::get<std::string>(value);
}

Value ParseValue(const std::string& type, const std::string& text) {
    if (type == "string" || type == "str") {
        return text;
    }
    if (type == "bool") {
        if (text == "true" || text == "1") {
            return true;
        }
        if (text == "false" || text == "0") {
            return false;
        }
        throw Error(ErrorKind::kUsage, "\"" + text + "\" is no bool: write true or false.");
    }
    if (type == "int") {
        int number = 0;
        const char* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || stop != end) {
            throw Error(
                ErrorKind::kUsage,
                "\"" + text + "\" is no int: write a whole number from -2147483648 to 2147483647.");
        }
        return number;
    }
    throw Error(ErrorKind::kUsage, "\"" + type + "\" is no type: write bool, int or string.");
}

std::string ToText(TimePoint time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const auto micros = (time - whole).count();
    const std::time_t seconds = whole.time_since_epoch().count();
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + length, sizeof text - length, ".%06dZ", static_cast<int>(micros));
    return text;
}

const char* ToText(ApplicationMode mode) {
    switch (mode) {
        case ApplicationMode::kRecord:
            return "record";
        case ApplicationMode::kProcess:
            return "process";
        case ApplicationMode::kAuto:
            return "auto";
    }
    return "";
}

ApplicationMode ParseApplicationMode(const std::string& text) {
    for (const auto mode :
         {ApplicationMode::kRecord, ApplicationMode::kProcess, ApplicationMode::kAuto}) {
        if (text == ToText(mode)) {
            return mode;
        }
    }
    throw Error(ErrorKind::kUsage, "\"" + text +
                                       "\" is no way to start applications: write \"record\", "
                                       "\"process\" or \"auto\".");
}

const char* ToText(Network network) {
    switch (network) {
        case Network::kConnected:
            return "connected";
        case Network::kDisconnected:
            return "disconnected";
        case Network::kHost:
            return "host";
    }
    return "";
}

Network ParseNetwork(const std::string& text) {
    for (const auto network : {Network::kConnected, Network::kDisconnected, Network::kHost}) {
        if (text == ToText(network)) {
            return network;
        }
    }
    throw Error(
        ErrorKind::kUsage,
        "\"" + text + "\" is no network: write \"connected\", \"disconnected\" or \"host\".");
}

}  // namespace vtv
