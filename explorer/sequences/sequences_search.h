// Breadth-first over everything that a viewer can do with one TV, from its box on.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "explorer/engine/library_memory.h"
#include "explorer/engine/workers.h"
#include "explorer/invariants/check.h"
#include "viewer_actions.h"

namespace explorer {

// The provider on one TV, twice: as it was created, and after the policy was published again. What
// it holds in memory then may differ, so that the two are two states.
class Stage {
  public:
    // The TV of this process must be in use. Throws host::ProviderError.
    Stage(const std::string& provider, const NewTv& model);

    const Subject& Of(bool published) const { return published && again_ ? *again_ : *first_; }
    // What is wrong about publishing again; empty when all is well.
    const std::string& Trouble() const { return trouble_; }
    // Whether the provider remembers more than it did when this was last asked, or at first, by
    // its variables: what it has allocated is not looked at, and what it caches of languages does
    // not count.
    bool HasChanged() const;

  private:
    struct Watched {
        const Subject* subject;
        std::unique_ptr<LibraryMemory> memory;
    };
    Policy policy_;
    std::unique_ptr<Subject> first_;
    std::unique_ptr<Subject> again_;
    std::vector<Watched> watched_;
    std::string trouble_;
};

// An invariant that does not hold after a sequence of actions, the shortest there is.
struct BrokenSequence {
    const Invariant* invariant = nullptr;
    std::string what;
    std::string question;  // that it was found with
    int state = 0;
    int action = -1;  // index of Search::Actions(): it goes wrong with this one; -1: in the state
    bool crashed = false;
    std::vector<int> inputs;  // that were looked at, in order
};

struct Step {
    int action = 0;     // index of Search::Actions()
    int target = 0;     // state
    int kind = 0;       // steps of one kind change the same in the same way
    int launched = -1;  // index of an application, or -1
    int terminated = -1;
};

struct SearchOptions {
    int depth = -1;  // actions; below 0: until no new state is found
    // Runs in which the provider was seen to crash, with what happened; they are not made again.
    std::map<int, std::string> crashes;
};

class Search {
  public:
    // All must outlive the search.
    Search(const Stage& stage, ConcreteTv& tv, const std::vector<Case>& cases,
           const SearchOptions& options, Shared& shared);

    // False when it was interrupted.
    bool Run();

    std::size_t States() const { return states_.size(); }
    std::uint64_t Transitions() const { return transitions_; }
    int Deepest() const { return depths_.back(); }
    // Every state was gone on from: nothing more can be reached.
    bool IsClosed() const { return expanded_ == states_.size() && !remembers_; }
    // The provider is not what it was at first: what was seen last may hold after some sequences
    // only.
    bool Remembers() const { return remembers_; }

    const std::vector<BrokenSequence>& Broken() const { return broken_; }
    const std::vector<Action>& Actions() const { return actions_; }
    const TvState& StateAt(int state) const { return *states_[static_cast<std::size_t>(state)]; }
    int DepthOf(int state) const { return depths_[static_cast<std::size_t>(state)]; }
    const std::vector<Step>& StepsFrom(int state) const;
    int Kinds() const { return static_cast<int>(kinds_.size()); }
    // The shortest way from the new TV.
    std::vector<Action> PathTo(int state) const;
    std::vector<Action> PathTo(const BrokenSequence& broken) const;

  private:
    // What is known of a case: the inputs that it looks at, one after the other, and that it holds
    // for these values. States that agree in them need not be looked at again.
    struct Node {
        int input = -1;  // -1: it holds
        std::vector<std::pair<char16_t, int>> next;
    };
    struct Known {
        std::vector<Node> nodes;
    };

    // What steps of one kind have in common.
    struct Kind {
        int action = 0;
        std::vector<std::size_t> changed;  // facts
        std::vector<Started> launched;
        bool notified = false;
        auto operator<=>(const Kind&) const = default;
    };

    int Add(const TvState& state, int parent, int action);
    void Check(int state);
    void CheckCase(int state, std::size_t index, Known& known);
    static bool Holds(const Known& known, const TvState& state);
    bool Learn(Known& known, const TvState& state, const Choices& choices) const;
    void Expand(int state);
    void Follow(int state, const Action& action, const Subject& subject, const host::Page& page);
    Step StepOf(int action, const TvState& from, int target, const Consequences& consequences);
    void Note(const Case& one, BrokenSequence broken);
    void NoteWrong(const std::string& what, int state, int action, bool crashed);
    // Whether this run may be made; what happened the last time when it may not.
    bool MayRun(std::string& crash);

    const Stage& stage_;
    ConcreteTv& tv_;
    const std::vector<Case>& cases_;
    const SearchOptions& options_;
    Shared& shared_;
    PolicyState policy_;

    std::unordered_map<TvState, int> ids_;
    std::vector<const TvState*> states_;
    std::vector<std::pair<int, int>> parents_;  // state and action
    std::vector<int> depths_;
    std::vector<std::vector<Step>> steps_;
    std::size_t expanded_ = 0;
    std::uint64_t transitions_ = 0;
    int run_ = 0;
    bool remembers_ = false;

    std::vector<Action> actions_;
    std::map<Kind, int> kinds_;
    std::map<std::string, int> applications_;
    std::vector<Known> known_[2];  // by whether the policy was published again
    std::vector<bool> isBroken_;   // by case: its invariant is known not to hold
    std::vector<BrokenSequence> broken_;
};

}  // namespace explorer
