// A worker of a walk: some calls in some joints, and what it sends to the starting process.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "walk.h"

namespace explorer {

struct Walk::FoundJoint {
    int parent = 0;
    int call = 0;
    std::vector<Decision> path;
    // By provider: a known state, or -1 - n for the n-th of the new ones.
    std::array<int, Arena::MOST> states = {-1, -1};

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(parent, call, path, states);
    }
};

struct Walk::Part {
    std::vector<FoundJoint> found;
    std::vector<ProviderState> states[Arena::MOST];
    LivingProvider::Cells cells[Arena::MOST];
    std::set<std::string> open;
    std::set<std::string> unknown;
    std::uint64_t questions = 0;
    std::uint64_t paths = 0;
    std::map<std::pair<int, std::size_t>, Asked> asked;  // by call and provider
    std::vector<std::uint64_t> tried;
    bool readsPolicy = false;
    bool isInterrupted = false;
    std::string seen;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(found, states[0], states[1], cells[0], cells[1], open, unknown, questions, paths,
              asked, tried, readsPolicy, isInterrupted, seen);
    }
};

struct Walk::Task {
    std::vector<int> joints;
    int first = 0;  // calls
    int behind = 0;
    bool isAgain = false;  // and counted already
    bool isProbe = false;  // only the first path of each call
};

}  // namespace explorer
