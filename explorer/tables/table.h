// Decision tables: each question's conditions and outcomes, and the proof that none is missing.
#pragma once

#include <string>
#include <vector>

#include "facts.h"

namespace explorer {

// One cell of a row: an input or fact and the values for which the row fits.
struct Condition {
    const Column* column = nullptr;
    std::vector<std::string> values;
    std::string words;  // "terms: agreed", "far-field type: above 0"
};

// The first row that fits decides. The last one has no conditions.
struct TableRow {
    std::vector<Condition> conditions;
    bool isAny = false;                // one of the conditions is enough
    std::vector<std::string> outcome;  // one line each; empty: nothing happens
};

struct Table {
    std::string name;
    std::string function;
    std::vector<TableRow> rows;
    std::uint64_t paths = 0;
    BigNumber states;
    std::size_t policies = 0;
    bool complete = false;
    std::vector<std::string> troubles;
    Rule rule;
};

// The table borrows the rule's columns: keep it where it is.
Table MakeTable(const Inputs& inputs, Exploration& exploration, const QuestionResult& result);
void MakeRows(const Diagram& diagram, const Outcomes& outcomes, Table& table);

// What stands for a row's conditions: their words, "otherwise", or "always".
std::vector<std::string> ConditionsOf(const Table& table, const TableRow& row);
// What joins them: "and" or "or".
std::string JoinedBy(const TableRow& row);
// The line beneath a table.
std::string ProofOf(const Table& table);

std::string TablesAsText(const std::vector<Table>& tables);
std::string TablesAsMarkdown(const std::vector<Table>& tables, const std::string& title);
// With what a part says of itself, unless that is null.
std::string TablesAsJson(const std::vector<Table>& tables, const Json::Value& part = {});
// One page that needs nothing else, with a diagram for each table.
std::string TablesAsHtml(const std::vector<Table>& tables, const Exploration& exploration);
std::string EscapeHtml(const std::string& text);
std::string Join(const std::vector<std::string>& words, const char* separator = ", ");

struct TableOptions : CommonOptions {
    std::vector<std::string> names;  // items, keys, functions, questions; empty: everything
    std::string output;              // file; empty: standard output
    std::string docs;  // folder: writes one page an item and an index, as docs/rules has them
};
// Returns the exit code.
int TableMain(const TableOptions& options);

}  // namespace explorer
