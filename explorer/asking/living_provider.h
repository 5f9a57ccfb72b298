// A provider whose memory can be stored and put back, so that every call can be made in every state
// that it comes to.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "calls.h"
#include "explorer/engine/memory_image.h"
#include "explorer/tv/lazy_tv.h"
#include "subject.h"

namespace explorer {

// What a provider remembers, and what others remember for it.
struct ProviderState {
    std::string form;  // equal for states that behave alike
    MemoryImage memory;
    std::vector<Watch> watches;
    std::uintptr_t table = 0;

    bool HasTable() const { return table != 0; }
    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(form, memory, watches, table);
    }
};

class LivingProvider {
  public:
    // Loads the library into the arena of that number and creates nothing. Throws
    // host::ProviderError.
    LivingProvider(const std::string& file, int number);

    // As it was loaded.
    const ProviderState& Start() const { return start_; }
    const Subject& Library() const { return subject_; }

    // Between the two the provider is at work; the TV's run has begun. A state stays where it is,
    // and what it is.
    void Enter(const ProviderState& state, Arena::Filling filling = Arena::Filling::kUsual);
    // What the provider is now, when that is another state; it is put back then. What is wrong with
    // its memory is noted in the TV's record.
    std::optional<ProviderState> Leave(const ProviderState& state);

    // Within the TV's current run, on the policy that it has, between Enter() and Leave().
    void Do(const Call& call);

    // What was noted by the last Leave(); empty when all was well.
    const std::string& Wrong() const { return wrong_; }
    // Looks whether the state that the last Leave() returned leads to what cannot be compared.
    void Judge();
    // Such a state was judged, or there is no room for what it allocates.
    const std::string& Unprovable() const { return unprovable_; }

    // Where the library keeps the ids of its trace sites, and which ones.
    using Cells = std::map<std::size_t, std::string>;
    const Cells& KnownCells() const { return cells_; }
    void KnowCells(const Cells& cells) { cells_.insert(cells.begin(), cells.end()); }
    // From now on these are registered, those of a place each.
    void RegisterSites(const std::vector<std::size_t>& places);
    // Those that the last run registered.
    const std::vector<std::size_t>& RegisteredPlaces() const { return registered_; }

  private:
    void PutBack(const ProviderState& state);
    ProviderState Now(const std::string& form) const;
    std::vector<std::uintptr_t> Roots() const;
    void TakeSites();
    void NoteWrong(const std::string& what);
    void Live(Call::Kind kind);

    Subject subject_;
    Arena& arena_;
    LibraryState memory_;
    ProviderState start_;
    Cells cells_;
    std::vector<std::size_t> registered_;
    std::vector<std::uintptr_t> strangeWords_;
    const ProviderState* in_ = nullptr;  // its memory is as in that one
    std::string wrong_;
    std::string unprovable_;
};

}  // namespace explorer
