#include "checking.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"
#include "violation_steps.h"

namespace explorer {

namespace {

// Which holds of a provider's life and memory as well.
constexpr std::string_view NOTHING_GOES_WRONG = "nothing-goes-wrong";

std::string NameOf(const Question* question) {
    return question != nullptr ? question->name : "the page";
}

std::vector<Violation>::iterator Known(std::vector<Violation>& violations, const Violation& one) {
    return std::find_if(violations.begin(), violations.end(),
                        [&](const Violation& other) { return other.what == one.what; });
}

void AddTo(std::vector<Violation>& violations, const Violation& one) {
    const auto known = Known(violations, one);
    if (known == violations.end()) {
        violations.push_back(one);
        return;
    }
    const std::uint64_t paths = known->paths + one.paths;
    if (one.nearness < known->nearness) {
        *known = one;
    }
    known->paths = paths;
}

std::string WrongIn(std::string_view record) {
    for (const RecordEntry& entry : ReadRecord(record)) {
        if (entry.kind == Entry::kWrong) {
            return WhatIsSaid(entry);
        }
    }
    return "";
}

}  // namespace

Checking::Checking(const Inputs& inputs, const CheckOptions& options,
                   const std::vector<const Invariant*>& invariants)
    : inputs_(inputs), invariants_(invariants), units_(UnitsOf(invariants)), calls_(inputs, {}) {
    work_.files = {options.provider};
    work_.calls = &calls_;
    work_.units = static_cast<int>(units_.size());
    work_.what = "states";
    work_.nameOf = [this](int unit) { return NameOf(units_[static_cast<std::size_t>(unit)]); };
    work_.prepare = [this] { EmptyVerdicts(); };
    work_.look = [this](LivingProvider& provider, int joint, int unit) {
        Look(provider, joint, units_[static_cast<std::size_t>(unit)]);
    };
    work_.see = [this](const Seen& seen) { return See(seen); };
    work_.seen = [this] { return ToBytes(found_, paths_); };
    work_.take = [this](BytesReader seen) { Take(seen); };
    work_.note = [this](int joint, int call, const WorkerResult& result) {
        const bool isLife = call < calls_.Count();
        for (const std::size_t invariant : InvariantsOf(call)) {
            Note(invariant, call,
                 {result.trouble,
                  1,
                  {0, result.path, {}},
                  isLife ? walk_->NameOf(call) : explorer::NameOf(UnitAt(call).question),
                  joint,
                  {},
                  {},
                  {}},
                 Unanswered(isLife ? nullptr : UnitAt(call).question));
        }
    };
    walk_.emplace(inputs, options, options.bounds, work_);
    EmptyVerdicts();
}

// What several invariants say of one answer is asked for once.
std::vector<Checking::Unit> Checking::UnitsOf(const std::vector<const Invariant*>& invariants) {
    std::vector<Unit> units;
    std::map<const Question*, std::size_t> shared;
    for (const Case& one : CasesOf(invariants)) {
        const auto invariant = static_cast<std::size_t>(
            std::find(invariants.begin(), invariants.end(), one.invariant) - invariants.begin());
        const bool asksOnce = one.invariant->asks == Invariant::Asks::kOnce;
        const auto known = shared.find(one.question);
        if (asksOnce && known != shared.end()) {
            units[known->second].invariants.push_back(invariant);
            continue;
        }
        if (asksOnce) {
            shared[one.question] = units.size();
        }
        units.push_back({one.question, {invariant}});
    }
    return units;
}

std::string Checking::NameOf(const Unit& unit) const {
    std::string name;
    for (const std::size_t invariant : unit.invariants) {
        name += (name.empty() ? "" : ", ") + std::string(invariants_[invariant]->name);
    }
    return name + " of " + explorer::NameOf(unit.question);
}

std::vector<std::size_t> Checking::InvariantsOf(int call) const {
    if (call >= calls_.Count()) {
        return UnitAt(call).invariants;
    }
    // What goes wrong in the provider's life is held against the invariant that says so.
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < invariants_.size(); ++i) {
        if (invariants_[i]->name == NOTHING_GOES_WRONG) {
            chosen.push_back(i);
        }
    }
    return chosen;
}

