#include "store.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "store_files.h"

namespace vtv {

namespace {

constexpr char kVersionFile[] = ".store";
constexpr char kTemporaryPrefix[] = ".tmp-";

int OpenAt(int dir, const char* name, int flags, mode_t mode) {
    return openat(dir, name, flags, mode);
}

// Whole bodies only: a file that is read in two parts could be one value's begin and another's end
// only if it were changed in place, which nobody does.
bool ReadWhole(int fd, std::string* content) {
    char buffer[4096];
    for (;;) {
        const ssize_t size = read(fd, buffer, sizeof buffer);
        if (size < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        content->append(buffer, static_cast<size_t>(size));
        if (static_cast<size_t>(size) < sizeof buffer) {
            return true;
        }
    }
}

bool WriteWhole(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t size = store_file_calls.write(fd, content.data(), content.size());
        if (size < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        content.remove_prefix(static_cast<size_t>(size));
    }
    return true;
}

std::string Format(const Value& value) {
    const std::string text = ToText(value);
    return std::string(TypeName(value)) + " " + std::to_string(text.size()) + "\n" + text + "\n";
}

// The reverse of Format(). Returns what is wrong, or null.
const char* Parse(std::string_view content, Value* value) {
    const size_t endOfHeader = content.find('\n');
    if (content.empty()) {
        return "it is empty";
    }
    const std::string_view header = content.substr(0, endOfHeader);
    const size_t space = header.find(' ');
    if (endOfHeader == std::string_view::npos || space == std::string_view::npos) {
        return "it is no file of this store";
    }
    const std::string_view type = header.substr(0, space);
    const std::string_view digits = header.substr(space + 1);
    size_t length = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), length);
    if (error != std::errc() || stop != digits.data() + digits.size()) {
        return "it is no file of this store";
    }
    const std::string_view rest = content.substr(endOfHeader + 1);
    if (rest.size() <= length) {
        return "it is cut off";
    }
    if (rest.size() != length + 1 || rest.back() != '\n') {
        return "it is longer than it says";
    }
    const std::string_view text = rest.substr(0, length);
    if (type == "string") {
        *value = std::string(text);
        return nullptr;
    }
    if (type == "bool" && (text == "true" || text == "false")) {
        *value = text == "true";
        return nullptr;
    }
    if (type == "int") {
        int number = 0;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
        if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) {
            *value = number;
            return nullptr;
        }
    }
    return "its value does not fit its type";
}

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Unique among the processes and threads that share the folder.
std::string TemporaryName() {
    static std::atomic<unsigned> count{0};
    char name[64];
    std::snprintf(name, sizeof name, "%s%d-%d-%u", kTemporaryPrefix, static_cast<int>(getpid()),
                  static_cast<int>(gettid()), count.fetch_add(1));
    return name;
}

}  // namespace

StoreFileCalls store_file_calls = {OpenAt, write, fsync, close, renameat, unlinkat};

