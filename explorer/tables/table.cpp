#include "table.h"

#include <algorithm>

#include "explorer/tv/lazy_tv.h"

namespace explorer {

namespace {

std::vector<std::string> LinesOf(const std::string& record) {
    std::vector<std::string> lines;
    for (const RecordEntry& entry : ReadRecord(record)) {
        lines.push_back(ToText(entry));
    }
    return lines;
}

std::string Join(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + word;
    }
    return text;
}

}  // namespace

void MakeRows(const Diagram& diagram, const Outcomes& outcomes, Table& table) {
    const std::map<int, std::set<int>> occurring = OccurringValues(diagram, table.rule.root);
    for (const Row& row : RowsOf(diagram, table.rule.root)) {
        TableRow out;
        // Facts stand first: they are what a reader knows of a TV.
        for (const bool facts : {true, false}) {
            for (const auto& [input, values] : row.conditions) {
                const Column& column = table.rule.columns[static_cast<std::size_t>(input)];
                const bool isFact = column.source.rfind("setting db/menu/voice/mva_list", 0) == 0 ||
                                    column.name == "an assistant is chosen";
                if (isFact != facts) {
                    continue;
                }
                Condition condition;
                condition.column = &column;
                for (const int value : occurring.at(input)) {
                    const std::string& words = column.values[static_cast<std::size_t>(value)];
                    (values.count(value) != 0 ? condition.values : condition.others)
                        .push_back(words);
                }
                out.conditions.push_back(condition);
            }
        }
        out.outcome = LinesOf(outcomes[row.outcome]);
        table.rows.push_back(out);
    }
}

Table MakeTable(const Inputs& inputs, Exploration& exploration, const QuestionResult& result) {
    Table table;
    table.name = result.question->name;
    table.function = result.question->function;
    table.paths = result.Paths();
    for (const Coverage& part : result.coverage) {
        table.states.Add(part.States());
    }
    table.policies = result.roots.size();
    table.complete = result.IsComplete();
    for (const Trouble& trouble : result.troubles) {
        table.troubles.push_back(
            trouble.what +
            " (policy: " + inputs.policies[static_cast<std::size_t>(trouble.policy)].name + ")");
    }
    table.rule = MakeRule(inputs, exploration, result);
    return table;
}

std::string ToText(const Condition& condition) {
    const bool excludes = condition.others.size() < condition.values.size();
    return condition.column->name + ": " +
           (excludes ? "not " + Join(condition.others, ", not ") : Join(condition.values, " or "));
}

std::string ProofOf(const Table& table) {
    const std::string counts = BigNumber(table.paths).ToString() + " paths stand for " +
                               table.states.ToString() + " states under " +
                               std::to_string(table.policies) + " policies: ";
    return counts + (table.complete ? "complete" : "NOT COMPLETE");
}

std::string TablesAsText(const std::vector<Table>& tables) {
    std::string text;
    for (const Table& table : tables) {
        text += table.name + (table.function.empty() ? "" : "  (" + table.function + ")") + "\n";
        std::size_t number = 0;
        for (const TableRow& row : table.rows) {
            const std::string head = std::to_string(++number);
            text += std::string(head.size() < 4 ? 4 - head.size() : 0, ' ') + head + "  ";
            std::vector<std::string> conditions;
            for (const Condition& condition : row.conditions) {
                conditions.push_back(ToText(condition));
            }
            text += conditions.empty() ? "always" : Join(conditions, "\n      and ");
            text += "\n      -> " +
                    (row.outcome.empty() ? "nothing happens" : Join(row.outcome, "\n         ")) +
                    "\n";
        }
        text += "  " + ProofOf(table) + "\n";
        for (const std::string& trouble : table.troubles) {
            text += "  TROUBLE: " + trouble + "\n";
        }
        text += "\n";
    }
    return text;
}

namespace {

constexpr std::size_t MOST_ROWS_ON_A_PAGE = 160;

// Bars would end a cell, line ends a row.
std::string Cell(const std::string& text) {
    std::string cell;
    for (const char c : text) {
        cell += c == '|' ? "\\|" : c == '\n' ? " " : c == '<' ? "&lt;" : std::string(1, c);
    }
    return cell;
}

}  // namespace

std::string TablesAsMarkdown(const std::vector<Table>& tables, const std::string& title) {
    std::string text = "# " + title + "\n";
    for (const Table& table : tables) {
        text += "\n## " + table.name + "\n\n";
        text += table.function.empty() ? "" : "Function: `" + table.function + "`\n\n";
        if (table.rows.size() > MOST_ROWS_ON_A_PAGE) {
            text += BigNumber(table.rows.size()).ToString() + " rows: see `vtv explore table " +
                    table.name + "`.\n\n" + ProofOf(table) + ".\n";
            continue;
        }
        text += "| # | When | Then |\n|---|---|---|\n";
        std::size_t number = 0;
        for (const TableRow& row : table.rows) {
            std::vector<std::string> conditions;
            for (const Condition& condition : row.conditions) {
                conditions.push_back(Cell(ToText(condition)));
            }
            std::vector<std::string> outcome;
            for (const std::string& line : row.outcome) {
                outcome.push_back(Cell(line));
            }
            text += "| " + std::to_string(++number) + " | " +
                    (conditions.empty() ? "always" : Join(conditions, "<br>")) + " | " +
                    (outcome.empty() ? "nothing happens" : Join(outcome, "<br>")) + " |\n";
        }
        text += "\n" + ProofOf(table) + ".\n";
    }
    return text;
}

}  // namespace explorer
