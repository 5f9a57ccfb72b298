// A TV as a whole: made, opened, switched on and off, power-cycled.
#include "virtual_tv.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <utility>

#include "serve.h"
#include "staged_changes.h"
#include "store_files.h"
#include "texts.h"
#include "trusted_tv.h"
#include "tv_impl.h"
#include "virtual-tv/model/text_file.h"
#include "whole_folder.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

Tv* current = nullptr;
std::string machineFailure;  // see Tv::MachineFailure()
std::vector<Watcher::Id> ownWatches;

// Those that may be empty, and that get lost where only files are kept, as in an archive.
constexpr std::array kFolders = {"owner", "log", "trace", "apps", "speech"};
constexpr std::array kStores = {"settings", "memory", "state", "faults"};

void FollowLanguage(Tv& tv) {
    BindTexts(tv.Language());
    for (const std::string& problem : ProblemsOfTexts(tv.Language())) {
        tv.impl().LogLine(kError, problem);
    }
}

// What other processes change and this one has to follow while it only waits.
void FollowOthers(Tv& tv) {
    Tv::Impl& impl = tv.impl();
    if (!impl.MayWatch()) {
        return;
    }
    try {
        Watcher& watcher = impl.GetWatcher();
        ownWatches.push_back(watcher.Watch(impl.settings.Dir(), kStoreEvents,
                                           Store::EncodeKey(kLanguageKey),
                                           [&tv](const std::string&) { FollowLanguage(tv); }));
        ownWatches.push_back(watcher.Watch(impl.state.Dir(), kStoreEvents,
                                           Store::EncodeKey(kTraceSwitch),
                                           [&impl](const std::string&) { impl.FollowSwitches(); }));
    } catch (const Error& error) {
        impl.LogLine(kError, error.what());  // the page opens all the same
    }
}

// What "memory/" holds is gone after the machine was restarted, as after a power cycle.
void ForgetLastBoot(const std::string& dir, Store& memory) {
    const std::string boot = BootId();
    if (ReadTvFile(dir, kBootFile) == boot) {
        return;
    }
    const FileLock lock(dir, kLock);
    const std::optional<std::string> last = ReadTvFile(dir, kBootFile);
    if (last == boot) {
        return;  // another process was sooner
    }
    if (last) {
        memory.RemoveAll();
    }
    int ignored = 0;
    WriteTvFile(dir, kBootFile, boot, &ignored);
}

Model ReadModel(const std::string& dir) {
    const std::string file = dir + "/" + kModelFile;
    const std::optional<std::string> text = ReadTvFile(dir, kModelFile);
    if (!text) {
        throw Error(ErrorKind::kNoSuch, file + " cannot be read: " + std::strerror(ENOENT));
    }
    return ParseModel(*text, file);
}

void RequireTvFolder(const std::string& path) {
    if (!Tv::IsTv(path)) {
        throw Error(ErrorKind::kNoSuch,
                    path + ": this is no virtual TV. Make one with \"vtv new\".");
    }
    RequireTrustedTv(path);
}

void RequireKnownVersion(const Store& store) {
    if (store.IsOfUnknownVersion()) {
        throw Error(ErrorKind::kPlatform, store.Problem());
    }
}

// In a folder that cannot be written nothing is missed that would be written there.
void MakeMissingFolders(const std::string& dir) {
    for (const char* folder : kFolders) {
        struct stat info{};
        if (lstat((dir + "/" + folder).c_str(), &info) != 0) {
            try {
                MakeTvFolder(dir, folder);
            } catch (const Error&) {
                continue;
            }
        }
    }
}

// Writes the model's initial state into a new TV's folder.
void ApplyModel(const Model& model, Tv::Impl& tv) {
    for (const auto& [key, value] : model.settings) {
        tv.StoreOf(key).Write(key, value);
    }
    tv.state.Write(kModelNameState, model.name);
    tv.state.Write(kSignedInState, model.signedIn);
    for (const auto& [item, agreed] : model.consents) {
        tv.state.Write(kConsentState + item, agreed);
    }
    tv.state.Write(kNetworkState, ToText(model.network));
    tv.state.Write("applications", ToText(model.applications));
    for (const std::string& file : model.ownerFiles) {
        const std::string name = "owner/" + file;
        MakeTvFolder(tv.dir, fs::path(name).parent_path().string());
        int error = 0;
        if (!WriteTvFile(tv.dir, name, "", &error)) {
            throw Error(ErrorKind::kPlatform,
                        tv.dir + "/" + name + ": cannot be made: " + std::strerror(error) + ".");
        }
    }
}

}  // namespace

