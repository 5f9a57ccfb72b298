#include "decision_list.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "undecided.h"

namespace explorer {

namespace {

// A diagram of more nodes is not searched for rows of two conditions: it takes too long.
constexpr std::size_t MOST_NODES_FOR_PAIRS = 300;
// A list of more rows is not searched for a shorter one.
constexpr std::size_t MOST_ROWS_TO_TRY = 100;
// Of more outcomes none is tried as the one that stands last.
constexpr std::size_t MOST_OUTCOMES_TO_TRY = 6;

// How rows are looked for; the shortest list that comes of them is taken.
struct Search {
    bool pairs;        // also rows of two conditions
    bool largest;      // of these first what decides most, and not what is read first
    OutcomeId atLast;  // what the other rows leave, as far as they can
};

class ListMaker {
  public:
    ListMaker(Diagram& diagram, const std::vector<int>& rank, NodeId root, Search search)
        : diagram_(diagram), rest_(diagram, rank, root), search_(search) {}

    DecisionList Make(NodeId root) {
        DecisionList list;
        AddRows(root, {}, list);
        return list;
    }

  private:
    // The rows of what is left, each under the conditions besides its own.
    void AddRows(NodeId root, const Conditions& under, DecisionList& list) {
        while (root != NONE) {
            const Undecided::Answered answers = rest_.Answers(root);
            if (answers.all >= 0) {
                list.push_back({under, answers.all});
                return;
            }
            const bool pairs =
                search_.pairs && NodesOf(diagram_, root).size() <= MOST_NODES_FOR_PAIRS;
            std::optional<ListRow> row;
            for (const OutcomeId avoided : {search_.atLast, NEVER}) {
                row = row ? row : RowOfOneCondition(answers.where, avoided);
                row = row || !pairs ? row : RowOfTwoConditions(root, avoided);
            }
            if (row) {
                root = rest_.Without(root, row->conditions);
                row->conditions.insert(under.begin(), under.end());
                list.push_back(*row);
            } else {
                root = AddRowsOfOneBranch(root, under, list);
            }
        }
    }

    // What is read first, where its value alone decides.
    std::optional<ListRow> RowOfOneCondition(const std::vector<OutcomeId>& answers,
                                             OutcomeId avoided) const {
        for (const int input : rest_.Inputs()) {
            ListRow row;
            for (int value = 0; value < rest_.CountOf(input); ++value) {
                const OutcomeId answer = answers[rest_.PlaceOf(input, value)];
                if (answer >= 0 && answer != avoided &&
                    (row.outcome < 0 || row.outcome == answer)) {
                    row.outcome = answer;
                    row.conditions[input].insert(value);
                }
            }
            if (row.outcome >= 0) {
                return row;
            }
        }
        return std::nullopt;
    }

    struct Pair {
        ListRow row;
        int rank = 0;  // of what is read last
        double share = 0;
        bool IsBetterThan(const Pair& other, Search search) const {
            return search.largest ? std::tuple(-share, rank) < std::tuple(-other.share, other.rank)
                                  : std::tuple(rank, -share) < std::tuple(other.rank, -other.share);
        }
    };

    std::optional<ListRow> RowOfTwoConditions(NodeId root, OutcomeId avoided) {
        std::optional<Pair> best;
        const std::vector<int>& inputs = rest_.Inputs();
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            // By the first one's value: what the second one's values decide.
            std::vector<std::vector<OutcomeId>> answers;
            for (int value = 0; value < rest_.CountOf(inputs[i]); ++value) {
                answers.push_back(rest_.Answers(rest_.Where(root, inputs[i], value)).where);
            }
            for (std::size_t j = i + 1; j < inputs.size(); ++j) {
                for (const std::vector<OutcomeId>& of : answers) {
                    std::optional<Pair> pair = PairOf(inputs[i], inputs[j], answers, of, avoided);
                    if (pair && (!best || pair->IsBetterThan(*best, search_))) {
                        best = std::move(pair);
                    }
                }
            }
        }
        return best ? std::optional(best->row) : std::nullopt;
    }

    // The values of the second input that decide where the first has one value, and all values of
    // the first for which they decide the same.
    std::optional<Pair> PairOf(int first, int second,
                               const std::vector<std::vector<OutcomeId>>& answers,
                               const std::vector<OutcomeId>& of, OutcomeId avoided) const {
        Pair pair;
        std::set<int>& values = pair.row.conditions[second];
        for (int value = 0; value < rest_.CountOf(second); ++value) {
            const OutcomeId answer = of[rest_.PlaceOf(second, value)];
            if (answer >= 0 && answer != avoided &&
                (pair.row.outcome < 0 || pair.row.outcome == answer)) {
                pair.row.outcome = answer;
                values.insert(value);
            }
        }
        if (pair.row.outcome < 0) {
            return std::nullopt;
        }
        std::set<int>& firsts = pair.row.conditions[first];
        for (int value = 0; value < rest_.CountOf(first); ++value) {
            bool fits = true;
            bool occurs = false;
            for (const int other : values) {
                const OutcomeId one =
                    answers[static_cast<std::size_t>(value)][rest_.PlaceOf(second, other)];
                fits = fits && (one == NEVER || one == pair.row.outcome);
                occurs = occurs || one != NEVER;
            }
            if (fits && occurs) {
                firsts.insert(value);
            }
        }
        pair.rank = rest_.Rank(second);
        pair.share = static_cast<double>(firsts.size() * values.size()) /
                     (rest_.CountOf(first) * rest_.CountOf(second));
        return pair;
    }

