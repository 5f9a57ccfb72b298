#include "store.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>

#include "folder_names.h"
#include "store_files.h"
#include "store_format.h"
#include "store_writer.h"
#include "temporary_file.h"
#include "tv_files.h"
#include "virtual-tv/model/limits.h"

namespace vtv {

namespace {

constexpr char kVersionFile[] = ".store";

int OpenAt(int dir, const char* name, int flags, mode_t mode) {
    return openat(dir, name, flags, mode);
}

// The text of a file. Whole bodies only: a file that is read in two parts could be one value's
// begin and another's end only if it were changed in place, which nobody does. Of what is larger
// than any value, a part.
class FileText {
  public:
    FileText() = default;
    FileText(const FileText&) = delete;
    FileText& operator=(const FileText&) = delete;

    // False, with errno, when it cannot be read.
    bool Read(int fd) {
        for (;;) {
            const ssize_t size = read(fd, buffer_, sizeof buffer_);
            if (size < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return false;
            }
            const std::string_view part(buffer_, static_cast<size_t>(size));
            const bool isEnd = part.size() < sizeof buffer_;
            if (isEnd && parts_.empty()) {  // nearly every value: it is not copied
                text_ = part;
                return true;
            }
            parts_ += part;
            if (isEnd || parts_.size() > kLargestStoreFile) {
                text_ = parts_;
                return true;
            }
        }
    }
    std::string_view Text() const { return text_; }

  private:
    char buffer_[4096];
    std::string parts_;
    std::string_view text_;
};

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

}  // namespace

void Unreadable::ThrowIf(int error, const std::string& path) {
    switch (error) {
        case EACCES:
        case EIO:
        case EMFILE:
        case ENFILE:
        case ENOLCK:
        case ENOMEM:
        case ENOSPC:
        case ENAMETOOLONG:
            throw Unreadable(ErrorKind::kPlatform,
                             path + ": cannot be read now: " + std::strerror(error) + ".");
        default:
            return;
    }
}

void RequireNotTooMany(const std::string& where, const std::string& what, size_t count) {
    if (const std::string problem = TooMany(what, count, kMostEntries); !problem.empty()) {
        throw HasTooMany(
            ErrorKind::kUsage,
            where + ": " + problem + " Remove those that you do not need, or make the TV anew.");
    }
}

StoreFileCalls store_file_calls = {OpenAt, write, fsync, close, renameat, unlinkat};

void Store::Create(const std::string& dir) {
    const std::filesystem::path path(dir);
    Create(path.parent_path().string(), path.filename().string());
}

void Store::Create(const std::string& tvDir, const std::string& name) {
    MakeTvFolder(tvDir, name);
    const std::string file = name + "/" + kVersionFile;
    int error = 0;
    if (!WriteTvFile(tvDir, file, std::to_string(kVersion) + "\n", &error)) {
        throw Error(ErrorKind::kPlatform,
                    tvDir + "/" + file + ": cannot be written: " + std::strerror(error) + ".");
    }
}

Store::Store(const std::string& tvDir, const std::string& name, Durability durability,
             const char* remedy)
    : tvDir_(tvDir),
      name_(name),
      dir_(name.empty() ? tvDir : tvDir + "/" + name),
      durability_(durability),
      remedy_(remedy) {
    Open();
}

void Store::Open() const {
    Close();
    problem_.clear();
    unknownVersion_ = false;
    dirFd_ = OpenTvFolder(tvDir_, name_);
    if (dirFd_ < 0) {
        Unreadable::ThrowIf(errno, dir_);
        problem_ = dir_ + ": cannot be opened: " + std::strerror(errno) +
                   ". Its values read as missing until the folder is back.";
        return;
    }
    try {
        CheckVersion();
    } catch (...) {
        Close();
        throw;
    }
}

void Store::Close() const {
    if (dirFd_ >= 0) {
        close(dirFd_);
        dirFd_ = -1;
    }
}

const std::string& Store::Problem() const {
    if ((dirFd_ < 0 || !problem_.empty()) && !unknownVersion_) {
        Open();  // the folder may be back, or what kept it from being opened may be over
    }
    return problem_;
}

void Store::Reopen() {
    Close();
    unknownVersion_ = false;
}

Store::~Store() {
    Close();
}

void Store::CheckVersion() const {
    FileText file;
    const int fd = openat(dirFd_, kVersionFile, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    const bool read = fd >= 0 && file.Read(fd);
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (!read) {
        Unreadable::ThrowIf(error, dir_ + "/" + kVersionFile);
        problem_ =
            dir_ + "/" + kVersionFile +
            ": cannot be read, so this folder is no settings store. Put the file back (its content "
            "is the store's version, \"1\") if you removed it.";
    }
    if (!problem_.empty()) {
        return;
    }
    std::string_view text = file.Text();
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    int version = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), version);
    const bool isNumber = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    if (isNumber && version >= 1 && version <= kVersion) {
        return;
    }
    unknownVersion_ = true;
    const std::string known = std::to_string(kVersion);
    problem_ = dir_ + "/" + kVersionFile;
    if (!isNumber || version < 1) {
        problem_ += ": the version of a TV's folder must be a whole number from 1 on. Write \"" +
                    known + "\" into it if this program made the TV. Nothing was changed.";
    } else {
        problem_ += ": this is version " + std::to_string(version) +
                    " of a TV's folder, which is newer than this program knows (" + known +
                    "). Use a newer program. Nothing was changed.";
    }
}

