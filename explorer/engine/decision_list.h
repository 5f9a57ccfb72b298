// A diagram as a list of rows, of which the first that fits decides: as a reader tells a rule.
#pragma once

#include "diagram.h"

namespace explorer {

// For each input that it names the values for which the row fits. The last row of a list names
// none.
struct ListRow {
    std::map<int, std::set<int>> conditions;
    OutcomeId outcome = -1;
};
using DecisionList = std::vector<ListRow>;

// Its rows and conditions: what there is to read.
std::size_t LengthOf(const DecisionList& list);

// A short list, not the shortest that there is. Rows that are as short as each other stand in the
// order of the rank; the diagram is ordered by it. Empty for NONE.
DecisionList DecisionListOf(Diagram& diagram, NodeId root, const std::vector<int>& rank);

// Whether the list decides as the diagram does, on every path of it.
bool Agrees(Diagram& diagram, NodeId root, const std::vector<int>& rank, const DecisionList& list);

}  // namespace explorer
