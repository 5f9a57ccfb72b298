// What a TV is made of. Each service has a source file of its own and works on this.
#pragma once

#include <sys/inotify.h>
#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "growing_file.h"
#include "platform/call_table.h"
#include "store.h"
#include "tv_files.h"
#include "virtual-tv/model/keys.h"
#include "virtual_tv.h"
#include "watcher.h"

namespace vtv {

// Key of the TV's state that is followed while it runs.
inline constexpr char kTraceSwitch[] = "trace/enabled";

// Files of a TV's folder.
inline constexpr char kLock[] = ".lock";           // of whoever changes many things at once
inline constexpr char kAppsLock[] = "apps/.lock";  // of whoever starts or ends applications
inline constexpr char kModelFile[] = "tv.toml";
inline constexpr char kBootFile[] = "memory/.boot";
inline constexpr char kSwitches[] = "switches";

// What tells of a write (a rename) or a removal in a store's folder.
inline constexpr uint32_t kStoreEvents = IN_MOVED_TO | IN_DELETE;

// Log priorities.
inline constexpr int kInfo = 4;
inline constexpr int kWarning = 5;
inline constexpr int kError = 6;

// The TV's log: one record a line, appended whole.
class LogWriter {
  public:
    explicit LogWriter(const std::string& tvDir) : file_(kLogFile, tvDir) {}

    // False when the record could not be written.
    bool Append(int priority, const std::string& tag, const std::string& message);

  private:
    GrowingFileWriter file_;
};

std::string FormatLogLine(TimePoint time, int pid, int priority, const std::string& tag,
                          const std::string& message);
// False for a line that is none.
bool ParseLogLine(std::string_view line, LogRecord* record);
bool Matches(const LogFilter& filter, const LogRecord& record);

// Faults and the trace switch: rarely changed, asked at every platform call. The folder's values
// are read again only when a counter that all processes map has moved.
class Switches {
  public:
    explicit Switches(const std::string& tvDir);
    ~Switches();
    Switches(const Switches&) = delete;
    Switches& operator=(const Switches&) = delete;

    // True once after each change that any process made, and always when the counter is missing.
    bool Changed();
    void Announce();

  private:
    std::atomic<uint32_t>* counter_ = nullptr;
    bool writable_ = false;
    uint32_t seen_ = 0;
    bool first_ = true;
};

struct KeyCallback;  // one vconf_notify_key_changed

struct Tv::Impl {
    explicit Impl(const std::string& tvDir);
    ~Impl();

    std::string dir;
    Model model;
    Store settings;
    Store memory;
    Store state;
    Store faults;
    Switches switches;
    std::map<std::string, Fault> activeFaults;
    LogWriter log;
    GrowingFileWriter trace;
    std::unique_ptr<Watcher> watcher;  // made when first needed
    std::map<WatchId, std::vector<Watcher::Id>> watches;
    bool gone = false;  // removed or moved away, as far as the watcher has heard
    WatchId nextWatch = 1;
    std::vector<std::shared_ptr<KeyCallback>> keyCallbacks;
    std::vector<std::string> failures;           // see Tv::TakeFailures()
    std::map<std::string, bool> reportedDamage;  // settings keys whose damage the log has told

    bool MayWatch() const;  // see WatchNothing()
    std::array<Store*, 4> Stores() { return {&settings, &memory, &state, &faults}; }
    Watcher& GetWatcher();
    // Something in the TV's folder was made, moved or removed, or the folder itself (empty).
    void Hear(const std::string& name);
    // The store of a settings key; throws kUsage for what is no key.
    Store& StoreOf(const std::string& key);
    const Store& StoreOf(const std::string& key) const;

    template <typename T>
    T StateOr(const std::string& key, T otherwise) const {
        const std::optional<Value> value = ReadState(key);
        return value && std::holds_alternative<T>(*value) ? std::get<T>(*value) : otherwise;
    }
    // Absent when there is none, or a damaged one.
    std::optional<Value> ReadState(const std::string& key) const;

    void LogLine(int priority, const std::string& text);  // nothing in an experiment
    // Reads faults and the trace switch again when they were changed.
    void FollowSwitches();
};

void EnsureDir(const std::string& dir);  // with its parents
std::string Absolute(const std::string& dir);
// What the folder of a TV without a model and any value holds.
void MakeFolders(const std::string& dir);
// Throws what opening a TV would: kNoSuch, kUsage, kPlatform.
void RequireTv(const std::string& path);
TimePoint Now();

// "share/x" of "/home/owner/share/x"; false for a path that is not the owner's.
bool OwnerPath(std::string_view path, std::string* relative);

void BindTexts(const std::string& language);
void UseTraceOf(Tv::Impl* tv);
void FollowTraceSwitch(Tv::Impl& tv);
void ForgetKeyCallbacks(Tv::Impl& tv);
// What is wrong with a value that another hand put there; empty when nothing is.
std::string ProblemOfState(const std::string& name, const Value& value);
std::string ProblemOfFault(const Value& value);
// As Tv::Problems(), but for the list of launches, which is too long to be read at every start.
std::vector<std::string> ProblemsAtStart(Tv::Impl& tv, const std::string& language);
// Of each file of the list the first line that is none, or why it cannot be read.
std::vector<std::string> ProblemsOfLaunches(const std::string& tvDir);
// One of PlatformFunctions().
platform::Does WhatDoes(std::string_view function);
void EndRunningApplications(const std::string& tvDir);
std::string BootId();  // of the machine; another one after each start. Throws kPlatform.

}  // namespace vtv
