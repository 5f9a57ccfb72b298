#include <algorithm>

#include "table.h"
#include "tv/lazy_tv.h"

namespace explorer {

namespace {

constexpr std::size_t MOST_NODES = 60;

constexpr char STYLE[] = R"(
body{font:15px/1.45 system-ui,sans-serif;margin:0;color:#1c2430;background:#fff}
main{margin-left:19em;padding:1em 2em;max-width:75em}
nav{position:fixed;top:0;bottom:0;width:18em;overflow:auto;background:#f3f5f8;padding:1em;box-sizing:border-box;font-size:13px}
nav a{display:block;color:#23518f;text-decoration:none;padding:1px 0;overflow-wrap:anywhere}
h2{margin:2em 0 .2em;font-size:1.2em}
.function{color:#5a6675;font-family:monospace}
table{border-collapse:collapse;margin:.6em 0;width:100%}
td,th{border-top:1px solid #d9dee5;padding:.3em .6em;text-align:left;vertical-align:top}
td.outcome{font-weight:600;overflow-wrap:anywhere}
.proof{color:#3d6b3d}.trouble,.proof.missing{color:#b3261e;font-weight:600}
svg{max-width:100%;height:auto;background:#fbfcfd;border:1px solid #e3e7ec}
@media(max-width:60em){nav{position:static;width:auto}main{margin-left:0}}
@media(prefers-color-scheme:dark){body{background:#14181d;color:#dde3ea}nav{background:#1b2128}nav a{color:#8ab4f8}td,th{border-color:#303842}svg{background:#f4f6f8}}
)";

std::string Anchor(const std::string& name) {
    std::string anchor = name;
    std::replace_if(
        anchor.begin(), anchor.end(),
        [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '-'; }, '_');
    return anchor;
}

// ---------------------------------------------------------------------------------------------
// Diagrams: one column a level, from the first question on the left to the answers on the right
// ---------------------------------------------------------------------------------------------

std::string Shortened(const std::string& text, std::size_t most) {
    if (text.size() <= most) {
        return text;
    }
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;  // not inside a character
    }
    return text.substr(0, end) + "…";
}

struct Edge {
    NodeId from;
    NodeId to;
    std::string label;
};

class Drawing {
  public:
    Drawing(const Diagram& diagram, const Outcomes& outcomes, const Rule& rule)
        : diagram_(diagram), outcomes_(outcomes), rule_(rule) {}

    std::string Draw() {
        if (rule_.root == NONE || !Collect(rule_.root, 0)) {
            return "";
        }
        Place();
        std::string svg = "<svg viewBox=\"0 0 " + std::to_string(width_) + ' ' +
                          std::to_string(height_) + "\" width=\"" + std::to_string(width_) +
                          "\" role=\"img\" font-family=\"sans-serif\" font-size=\"12\">";
        for (const Edge& edge : edges_) {
            svg += DrawEdge(edge);
        }
        for (const auto& [id, level] : levels_) {
            svg += DrawNode(id);
        }
        return svg + "</svg>\n";
    }

  private:
    static constexpr int COLUMN = 300;
    static constexpr int BOX = 170;
    static constexpr int LINE = 44;

    // False when there are too many nodes.
    bool Collect(NodeId id, int level) {
        const auto known = levels_.find(id);
        if (known != levels_.end() && known->second >= level) {
            return true;
        }
        const bool isNew = known == levels_.end();
        levels_[id] = level;
        if (levels_.size() > MOST_NODES) {
            return false;
        }
        const Node& node = diagram_[id];
        std::map<NodeId, std::vector<std::string>> targets;
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            if (node.children[value] != NONE) {
                targets[node.children[value]].push_back(ColumnOf(node).values[value]);
            }
        }
        for (const auto& [target, values] : targets) {
            if (isNew) {
                edges_.push_back({id, target, Label(values, node.children.size())});
            }
            if (!Collect(target, level + 1)) {
                return false;
            }
        }
        return true;
    }

    static std::string Label(const std::vector<std::string>& values, std::size_t all) {
        std::string label = values.front();
        for (std::size_t i = 1; i < values.size() && label.size() < 26; ++i) {
            label += ", " + values[i];
        }
        const bool isRest = values.size() > 2 && values.size() * 2 > all;
        return isRest ? "otherwise" : Shortened(label, 26);
    }

    const Column& ColumnOf(const Node& node) const {
        return rule_.columns[static_cast<std::size_t>(node.input)];
    }

    void Place() {
        int last = 0;
        for (const auto& [id, level] : levels_) {
            last = std::max(last, level);
        }
        std::map<int, int> used;
        // Answers stand in the last column, whatever the level at which they are found.
        for (auto& [id, level] : levels_) {
            level = diagram_[id].input < 0 ? last : level;
        }
        for (const Edge& edge : edges_) {
            PlaceNode(edge.from, used);
            PlaceNode(edge.to, used);
        }
        PlaceNode(rule_.root, used);
        int most = 0;
        for (const auto& [level, count] : used) {
            most = std::max(most, count);
        }
        for (auto& [id, place] : places_) {  // columns are centred
            place += (most - used[levels_[id]]) * LINE / 2;
        }
        width_ = (last + 1) * COLUMN;
        height_ = most * LINE + 16;
    }

    void PlaceNode(NodeId id, std::map<int, int>& used) {
        if (places_.count(id) == 0) {
            places_[id] = used[levels_[id]]++ * LINE + 8;
        }
    }

    std::string DrawNode(NodeId id) const {
        const Node& node = diagram_[id];
        const bool isAnswer = node.input < 0;
        std::string text;
        if (isAnswer) {
            for (const RecordEntry& entry : ReadRecord(outcomes_[node.outcome])) {
                text += (text.empty() ? "" : "; ") + ToText(entry);
            }
            text = text.empty() ? "nothing happens" : text;
        } else {
            text = ColumnOf(node).name;
        }
        const int x = levels_.at(id) * COLUMN + 8;
        const int y = places_.at(id);
        const int width = isAnswer ? COLUMN - 24 : BOX;
        return "<g><title>" + EscapeHtml(text) + "</title><rect x=\"" + std::to_string(x) +
               "\" y=\"" + std::to_string(y) + "\" width=\"" + std::to_string(width) +
               "\" height=\"30\" rx=\"6\" fill=\"" + (isAnswer ? "#dff0e0" : "#e4ecf8") +
               "\" stroke=\"" + (isAnswer ? "#5f9b63" : "#6c8ebf") + "\"/><text x=\"" +
               std::to_string(x + 8) + "\" y=\"" + std::to_string(y + 19) + "\" fill=\"#1c2430\">" +
               EscapeHtml(Shortened(text, isAnswer ? 42 : 25)) + "</text></g>\n";
    }

    std::string DrawEdge(const Edge& edge) const {
        const int x1 = levels_.at(edge.from) * COLUMN + 8 + BOX;
        const int y1 = places_.at(edge.from) + 15;
        const int x2 = levels_.at(edge.to) * COLUMN + 8;
        const int y2 = places_.at(edge.to) + 15;
        const int bend = x1 + (COLUMN - BOX) / 2;
        const std::string path = "M" + std::to_string(x1) + ' ' + std::to_string(y1) + " C" +
                                 std::to_string(bend) + ' ' + std::to_string(y1) + ' ' +
                                 std::to_string(x2 - 60) + ' ' + std::to_string(y2) + ' ' +
                                 std::to_string(x2) + ' ' + std::to_string(y2);
        // The label stands where the edge arrives in its first column.
        const int labelX = x1 + 62;
        const int labelY = y1 + (y2 - y1) * (x2 - x1 <= COLUMN ? 2 : 1) / 4 - 3;
        return "<path d=\"" + path + "\" fill=\"none\" stroke=\"#8a97a8\"/><text x=\"" +
               std::to_string(labelX) + "\" y=\"" + std::to_string(labelY) +
               "\" text-anchor=\"middle\" font-size=\"10.5\" fill=\"#44505e\" "
               "paint-order=\"stroke\" "
               "stroke=\"#fbfcfd\" stroke-width=\"3\">" +
               EscapeHtml(edge.label) + "</text>\n";
    }

    const Diagram& diagram_;
    const Outcomes& outcomes_;
    const Rule& rule_;
    std::map<NodeId, int> levels_;
    std::map<NodeId, int> places_;
    std::vector<Edge> edges_;
    int width_ = 0;
    int height_ = 0;
};

std::string TableSection(const Table& table, const Exploration& exploration) {
    std::string html =
        "<h2 id=\"" + Anchor(table.name) + "\">" + EscapeHtml(table.name) + "</h2>\n";
    if (!table.function.empty()) {
        html += "<p class=\"function\">" + EscapeHtml(table.function) + "</p>\n";
    }
    const std::string svg = DiagramAsSvg(exploration.diagram, exploration.outcomes, table.rule);
    html += svg.empty()
                ? "<p>The rule has too many branches for a diagram; the table is complete.</p>\n"
                : svg;
    html += "<table><tr><th>#</th><th>When</th><th>Then</th></tr>\n";
    std::size_t number = 0;
    for (const TableRow& row : table.rows) {
        html += "<tr><td>" + std::to_string(++number) + "</td><td>";
        for (const Condition& condition : row.conditions) {
            html += "<div title=\"" + EscapeHtml(condition.column->source) + "\">" +
                    EscapeHtml(ToText(condition)) + "</div>";
        }
        html += row.conditions.empty() ? "always" : "";
        html += "</td><td class=\"outcome\">";
        for (const std::string& line : row.outcome) {
            html += "<div>" + EscapeHtml(line) + "</div>";
        }
        html += row.outcome.empty() ? "nothing happens" : "";
        html += "</td></tr>\n";
    }
    html += "</table>\n<p class=\"proof" + std::string(table.complete ? "" : " missing") + "\">" +
            EscapeHtml(ProofOf(table)) + "</p>\n";
    for (const std::string& trouble : table.troubles) {
        html += "<p class=\"trouble\">" + EscapeHtml(trouble) + "</p>\n";
    }
    return html;
}

}  // namespace

std::string EscapeHtml(const std::string& text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

std::string DiagramAsSvg(const Diagram& diagram, const Outcomes& outcomes, const Rule& rule) {
    return Drawing(diagram, outcomes, rule).Draw();
}

std::string TablesAsHtml(const std::vector<Table>& tables, const Exploration& exploration) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
        "<meta name=\"viewport\" content=\"width=device-width\"><title>Rules of the Voice "
        "page</title>"
        "<style>" +
        std::string(STYLE) + "</style></head><body><nav>\n";
    for (const Table& table : tables) {
        html += "<a href=\"#" + Anchor(table.name) + "\">" + EscapeHtml(table.name) + "</a>\n";
    }
    html +=
        "</nav><main><h1>Rules of the Voice page</h1>\n<p>Every rule over every state that its "
        "inputs can have. Rest the pointer on a condition to see where it is read.</p>\n";
    for (const Table& table : tables) {
        html += TableSection(table, exploration);
    }
    return html + "</main></body></html>\n";
}

}  // namespace explorer
