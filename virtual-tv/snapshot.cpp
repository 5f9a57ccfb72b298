// Everything that can change on a TV, taken and put back.
#include <algorithm>

#include "spelling.h"
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

// What the services of a TV keep in its state.
struct StateEntry {
    const char* name;  // one that ends with '/' stands for all that begin with it
    const char* type;  // null: any
    void (*parse)(const std::string& text) = nullptr;  // throws for a text that is no value
};
constexpr StateEntry kStateEntries[] = {
    {"account/signed_in", "bool"},
    {"always_on_voice/", "int"},
    {"applications", "string", [](const std::string& text) { ParseApplicationMode(text); }},
    {"consent/pp", "bool"},
    {"consent/tnc", "bool"},
    {"feature/", nullptr},
    {"model", "string"},
    {"network", "string", [](const std::string& text) { ParseNetwork(text); }},
    {"no-feature/", "bool"},
    {"sound/feedback", "int"},
    {"sound/priority", "int"},
    {"toolkit/access", "bool"},
    {kTraceSwitch, "bool"},
};

bool Covers(const StateEntry& entry, const std::string& name) {
    const std::string_view known = entry.name;
    return known.back() == '/' ? name.size() > known.size() && name.rfind(known, 0) == 0
                               : name == known;
}

}  // namespace

void CheckState(const std::string& name, const Value& value) {
    std::vector<std::string> names;
    for (const StateEntry& entry : kStateEntries) {
        if (!Covers(entry, name)) {
            names.emplace_back(entry.name);
            continue;
        }
        if (entry.type != nullptr && std::string(entry.type) != TypeName(value)) {
            throw Error(ErrorKind::kUsage, "\"" + name + "\" is of type " + entry.type + ", not " +
                                               TypeName(value) + ".");
        }
        if (entry.parse != nullptr) {
            entry.parse(std::get<std::string>(value));
        }
        return;
    }
    throw Error(ErrorKind::kUsage, "a TV has no state \"" + name + "\"." + DidYouMean(name, names) +
                                       " Known: " + Join(names) + ".");
}

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
