// Exploring questions over all states, and what came of it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "command.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/coverage.h"
#include "explorer/engine/diagram.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/inputs.h"

namespace explorer {

// What a run ended in, as bytes: equal runs have equal bytes.
class Outcomes {
  public:
    OutcomeId Intern(std::string_view record);
    const std::string& operator[](OutcomeId id) const {
        return *records_[static_cast<std::size_t>(id)];
    }

  private:
    std::map<std::string, OutcomeId, std::less<>> ids_;
    std::vector<const std::string*> records_;
};

// A path that needs to be told about: what is wrong, and how to get there.
struct Trouble {
    int policy = 0;
    std::string what;
    std::vector<Decision> path;
};

// One question over all states.
struct QuestionResult {
    const Question* question = nullptr;
    // By policy; NONE where it was not explored.
    std::vector<NodeId> roots;
    std::vector<Coverage> coverage;
    // Inputs in the order in which they were first read.
    std::vector<int> order;
    std::vector<std::vector<int>> orders;  // the same by policy
    std::map<int, int> mostReads;          // by input: reads in a single run
    std::vector<Trouble> troubles;

    std::uint64_t Paths() const;
    // Whether every policy's paths stand for all of its states.
    bool IsComplete() const;
};

// All results, over one diagram.
struct Exploration {
    Diagram diagram;
    Outcomes outcomes;
    std::vector<QuestionResult> results;
    std::set<std::string> unknownKeys;
    bool interrupted = false;
};

// Work on many units under every policy, each policy in a worker process.
struct PolicyWork {
    int units = 0;
    const char* what = "questions";
    bool poison = false;                                         // freed memory is overwritten
    std::function<bool(int policy, int unit)> isOurs = nullptr;  // null: all are
    // In the worker: what is found of a unit, as bytes.
    std::function<std::string(const Subject& subject, int policy, int unit, Shared& shared)> look;
    std::function<void(int policy, int unit, BytesReader found)> take;
    // A worker ended at the unit that is its step: this unit is not looked at again.
    std::function<void(const WorkerResult& result)> note;
};
// Returns the keys that the provider asks for and the inputs do not name.
std::set<std::string> WorkUnderPolicies(const Inputs& inputs, const CommonOptions& options,
                                        const PolicyWork& work);

// Explores the questions under every policy. Throws host::ProviderError.
std::unique_ptr<Exploration> Explore(const Inputs& inputs,
                                     const std::vector<const Question*>& questions,
                                     const CommonOptions& options);

// One run after another until every path has been visited or somebody interrupts. `run` is called
// with the TV ready; `visit` after each run. False when it was interrupted, or `isEnough`.
bool ForEachPath(
    Choices& choices, std::atomic<std::uint64_t>& runs, const std::function<void()>& run,
    const std::function<void()>& visit,
    const std::function<bool()>& isEnough = [] { return false; });

}  // namespace explorer
