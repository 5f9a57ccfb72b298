// Log records: "%s: %s(%d) > " with file name, function and line, then the message.
#pragma once

#include "platform/log.h"

enum LogPriority { LOG_PRIORITY_INFO = 4, LOG_PRIORITY_ERROR = 6 };

constexpr const char* WithoutDirectory(const char* path) {
    const char* name = path;
    for (const char* c = path; *c != '\0'; ++c) {
        if (*c == '/') {
            name = c + 1;
        }
    }
    return name;
}

// A null text logs as the C library would print it; not every log does that by itself.
constexpr const char* Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

#define SI_LOG(priority, function, line, format, ...)                                            \
    do {                                                                                         \
        static constexpr const char* siFileName = WithoutDirectory(__FILE__);                    \
        __dlog_print(0, priority, "SI-MENU", "%s: %s(%d) > " format, siFileName, function, line, \
                     ##__VA_ARGS__);                                                             \
    } while (false)

// Most records have error priority, ordinary progress included: that is what field logs keep.
#define LOG_ERROR(...) SI_LOG(LOG_PRIORITY_ERROR, __func__, __LINE__, __VA_ARGS__)

// Records with a line number of their own: field log filters are keyed by (file, function, line),
// so the number stays when the code around it moves.
#define LOG_ERROR_AT(line, ...) SI_LOG(LOG_PRIORITY_ERROR, __func__, line, __VA_ARGS__)
#define LOG_INFO_AT(line, ...) SI_LOG(LOG_PRIORITY_INFO, __func__, line, __VA_ARGS__)

// A record of a helper that speaks for the function that calls it.
#define LOG_ERROR_FOR(function, ...) SI_LOG(LOG_PRIORITY_ERROR, function, __LINE__, __VA_ARGS__)
