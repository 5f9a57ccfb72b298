#include "record_filter.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <ctime>

namespace cli {

namespace {

// The seconds that "90s", "5m", "2h", "1d" stand for; -1 for anything else.
int64_t ParseDuration(std::string text) {
    if (text.rfind('-', 0) == 0) {
        text.erase(0, 1);
    }
    int number = -1;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || number < 0 || rest + 1 != end) {
        return -1;
    }
    switch (*rest) {
        case 's':
            return number;
        case 'm':
            return int64_t{60} * number;
        case 'h':
            return int64_t{3600} * number;
        case 'd':
            return int64_t{86400} * number;
        default:
            return -1;
    }
}

// Whether the text is of the form, to its end; parts of a second are passed over.
bool Parse(const std::string& text, const char* form, std::tm* parts) {
    const char* rest = strptime(text.c_str(), form, parts);
    if (rest == nullptr) {
        return false;
    }
    const std::string behind = rest;
    const size_t digits = behind.rfind('.', 0) == 0 ? behind.find_first_not_of("0123456789", 1) : 0;
    const std::string end = digits == std::string::npos ? "" : behind.substr(digits);
    return end.empty() || end == "Z";
}

}  // namespace

vtv::TimePoint ParseSince(const std::string& text) {
    const auto now =
        std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
    if (const int64_t ago = ParseDuration(text); ago >= 0) {
        return now - std::chrono::seconds(ago);
    }
    const std::time_t today = std::chrono::system_clock::to_time_t(now);
    for (const char* form : {"%H:%M:%S", "%H:%M", "%Y-%m-%d", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%dT%H:%M",
                             "%Y-%m-%d %H:%M:%S", "%Y-%m-%d %H:%M"}) {
        std::tm parts{};
        gmtime_r(&today, &parts);
        parts.tm_hour = parts.tm_min = parts.tm_sec = 0;
        if (Parse(text, form, &parts)) {
            return vtv::TimePoint(std::chrono::seconds(timegm(&parts)));
        }
    }
    throw vtv::Error(vtv::ErrorKind::kUsage,
                     "\"" + text +
                         "\" is no time: write how long ago (30s, 10m, 2h, 1d), or a time in UTC: "
                         "07:15, 2026-03-29, \"2026-03-29 07:15:02\".");
}

TextSearch::TextSearch(const std::string& expression) {
    if (expression.empty()) {
        return;
    }
    const bool hasCapital = std::any_of(expression.begin(), expression.end(),
                                        [](unsigned char c) { return std::isupper(c) != 0; });
    auto compiled = std::make_unique<regex_t>();
    const int error = regcomp(compiled.get(), expression.c_str(),
                              REG_EXTENDED | REG_NOSUB | (hasCapital ? 0 : REG_ICASE));
    if (error != 0) {
        char why[200];
        regerror(error, compiled.get(), why, sizeof why);
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "\"" + expression + "\" is no regular expression: " + why + ".");
    }
    compiled_.reset(compiled.release(), [](regex_t* one) {
        regfree(one);
        delete one;
    });
}

bool TextSearch::Finds(const std::string& text) const {
    return compiled_ == nullptr || regexec(compiled_.get(), text.c_str(), 0, nullptr, 0) == 0;
}

}  // namespace cli
