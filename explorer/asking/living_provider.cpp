#include "living_provider.h"

#include <bit>

#include "explorer/engine/memory.h"
#include "explorer/tv/ledger.h"
#include "explorer/tv/trace_sites.h"

namespace explorer {

namespace {

constexpr char POINTS_ELSEWHERE[] =
    "keeps a pointer to memory that is not its own, which nobody can compare";
constexpr char WRITES_LATE[] = "writes to memory that it has given back, or behind its end";
constexpr char IS_FULL[] = "has more memory than there is room for";

}  // namespace

LivingProvider::LivingProvider(const std::string& file, int number)
    // The loader opens a file only once: what may be the same file needs a copy.
    : subject_(file, number == 0 ? Subject::Copy::kShared : Subject::Copy::kPrivate),
      arena_(Arena::Of(number)),
      memory_(reinterpret_cast<const void*>(subject_.Entry().create), arena_) {
    const CanonicalForm form = memory_.Canonical(Roots());
    start_ = Now(form.text);
    if (LeadsElsewhere(form.strangeWords)) {
        unprovable_ = "allocates memory while it is loaded, or " + std::string(POINTS_ELSEWHERE);
    }
}

std::vector<std::uintptr_t> LivingProvider::Roots() const {
    std::vector<std::uintptr_t> roots = {reinterpret_cast<std::uintptr_t>(subject_.Slots())};
    for (const Watch& watch : tv().Watches()) {
        roots.push_back(reinterpret_cast<std::uintptr_t>(watch.callback));
        roots.push_back(reinterpret_cast<std::uintptr_t>(watch.userData));
    }
    return roots;
}

ProviderState LivingProvider::Now(const std::string& form) const {
    return {form, memory_.Image(), tv().Watches(),
            reinterpret_cast<std::uintptr_t>(subject_.Slots())};
}

void LivingProvider::PutBack(const ProviderState& state) {
    memory_.PutBack(state.memory);
    subject_.SetSlots(std::bit_cast<void**>(state.table));
    tv().SetWatches(state.watches);
}

void LivingProvider::Enter(const ProviderState& state, Arena::Filling filling) {
    arena_.FillWith(Arena::Filling::kUsual);
    if (in_ != &state) {
        PutBack(state);
        in_ = &state;
    }
    tv().SetWatches(state.watches);
    SetTraceSites({});
    RestartHandles();
    wrong_.clear();
    arena_.FillWith(filling);
    memoryBooks.arena = &arena_;
}

void LivingProvider::RegisterSites(const std::vector<std::size_t>& places) {
    std::vector<const std::string*> sites;
    for (const std::size_t place : places) {
        sites.push_back(KnownSite(cells_.at(place)));
        memory_.PutNumber(place, BEFORE_SITES + static_cast<int>(sites.size()));
    }
    SetTraceSites(sites);
}

void LivingProvider::TakeSites() {
    registered_.clear();
    if (TraceSites().empty()) {
        return;
    }
    const int count = static_cast<int>(TraceSites().size());
    for (const auto& [place, id] : memory_.TakeNumbers(BEFORE_SITES, count)) {
        registered_.push_back(place);
        cells_.emplace(place, *TraceSites()[static_cast<std::size_t>(id - BEFORE_SITES - 1)]);
    }
}

void LivingProvider::Judge() {
    if (LeadsElsewhere(strangeWords_)) {
        unprovable_ = POINTS_ELSEWHERE;
    }
}

void LivingProvider::NoteWrong(const std::string& what) {
    tv().Append(Entry::kWrong, what);
    wrong_ = what;
}

std::optional<ProviderState> LivingProvider::Leave(const ProviderState& state) {
    memoryBooks.arena = nullptr;
    const bool isWhole = arena_.Settle();
    if (const int count = Arena::TakeWrongFrees(); count > 0) {
        NoteWrong("gives back " + std::to_string(count) + " blocks that it does not have");
    }
    if (arena_.IsFull()) {
        unprovable_ = IS_FULL;
    }
    TakeSites();
    const bool isSame = tv().Watches() == state.watches &&
                        reinterpret_cast<std::uintptr_t>(subject_.Slots()) == state.table &&
                        memory_.Is(state.memory);
    if (!isWhole || (!isSame && !arena_.HasWholeGaps())) {
        NoteWrong(WRITES_LATE);
    }
    if (isSame) {
        return std::nullopt;
    }
    const CanonicalForm form = memory_.Canonical(Roots());
    if (form.lost > 0) {
        NoteWrong("leaks " + std::to_string(form.lost) + " blocks");
    }
    strangeWords_ = form.strangeWords;
    std::optional<ProviderState> now;
    if (form.text != state.form) {
        now = Now(form.text);
    }
    PutBack(state);
    return now;
}

void LivingProvider::Do(const Call& call) {
    if (call.kind == Call::Kind::kAsk) {
        AskAsItIs(subject_, *call.question);
        return;
    }
    try {
        const ProviderMemory counted;
        Live(call.kind);
    } catch (const std::exception& exception) {
        tv().Append(Entry::kWrong, std::string("throws ") + exception.what());
    }
    NoteLostHandles();
}

void LivingProvider::Live(Call::Kind kind) {
    switch (kind) {
        case Call::Kind::kCreate:
            subject_.Create();
            break;
        case Call::Kind::kPublish:
            tv().Append(Entry::kAnswer, "somebody watches the policy", subject_.Notify());
            break;
        case Call::Kind::kDelete:
            subject_.Delete();
            break;
        case Call::Kind::kCreateNothing:
            subject_.CreateNothing();
            break;
        case Call::Kind::kInitialize:
            subject_.InitializeAndFinalize();
            break;
        case Call::Kind::kDeleteNothing:
            subject_.DeleteNothing();
            break;
        case Call::Kind::kSecond:
        case Call::Kind::kSecondStays:
            subject_.CreateSecond(kind == Call::Kind::kSecondStays);
            break;
        case Call::Kind::kAsk:
            break;
    }
}

}  // namespace explorer