std::string Absolute(const std::string& dir) {
    std::error_code error;
    const fs::path path = fs::absolute(dir, error);
    std::string text = (error ? fs::path(dir) : path).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

void MakeFolders(const std::string& dir) {
    for (const char* folder : kFolders) {
        MakeTvFolder(dir, folder);
    }
    MakeTvFolder(dir, "owner/share/.voice");
    for (const char* store : kStores) {
        Store::Create(dir, store);
    }
    const FileLock made(dir, kLock);  // so that nobody who only reads has to make it
}

Tv::Impl::Impl(const std::string& tvDir)
    : dir(tvDir),
      model(ReadModel(tvDir)),
      settings(tvDir, "settings", Store::Durability::kDurable),
      memory(tvDir, "memory", Store::Durability::kVolatile),
      state(tvDir, "state", Store::Durability::kDurable, "Set it again, or remove the file."),
      faults(tvDir, "faults", Store::Durability::kVolatile, "Clear it: vtv fault --clear"),
      switches(tvDir),
      log(tvDir),
      trace(kTraceFile, tvDir) {}

Tv::Impl::~Impl() = default;

void Tv::Impl::LogLine(int priority, const std::string& text) {
    if (!Experimenting()) {
        log.Append(priority, "VTV", text);
    }
}

Watcher& Tv::Impl::GetWatcher() {
    if (watcher == nullptr) {
        auto made = std::make_unique<Watcher>();
        constexpr uint32_t kEvents =
            IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM | IN_MOVE_SELF | IN_DELETE_SELF;
        made->Watch(dir + "/.", kEvents, "", [this](const std::string& name) { Hear(name); });
        watcher = std::move(made);  // one that does not hear of the TV's end is none
    }
    return *watcher;
}

void Tv::Impl::Hear(const std::string& name) {
    const std::string path = dir + "/" + name;
    struct stat info{};
    gone = stat((dir + "/" + kModelFile).c_str(), &info) != 0;
    if (gone || name.empty() || stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return;
    }
    for (Store* store : Stores()) {
        if (store->Dir() == path) {
            store->Reopen();
        }
    }
    watcher->Follow(path);
}

void Tv::Create(const std::string& dir, const std::string& modelFile) {
    Create(dir, ReadTextFile(modelFile), modelFile, [](Tv&) {});
}

void Tv::Create(const std::string& dir, const std::string& modelText, const std::string& modelFile,
                const std::function<void(Tv& made)>& furnish) {
    const std::string path = Absolute(dir);
    const Model model = ParseModel(modelText, modelFile);  // before anything is made

    NewFolder folder(path);
    const std::string& aside = folder.Aside();
    MakeFolders(aside);
    int code = 0;
    if (!WriteTvFile(aside, kModelFile, modelText, &code) ||
        !WriteTvFile(aside, kSwitches, std::string(4, '\0'), &code) ||
        !WriteTvFile(aside, kBootFile, BootId(), &code)) {
        throw Error(ErrorKind::kPlatform,
                    aside + ": cannot be written: " + std::strerror(code) + ".");
    }
    {
        Impl tv(aside);
        ApplyModel(model, tv);
    }
    {
        Tv made(aside);
        furnish(made);
    }
    folder.PutInPlace();
}

bool Tv::IsTv(const std::string& dir) {
    for (const std::string& part : {dir + "/" + kModelFile, dir + "/settings"}) {
        struct stat info;
        if (stat(part.c_str(), &info) != 0) {
            Unreadable::ThrowIf(errno, part);
            return false;
        }
    }
    return true;
}

void RequireTv(const std::string& path) {
    RequireTvFolder(path);
    for (const char* name : kStores) {
        RequireKnownVersion(Store(path, name, Store::Durability::kVolatile));
    }
}

Tv::Tv(const std::string& dir) {
    const std::string path = Absolute(dir);
    RequireTvFolder(path);
    impl_ = std::make_unique<Impl>(path);
    for (const Store* store : impl_->Stores()) {
        RequireKnownVersion(*store);
    }
    MakeMissingFolders(path);
    CompleteChanges(path);
    impl_->model.name = impl_->StateOr<std::string>(kModelNameState, impl_->model.name);
    ForgetLastBoot(path, impl_->memory);
    for (Store* store : impl_->Stores()) {
        store->RemoveLeftovers();
    }
    for (const std::string& problem : ProblemsAtStart(*impl_, Language())) {
        impl_->LogLine(kError, problem);
    }
}

Tv::~Tv() {
    if (current == this) {
        PowerOff();
    }
}

std::vector<std::string> Tv::TakeFailures() {
    return std::exchange(impl_->failures, {});
}

const std::string& Tv::MachineFailure() {
    return machineFailure;
}

const Model& Tv::GetModel() const& {
    return impl_->model;
}
const std::string& Tv::Dir() const {
    return impl_->dir;
}
std::string Tv::TraceFile() const {
    return impl_->dir + "/" + kTraceFile.name;
}

void Tv::PowerCycle() {
    impl_->LogLine(kInfo, "power off");
    EndRunningApplications(impl_->dir);
    impl_->memory.RemoveAll();
    ClearFaults();
    impl_->FollowSwitches();
    impl_->LogLine(kInfo, "power on");
}

void SyncNothing() {
    store_file_calls.fsync = [](int) { return 0; };
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

void NoteMachineFailure(const std::string& why) {
    if (machineFailure.empty()) {
        machineFailure = why;
    }
}

void ReportException(Tv::Impl& tv, const char* function, const std::exception& exception) {
    if (dynamic_cast<const MachineFailed*>(&exception) != nullptr) {
        NoteMachineFailure(exception.what());
    }
    tv.LogLine(kError, std::string(function) + ": " + exception.what());
    NoteFailure(tv, exception.what());
}

}  // namespace vtv
