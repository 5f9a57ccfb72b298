// Reading the TV's log back.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstring>
#include <ctime>

#include "tv_impl.h"

namespace vtv {

namespace {

std::string Unescape(std::string_view text) {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            plain += text[i];
            continue;
        }
        ++i;
        plain += text[i] == 'n' ? '\n' : text[i] == 'r' ? '\r' : text[i];
    }
    return plain;
}

// Cuts the next word off the front.
std::string_view Word(std::string_view* text) {
    const size_t end = text->find(' ');
    const std::string_view word = text->substr(0, end);
    *text = end == std::string_view::npos ? std::string_view() : text->substr(end + 1);
    return word;
}

bool ParseTime(std::string_view text, TimePoint* time) {
    std::tm parts{};
    const std::string copy(text);
    const char* rest = strptime(copy.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    if (rest == nullptr || *rest != '.') {
        return false;
    }
    long micros = 0;
    const auto parsed = std::from_chars(rest + 1, copy.c_str() + copy.size(), micros);
    if (parsed.ec != std::errc() || *parsed.ptr != 'Z') {
        return false;
    }
    *time = TimePoint(std::chrono::seconds(timegm(&parts)) + std::chrono::microseconds(micros));
    return true;
}

// Splits "file: function(line) > message".
void SplitPrefix(LogRecord* record) {
    const size_t end = record->message.find(") > ");
    const size_t colon = record->message.find(": ");
    const size_t bracket = end != std::string::npos ? record->message.rfind('(', end) : end;
    if (end == std::string::npos || colon == std::string::npos || bracket == std::string::npos ||
        colon + 2 > bracket) {
        return;
    }
    int line = 0;
    const char* digits = record->message.data() + bracket + 1;
    const char* stop = record->message.data() + end;
    const auto parsed = std::from_chars(digits, stop, line);
    if (parsed.ec != std::errc() || parsed.ptr != stop) {
        return;
    }
    record->file = record->message.substr(0, colon);
    record->function = record->message.substr(colon + 2, bracket - colon - 2);
    record->line = line;
    record->message.erase(0, end + 4);
}

// The whole lines of a file from an offset on; the offset moves behind them.
std::vector<LogRecord> ReadLines(int fd, off_t* offset) {
    std::vector<LogRecord> records;
    std::string text;
    char buffer[64 * 1024];
    off_t at = *offset;
    for (ssize_t size; (size = pread(fd, buffer, sizeof buffer, at)) > 0; at += size) {
        text.append(buffer, static_cast<size_t>(size));
    }
    std::string_view rest = text;
    for (size_t end; (end = rest.find('\n')) != std::string_view::npos;
         rest.remove_prefix(end + 1)) {
        LogRecord record;
        if (ParseLogLine(rest.substr(0, end), &record)) {
            records.push_back(std::move(record));
        }
        *offset += static_cast<off_t>(end + 1);
    }
    return records;
}

}  // namespace

bool ParseLogLine(std::string_view line, LogRecord* record) {
    if (!ParseTime(Word(&line), &record->time)) {
        return false;
    }
    const std::string_view pid = Word(&line);
    if (std::from_chars(pid.data(), pid.data() + pid.size(), record->pid).ec != std::errc()) {
        return false;
    }
    const std::string_view priority = Word(&line);
    static constexpr std::string_view kLetters = "??VDIWEFS";
    const size_t number = priority.size() == 1 ? kLetters.find(priority) : std::string_view::npos;
    if (number == std::string_view::npos) {
        return false;
    }
    record->priority = static_cast<int>(number);
    record->tag = Unescape(Word(&line));
    record->message = Unescape(line);
    SplitPrefix(record);
    return true;
}

bool Matches(const LogFilter& filter, const LogRecord& record) {
    return (filter.function.empty() || filter.function == record.function) &&
           (filter.tag.empty() || filter.tag == record.tag) &&
           record.priority >= filter.minPriority;
}

std::vector<LogRecord> Tv::ReadLog(const LogFilter& filter) const {
    std::vector<LogRecord> records;
    // As a rotation may happen meanwhile, the files are opened first.
    const vtv::FileLock lock(impl_->dir + "/log/.lock");
    for (const std::string& path : impl_->log.Paths()) {
        const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            continue;
        }
        off_t offset = 0;
        for (LogRecord& record : ReadLines(fd, &offset)) {
            if (Matches(filter, record)) {
                records.push_back(std::move(record));
            }
        }
        close(fd);
    }
    return records;
}

struct LogReader::Impl {
    std::string path;
    LogFilter filter;
    int fd = -1;
    off_t offset = 0;

    bool IsCurrent() const {
        struct stat ours, named;
        return fd >= 0 && fstat(fd, &ours) == 0 && stat(path.c_str(), &named) == 0 &&
               ours.st_ino == named.st_ino;
    }
    void Reopen() {
        if (fd >= 0) {
            close(fd);
        }
        fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        offset = 0;
    }
};

LogReader::LogReader(const Tv& tv, LogFilter filter, bool skipExisting)
    : impl_(std::make_unique<Impl>()) {
    impl_->path = tv.LogFile();
    impl_->filter = std::move(filter);
    impl_->Reopen();
    if (skipExisting && impl_->fd >= 0) {
        impl_->offset = lseek(impl_->fd, 0, SEEK_END);
    }
}

LogReader::~LogReader() {
    if (impl_->fd >= 0) {
        close(impl_->fd);
    }
}

std::vector<LogRecord> LogReader::ReadNew() {
    std::vector<LogRecord> records;
    const auto take = [&] {
        if (impl_->fd < 0) {
            return;
        }
        for (LogRecord& record : ReadLines(impl_->fd, &impl_->offset)) {
            if (Matches(impl_->filter, record)) {
                records.push_back(std::move(record));
            }
        }
    };
    const bool rotated = !impl_->IsCurrent();  // asked first: what is added meanwhile is still read
    take();
    if (rotated) {
        impl_->Reopen();
        take();
    }
    return records;
}

}  // namespace vtv
