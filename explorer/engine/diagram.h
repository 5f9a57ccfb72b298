// Decision diagrams: what a question answers in every state, with equal parts shared.
//
// A node is a leaf with an outcome, or asks one input and has a child for each of its values. Equal
// nodes are one node, and a node whose children are all the same is that child: an input that does
// not matter is not asked. Child NONE stands for a value that cannot occur there.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

#include "choices.h"

namespace explorer {

using NodeId = int;
using OutcomeId = int;
inline constexpr NodeId NONE = -1;

struct Node {
    int input = -1;  // -1: a leaf
    OutcomeId outcome = -1;
    std::vector<NodeId> children;  // by value
    bool operator==(const Node& other) const = default;
};

class Diagram {
  public:
    NodeId Leaf(OutcomeId outcome);
    NodeId Branch(int input, const std::vector<NodeId>& children);
    // The same, but what cannot occur does not become what else the input leads to.
    NodeId PartialBranch(int input, const std::vector<NodeId>& children);
    const Node& operator[](NodeId id) const { return nodes_[static_cast<std::size_t>(id)]; }

    // The same answers, but with the inputs asked in the order of their rank: two nodes that answer
    // alike then are one node.
    NodeId Ordered(NodeId node, const std::vector<int>& rank);
    // The node where the input is known to have the value. Needs an ordered node.
    NodeId With(NodeId node, int input, int value);

  private:
    NodeId Intern(Node node);
    NodeId Order(NodeId node);
    NodeId Case(int input, const std::vector<NodeId>& children);

    std::vector<Node> nodes_;
    std::unordered_multimap<std::uint64_t, NodeId> index_;
    // What Ordered() has found out for the rank that it was last given.
    std::vector<int> rank_;
    std::map<std::pair<int, std::vector<NodeId>>, NodeId> cases_;
    std::map<NodeId, NodeId> ordered_;
};

// Builds the diagram of an exploration as its paths come in.
class DiagramBuilder {
  public:
    explicit DiagramBuilder(Diagram& diagram) : diagram_(diagram) {}
    // Once after every run, before Choices::Advance().
    void Add(const Choices& choices, OutcomeId outcome);
    // The whole diagram; NONE before the last run.
    NodeId Root() const { return root_; }

  private:
    Diagram& diagram_;
    std::vector<std::vector<NodeId>> open_;
    NodeId root_ = NONE;
};

// One row of a decision table: for each input that it names the values for which it holds, and the
// outcome. Inputs that it does not name do not matter.
struct Row {
    std::map<int, std::set<int>> conditions;
    OutcomeId outcome = -1;
};
// The rows of a diagram, disjoint; no two of them can be put together to one.
std::vector<Row> RowsOf(const Diagram& diagram, NodeId root);

// The values of each input that occur anywhere in the diagram.
std::map<int, std::set<int>> OccurringValues(const Diagram& diagram, NodeId root);

}  // namespace explorer
