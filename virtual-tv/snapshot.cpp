// Everything that can change on a TV, taken and put back.
#include <algorithm>
#include <set>

#include "staged_changes.h"
#include "tv_impl.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/owner_files.h"
#include "virtual-tv/model/spelling.h"

namespace vtv {

namespace {

// What the services of a TV keep in its state.
struct StateEntry {
    const char* name;  // one that ends with '/' stands for all that begin with it
    const char* type;  // null: any
    void (*parse)(const std::string& text) = nullptr;  // throws for a text that is no value
};
constexpr StateEntry kStateEntries[] = {
    {kSignedInState, "bool"},
    {kModeState, "int"},
    {"applications", "string", [](const std::string& text) { ParseApplicationMode(text); }},
    {kPrivacyState, "bool"},
    {kTermsState, "bool"},
    {kFeatureState, nullptr},
    {kModelNameState, "string"},
    {kNetworkState, "string", [](const std::string& text) { ParseNetwork(text); }},
    {kAbsentFeatureState, "bool"},
    {"sound/feedback", "int"},
    {"sound/priority", "int"},
    {"toolkit/access", "bool"},
    {kTraceSwitch, "bool"},
};

bool Covers(const StateEntry& entry, const std::string& name) {
    const std::string_view known = entry.name;
    if (known == kModeState) {
        return name.starts_with(known);  // of no assistant, too: while none is chosen
    }
    return known.back() == '/' ? name.size() > known.size() && name.starts_with(known)
                               : name == known;
}

const StateEntry& EntryOf(const std::string& name) {
    const auto* const found =
        std::find_if(std::begin(kStateEntries), std::end(kStateEntries),
                     [&](const StateEntry& entry) { return Covers(entry, name); });
    if (found != std::end(kStateEntries)) {
        return *found;
    }
    std::vector<std::string> names;
    for (const StateEntry& entry : kStateEntries) {
        names.emplace_back(entry.name);
    }
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        throw Error(ErrorKind::kUsage, "\"" + name + "\" needs a name behind it.");
    }
    throw Error(ErrorKind::kUsage, "a TV has no state \"" + name + "\"." + DidYouMean(name, names) +
                                       " Known: " + Join(names) + ".");
}

}  // namespace

void CheckStateName(const std::string& name) {
    EntryOf(name);
    Store::RequireKey(name);
}

void CheckState(const std::string& name, const Value& value) {
    const StateEntry& entry = EntryOf(name);
    if (entry.type != nullptr && std::string(entry.type) != TypeName(value)) {
        throw Error(ErrorKind::kUsage,
                    "\"" + name + "\" is of type " + entry.type + ", not " + TypeName(value) + ".");
    }
    if (entry.parse != nullptr) {
        entry.parse(std::get<std::string>(value));
    }
    if (std::string_view(entry.name) == kFeatureState) {
        CheckFeature(name.substr(sizeof kFeatureState - 1), value);
    }
    Store::RequireKey(name);
}

std::string ProblemOfState(const std::string& name, const Value& value) {
    try {
        CheckState(name, value);
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

void Tv::SetTogether(const std::map<std::string, std::optional<Value>>& values) {
    StagedChanges changes(impl_->dir);
    for (const auto& [key, value] : values) {
        changes.Write(impl_->StoreOf(key), key, value);
    }
    changes.Commit();
    if (Current() == this) {
        BindTexts(Language());
    }
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
    OwnerFileNames names;
    for (const std::string& file : snapshot.ownerFiles) {
        names.Add(file);
    }
    std::set<std::string> files = names.All();
    StagedChanges changes(impl_->dir);
    for (const std::string& file : OwnerFiles()) {
        if (files.erase(file) == 0) {
            changes.RemoveFile("owner/" + file);
        }
    }
    for (const std::string& file : files) {
        changes.AddFile("owner/" + file);
    }
    changes.Bring(impl_->state, snapshot.state);
    changes.Bring(impl_->settings, kept);
    changes.Bring(impl_->memory, lost);
    changes.Commit();
    impl_->switches.Announce();
    impl_->FollowSwitches();
    if (Current() == this) {
        BindTexts(Language());
    }
}

}  // namespace vtv