Store::Status Store::Read(std::string_view key, Value* value, std::string* problem) const {
    if (!Problem().empty()) {
        *problem = problem_;
        return Status::kDamaged;
    }
    const std::string name = EncodeKey(key);
    if (name.empty()) {
        return Status::kMissing;
    }
    const int fd = openat(dirFd_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) {
        if (errno == ENOENT) {
            return Status::kMissing;
        }
        Unreadable::ThrowIf(errno, dir_ + "/" + name);
        *problem = dir_ + "/" + name + ": cannot be opened: " + std::strerror(errno) + ".";
        return Status::kDamaged;
    }
    FileText file;
    const bool read = file.Read(fd);
    const int error = errno;
    close(fd);
    if (!read) {
        Unreadable::ThrowIf(error, dir_ + "/" + name);
    }
    const char* wrong = read ? ParseStored(file.Text(), value) : std::strerror(error);
    if (wrong != nullptr) {
        *problem = Damaged(key, std::string(wrong) + ".");
        return Status::kDamaged;
    }
    return Status::kOk;
}

std::string Store::Damaged(std::string_view key, const std::string& what) const {
    return dir_ + "/" + EncodeKey(key) + ": the value of \"" + std::string(key) +
           "\" cannot be read: " + what + " " + remedy_;
}

std::string Store::RequireName(std::string_view key) const {
    if (!Problem().empty()) {
        throw Error(ErrorKind::kPlatform, problem_);
    }
    return RequireKey(key);
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
    throw MachineFailed(ErrorKind::kPlatform, text);
}

void Store::Write(std::string_view key, const Value& value) {
    const std::string name = RequireName(key);
    const std::string text = ToText(value);
    if (const std::string problem = TooLong(std::string(key), text.size()); !problem.empty()) {
        throw Error(ErrorKind::kUsage, problem);
    }
    RequireRoom(name);
    const std::string content = FormatStored(value, text);
    const bool durable = durability_ == Durability::kDurable;
    const StoreFileCalls& calls = store_file_calls;
    const TemporaryFile temporary(dirFd_);
    if (temporary.fd < 0) {
        Fail("cannot be written", key, errno);
    }
    SignWriting(temporary.fd);
    bool good = WriteWhole(temporary.fd, content) && (!durable || calls.fsync(temporary.fd) == 0);
    int error = errno;
    if (calls.close(temporary.fd) != 0 && good) {
        good = false;
        error = errno;
    }
    if (good && calls.renameat(dirFd_, temporary.name.c_str(), dirFd_, name.c_str()) != 0) {
        good = false;
        error = errno;
    }
    if (!good) {
        calls.unlinkat(dirFd_, temporary.name.c_str(), 0);
        Fail("cannot be written", key, error);
    }
    if (durable && calls.fsync(dirFd_) != 0) {
        throw MachineFailed(ErrorKind::kPlatform,
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
    if (durability_ == Durability::kDurable && store_file_calls.fsync(dirFd_) != 0) {
        throw MachineFailed(ErrorKind::kPlatform,
                            dir_ + ": \"" + std::string(key) +
                                "\" was unset, but may be back after a power failure: " +
                                std::strerror(errno) + ".");
    }
    return true;
}

std::vector<std::string> Store::Keys() const {
    std::vector<std::string> keys;
    if (!Problem().empty()) {
        return keys;
    }
    for (const std::string& name :
         NamesIn(openat(dirFd_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC), dir_)) {
        if (std::string key = DecodeKey(name); !key.empty()) {
            keys.push_back(std::move(key));
        }
    }
    std::sort(keys.begin(), keys.end());
    mostKeys_ = keys.size();
    return keys;
}

std::vector<Setting> Store::List() const {
    const std::vector<std::string> keys = Keys();
    RequireNotTooMany(dir_, "keys", keys.size());
    std::vector<Setting> settings;
    for (const std::string& key : keys) {
        Setting setting;
        setting.key = key;
        Value value;
        const Status status = Read(key, &value, &setting.problem);
        if (status == Status::kMissing) {
            continue;  // unset since it was listed
        }
        if (status == Status::kOk) {
            setting.value = std::move(value);
        }
        settings.push_back(std::move(setting));
    }
    return settings;
}

// The folder is listed only when what was counted leaves no room.
void Store::RequireRoom(const std::string& name) {
    if (mostKeys_ >= kMostEntries && faccessat(dirFd_, name.c_str(), F_OK, 0) != 0) {
        RequireNotTooMany(dir_, "keys", Keys().size() + 1);
    }
    ++mostKeys_;
}

void Store::RemoveAll() {
    for (const std::string& key : Keys()) {
        Remove(key);
    }
}

void Store::RemoveLeftovers() {
    if (Problem().empty()) {
        RemoveLeftTemporaryFiles(dirFd_);
    }
}

}  // namespace vtv
