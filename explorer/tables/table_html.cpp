#include <algorithm>

#include "explorer/tv/record.h"
#include "table.h"

namespace explorer {

namespace {

constexpr std::size_t MOST_BOXES = 40;
constexpr int MOST_LEVELS = 4;  // what a page shows without making the letters small

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
.diagram{background:#fbfcfd;border:1px solid #e3e7ec}
svg{display:block;max-width:100%;height:auto}
@media(max-width:60em){nav{position:static;width:auto}main{margin-left:0}}
@media(prefers-color-scheme:dark){body{background:#14181d;color:#dde3ea}nav{background:#1b2128}nav a{color:#8ab4f8}td,th{border-color:#303842}.diagram{background:#f4f6f8}}
)";

std::string Anchor(const std::string& name) {
    std::string anchor = name;
    std::replace_if(
        anchor.begin(), anchor.end(),
        [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '-'; }, '_');
    return anchor;
}

// ---------------------------------------------------------------------------------------------
// Diagrams: one column a level, from the first question on the left. A box is a question with one
// line for each answer to it; a line says what comes of it or leads to the next question.
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

struct Line {
    std::string label;
    NodeId target;
};

struct QuestionBox {
    int level = -1;
    int x = 0;
    int y = 0;
    std::vector<Line> lines;
};

class Drawing {
  public:
    Drawing(const Diagram& diagram, const Outcomes& outcomes, const Rule& rule)
        : diagram_(diagram), outcomes_(outcomes), rule_(rule) {}

    std::string Draw() {
        if (rule_.root == NONE || IsAnswer(rule_.root)) {
            return "";  // there is nothing to decide
        }
        Collect();
        Level(rule_.root, 0);
        LeaveOutWhatIsFar();
        Place();
        std::string svg = "<svg viewBox=\"0 0 " + std::to_string(width_) + ' ' +
                          std::to_string(height_) + "\" width=\"" + std::to_string(width_) +
                          "\" role=\"img\" font-family=\"sans-serif\" font-size=\"12\">";
        for (const NodeId id : order_) {
            svg += DrawEdges(boxes_.at(id));
        }
        for (const NodeId id : order_) {
            svg += DrawBox(id);
        }
        return svg + "</svg>\n";
    }

    bool IsWhole() const { return isWhole_; }

  private:
    static constexpr int WIDTH = 310;
    static constexpr int COLUMN = 380;
    static constexpr int HEADING = 26;
    static constexpr int LINE = 19;
    static constexpr int GAP = 16;

    bool IsAnswer(NodeId id) const { return diagram_[id].input < 0; }

    const Column& ColumnOf(const Node& node) const {
        return rule_.columns[static_cast<std::size_t>(node.input)];
    }

    // The questions nearest to the first one.
    void Collect() {
        order_ = {rule_.root};
        boxes_[rule_.root];
        for (std::size_t i = 0; i < order_.size(); ++i) {
            const NodeId id = order_[i];
            boxes_[id].lines = LinesOf(diagram_[id]);
            for (const Line& line : boxes_[id].lines) {
                if (IsAnswer(line.target) || boxes_.count(line.target) != 0) {
                    continue;
                }
                if (boxes_.size() == MOST_BOXES) {
                    isWhole_ = false;
                    continue;
                }
                boxes_[line.target];
                order_.push_back(line.target);
            }
        }
    }

    std::vector<Line> LinesOf(const Node& node) const {
        std::vector<Line> lines;
        std::vector<std::size_t> counts;
        for (std::size_t value = 0; value < node.children.size(); ++value) {
            const NodeId target = node.children[value];
            if (target == NONE) {
                continue;
            }
            const auto same = std::find_if(lines.begin(), lines.end(),
                                           [&](const Line& line) { return line.target == target; });
            const std::string& words = ColumnOf(node).values[value];
            if (same == lines.end()) {
                lines.push_back({words, target});
                counts.push_back(1);
            } else {
                same->label += ", " + words;
                ++counts[static_cast<std::size_t>(same - lines.begin())];
            }
        }
        // What most values lead to is the rest.
        const auto most = std::max_element(counts.begin(), counts.end());
        if (most != counts.end() && *most > 2 && lines.size() > 1) {
            const auto at = most - counts.begin();
            Line rest = lines[static_cast<std::size_t>(at)];
            rest.label = "otherwise";
            lines.erase(lines.begin() + at);
            lines.push_back(rest);
        }
        return lines;
    }

    // A box stands right of all that lead to it.
    void Level(NodeId id, int level) {
        QuestionBox& box = boxes_[id];
        if (level <= box.level) {
            return;
        }
        box.level = level;
        for (const Line& line : box.lines) {
            if (boxes_.count(line.target) != 0) {
                Level(line.target, level + 1);
            }
        }
    }

    void LeaveOutWhatIsFar() {
        const auto far = std::remove_if(order_.begin(), order_.end(), [this](NodeId id) {
            return boxes_.at(id).level >= MOST_LEVELS;
        });
        isWhole_ = isWhole_ && far == order_.end();
        order_.erase(far, order_.end());
        for (auto box = boxes_.begin(); box != boxes_.end();) {
            box = box->second.level >= MOST_LEVELS ? boxes_.erase(box) : std::next(box);
        }
    }

    static int HeightOf(const QuestionBox& box) {
        return HEADING + LINE * static_cast<int>(box.lines.size()) + 4;
    }

    void Place() {
        std::map<int, int> used;
        for (const NodeId id : order_) {
            QuestionBox& box = boxes_[id];
            box.x = box.level * COLUMN + 8;
            box.y = used[box.level] + 8;
            used[box.level] += HeightOf(box) + GAP;
            width_ = std::max(width_, box.x + WIDTH + 8);
            height_ = std::max(height_, used[box.level]);
        }
        for (auto& [id, box] : boxes_) {  // columns are centred
            box.y += (height_ - used[box.level]) / 2;
        }
    }

    std::string AnswerOf(NodeId id) const {
        const std::string text = Join(TextsOf(ReadRecord(outcomes_[diagram_[id].outcome])), "; ");
        return text.empty() ? "nothing happens" : text;
    }

    static std::string Text(int x, int y, const std::string& attributes, const std::string& text) {
        return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\"" +
               attributes + ">" + EscapeHtml(text) + "</text>";
    }

    std::string DrawBox(NodeId id) const {
        const QuestionBox& box = boxes_.at(id);
        std::string svg = "<g><rect x=\"" + std::to_string(box.x) + "\" y=\"" +
                          std::to_string(box.y) + "\" width=\"" + std::to_string(WIDTH) +
                          "\" height=\"" + std::to_string(HeightOf(box)) +
                          "\" rx=\"6\" fill=\"#e9eff9\" stroke=\"#6c8ebf\"/>" +
                          Text(box.x + 8, box.y + 17, " font-weight=\"bold\" fill=\"#1c2430\"",
                               Shortened(ColumnOf(diagram_[id]).name, 42)) +
                          "</g>\n";
        int y = box.y + HEADING + 12;
        for (const Line& line : box.lines) {
            svg += DrawLine(box.x, y, line);
            y += LINE;
        }
        return svg;
    }

    std::string DrawLine(int x, int y, const Line& line) const {
        const bool isAnswer = IsAnswer(line.target);
        const bool isDrawn = boxes_.count(line.target) != 0;
        const std::string answer = isAnswer  ? AnswerOf(line.target)
                                   : isDrawn ? ""
                                             : "see the table";
        // Plain letters are about 6.5 wide, bold ones 7.8.
        const std::size_t labelRoom = answer.empty() ? 44 : answer.size() < 14 ? 30 : 18;
        const std::string label = Shortened(line.label, labelRoom);
        const std::size_t answerRoom = (WIDTH * 10 - 240 - 65 * label.size()) / 78;
        return "<g><title>" + EscapeHtml(line.label + (answer.empty() ? "" : ": " + answer)) +
               "</title>" + Text(x + 8, y, " fill=\"#44505e\"", label) +
               (answer.empty() ? ""
                               : Text(x + WIDTH - 8, y,
                                      std::string(" text-anchor=\"end\" font-weight=\"bold\"") +
                                          " fill=\"" + (isAnswer ? "#2c6b31" : "#8a5a00") + "\"",
                                      Shortened(answer, answerRoom))) +
               "</g>\n";
    }

    std::string DrawEdges(const QuestionBox& box) const {
        std::string svg;
        int y1 = box.y + HEADING + 8;
        for (const Line& line : box.lines) {
            const auto target = boxes_.find(line.target);
            if (target != boxes_.end()) {
                const int x1 = box.x + WIDTH;
                const int x2 = target->second.x;
                const int y2 = target->second.y + 13;
                const auto point = [](int x, int y) {
                    return std::to_string(x) + ' ' + std::to_string(y);
                };
                svg += "<path d=\"M" + point(x1, y1) + " C" + point(x1 + 45, y1) + ' ' +
                       point(x2 - 45, y2) + ' ' + point(x2, y2) +
                       "\" fill=\"none\" stroke=\"#6c8ebf\" stroke-width=\"1.3\"/>\n";
            }
            y1 += LINE;
        }
        return svg;
    }

    const Diagram& diagram_;
    const Outcomes& outcomes_;
    const Rule& rule_;
    std::vector<NodeId> order_;  // as they were found
    std::map<NodeId, QuestionBox> boxes_;
    bool isWhole_ = true;
    int width_ = 0;
    int height_ = 0;
};

std::string TableSection(const Table& table, const Exploration& exploration) {
    std::string html =
        "<h2 id=\"" + Anchor(table.name) + "\">" + EscapeHtml(table.name) + "</h2>\n";
    if (!table.function.empty()) {
        html += "<p class=\"function\">" + EscapeHtml(table.function) + "</p>\n";
    }
    Drawing drawing(exploration.diagram, exploration.outcomes, table.rule);
    const std::string svg = drawing.Draw();
    html += svg.empty() ? "" : "<div class=\"diagram\">" + svg + "</div>\n";
    if (!drawing.IsWhole()) {
        html += "<p>The diagram shows the first questions; the table is complete.</p>\n";
    }
    html += "<table><tr><th>#</th><th>When</th><th>Then</th></tr>\n";
    std::size_t number = 0;
    for (const TableRow& row : table.rows) {
        html += "<tr><td>" + std::to_string(++number) + "</td><td>";
        for (const Condition& condition : row.conditions) {
            html += "<div title=\"" + EscapeHtml(condition.column->source) + "\">" +
                    (&condition == &row.conditions.front() ? "" : JoinedBy(row) + " ") +
                    EscapeHtml(condition.words) + "</div>";
        }
        html += row.conditions.empty() ? ConditionsOf(table, row).front() : "";
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
