#include "undecided.h"

#include <algorithm>

namespace explorer {

namespace {

OutcomeId Joined(OutcomeId one, OutcomeId other) {
    return one == NEVER ? other : other == NEVER || one == other ? one : VARIOUS;
}

}  // namespace

std::vector<NodeId> NodesOf(const Diagram& diagram, NodeId root) {
    std::vector<NodeId> nodes;
    std::set<NodeId> seen;
    std::vector<NodeId> open = {root};
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        if (id != NONE && seen.insert(id).second) {
            nodes.push_back(id);
            const std::vector<NodeId>& children = diagram[id].children;
            open.insert(open.end(), children.begin(), children.end());
        }
    }
    return nodes;
}

Undecided::Undecided(Diagram& diagram, const std::vector<int>& rank, NodeId root)
    : diagram_(diagram), rank_(rank) {
    for (const NodeId id : NodesOf(diagram, root)) {
        const Node& node = diagram_[id];
        if (node.input >= 0) {
            counts_[node.input] = static_cast<int>(node.children.size());
        }
    }
    int offset = 0;
    for (const auto& [input, count] : counts_) {
        offsets_[input] = offset;
        offset += count;
    }
    width_ = static_cast<std::size_t>(offset);
    for (const auto& [input, count] : counts_) {
        inputs_.push_back(input);
    }
    std::sort(inputs_.begin(), inputs_.end(), [&](int a, int b) { return Rank(a) < Rank(b); });
}

NodeId Undecided::Without(NodeId root, const Conditions& conditions) {
    Sorted sorted(conditions.begin(), conditions.end());
    std::sort(sorted.begin(), sorted.end(),
              [&](const auto& a, const auto& b) { return Rank(a.first) < Rank(b.first); });
    std::map<std::pair<NodeId, std::size_t>, NodeId> known;
    return Without(root, sorted, 0, known);
}

NodeId Undecided::Without(NodeId id, const Sorted& conditions, std::size_t from,
                          std::map<std::pair<NodeId, std::size_t>, NodeId>& known) {
    if (id == NONE || from == conditions.size()) {
        return NONE;
    }
    const auto key = std::make_pair(id, from);
    if (const auto found = known.find(key); found != known.end()) {
        return found->second;
    }
    const auto& [input, values] = conditions[from];
    const int asked = diagram_[id].input;
    const bool isSkipped = asked < 0 || Rank(asked) > Rank(input);
    const int top = isSkipped ? input : asked;
    std::vector<NodeId> children;
    for (int value = 0; value < CountOf(top); ++value) {
        const NodeId child =
            isSkipped ? id : diagram_[id].children[static_cast<std::size_t>(value)];
        if (top != input) {
            children.push_back(Without(child, conditions, from, known));
        } else if (values.count(value) != 0) {
            children.push_back(Without(child, conditions, from + 1, known));
        } else {
            children.push_back(child);
        }
    }
    return known[key] = diagram_.PartialBranch(top, children);
}

NodeId Undecided::Where(NodeId root, int input, int value) {
    std::map<NodeId, NodeId> known;
    return Where(root, input, value, known);
}

NodeId Undecided::Where(NodeId id, int input, int value, std::map<NodeId, NodeId>& known) {
    if (id == NONE || diagram_[id].input < 0 || Rank(diagram_[id].input) > Rank(input)) {
        return id;
    }
    if (diagram_[id].input == input) {
        return diagram_[id].children[static_cast<std::size_t>(value)];
    }
    if (const auto found = known.find(id); found != known.end()) {
        return found->second;
    }
    const int asked = diagram_[id].input;
    std::vector<NodeId> children;
    for (std::size_t i = 0; i < diagram_[id].children.size(); ++i) {
        children.push_back(Where(diagram_[id].children[i], input, value, known));
    }
    return known[id] = diagram_.PartialBranch(asked, children);
}

Undecided::Answered Undecided::Answers(NodeId root) const {
    std::unordered_map<NodeId, Answered> known;
    return Answers(root, known);
}

const Undecided::Answered& Undecided::Answers(NodeId id,
                                              std::unordered_map<NodeId, Answered>& known) const {
    const auto found = known.find(id);
    if (found != known.end()) {
        return found->second;
    }
    Answered answered;
    answered.where.assign(width_, NEVER);
    if (id != NONE && diagram_[id].input < 0) {
        answered.all = diagram_[id].outcome;
        answered.where.assign(width_, answered.all);
    } else if (id != NONE) {
        const Node& node = diagram_[id];
        for (const NodeId child : node.children) {
            const Answered& below = Answers(child, known);
            answered.all = Joined(answered.all, below.all);
            for (std::size_t place = 0; place < width_; ++place) {
                answered.where[place] = Joined(answered.where[place], below.where[place]);
            }
        }
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            answered.where[PlaceOf(node.input, static_cast<int>(value))] =
                known.at(node.children[value]).all;
        }
    }
    return known.emplace(id, std::move(answered)).first->second;
}

}  // namespace explorer