std::vector<Verdict> Checking::Verdicts(Inputs& inputs) const {
    std::vector<Verdict> verdicts(invariants_.size());
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        verdicts[i].invariant = invariants_[i];
        verdicts[i].paths = paths_[i];
        for (Violation violation : found_[i]) {
            violation.smallest.policy = PlaceOfPolicy(inputs, walk_->PublishedIn(violation.joint));
            violation.calls = walk_->CallsTo(violation.joint);
            violation.paths = std::max<std::uint64_t>(1, violation.paths);
            verdicts[i].violations.push_back(std::move(violation));
        }
        std::sort(verdicts[i].violations.begin(), verdicts[i].violations.end(),
                  [](const Violation& a, const Violation& b) {
                      return std::tie(a.nearness, a.what) < std::tie(b.nearness, b.what);
                  });
    }
    return verdicts;
}

void Checking::EmptyVerdicts() {
    found_.assign(invariants_.size(), {});
    paths_.assign(invariants_.size(), 0);
}

// ---------------------------------------------------------------------------------------------
// In a worker
// ---------------------------------------------------------------------------------------------

void Checking::Look(LivingProvider& provider, int joint, const Unit& unit) {
    if (policyOf_ != joint) {
        const PlatformMemory own;
        policyOf_ = joint;
        policy_ = StateOf({"", walk_->EverPublishedIn(joint)});
    }
    wrong_.clear();
    const explorer::Look look(provider.Library(), policy_);
    try {
        JudgeAll(look, unit);
    } catch (const std::exception& exception) {
        for (const std::size_t invariant : unit.invariants) {
            wrong_[invariant] = {
                std::string("an exception leaves the provider: ") + exception.what(),
                Unanswered(unit.question)};
        }
    }
}

void Checking::JudgeAll(const explorer::Look& look, const Unit& unit) {
    for (const std::size_t invariant : unit.invariants) {
        std::string wrong;  // lies with the provider's own memory
        look.ForgetSeen();
        {
            const ProviderMemory counted;
            wrong = invariants_[invariant]->check(look, unit.question);
        }
        if (!wrong.empty()) {
            wrong_[invariant] = {wrong, look.Seen()};
        }
    }
}

// Also what went wrong with the provider's memory.
bool Checking::See(const Seen& seen) {
    const bool isLife = seen.call < calls_.Count();
    for (const std::size_t invariant : InvariantsOf(seen.call)) {
        std::string wrong;
        Observed observed;
        if (!isLife) {
            paths_[invariant] += seen.isCounted ? 1 : 0;
            if (const auto found = wrong_.find(invariant); found != wrong_.end()) {
                wrong = found->second.what;
                observed = found->second.observed;
            }
        }
        if (wrong.empty() && invariants_[invariant]->name == NOTHING_GOES_WRONG) {
            wrong = WrongIn(seen.records.front());
        }
        if (!wrong.empty()) {
            // A path that is looked at another time as well is one path.
            Note(invariant, seen.call,
                 {wrong,
                  seen.isCounted ? 1U : 0U,
                  CurrentState(0, seen.choices),
                  isLife ? walk_->NameOf(seen.call) : explorer::NameOf(UnitAt(seen.call).question),
                  seen.joint,
                  {},
                  {},
                  {}},
                 observed);
        }
    }
    return true;
}

void Checking::Note(std::size_t invariant, int call, Violation violation,
                    const Observed& observed) {
    violation.nearness = NearnessOf(inputs_, violation.smallest);
    violation.nearness.length = walk_->At(violation.joint).depth;
    violation.nearness.joint = violation.joint;
    violation.nearness.call = call;
    const auto known = Known(found_[invariant], violation);
    if (known == found_[invariant].end() || violation.nearness < known->nearness) {
        violation.steps = StepsOf(observed);
    }
    AddTo(found_[invariant], violation);
}

// ---------------------------------------------------------------------------------------------
// In the starting process
// ---------------------------------------------------------------------------------------------

void Checking::Take(BytesReader seen) {
    const auto found = seen.Next<std::vector<std::vector<Violation>>>();
    const auto paths = seen.Next<std::vector<std::uint64_t>>();
    for (std::size_t i = 0; i < found.size(); ++i) {
        paths_[i] += paths[i];
        for (const Violation& violation : found[i]) {
            AddTo(found_[i], violation);
        }
    }
}

}  // namespace explorer