std::string Store::EncodeKey(std::string_view key) {
    static const char hex[] = "0123456789ABCDEF";
    std::string name;
    name.reserve(key.size() + 16);
    for (const char c : key) {
        // A leading dot would hide the file and could name one of the store's own.
        if (IsPlain(c) && (c != '.' || !name.empty())) {
            name += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        name += '%';
        name += hex[byte >> 4];
        name += hex[byte & 15];
    }
    return name.size() > kMaxEncodedKey ? std::string() : name;
}

std::string Store::DecodeKey(std::string_view fileName) {
    std::string key;
    if (fileName.empty() || fileName.front() == '.') {
        return key;
    }
    for (size_t i = 0; i < fileName.size(); ++i) {
        if (fileName[i] != '%') {
            key += fileName[i];
            continue;
        }
        if (i + 2 >= fileName.size() || HexDigit(fileName[i + 1]) < 0 ||
            HexDigit(fileName[i + 2]) < 0) {
            return std::string();
        }
        key += static_cast<char>(HexDigit(fileName[i + 1]) * 16 + HexDigit(fileName[i + 2]));
        i += 2;
    }
    return key;
}

void Store::Create(const std::string& dir) {
    if (mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Error(ErrorKind::kPlatform,
                    dir + ": cannot make this folder: " + std::strerror(errno) + ".");
    }
    const std::string file = dir + "/" + kVersionFile;
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const std::string text = std::to_string(kVersion) + "\n";
    const bool written = fd >= 0 && WriteWhole(fd, text) && fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (!written) {
        throw Error(ErrorKind::kPlatform,
                    file + ": cannot be written: " + std::strerror(error) + ".");
    }
}

Store::Store(const std::string& dir, Durability durability) : dir_(dir), durability_(durability) {
    dirFd_ = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd_ < 0) {
        problem_ = dir + ": cannot be opened: " + std::strerror(errno) +
                   ". Its values read as missing until the folder is back.";
        return;
    }
    CheckVersion();
}

Store::~Store() {
    if (dirFd_ >= 0) {
        close(dirFd_);
    }
}

void Store::CheckVersion() {
    std::string text;
    const int fd = openat(dirFd_, kVersionFile, O_RDONLY | O_CLOEXEC);
    if (fd < 0 || !ReadWhole(fd, &text)) {
        problem_ =
            dir_ + "/" + kVersionFile +
            ": cannot be read, so this folder is no settings store. Put the file back (its content "
            "is the store's version, \"1\") if you removed it.";
    }
    if (fd >= 0) {
        close(fd);
    }
    if (!problem_.empty()) {
        return;
    }
    int version = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), version);
    if (parsed.ec != std::errc() || version < 1) {
        problem_ = dir_ + "/" + kVersionFile +
                   ": holds no version number; write \"1\" into it if the " +
                   "store is of this version.";
    } else if (version > kVersion) {
        problem_ = dir_ + ": this store is of version " + std::to_string(version) +
                   ", which is newer than this program knows (" + std::to_string(kVersion) +
                   "). Use a newer program. Nothing was changed.";
    }
}

Store::Status Store::Read(std::string_view key, Value* value, std::string* problem) const {
    if (!problem_.empty()) {
        *problem = problem_;
        return Status::kDamaged;
    }
    const std::string name = EncodeKey(key);
    if (name.empty()) {
        return Status::kMissing;
    }
    const int fd = openat(dirFd_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        if (errno == ENOENT) {
            return Status::kMissing;
        }
        *problem = dir_ + "/" + name + ": cannot be opened: " + std::strerror(errno) + ".";
        return Status::kDamaged;
    }
    std::string content;
    const bool read = ReadWhole(fd, &content);
    const int error = errno;
    close(fd);
    const char* wrong = read ? Parse(content, value) : std::strerror(error);
    if (wrong != nullptr) {
        *problem = dir_ + "/" + name + ": the value of \"" + std::string(key) +
                   "\" cannot be read: " + wrong + ". Write the key again, or unset it.";
        return Status::kDamaged;
    }
    return Status::kOk;
}

std::string Store::RequireName(std::string_view key) const {
    if (!problem_.empty()) {
        throw Error(ErrorKind::kPlatform, problem_);
    }
    return RequireKey(key);
}

std::string Store::RequireKey(std::string_view key) {
    std::string name = EncodeKey(key);
    if (name.empty()) {
        throw Error(
            ErrorKind::kUsage,
            key.empty()
                ? std::string("A key must not be empty.")
                : "The key \"" + std::string(key.substr(0, 60)) + "...\" is too long: at most " +
                      std::to_string(kMaxEncodedKey) +
                      " bytes, where all but letters, digits, '_', '-' and '.' count three.");
    }
    return name;
}

