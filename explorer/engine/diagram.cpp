#include "diagram.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace explorer {

namespace {

std::uint64_t HashOf(const Node& node) {
    std::uint64_t hash = 0x9E3779B97F4A7C15U;
    const auto add = [&hash](std::uint64_t number) {
        hash = (hash ^ number) * 0xFF51AFD7ED558CCDU;
        hash ^= hash >> 32;
    };
    add(static_cast<std::uint64_t>(node.input));
    add(static_cast<std::uint64_t>(node.outcome));
    for (const NodeId child : node.children) {
        add(static_cast<std::uint64_t>(child));
    }
    return hash;
}

}  // namespace

NodeId Diagram::Intern(Node node) {
    const std::uint64_t hash = HashOf(node);
    const auto [begin, end] = index_.equal_range(hash);
    for (auto candidate = begin; candidate != end; ++candidate) {
        if ((*this)[candidate->second] == node) {
            return candidate->second;
        }
    }
    nodes_.push_back(std::move(node));
    const auto id = static_cast<NodeId>(nodes_.size() - 1);
    index_.emplace(hash, id);
    return id;
}

NodeId Diagram::Leaf(OutcomeId outcome) {
    return Intern({-1, outcome, {}});
}

NodeId Diagram::Branch(int input, const std::vector<NodeId>& children) {
    NodeId only = NONE;
    bool same = true;
    for (const NodeId child : children) {
        same = same && (child == NONE || only == NONE || child == only);
        only = child == NONE ? only : child;
    }
    return same ? only : Intern({input, -1, children});
}

NodeId Diagram::PartialBranch(int input, const std::vector<NodeId>& children) {
    const bool same = std::adjacent_find(children.begin(), children.end(), std::not_equal_to<>()) ==
                      children.end();
    return same ? children.front() : Intern({input, -1, children});
}

NodeId Diagram::With(NodeId node, int input, int value) {
    if (node == NONE || (*this)[node].input != input) {
        return node;
    }
    return (*this)[node].children[static_cast<std::size_t>(value)];
}

NodeId Diagram::Case(int input, const std::vector<NodeId>& children) {
    const auto key = std::make_pair(input, children);
    if (const auto known = cases_.find(key); known != cases_.end()) {
        return known->second;
    }
    int top = input;
    std::size_t values = 0;
    for (const NodeId child : children) {
        const int asked = child == NONE ? -1 : (*this)[child].input;
        if (asked >= 0 &&
            rank_[static_cast<std::size_t>(asked)] < rank_[static_cast<std::size_t>(top)]) {
            top = asked;
            values = (*this)[child].children.size();
        }
    }
    NodeId result = NONE;
    if (top == input) {
        result = Branch(input, children);
    } else {
        std::vector<NodeId> tops;
        for (std::size_t value = 0; value < values; ++value) {
            std::vector<NodeId> below;
            for (const NodeId child : children) {
                below.push_back(With(child, top, static_cast<int>(value)));
            }
            tops.push_back(Case(input, below));
        }
        result = Branch(top, tops);
    }
    cases_[key] = result;
    return result;
}

NodeId Diagram::Ordered(NodeId node, const std::vector<int>& rank) {
    if (rank != rank_) {
        rank_ = rank;
        cases_.clear();
        ordered_.clear();
    }
    return Order(node);
}

NodeId Diagram::Order(NodeId node) {
    if (node == NONE || (*this)[node].input < 0) {
        return node;
    }
    if (const auto known = ordered_.find(node); known != ordered_.end()) {
        return known->second;
    }
    const Node copy = (*this)[node];
    std::vector<NodeId> children;
    for (const NodeId child : copy.children) {
        children.push_back(Order(child));
    }
    const NodeId result = Case(copy.input, children);
    ordered_[node] = result;
    return result;
}

void DiagramBuilder::Add(const Choices& choices, OutcomeId outcome) {
    NodeId node = diagram_.Leaf(outcome);
    std::size_t depth = choices.Depth();
    if (open_.size() < depth) {
        open_.resize(depth);
    }
    for (; depth > 0; --depth) {
        const Decision& decision = choices.Path()[depth - 1];
        std::vector<NodeId>& children = open_[depth - 1];
        children.push_back(node);
        if (decision.value + 1 != decision.count) {
            return;
        }
        node = diagram_.Branch(decision.input, children);
        children.clear();
    }
    root_ = node;
}

std::map<int, std::set<int>> OccurringValues(const Diagram& diagram, NodeId root) {
    std::map<int, std::set<int>> values;
    std::set<NodeId> seen;
    std::vector<NodeId> open = {root};
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        if (id == NONE || !seen.insert(id).second) {
            continue;
        }
        const Node& node = diagram[id];
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            if (node.children[value] != NONE) {
                values[node.input].insert(static_cast<int>(value));
                open.push_back(node.children[value]);
            }
        }
    }
    return values;
}

namespace {

using Rows = std::vector<Row>;

void Collect(const Diagram& diagram, NodeId id, Row& row, Rows& rows) {
    const Node& node = diagram[id];
    if (node.input < 0) {
        row.outcome = node.outcome;
        rows.push_back(row);
        return;
    }
    // Values that lead to the same answer share a row; the first value leads.
    std::vector<NodeId> targets;
    for (const NodeId child : node.children) {
        if (child != NONE && std::find(targets.begin(), targets.end(), child) == targets.end()) {
            targets.push_back(child);
        }
    }
    for (const NodeId target : targets) {
        std::set<int>& values = row.conditions[node.input];
        values.clear();
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            if (node.children[value] == target) {
                values.insert(static_cast<int>(value));
            }
        }
        Collect(diagram, target, row, rows);
    }
    row.conditions.erase(node.input);
}

// Puts rows together that differ only in the values of this input.
bool MergeOver(Rows& rows, int input, std::size_t size) {
    // By what the rows have in common: where the first of them now stands.
    std::map<std::pair<OutcomeId, std::map<int, std::set<int>>>, std::size_t> places;
    Rows merged;
    for (Row& row : rows) {
        const auto own = row.conditions.find(input);
        if (own == row.conditions.end()) {
            merged.push_back(std::move(row));
            continue;
        }
        std::map<int, std::set<int>> rest = row.conditions;
        rest.erase(input);
        const auto [place, isNew] = places.try_emplace({row.outcome, rest}, merged.size());
        if (isNew) {
            merged.push_back(std::move(row));
        } else {
            merged[place->second].conditions[input].insert(own->second.begin(), own->second.end());
        }
    }
    for (Row& row : merged) {
        const auto own = row.conditions.find(input);
        if (own != row.conditions.end() && own->second.size() == size) {
            row.conditions.erase(own);
        }
    }
    const bool changed = merged.size() < rows.size();
    rows = std::move(merged);
    return changed;
}

// A row that allows every value of an input that occurs does not name it.
bool MergeOnce(Rows& rows, const std::map<int, std::set<int>>& occurring) {
    bool changed = false;
    for (const auto& [input, values] : occurring) {
        changed = MergeOver(rows, input, values.size()) || changed;
    }
    return changed;
}

}  // namespace

std::vector<Row> RowsOf(const Diagram& diagram, NodeId root) {
    Rows rows;
    Row row;
    if (root != NONE) {
        Collect(diagram, root, row, rows);
    }
    const std::map<int, std::set<int>> occurring = OccurringValues(diagram, root);
    while (MergeOnce(rows, occurring)) {
    }
    return rows;
}

}  // namespace explorer
