// A TV as a whole: made, opened, switched on and off, power-cycled.
#include "virtual_tv.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "running_apps.h"
#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

Tv* current = nullptr;
std::vector<Watcher::Id> ownWatches;

// What other processes change and this one has to follow while it only waits.
void FollowOthers(Tv& tv) {
    Tv::Impl& impl = tv.impl();
    try {
        Watcher& watcher = impl.GetWatcher();
        ownWatches.push_back(
            watcher.Watch(impl.settings.Dir(), kStoreEvents, Store::EncodeKey(kLanguageKey),
                          [&tv](const std::string&) { BindTexts(tv.Language()); }));
        ownWatches.push_back(watcher.Watch(impl.state.Dir(), kStoreEvents,
                                           Store::EncodeKey(kTraceSwitch),
                                           [&impl](const std::string&) { impl.FollowSwitches(); }));
    } catch (const Error& error) {
        impl.LogLine(kError, error.what());  // the page opens all the same
    }
}

std::string Absolute(const std::string& dir) {
    std::error_code error;
    const fs::path path = fs::absolute(dir, error);
    std::string text = (error ? fs::path(dir) : path).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

std::string ReadText(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) {
        throw Error(ErrorKind::kPlatform, file + ": cannot be read: " + std::strerror(errno) + ".");
    }
    return text.str();
}

[[noreturn]] void FailAsTaken(const std::string& path) {
    throw Error(ErrorKind::kUsage,
                path + ": there is something already. Name a folder that does not exist yet.");
}

// What "memory/" holds is gone after the machine was restarted, as after a power cycle.
void ForgetLastBoot(const std::string& dir, Store& memory) {
    const std::string file = dir + "/memory/.boot";
    const std::string boot = BootId();
    std::error_code error;
    if (boot.empty() || (fs::exists(file, error) && ReadText(file) == boot)) {
        return;
    }
    const FileLock lock(dir + "/.lock");
    if (fs::exists(file, error) && ReadText(file) == boot) {
        return;  // another process was sooner
    }
    if (fs::exists(file, error)) {
        memory.RemoveAll();
    }
    int ignored = 0;
    WriteNewFile(file, boot, &ignored);
}

}  // namespace

Tv::Impl::Impl(const std::string& tvDir)
    : dir(tvDir),
      model(LoadModel(tvDir + "/tv.toml")),
      settings(tvDir + "/settings", Store::Durability::kDurable),
      memory(tvDir + "/memory", Store::Durability::kVolatile),
      state(tvDir + "/state", Store::Durability::kDurable),
      faults(tvDir + "/faults", Store::Durability::kVolatile),
      switches(tvDir),
      log(tvDir + "/log") {
    model.name = StateOr<std::string>("model", model.name);
}

Tv::Impl::~Impl() = default;

void Tv::Impl::LogLine(int priority, const std::string& text) {
    if (!Experimenting()) {
        log.Append(priority, "VTV", text);
    }
}

Watcher& Tv::Impl::GetWatcher() {
    if (watcher == nullptr) {
        watcher = std::make_unique<Watcher>();
    }
    return *watcher;
}

void Tv::Create(const std::string& dir, const std::string& modelFile) {
    const std::string path = Absolute(dir);
    const Model model = LoadModel(modelFile);  // before anything is made
    const std::string text = ReadText(modelFile);

    std::error_code error;
    if (fs::exists(path, error) && !(fs::is_directory(path, error) && fs::is_empty(path, error))) {
        FailAsTaken(path);
    }
    EnsureDir(fs::path(path).parent_path().string());
    // Made aside and put in place whole: whoever sees the folder sees a TV.
    const std::string aside = path + ".new-" + std::to_string(getpid());
    try {
        fs::remove_all(aside, error);
        for (const char* folder :
             {"", "/owner/share/.voice", "/log", "/trace", "/apps", "/speech"}) {
            EnsureDir(aside + folder);
        }
        for (const char* store : {"/settings", "/memory", "/state", "/faults"}) {
            Store::Create(aside + store);
        }
        int code = 0;
        if (!WriteNewFile(aside + "/tv.toml", text, &code) ||
            !WriteNewFile(aside + "/switches", std::string(4, '\0'), &code) ||
            !WriteNewFile(aside + "/memory/.boot", BootId(), &code)) {
            throw Error(ErrorKind::kPlatform,
                        aside + ": cannot be written: " + std::strerror(code) + ".");
        }
        {
            Impl tv(aside);
            ApplyModel(model, tv);
        }
        fs::rename(aside, path, error);
        if (error == std::errc::directory_not_empty || error == std::errc::file_exists) {
            FailAsTaken(path);  // another process has made one meanwhile
        }
        if (error) {
            throw Error(ErrorKind::kPlatform, path + ": cannot be made: " + error.message() + ".");
        }
    } catch (...) {
        fs::remove_all(aside, error);
        throw;
    }
}

