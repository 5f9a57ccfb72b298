// The TV's log: __dlog_print, and the file behind it.
#include "platform/log.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <vector>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

// As the TV's own log tools write them; index is the priority.
constexpr char kPriorityLetters[] = "??VDIWEFS";

// One line a record, so that tail and grep work on the file.
std::string Escape(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '\\':
                escaped += "\\\\";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

}  // namespace

std::string FormatLogLine(TimePoint time, int pid, int priority, const std::string& tag,
                          const std::string& message) {
    const bool known = priority >= 0 && priority < static_cast<int>(sizeof kPriorityLetters) - 1;
    std::string line = ToText(time) + " " + std::to_string(pid) + " ";
    line += known ? kPriorityLetters[priority] : '?';
    line += " " + (tag.empty() ? "-" : Escape(tag)) + " " + Escape(message) + "\n";
    return line;
}

bool LogWriter::Append(int priority, const std::string& tag, const std::string& message) {
    const int fd = file_.Descriptor();
    const std::string line = FormatLogLine(Now(), getpid(), priority, tag, message);
    // One write: records of several processes never mix.
    return fd >= 0 && write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

void Tv::Log(int priority, const std::string& text) {
    impl_->LogLine(priority, text);
}

}  // namespace vtv

extern "C" VTV_EXPORT int __dlog_print(int /*logId*/, int priority, const char* tag,
                                       const char* format, ...) {
    constexpr char kFunction[] = "__dlog_print";
    if (format == nullptr) {
        return platform::FailureOf(kFunction);
    }
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string message(size > 0 ? static_cast<size_t>(size) + 1 : 0, '\0');
    if (size > 0) {
        std::vsnprintf(message.data(), message.size(), format, again);
        message.pop_back();
    }
    va_end(again);
    const int result = vtv::Serve(kFunction, [&](vtv::Tv::Impl& tv) {
        return tv.log.Append(priority, tag != nullptr ? tag : "", message);
    });
    return result == 0 ? size : result;
}