    // All rows for some values of what is asked first. Returns what is left.
    NodeId AddRowsOfOneBranch(NodeId root, const Conditions& under, DecisionList& list) {
        const Node node = diagram_[root];
        const NodeId child = *std::find_if(node.children.begin(), node.children.end(),
                                           [](NodeId id) { return id != NONE; });
        Conditions conditions;
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            if (node.children[value] == child) {
                conditions[node.input].insert(static_cast<int>(value));
            }
        }
        const bool isAll = std::all_of(node.children.begin(), node.children.end(),
                                       [&](NodeId id) { return id == NONE || id == child; });
        if (isAll) {
            return child;
        }
        Conditions together = under;
        together.insert(conditions.begin(), conditions.end());
        AddRows(child, together, list);
        return rest_.Without(root, conditions);
    }

    Diagram& diagram_;
    Undecided rest_;
    const Search search_;
};

// Whether nothing else than this is answered where the conditions hold.
bool AnswersOnly(const Diagram& diagram, NodeId root, const ListRow& row) {
    std::set<NodeId> seen;
    std::vector<NodeId> open = {root};
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        if (id == NONE || !seen.insert(id).second) {
            continue;
        }
        const Node& node = diagram[id];
        if (node.input < 0 && node.outcome != row.outcome) {
            return false;
        }
        const auto condition = row.conditions.find(node.input);
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            if (condition == row.conditions.end() ||
                condition->second.count(static_cast<int>(value)) != 0) {
                open.push_back(node.children[value]);
            }
        }
    }
    return true;
}

bool Agrees(const Diagram& diagram, Undecided& rest, NodeId root, const DecisionList& list,
            std::size_t from) {
    for (std::size_t i = from; i < list.size(); ++i) {
        if (!AnswersOnly(diagram, root, list[i])) {
            return false;
        }
        root = rest.Without(root, list[i].conditions);
    }
    return root == NONE;
}

std::set<OutcomeId> OutcomesOf(const Diagram& diagram, NodeId root) {
    std::set<OutcomeId> outcomes;
    for (const NodeId id : NodesOf(diagram, root)) {
        if (diagram[id].input < 0) {
            outcomes.insert(diagram[id].outcome);
        }
    }
    return outcomes;
}

// Takes out the rows without which those that follow decide the same.
void DropNeedlessRows(Diagram& diagram, const std::vector<int>& rank, NodeId root,
                      DecisionList& list) {
    Undecided rest(diagram, rank, root);
    for (std::size_t i = 0; i < list.size();) {
        if (Agrees(diagram, rest, root, list, i + 1)) {
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            root = rest.Without(root, list[i].conditions);
            ++i;
        }
    }
}

// Rows of which no two fit at once need no order: the outcome of the most stands last.
DecisionList ListOf(const std::vector<Row>& rows) {
    std::map<OutcomeId, int> counts;
    for (const Row& row : rows) {
        ++counts[row.outcome];
    }
    const auto most =
        std::max_element(counts.begin(), counts.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    DecisionList list;
    for (const Row& row : rows) {
        if (row.outcome != most->first) {
            list.push_back({row.conditions, row.outcome});
        }
    }
    list.push_back({{}, most->first});
    return list;
}

}  // namespace

std::size_t LengthOf(const DecisionList& list) {
    std::size_t length = list.size();
    for (const ListRow& row : list) {
        length += row.conditions.size();
    }
    return length;
}

DecisionList DecisionListOf(Diagram& diagram, NodeId root, const std::vector<int>& rank) {
    std::vector<OutcomeId> last = {NEVER};
    if (const std::set<OutcomeId> outcomes = OutcomesOf(diagram, root);
        outcomes.size() <= MOST_OUTCOMES_TO_TRY) {
        last.insert(last.end(), outcomes.begin(), outcomes.end());
    }
    const std::vector<Row> rows = RowsOf(diagram, root);
    if (rows.empty()) {
        return {};
    }
    DecisionList shortest = ListOf(rows);
    if (shortest.size() > MOST_ROWS_TO_TRY) {
        return shortest;
    }
    for (const OutcomeId atLast : last) {
        for (const auto& [pairs, largest] :
             {std::pair(false, false), {true, false}, {true, true}}) {
            DecisionList list = ListMaker(diagram, rank, root, {pairs, largest, atLast}).Make(root);
            DropNeedlessRows(diagram, rank, root, list);
            if (LengthOf(list) < LengthOf(shortest)) {
                shortest = std::move(list);
            }
        }
    }
    return shortest;
}

bool Agrees(Diagram& diagram, NodeId root, const std::vector<int>& rank, const DecisionList& list) {
    Undecided rest(diagram, rank, root);
    return Agrees(diagram, rest, root, list, 0);
}

}  // namespace explorer
