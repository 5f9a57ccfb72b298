#include "recorder.h"

#include <algorithm>

#include "explorer/tv/trace_sites.h"
#include "platform/trace_storage.h"

namespace explorer {

void Recorder::Make(const ProviderState& state, const std::function<void()>& call) {
    state_ = &state;
    call_ = &call;
    provider_.Enter(state);
    call();
    next_ = provider_.Leave(state);
    record_.assign(tv().Record());
    hasTraced_ = HasTraced();
}

void Recorder::TryAgain() {
    registered_ = provider_.RegisteredPlaces();
    const bool isAlike = IsAlikeWithOtherMemory();
    if (TIStorageManagerState::enabled) {
        TryTracing();
    }
    if (!isAlike) {
        record_ += EntryBytes(Entry::kWrong,
                              "answers from memory that it has given back or never written");
    }
}

void Recorder::TryTracing() {
    RequireSame(Places(true, true));
    if (hasTraced_) {
        RequireSame(Places(true, false));
        RequireSame(Places(false, true));
        TIStorageManagerState::enabled = false;
        const std::string silent = RecordWith({});
        TIStorageManagerState::enabled = true;
        record_ += WhileTracingIsOff(silent);
    }
}

bool Recorder::IsAlikeWithOtherMemory() {
    tv().Again();
    provider_.Enter(*state_, Arena::Filling::kOther);
    (*call_)();
    provider_.Leave(*state_);
    return tv().Record() == record_;
}

void Recorder::MakeAgain(const ProviderState& state, const std::function<void()>& call) {
    tv().Again();
    provider_.Enter(state);
    call();
    provider_.Leave(state);
}

// Of the sites that are known, those that the call has registered itself, and those that it has
// not.
std::vector<std::size_t> Recorder::Places(bool own, bool others) const {
    std::vector<std::size_t> places;
    for (const auto& [place, site] : provider_.KnownCells()) {
        const bool isOwn =
            std::find(registered_.begin(), registered_.end(), place) != registered_.end();
        if (isOwn ? own : others) {
            places.push_back(place);
        }
    }
    return places;
}

// No state has a registered site: instead, nothing may follow from that.
void Recorder::RequireSame(const std::vector<std::size_t>& places) {
    if (!places.empty() && RecordWith(places) != record_) {
        record_ += EntryBytes(Entry::kWrong, "does otherwise once trace sites are registered");
    }
}

std::string Recorder::RecordWith(const std::vector<std::size_t>& places) {
    tv().Again();
    provider_.Enter(*state_);
    provider_.RegisterSites(places);
    (*call_)();
    const std::optional<ProviderState> next = provider_.Leave(*state_);
    std::string record(tv().Record());
    if (next.has_value() != next_.has_value() || (next && next->form != next_->form)) {
        record += EntryBytes(Entry::kWrong, "leaves another memory");
    }
    return record;
}

}  // namespace explorer
