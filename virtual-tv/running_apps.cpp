// What runs on a TV: one file a process in "apps/", locked by that process for as long as it lives.
//
// The lock is a record lock: it belongs to one process, survives exec, is not inherited by
// children, ends with the process however that ends, and the kernel tells who holds it. So neither
// a number in a file nor one that is used again can make another process pass for an application.
// Its price: a process that closes any descriptor of its own file gives the lock up, so that it
// must not open it a second time.
#include "running_apps.h"
#include "store.h"
#include "virtual-tv/model/json_text.h"

#include <dirent.h>
#include <fcntl.h>
#include <json/json.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iterator>
#include <tuple>

// The header of Debian 12 does not say that these are functions of C.
extern "C" {
#include <sys/pidfd.h>
}

namespace vtv {

namespace {

constexpr char kSuffix[] = ".json";
constexpr char kStarting[] = "apps/.starting";
constexpr off_t kLargest = off_t{4} * 1024 * 1024;  // of a file; a launch's extras are in it
// Above the descriptors that scripts use for themselves.
constexpr int kLockDescriptor = 400;

std::string FolderOf(const std::string& tvDir) {
    return tvDir + "/apps";
}
// Below the TV's folder.
std::string NameOf(int pid) {
    return "apps/" + std::to_string(pid) + kSuffix;
}
std::string FileOf(const std::string& tvDir, int pid) {
    return tvDir + "/" + NameOf(pid);
}

// 0 for a name that is not "PID.json".
int PidOf(const std::string& name) {
    int pid = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data(), end, pid);
    return error == std::errc() &&
                   std::string_view(rest, static_cast<size_t>(end - rest)) == kSuffix
               ? pid
               : 0;
}

// A descriptor of the file that this process has already, or -1.
int OwnDescriptorOf(const std::string& file) {
    struct stat wanted{};
    DIR* dir = lstat(file.c_str(), &wanted) == 0 ? opendir("/proc/self/fd") : nullptr;
    if (dir == nullptr) {
        return -1;
    }
    int found = -1;
    while (const dirent* entry = readdir(dir)) {
        const int fd = std::atoi(entry->d_name);
        struct stat info{};
        if (entry->d_name[0] != '.' && fd != dirfd(dir) && fstat(fd, &info) == 0 &&
            info.st_dev == wanted.st_dev && info.st_ino == wanted.st_ino) {
            found = fd;
        }
    }
    closedir(dir);
    return found;
}

// The process that holds the lock on an open file; 0 for none, and -1 for one that cannot be named
// from here.
int HolderOf(int fd, const std::string& path) {
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (fcntl(fd, F_GETLK, &lock) != 0) {
        Unreadable::ThrowIf(errno, path);
        return -1;
    }
    return lock.l_type == F_UNLCK ? 0 : lock.l_pid > 0 ? lock.l_pid : -1;
}

// One file of "apps/", open for reading.
class AppFile {
  public:
    AppFile(const std::string& tvDir, int pid)
        : tvDir_(tvDir), name_(NameOf(pid)), path_(FileOf(tvDir, pid)) {
        own_ = pid == getpid() ? OwnDescriptorOf(path_) : -1;
        fd_ = own_ >= 0 ? own_ : OpenTvFile(tvDir, name_, O_RDONLY);
        error_ = fd_ >= 0 ? 0 : errno;
        Unreadable::ThrowIf(error_, path_);
    }
    ~AppFile() {
        if (fd_ >= 0 && own_ < 0) {
            close(fd_);
        }
    }
    AppFile(const AppFile&) = delete;
    AppFile& operator=(const AppFile&) = delete;

    bool IsMissing() const { return error_ == ENOENT; }
    bool IsPlain() const { return Size() >= 0; }
    int Holder() const { return own_ >= 0 ? getpid() : HolderOf(fd_, path_); }
    std::string Text() const {
        std::string text;
        if (!ReadToEnd(fd_, 0, &text)) {
            Unreadable::ThrowIf(errno, path_);
        }
        return text;
    }
    // Unless somebody has put another in its place.
    void Remove() const {
        struct stat mine{};
        struct stat there{};
        if (fstat(fd_, &mine) == 0 && lstat(path_.c_str(), &there) == 0 &&
            mine.st_dev == there.st_dev && mine.st_ino == there.st_ino) {
            RemoveTvFile(tvDir_, name_);
        }
    }

