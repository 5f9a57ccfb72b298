// Reading the TV's log back.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ctime>
#include <memory>

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
    unsigned micros = 0;
    const auto parsed = std::from_chars(rest + 1, copy.c_str() + copy.size(), micros);
    if (parsed.ec != std::errc() || parsed.ptr != rest + 7 || *parsed.ptr != 'Z') {
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
std::vector<LogRecord> ReadLines(int fd, const std::string& path, off_t* offset) {
    std::vector<LogRecord> records;
    std::string text;
    if (!ReadToEnd(fd, *offset, &text)) {
        FailToRead(path, errno);
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
    return LogReader(*this, filter, false).ReadNew();
}

// Every file of the log stays open with what was read of it: a rotation renames files, and a
// process that had one open may still add to it under its new name.
struct LogReader::Impl {
    struct File {
        explicit File(int descriptor) : fd(descriptor) {}
        ~File() { close(fd); }
        File(const File&) = delete;
        File& operator=(const File&) = delete;

        int fd;
        ino_t inode = 0;
        off_t offset = 0;
    };

    explicit Impl(const Tv::Impl& tv) : tvDir(tv.dir) {}

    std::string tvDir;
    LogFilter filter;
    std::vector<std::unique_ptr<File>> files;

    // Oldest first; what is read on stays open, what is gone is closed.
    void Reopen() {
        const FileLock noRotation(tvDir, GrowingFile::kLock);
        std::vector<std::unique_ptr<File>> present;
        for (const std::string& name : kLogFile.Names()) {
            const int fd = OpenTvFile(tvDir, name, O_RDONLY);
            if (fd < 0 && errno == ENOENT) {
                continue;
            }
            if (fd < 0) {
                FailToRead(tvDir + "/" + name, errno);
            }
            auto file = std::make_unique<File>(fd);
            struct stat info;
            if (fstat(fd, &info) != 0) {
                continue;
            }
            file->inode = info.st_ino;
            const auto known = std::find_if(files.begin(), files.end(), [&](const auto& other) {
                return other != nullptr && other->inode == info.st_ino;
            });
            present.push_back(known != files.end() ? std::move(*known) : std::move(file));
        }
        files = std::move(present);
    }
};

LogReader::LogReader(const Tv& tv, LogFilter filter, bool skipExisting)
    : impl_(std::make_unique<Impl>(tv.impl())) {
    impl_->filter = std::move(filter);
    if (skipExisting) {
        ReadNew();
    }
}

LogReader::~LogReader() = default;

std::vector<LogRecord> LogReader::ReadNew() {
    impl_->Reopen();
    std::vector<LogRecord> records;
    for (const auto& file : impl_->files) {
        for (LogRecord& record : ReadLines(file->fd, impl_->tvDir + "/log", &file->offset)) {
            if (Matches(impl_->filter, record)) {
                records.push_back(std::move(record));
            }
        }
    }
    return records;
}

}  // namespace vtv