bool Tv::IsTv(const std::string& dir) {
    struct stat info;
    return stat((dir + "/tv.toml").c_str(), &info) == 0 &&
           stat((dir + "/settings").c_str(), &info) == 0;
}

Tv::Tv(const std::string& dir) {
    const std::string path = Absolute(dir);
    if (!IsTv(path)) {
        throw Error(ErrorKind::kNoSuch,
                    path + ": this is no virtual TV. Make one with \"vtv new\".");
    }
    RequirePlainFiles(path);
    impl_ = std::make_unique<Impl>(path);
    ForgetLastBoot(path, impl_->memory);
    for (Store* store : {&impl_->settings, &impl_->memory, &impl_->state, &impl_->faults}) {
        store->RemoveLeftovers();
    }
    for (const std::string& problem : Problems()) {
        impl_->LogLine(kError, problem);
    }
}

Tv::~Tv() {
    if (current == this) {
        PowerOff();
    }
}

std::vector<std::string> Tv::Problems() const {
    std::vector<std::string> problems;
    for (const Store* store : {&impl_->settings, &impl_->memory, &impl_->state, &impl_->faults}) {
        if (!store->Problem().empty()) {
            problems.push_back(store->Problem());
            continue;
        }
        for (const Setting& setting : store->List()) {
            if (!setting.value) {
                problems.push_back(setting.problem);
            }
        }
    }
    ListRunning(impl_->dir, &problems);
    return problems;
}

std::vector<std::string> Tv::TakeFailures() {
    return std::exchange(impl_->failures, {});
}

const Model& Tv::GetModel() const {
    return impl_->model;
}
const std::string& Tv::Dir() const {
    return impl_->dir;
}
std::string Tv::LogFile() const {
    return impl_->log.Path();
}
std::string Tv::TraceFile() const {
    return impl_->dir + "/trace/events";
}

void Tv::PowerCycle() {
    impl_->LogLine(kInfo, "power off");
    EndRunningApplications(*impl_);
    impl_->memory.RemoveAll();
    impl_->faults.RemoveAll();
    impl_->switches.Announce();
    impl_->FollowSwitches();
    impl_->LogLine(kInfo, "power on");
}

void PowerOn(Tv& tv) {
    PowerOff();
    current = &tv;
    Tv::Impl& impl = tv.impl();
    UseTraceOf(&impl);
    impl.FollowSwitches();
    BindTexts(tv.Language());
    FollowOthers(tv);
}

void PowerOff() {
    if (current == nullptr) {
        return;
    }
    Tv& tv = *current;
    for (const Watcher::Id id : ownWatches) {
        tv.impl().GetWatcher().Unwatch(id);
    }
    ownWatches.clear();
    ForgetKeyCallbacks(tv.impl());
    UseTraceOf(nullptr);
    current = nullptr;
}

Tv* Current() {
    return current;
}

Tv::Impl& Require(const char* function) {
    if (current == nullptr) {
        std::fprintf(stderr, "%s: nothing serves this platform call: no virtual TV is on.\n",
                     function);
        std::_Exit(static_cast<int>(ErrorKind::kPlatform));
    }
    return current->impl();
}

void NoteFailure(Tv::Impl& tv, const std::string& text) {
    constexpr size_t kEnough = 100;
    if (tv.failures.size() < kEnough) {
        tv.failures.push_back(text);
    }
}

void ReportException(Tv::Impl& tv, const char* function, const char* message) {
    tv.LogLine(kError, std::string(function) + ": " + message);
    NoteFailure(tv, message);
}

}  // namespace vtv
