// The invariants in every state that a provider comes to.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "check.h"
#include "explorer/asking/nearness.h"

namespace explorer {

struct Violation {
    std::string what;
    std::uint64_t paths = 0;
    State smallest;
    std::string question;
    int joint = -1;                  // what the provider remembers then
    std::vector<std::string> calls;  // that lead there, in words
    Nearness nearness;
    std::string steps;  // of a scenario that fails there; empty where no page shows it

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(what, paths, smallest, question, joint, calls, nearness, steps);
    }
};

struct Verdict {
    const Invariant* invariant = nullptr;
    std::uint64_t paths = 0;
    std::vector<Violation> violations;  // one for each thing that is wrong, nearest first
};

class Checking {
  public:
    // Loads the provider. Throws host::ProviderError. All that is named must outlive this.
    Checking(const Inputs& inputs, const CheckOptions& options,
             const std::vector<const Invariant*>& invariants);
    Checking(const Checking&) = delete;
    Checking& operator=(const Checking&) = delete;

    void Run() { walk_->Run(); }

    // Ready to be shown: with the policies, which become part of the inputs.
    std::vector<Verdict> Verdicts(Inputs& inputs) const;
    const Walk& Walked() const { return *walk_; }

  private:
    // What is looked at in one run.
    struct Unit {
        const Question* question = nullptr;
        std::vector<std::size_t> invariants;  // several only of those that ask no more than that
    };

    static std::vector<Unit> UnitsOf(const std::vector<const Invariant*>& invariants);
    const Unit& UnitAt(int call) const {
        return units_[static_cast<std::size_t>(call - calls_.Count())];
    }
    std::string NameOf(const Unit& unit) const;
    // Those that a call is held against.
    std::vector<std::size_t> InvariantsOf(int call) const;
    void EmptyVerdicts();
    void Look(LivingProvider& provider, int joint, const Unit& unit);
    void JudgeAll(const explorer::Look& look, const Unit& unit);
    bool See(const Seen& seen);
    void Note(std::size_t invariant, int call, Violation violation, const Observed& observed);
    void Take(BytesReader seen);

    const Inputs& inputs_;
    const std::vector<const Invariant*> invariants_;
    const std::vector<Unit> units_;
    const Calls calls_;
    WalkWork work_;
    std::optional<Walk> walk_;
    // By invariant.
    std::vector<std::vector<Violation>> found_;
    std::vector<std::uint64_t> paths_;
    // In a worker.
    struct Wrong {
        std::string what;
        Observed observed;
    };
    std::map<std::size_t, Wrong> wrong_;  // by invariant, on this path
    int policyOf_ = -1;
    PolicyState policy_;
};

}  // namespace explorer
