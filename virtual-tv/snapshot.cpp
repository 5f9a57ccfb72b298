// Everything that can change on a TV, taken and put back.
#include <algorithm>

#include "tv_impl.h"

namespace vtv {

namespace {

// Writes what differs, so that watchers hear of exactly that.
void Bring(Store& store, const std::map<std::string, Value>& wanted) {
    std::map<std::string, Value> present;
    for (const Setting& setting : store.List()) {
        if (wanted.count(setting.key) == 0) {
            store.Remove(setting.key);
        } else if (setting.value) {
            present[setting.key] = *setting.value;
        }
    }
    for (const auto& [key, value] : wanted) {
        const auto found = present.find(key);
        if (found == present.end() || found->second != value) {
            store.Write(key, value);
        }
    }
}

}  // namespace

Snapshot Tv::TakeSnapshot() const {
    Snapshot snapshot;
    for (const Setting& setting : Settings()) {
        if (setting.value) {
            snapshot.settings[setting.key] = *setting.value;
        }
    }
    snapshot.state = State();
    snapshot.ownerFiles = OwnerFiles();
    return snapshot;
}

void Tv::Restore(const Snapshot& snapshot) {
    std::map<std::string, Value> kept, lost;
    for (const auto& [key, value] : snapshot.settings) {
        (&impl_->StoreOf(key) == &impl_->settings ? kept : lost)[key] = value;
    }
    for (const std::string& file : OwnerFiles()) {
        if (std::find(snapshot.ownerFiles.begin(), snapshot.ownerFiles.end(), file) ==
            snapshot.ownerFiles.end()) {
            RemoveOwnerFile(file);
        }
    }
    for (const std::string& file : snapshot.ownerFiles) {
        AddOwnerFile(file);
    }
    Bring(impl_->state, snapshot.state);
    Bring(impl_->settings, kept);
    Bring(impl_->memory, lost);
    impl_->switches.Announce();
    impl_->FollowSwitches();
    if (Current() == this) {
        BindTexts(Language());
    }
}

}  // namespace vtv
