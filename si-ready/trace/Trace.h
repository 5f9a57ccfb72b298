// Trace events: like a log record, with the values of its arguments, for the TV's trace storage.
#pragma once

#include <atomic>
#include <initializer_list>
#include <variant>

#include "platform/trace_storage.h"

namespace trace {

// Where an event comes from. One constant record per call site.
struct CallSite {
    const char* file;
    int line;
    const char* function;  // full signature
    int* id;               // 0 until the site is registered, then the storage's id
};

// An argument of an event. A text is not copied.
using Argument = std::variant<int, bool, const char*>;

inline bool IsEnabled() {
    return TIStorageManagerState::enabled.load(std::memory_order_relaxed);
}

// Records an event, registering its site the first time. Never fails towards the caller: an event
// for which there is no memory or no buffer is dropped.
void Record(const CallSite& site, const char* format,
            std::initializer_list<Argument> arguments) noexcept;

}  // namespace trace

// Trace dictionaries are keyed by (file, line): the line is the site's own and stays when the code
// around it moves. When tracing is off this costs one atomic load.
#define TRACE_EVENT_AT(line, format, ...)                                               \
    do {                                                                                \
        if (trace::IsEnabled()) {                                                       \
            static int siSiteId = 0;                                                    \
            static const trace::CallSite siSite = {__FILE__, line, __PRETTY_FUNCTION__, \
                                                   &siSiteId};                          \
            trace::Record(siSite, format, {__VA_ARGS__});                               \
        }                                                                               \
    } while (false)
