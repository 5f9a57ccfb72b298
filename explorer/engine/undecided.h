// What the rows of a list have not decided yet.
#pragma once

#include <unordered_map>

#include "diagram.h"

namespace explorer {

// What is answered where an input has a value: an outcome, or one of these.
inline constexpr OutcomeId NEVER = -1;    // it cannot have it
inline constexpr OutcomeId VARIOUS = -2;  // it depends

using Conditions = std::map<int, std::set<int>>;

std::vector<NodeId> NodesOf(const Diagram& diagram, NodeId root);

// Operations on one diagram, with what cannot occur as NONE. What a row decides is made NONE: what
// is left is the business of the rows that follow, and gets simpler with each. The diagram is
// ordered by the rank; both outlive this.
class Undecided {
  public:
    Undecided(Diagram& diagram, const std::vector<int>& rank, NodeId root);

    // In the order of the rank.
    const std::vector<int>& Inputs() const { return inputs_; }
    int CountOf(int input) const { return counts_.at(input); }
    int Rank(int input) const { return rank_[static_cast<std::size_t>(input)]; }

    // What is left when a row with these conditions has decided.
    NodeId Without(NodeId root, const Conditions& conditions);
    // What is left of the diagram where the input has the value.
    NodeId Where(NodeId root, int input, int value);

    // What is answered at all, and where one input has one value, whatever the others have: by
    // place of both.
    struct Answered {
        OutcomeId all = NEVER;
        std::vector<OutcomeId> where;
    };
    Answered Answers(NodeId root) const;
    std::size_t PlaceOf(int input, int value) const {
        return static_cast<std::size_t>(offsets_.at(input)) + static_cast<std::size_t>(value);
    }

  private:
    using Sorted = std::vector<std::pair<int, std::set<int>>>;

    const Answered& Answers(NodeId id, std::unordered_map<NodeId, Answered>& known) const;
    NodeId Without(NodeId id, const Sorted& conditions, std::size_t from,
                   std::map<std::pair<NodeId, std::size_t>, NodeId>& known);
    NodeId Where(NodeId id, int input, int value, std::map<NodeId, NodeId>& known);

    Diagram& diagram_;
    const std::vector<int>& rank_;
    std::map<int, int> counts_;  // of the values of each input that is asked
    std::map<int, int> offsets_;
    std::vector<int> inputs_;
    std::size_t width_ = 0;
};

}  // namespace explorer