  private:
    // -1 for what is no plain file of a sensible size.
    off_t Size() const {
        struct stat info{};
        const bool good = fd_ >= 0 && fstat(fd_, &info) == 0 && S_ISREG(info.st_mode);
        return good && info.st_size <= kLargest ? info.st_size : -1;
    }

    std::string tvDir_;
    std::string name_;
    std::string path_;
    int own_ = -1;
    int fd_ = -1;
    int error_ = 0;
};

// In what order applications have started, whatever the clock says meanwhile.
int64_t SinceBoot() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

// Empty when the text is what Publish() writes.
std::string Parse(const std::string& text, int pid, RunningApplication* application,
                  int64_t* order) {
    const JsonText document("", text);
    const Json::Value& json = document.Root();
    if (!document.Problem().empty() || !json.isObject()) {
        return "it is no JSON object";
    }
    if (!json["pid"].isInt() || json["pid"].asInt() != pid || pid <= 1) {
        return "\"pid\" must be the number in its name, above 1";
    }
    if (!json["app"].isString() || json["app"].asString().empty()) {
        return "\"app\" must be an application id";
    }
    if (!json["since"].isInt64()) {
        return "\"since\" must be a time in microseconds";
    }
    if (!json["extras"].isArray()) {
        return "\"extras\" must be a list";
    }
    *order = json["order"].isInt64() ? json["order"].asInt64() : 0;
    application->appId = json["app"].asString();
    application->pid = pid;
    application->since = TimePoint(std::chrono::microseconds(json["since"].asInt64()));
    for (const Json::Value& pair : json["extras"]) {
        if (!pair.isArray() || pair.size() != 2 || !pair[0].isString() || !pair[1].isString()) {
            return "each of \"extras\" must be two texts";
        }
        application->extras.emplace_back(pair[0].asString(), pair[1].asString());
    }
    return "";
}

enum class Finding { kRuns, kEnded, kDamaged };

Finding Look(const std::string& tvDir, const std::string& name, RunningApplication* application,
             int64_t* order, std::string* problem) {
    const int pid = PidOf(name);
    if (pid <= 1) {
        *problem = "its name must be the number of a process, above 1";
        return Finding::kDamaged;
    }
    const AppFile file(tvDir, pid);
    if (file.IsMissing()) {
        return Finding::kEnded;
    }
    if (!file.IsPlain()) {
        *problem = "it is no plain, readable file of a sensible size";
        return Finding::kDamaged;
    }
    *problem = Parse(file.Text(), pid, application, order);
    if (!problem->empty()) {
        return Finding::kDamaged;
    }
    const int holder = file.Holder();
    if (holder == 0) {
        file.Remove();
        return Finding::kEnded;
    }
    if (holder != pid) {
        *problem = "another process than the one in its name holds its lock";
        return Finding::kDamaged;
    }
    return Finding::kRuns;
}

}  // namespace

std::vector<RunningApplication> ListRunning(const std::string& tvDir,
                                            std::vector<std::string>* damage) {
    std::vector<std::pair<int64_t, RunningApplication>> found;
    for (const std::string& name : NamesInTv(tvDir, "apps")) {
        const bool isRecord =
            name.size() >= sizeof kSuffix &&
            name.compare(name.size() - sizeof kSuffix + 1, std::string::npos, kSuffix) == 0;
        if (!isRecord || name.front() == '.') {
            continue;
        }
        RunningApplication application;
        int64_t order = 0;
        std::string problem;
        const Finding finding = Look(tvDir, name, &application, &order, &problem);
        if (finding == Finding::kRuns) {
            found.emplace_back(order, std::move(application));
        } else if (finding == Finding::kDamaged && damage != nullptr) {
            damage->push_back(FolderOf(tvDir) + "/" + name +
                              ": this tells of no application that runs: " + problem +
                              ". Nothing is done with it; remove it.");
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
        return std::tie(a.first, a.second.since) < std::tie(b.first, b.second.since);
    });
    std::vector<RunningApplication> running;
    for (auto& [order, application] : found) {
        running.push_back(std::move(application));
    }
    return running;
}

