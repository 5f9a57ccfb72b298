#include "table.h"

#include <algorithm>

#include "explorer/tv/record.h"
#include "program/counted.h"

namespace explorer {

std::string Join(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + word;
    }
    return text;
}

namespace {

// What is hard to read behind a "not".
bool IsNegative(const std::string& words) {
    for (const char* begin : {"not ", "no ", "fails"}) {
        if (words.rfind(begin, 0) == 0) {
            return true;
        }
    }
    return words == "none";
}

// "agreed or unknown", "neither 1 nor 2", "above 0": of a column's values those for which a row
// fits, and the others that occur.
struct Choice {
    const Column& column;
    std::vector<int> values;
    std::vector<int> others;

    std::string ToText() const {
        if (const std::string range = RangeOf(values); !range.empty()) {
            return range;
        }
        if (const std::string range = RangeOf(others); !range.empty()) {
            return "not " + range;
        }
        const std::vector<std::string> excluded = WordsOf(others);
        const bool isReadable = std::none_of(excluded.begin(), excluded.end(), IsNegative);
        if (isReadable && !others.empty() && others.size() < values.size()) {
            return (others.size() == 1 ? "not " : "neither ") + Join(excluded, " nor ");
        }
        return Join(WordsOf(values), " or ");
    }

    std::vector<std::string> WordsOf(const std::vector<int>& some) const {
        std::vector<std::string> words;
        for (const int value : some) {
            words.push_back(column.values[static_cast<std::size_t>(value)]);
        }
        return words;
    }

  private:
    // Numbers that lie together above or below all others that occur; empty for other values.
    std::string RangeOf(const std::vector<int>& some) const {
        const std::vector<int>& rest = &some == &values ? others : values;
        std::vector<int> in;
        std::vector<int> out;
        for (const int value : some) {
            const std::optional<int> number = column.numbers[static_cast<std::size_t>(value)];
            if (!number) {
                return "";
            }
            in.push_back(*number);
        }
        for (const int value : rest) {
            if (const auto number = column.numbers[static_cast<std::size_t>(value)]) {
                out.push_back(*number);
            }
        }
        if (in.size() < 2 || out.empty()) {
            return "";
        }
        const auto [least, most] = std::minmax_element(in.begin(), in.end());
        const auto [below, above] = std::minmax_element(out.begin(), out.end());
        return *least > *above  ? "above " + std::to_string(*above)
               : *most < *below ? "below " + std::to_string(*below)
                                : "";
    }
};

}  // namespace

namespace {

TableRow RowOf(const ListRow& row, const Rule& rule,
               const std::map<int, std::set<int>>& occurring) {
    std::map<int, int> inputs;  // by rank
    for (const auto& [input, values] : row.conditions) {
        inputs[rule.rank[static_cast<std::size_t>(input)]] = input;
    }
    TableRow out;
    for (const auto& [rank, input] : inputs) {
        const std::set<int>& values = row.conditions.at(input);
        Choice choice{rule.columns[static_cast<std::size_t>(input)], {}, {}};
        for (const int value : occurring.at(input)) {
            (values.count(value) != 0 ? choice.values : choice.others).push_back(value);
        }
        out.conditions.push_back({&choice.column, choice.WordsOf(choice.values),
                                  choice.column.name + ": " + choice.ToText()});
    }
    return out;
}

// "if (a || b)": rows of one condition that follow each other and end alike are one row.
bool IsOneMoreCase(const TableRow& row, const TableRow& next) {
    return (row.isAny || row.conditions.size() == 1) && next.conditions.size() == 1 &&
           row.outcome == next.outcome;
}

}  // namespace

void MakeRows(const Diagram& diagram, const Outcomes& outcomes, Table& table) {
    const std::map<int, std::set<int>> occurring = OccurringValues(diagram, table.rule.root);
    for (const ListRow& row : table.rule.rows) {
        TableRow next = RowOf(row, table.rule, occurring);
        next.outcome = TextsOf(ReadRecord(outcomes[row.outcome]));
        if (!table.rows.empty() && IsOneMoreCase(table.rows.back(), next)) {
            table.rows.back().conditions.push_back(next.conditions.front());
            table.rows.back().isAny = true;
        } else {
            table.rows.push_back(std::move(next));
        }
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
    if (!Agrees(exploration.diagram, table.rule.root, table.rule.rank, table.rule.rows)) {
        table.complete = false;
        table.troubles.emplace_back("the rows do not decide as the provider does on every path");
    }
    return table;
}

std::vector<std::string> ConditionsOf(const Table& table, const TableRow& row) {
    std::vector<std::string> words;
    for (const Condition& condition : row.conditions) {
        words.push_back(condition.words);
    }
    if (words.empty()) {
        words.emplace_back(table.rows.size() == 1 ? "always" : "otherwise");
    }
    return words;
}

std::string JoinedBy(const TableRow& row) {
    return row.isAny ? "or" : "and";
}

std::string ProofOf(const Table& table) {
    const std::string counts =
        program::Counted(BigNumber(table.paths).ToString(), "path stands", "paths stand") +
        " for " + program::Counted(table.states.ToString(), "state", "states") + " under " +
        program::Counted(std::to_string(table.policies), "policy", "policies") + ": ";
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
            text += Join(ConditionsOf(table, row), ("\n      " + JoinedBy(row) + " ").c_str());
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
            for (const std::string& words : ConditionsOf(table, row)) {
                conditions.push_back(Cell(words));
            }
            std::vector<std::string> outcome;
            for (const std::string& line : row.outcome) {
                outcome.push_back(Cell(line));
            }
            text += "| " + std::to_string(++number) + " | " +
                    Join(conditions, ("<br>" + JoinedBy(row) + " ").c_str()) + " | " +
                    (outcome.empty() ? "nothing happens" : Join(outcome, "<br>")) + " |\n";
        }
        text += "\n" + ProofOf(table) + ".\n";
    }
    return text;
}

}  // namespace explorer
