// What came of the search on one TV, as a worker hands it over, and how it is shown.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "explorer/invariants/invariants.h"
#include "sequences_search.h"

namespace explorer {

using Facts = std::vector<std::pair<std::string, std::string>>;  // name and words

struct BrokenResult {
    std::string invariant;
    std::string what;
    std::string question;
    std::vector<std::string> actions;
    Facts lookedAt;  // what the invariant looked at
    Facts state;     // everything that can change
    std::string scenario;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(invariant, what, question, actions, lookedAt, state, scenario);
    }
};

struct SequencesResult {
    std::string model;
    bool finished = false;  // false: interrupted, or given up
    std::uint64_t states = 0;
    std::uint64_t transitions = 0;
    int deepest = 0;
    bool closed = false;
    bool remembers = false;  // the provider, so that not every sequence was tried
    double seconds = 0;
    std::vector<BrokenResult> broken;
    std::vector<std::string> tours;
    std::set<std::string> unknownKeys;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(model, finished, states, transitions, deepest, closed, remembers, seconds, broken,
              tours, unknownKeys);
    }
};

// Must be called where the search was made. With `tour` also its tours.
SequencesResult ResultOf(const Search& search, const Stage& stage, ConcreteTv& tv, bool tour);

// The shortest sequence over all TVs after which an invariant does not hold.
struct ShortestBreak {
    const Invariant* invariant = nullptr;
    const SequencesResult* model = nullptr;
    const BrokenResult* broken = nullptr;
    std::string file;                 // its scenario
    std::vector<std::string> alsoOn;  // other TVs, with their numbers of actions
};
// To standard output.
void PrintText(const std::vector<SequencesResult>& results,
               const std::vector<const Invariant*>& invariants,
               const std::vector<ShortestBreak>& breaks);
void PrintJson(const std::vector<SequencesResult>& results,
               const std::vector<const Invariant*>& invariants,
               const std::vector<ShortestBreak>& breaks);

}  // namespace explorer
