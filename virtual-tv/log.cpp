// The TV's log: __dlog_print, the file behind it and its rotation.
#include "platform/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

LogWriter::~LogWriter() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

std::vector<std::string> LogWriter::Names() {
    std::vector<std::string> names;
    for (int i = kOldFiles; i >= 1; --i) {
        names.push_back(kFile + ("." + std::to_string(i)));
    }
    names.emplace_back(kFile);
    return names;
}

bool LogWriter::Open() {
    if (fd_ >= 0) {
        close(fd_);
    }
    fd_ = OpenTvFile(tvDir_, kFile, O_WRONLY | O_CREAT | O_APPEND);
    return fd_ >= 0;
}

// Another process may have rotated the file that this one has open.
bool LogWriter::IsCurrent() const {
    struct stat ours, named;
    return fd_ >= 0 && fstat(fd_, &ours) == 0 && stat(Path().c_str(), &named) == 0 &&
           ours.st_ino == named.st_ino && ours.st_dev == named.st_dev;
}

// Throws kPlatform.
void LogWriter::Rotate() {
    const FileLock lock(tvDir_, kLock);
    struct stat info;
    if (stat(Path().c_str(), &info) != 0 || info.st_size < kMaxSize) {
        return;  // another process was sooner
    }
    const std::vector<std::string> names = Names();
    for (size_t i = 0; i + 1 < names.size(); ++i) {
        RenameInTv(tvDir_, names[i + 1], names[i]);
    }
}

bool LogWriter::Append(int priority, const std::string& tag, const std::string& message) {
    if (!IsCurrent() && !Open()) {
        return false;
    }
    struct stat info;
    if (fstat(fd_, &info) == 0 && info.st_size >= kMaxSize) {
        try {
            Rotate();
        } catch (const Error&) {
            // The log grows on until somebody can.
        }
        if (!Open()) {
            return false;
        }
    }
    const std::string line = FormatLogLine(Now(), getpid(), priority, tag, message);
    // One write: records of several processes never mix.
    return write(fd_, line.data(), line.size()) == static_cast<ssize_t>(line.size());
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