// ---------------------------------------------------------------------------------------------
// Registering
// ---------------------------------------------------------------------------------------------

Registration::Registration(const std::string& tvDir)
    : tvDir_(tvDir), temporary_(tvDir + "/" + kStarting) {
    RemoveTvFile(tvDir, kStarting);  // of a launcher that was killed
    const int fd = OpenTvFile(tvDir, kStarting, O_RDWR | O_CREAT | O_EXCL);
    if (fd >= 0) {
        descriptor_ = fcntl(fd, F_DUPFD_CLOEXEC, kLockDescriptor);
        if (descriptor_ < 0) {
            descriptor_ = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        }
    }
    error_ = descriptor_ >= 0 ? 0 : errno;
    if (fd >= 0) {
        close(fd);
    }
}

Registration::~Registration() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
    if (!temporary_.empty()) {
        RemoveTvFile(tvDir_, kStarting);
    }
}

bool LockRecord(int descriptor) {
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return fcntl(descriptor, F_SETLK, &lock) == 0;
}

bool Registration::Publish(const RunningApplication& application) {
    Json::Value json;
    json["app"] = application.appId;
    json["pid"] = application.pid;
    json["since"] = static_cast<Json::Int64>(application.since.time_since_epoch().count());
    json["order"] = static_cast<Json::Int64>(SinceBoot());
    json["extras"] = Json::Value(Json::arrayValue);
    for (const auto& [key, value] : application.extras) {
        Json::Value pair;
        pair.append(key);
        pair.append(value);
        json["extras"].append(pair);
    }
    const std::string text = json.toStyledString();
    const ssize_t written = pwrite(descriptor_, text.data(), text.size(), 0);
    if (written != static_cast<ssize_t>(text.size())) {
        error_ = written < 0 ? errno : ENOSPC;
        return false;
    }
    // Seen under its name only when it is whole and locked.
    if (!RenameInTv(tvDir_, kStarting, NameOf(application.pid))) {
        error_ = errno;
        return false;
    }
    temporary_.clear();
    return true;
}

void Registration::End(int pid) const {
    const int process = pidfd_open(pid, 0);
    if (process >= 0) {
        if (HolderOf(descriptor_, temporary_) == pid) {
            pidfd_send_signal(process, SIGKILL, nullptr, 0);
        }
        close(process);
    }
}

void Registration::KeepOpen() {
    descriptor_ = -1;
}

bool IsRegistered(const std::string& tvDir, int pid) {
    const AppFile file(tvDir, pid);
    return file.IsPlain() && file.Holder() == pid;
}

void Unregister(const std::string& tvDir, int pid) {
    RemoveTvFile(tvDir, NameOf(pid));
}

// ---------------------------------------------------------------------------------------------
// Ending
// ---------------------------------------------------------------------------------------------

ApplicationProcess::ApplicationProcess(const std::string& tvDir,
                                       const RunningApplication& application) {
    // First the process, then the proof: a number that has come to mean another process since
    // fails it.
    fd_ = application.pid > 1 ? pidfd_open(application.pid, 0) : -1;
    if (fd_ < 0) {
        Unreadable::ThrowIf(errno, FileOf(tvDir, application.pid));
        return;
    }
    bool isOne = false;
    try {
        isOne = IsRegistered(tvDir, application.pid);
    } catch (...) {
        close(fd_);
        throw;
    }
    if (!isOne) {
        close(fd_);
        fd_ = -1;
    }
}

ApplicationProcess::~ApplicationProcess() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

int ApplicationProcess::Signal(AppSignal signal) const {
    const bool isSent = fd_ < 0 || pidfd_send_signal(fd_, NumberOf(signal), nullptr, 0) == 0;
    return isSent || errno == ESRCH ? 0 : errno;
}

bool ApplicationProcess::WaitForEnd(std::chrono::steady_clock::time_point deadline,
                                    int orUntil) const {
    while (fd_ >= 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd sources[] = {{fd_, POLLIN, 0}, {orUntil, POLLIN, 0}};
        const int count =
            poll(sources, std::size(sources), static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (count > 0) {
            return true;
        }
        if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace vtv
