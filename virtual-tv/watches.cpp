// What a TV tells of its changes: settings, state, files and log.
#include <filesystem>
#include <map>
#include <memory>

#include "tv_impl.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

bool watchesNothing = false;

// Tells of the files below /home/owner; folders that are made later are followed as well.
class OwnerWatch : public std::enable_shared_from_this<OwnerWatch> {
  public:
    // ids: where the watches are kept that end with this one; it lives as long.
    OwnerWatch(Tv::Impl& tv, std::vector<Watcher::Id>& ids, std::function<void(const Change&)> tell)
        : tv_(tv), ids_(ids), tell_(std::move(tell)) {}

    // A folder, relative; isNew when nobody was told of what it holds.
    void Follow(const std::string& folder, bool isNew) {
        const std::string dir = tv_.dir + (folder.empty() ? "/owner" : "/owner/" + folder);
        std::error_code error;
        try {
            followed_[folder] = tv_.GetWatcher().Watch(
                dir, IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM, "",
                [self = shared_from_this(), folder](const std::string& name) {
                    self->Hear(folder.empty() ? name : folder + "/" + name);
                });
        } catch (const Error&) {
            if (isNew && !fs::exists(dir, error)) {
                return;  // removed as soon as it was made
            }
            throw;
        }
        ids_.push_back(followed_[folder]);
        for (const fs::directory_entry& entry : fs::directory_iterator(dir, error)) {
            const std::string path = (fs::path(folder) / entry.path().filename()).string();
            if (isNew) {
                Hear(path);
            } else if (fs::is_directory(entry.symlink_status(error))) {
                Follow(path, false);
            }
        }
    }

  private:
    void Hear(const std::string& path) {
        tell_({Change::What::kFile, path});
        // What had this name before is elsewhere now, if anywhere, with all that it holds.
        std::erase_if(followed_, [&](const auto& folder) {
            const bool was = folder.first == path || folder.first.rfind(path + "/", 0) == 0;
            if (was) {
                tv_.GetWatcher().Unwatch(folder.second);
            }
            return was;
        });
        std::error_code error;
        if (fs::is_directory(fs::symlink_status(tv_.dir + "/owner/" + path, error))) {
            Follow(path, true);
        }
    }

    Tv::Impl& tv_;
    std::vector<Watcher::Id>& ids_;
    std::function<void(const Change&)> tell_;
    std::map<std::string, Watcher::Id> followed_;
};

}  // namespace

void WatchNothing() {
    watchesNothing = true;
}

bool Tv::Impl::MayWatch() const {
    return !watchesNothing;
}

Tv::WatchId Tv::Watch(const std::string& key, std::function<void()> callback) {
    CheckSettingKey(key);
    const WatchId id = impl_->nextWatch++;
    if (!impl_->MayWatch()) {
        return id;
    }
    const Store& store = impl_->StoreOf(key);
    const std::string name = Store::EncodeKey(key);
    impl_->watches[id] = {
        impl_->GetWatcher().Watch(store.Dir(), kStoreEvents, name,
                                  [call = std::move(callback)](const std::string&) { call(); })};
    return id;
}

Tv::WatchId Tv::WatchAll(std::function<void(const Change&)> callback) {
    const WatchId id = impl_->nextWatch++;
    std::vector<Watcher::Id>& ids = impl_->watches[id];
    Watcher& watcher = impl_->GetWatcher();
    // What another hand puts there is no key of the store when it begins otherwise.
    const auto watchStore = [&](const Store& store, Change::What what, std::string_view begin) {
        ids.push_back(watcher.Watch(store.Dir(), kStoreEvents, "",
                                    [callback, what, begin](const std::string& name) {
                                        const std::string key = Store::DecodeKey(name);
                                        if (!key.empty() && key.starts_with(begin)) {
                                            callback({what, key});
                                        }
                                    }));
    };
    watchStore(impl_->settings, Change::What::kSetting, kKeptSettings);
    watchStore(impl_->memory, Change::What::kSetting, kPassingSettings);
    watchStore(impl_->state, Change::What::kState, "");

    std::make_shared<OwnerWatch>(*impl_, ids, callback)->Follow("", false);
    return id;
}

Tv::WatchId Tv::WatchLog(std::function<void()> callback) {
    const WatchId id = impl_->nextWatch++;
    impl_->watches[id] = {impl_->GetWatcher().Watch(
        impl_->dir + "/log", IN_MODIFY | IN_CREATE | IN_MOVED_TO, "tv.log",
        [call = std::move(callback)](const std::string&) { call(); })};
    return id;
}

Tv::WatchId Tv::WatchTrace(std::function<void()> callback) {
    const WatchId id = impl_->nextWatch++;
    impl_->watches[id] = {impl_->GetWatcher().Watch(
        impl_->dir + "/trace", IN_MODIFY | IN_CREATE | IN_MOVED_TO, "events",
        [call = std::move(callback)](const std::string&) { call(); })};
    return id;
}

// Who ends, however, closes the file that its lock is on.
Tv::WatchId Tv::WatchApplications(std::function<void()> callback) {
    const WatchId id = impl_->nextWatch++;
    impl_->watches[id] = {impl_->GetWatcher().Watch(
        impl_->dir + "/apps", IN_MOVED_TO | IN_DELETE | IN_CLOSE_WRITE, "",
        [call = std::move(callback)](const std::string&) { call(); })};
    return id;
}

void Tv::Unwatch(WatchId id) {
    const auto found = impl_->watches.find(id);
    if (found == impl_->watches.end()) {
        return;
    }
    for (const Watcher::Id watch : found->second) {
        impl_->GetWatcher().Unwatch(watch);
    }
    impl_->watches.erase(found);
}

int Tv::EventFd() const {
    return impl_->GetWatcher().Fd();
}

int Tv::Dispatch() {
    const int calls = impl_->watcher != nullptr ? impl_->watcher->Dispatch() : 0;
    if (impl_->gone) {
        throw Error(ErrorKind::kPlatform,
                    impl_->dir + ": this TV is gone: it was removed, or moved elsewhere.");
    }
    return calls;
}

}  // namespace vtv