void Store::Fail(const char* what, std::string_view key, int error) const {
    std::string text =
        dir_ + ": \"" + std::string(key) + "\" " + what + ": " + std::strerror(error) + ".";
    if (error == ENOSPC || error == EDQUOT) {
        text += " Free some space and try again; the old value is still there.";
    } else if (error == EROFS || error == EACCES || error == EPERM) {
        text +=
            " Check who owns the folder and whether it can be written; the old value is still "
            "there.";
    } else {
        text += " The old value is still there.";
    }
    throw Error(ErrorKind::kPlatform, text);
}

void Store::Write(std::string_view key, const Value& value) {
    const std::string name = RequireName(key);
    const std::string content = Format(value);
    const bool durable = durability_ == Durability::kDurable;
    const StoreFileCalls& calls = store_file_calls;

    std::string temporary = TemporaryName();
    int fd = calls.openat(dirFd_, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    while (fd < 0 && errno == EEXIST) {  // left by a killed process of the same number
        temporary = TemporaryName();
        fd = calls.openat(dirFd_, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    }
    if (fd < 0) {
        Fail("cannot be written", key, errno);
    }
    bool good = WriteWhole(fd, content) && (!durable || calls.fsync(fd) == 0);
    int error = errno;
    if (calls.close(fd) != 0 && good) {
        good = false;
        error = errno;
    }
    if (good && calls.renameat(dirFd_, temporary.c_str(), dirFd_, name.c_str()) != 0) {
        good = false;
        error = errno;
    }
    if (!good) {
        calls.unlinkat(dirFd_, temporary.c_str(), 0);
        Fail("cannot be written", key, error);
    }
    if (durable && calls.fsync(dirFd_) != 0) {
        throw Error(ErrorKind::kPlatform,
                    dir_ + ": \"" + std::string(key) +
                        "\" was written, but may not survive a power failure: " +
                        std::strerror(errno) + ".");
    }
}

bool Store::Remove(std::string_view key) {
    const std::string name = RequireName(key);
    if (store_file_calls.unlinkat(dirFd_, name.c_str(), 0) != 0) {
        if (errno == ENOENT) {
            return false;
        }
        Fail("cannot be unset", key, errno);
    }
    if (durability_ == Durability::kDurable) {
        store_file_calls.fsync(dirFd_);
    }
    return true;
}

std::vector<Setting> Store::List() const {
    std::vector<Setting> settings;
    DIR* dir = problem_.empty() ? opendir(dir_.c_str()) : nullptr;
    if (dir == nullptr) {
        return settings;
    }
    while (const dirent* entry = readdir(dir)) {
        const std::string key = DecodeKey(entry->d_name);
        if (key.empty()) {
            continue;
        }
        Setting setting;
        setting.key = key;
        Value value;
        const Status status = Read(key, &value, &setting.problem);
        if (status == Status::kMissing) {
            continue;  // unset since it was listed, or a file that no key encodes to
        }
        if (status == Status::kOk) {
            setting.value = std::move(value);
        }
        settings.push_back(std::move(setting));
    }
    closedir(dir);
    std::sort(settings.begin(), settings.end(),
              [](const Setting& a, const Setting& b) { return a.key < b.key; });
    return settings;
}

void Store::RemoveAll() {
    for (const Setting& setting : List()) {
        Remove(setting.key);
    }
}

void Store::RemoveLeftovers() {
    DIR* dir = problem_.empty() ? opendir(dir_.c_str()) : nullptr;
    if (dir == nullptr) {
        return;
    }
    constexpr size_t prefix = sizeof kTemporaryPrefix - 1;
    while (const dirent* entry = readdir(dir)) {
        if (std::strncmp(entry->d_name, kTemporaryPrefix, prefix) != 0) {
            continue;
        }
        const int pid = std::atoi(entry->d_name + prefix);
        if (pid > 0 && kill(pid, 0) != 0 && errno == ESRCH) {
            unlinkat(dirFd_, entry->d_name, 0);
        }
    }
    closedir(dir);
}

}  // namespace vtv
