// Policies and the current assistant in a reader's words. A rule seldom depends on a whole policy;
// it depends on facts such as "several assistants are offered" or "the current assistant is Orvik".
// Which facts a question depends on is found out, not assumed: they are taken only when all
// policies and assistants with the same facts lead to exactly the same answers.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/engine/decision_list.h"

namespace explorer {

// The setting that policies are published in, as the source of a fact.
inline constexpr char POLICY_SETTING[] = "setting db/menu/voice/mva_list";

// Something that a table's condition is about: an input, or a fact.
struct Column {
    std::string name;
    std::string source;  // "setting db/...", "policy", ...
    std::vector<std::string> values;
    std::vector<std::optional<int>> numbers;  // what a value is, where its words are just that
};

// One question's answers over facts and inputs.
struct Rule {
    std::vector<Column> columns;  // by the number that the diagram's nodes ask for
    NodeId root = NONE;
    std::vector<int> rank;  // of the columns: in the order of the reads
    DecisionList rows;
};

Rule MakeRule(const Inputs& inputs, Exploration& exploration, const QuestionResult& result);
}  // namespace explorer
