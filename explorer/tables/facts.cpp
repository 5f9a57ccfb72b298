#include "facts.h"

#include <algorithm>
#include <numeric>

#include "explorer/tv/policy.h"

namespace explorer {

namespace {

// What a fact is asked about.
struct Situation {
    const Policy& policy;
    const PolicyState& state;
    const Value& current;
    const Question& question;

    std::string AppId() const { return current.kind == Value::Kind::kText ? current.text : ""; }
};

std::string Offered(const Situation& now) {
    const std::size_t count = now.state.list.size();
    return count == 0 ? "none" : count == 1 ? "one" : "several";
}

std::string ListedAs(const Situation& now) {
    const Assistant* assistant = now.state.Find(now.AppId());
    return assistant == nullptr ? "not listed" : assistant->id;
}

std::string Kind(const Situation& now) {
    const std::string kind = now.state.KindOf(now.AppId());
    return kind.empty() ? "none" : kind;
}

std::string FarField(const Situation& now) {
    const Assistant* assistant = now.state.Find(now.AppId());
    return assistant != nullptr && assistant->farField ? "yes" : "no";
}

std::string IsChosen(const Situation& now) {
    return now.AppId().empty() ? "no" : "yes";
}

std::string Number(const Situation& now) {
    const Assistant* assistant = now.state.Find(now.AppId());
    return assistant == nullptr ? "not listed" : std::to_string(assistant->order);
}

std::string NameOf(const Situation& now, const std::string& kind) {
    for (const Assistant& assistant : now.state.list) {
        if (now.state.KindOf(assistant.appId) == kind) {
            return assistant.name.empty() ? "empty" : assistant.name;
        }
    }
    return "not listed";
}

std::string AlexaName(const Situation& now) {
    return NameOf(now, "ALEXA");
}

std::string GoogleName(const Situation& now) {
    return NameOf(now, "GVA");
}

std::string SaluteName(const Situation& now) {
    return NameOf(now, "SBER");
}

std::string Chosen(const Situation& now) {
    for (const Assistant& assistant : now.state.list) {
        if (assistant.order == now.question.value) {
            const std::string kind = now.state.KindOf(assistant.appId);
            return assistant.id + (kind == assistant.id ? "" : " (kind " + kind + ")");
        }
    }
    return "none";
}

std::string AppIdText(const Situation& now) {
    return now.current.words;
}

std::string PolicyName(const Situation& now) {
    return now.policy.name;
}

struct Fact {
    const char* name;
    const char* source;
    std::string (*ask)(const Situation&);
};

constexpr char BOTH[] =
    "setting db/menu/voice/mva_list and setting db/multi-assistant/default_assistant_appid";
constexpr char CURRENT[] = "setting db/multi-assistant/default_assistant_appid";

// From the simplest to what is only taken when nothing simpler explains the answers.
constexpr Fact FACTS[] = {
    {"assistants offered", POLICY_SETTING, Offered},
    {"an assistant is chosen", CURRENT, IsChosen},
    {"current assistant is listed as", BOTH, ListedAs},
    {"current assistant's kind", BOTH, Kind},
    {"its far-field flag", BOTH, FarField},
    {"its number", BOTH, Number},
    {"Alexa's name", POLICY_SETTING, AlexaName},
    {"Google's name", POLICY_SETTING, GoogleName},
    {"Salute's name", POLICY_SETTING, SaluteName},
    {"the chosen assistant", POLICY_SETTING, Chosen},
    {"current application", CURRENT, AppIdText},
    {"policy", POLICY_SETTING, PolicyName},
};
constexpr std::size_t FACT_COUNT = std::size(FACTS);

// One policy with one current assistant: what is the case, and what then is answered.
struct Point {
    std::vector<std::string> facts;
    NodeId answer = NONE;
};

// Whether points with the same facts have the same answer.
bool Explains(const std::vector<Point>& points, const std::vector<bool>& taken) {
    std::map<std::vector<std::string>, NodeId> answers;
    for (const Point& point : points) {
        std::vector<std::string> key;
        for (std::size_t i = 0; i < FACT_COUNT; ++i) {
            if (taken[i]) {
                key.push_back(point.facts[i]);
            }
        }
        if (answers.emplace(key, point.answer).first->second != point.answer) {
            return false;
        }
    }
    return true;
}

std::vector<bool> FewestFacts(const std::vector<Point>& points) {
    std::vector<bool> taken(FACT_COUNT, true);
    for (std::size_t i = FACT_COUNT; i-- > 0;) {
        taken[i] = false;
        taken[i] = !Explains(points, taken);
    }
    return taken;
}

class RuleMaker {
  public:
    RuleMaker(const Inputs& inputs, Diagram& diagram, const std::vector<NodeId>& roots,
              const std::vector<int>& order, const Question& question)
        : inputs_(inputs), diagram_(diagram), roots_(roots), order_(order), question_(question) {}

    Rule Make() {
        for (const Input& input : inputs_.inputs) {
            Column column{input.name, std::string(ToText(input.kind)) + ' ' + input.key, {}};
            for (const Value& value : input.values) {
                column.values.push_back(value.words);
            }
            rule_.columns.push_back(column);
        }
        CollectPoints();
        const std::vector<bool> taken = FewestFacts(points_);
        for (std::size_t i = 0; i < FACT_COUNT; ++i) {
            if (taken[i]) {
                AddFact(i);
            }
        }
        std::vector<const Point*> all;
        for (const Point& point : points_) {
            all.push_back(&point);
        }
        rule_.root = all.empty() ? NONE : InBestOrder(Build(0, all));
        return rule_;
    }

  private:
    void CollectPoints() {
        const int current = inputs_.CurrentAssistant();
        std::vector<int> rank(inputs_.inputs.size(), 0);
        for (std::size_t i = 0; i < rank.size(); ++i) {
            const auto place = std::find(order_.begin(), order_.end(), static_cast<int>(i));
            rank[i] = static_cast<int>(place - order_.begin()) + 1;
        }
        if (current >= 0) {
            rank[static_cast<std::size_t>(current)] = 0;
        }
        for (std::size_t p = 0; p < roots_.size(); ++p) {
            if (roots_[p] == NONE) {
                continue;
            }
            const NodeId root = diagram_.Ordered(roots_[p], rank);
            const PolicyState state = StateOf(inputs_.policies[p]);
            static const Value nobody = {Value::Kind::kNull, 0, "", "none", "", false};
            const std::size_t values =
                current >= 0 ? inputs_.inputs[static_cast<std::size_t>(current)].values.size() : 1;
            for (std::size_t v = 0; v < values; ++v) {
                const Value& value =
                    current >= 0 ? inputs_.inputs[static_cast<std::size_t>(current)].values[v]
                                 : nobody;
                Point point;
                point.answer = diagram_.With(root, current, static_cast<int>(v));
                for (const Fact& fact : FACTS) {
                    point.facts.push_back(fact.ask({inputs_.policies[p], state, value, question_}));
                }
                points_.push_back(point);
            }
        }
    }

    void AddFact(std::size_t fact) {
        Column column{FACTS[fact].name, FACTS[fact].source, {}};
        for (const Point& point : points_) {
            const std::string& value = point.facts[fact];
            if (std::find(column.values.begin(), column.values.end(), value) ==
                column.values.end()) {
                column.values.push_back(value);
            }
        }
        taken_.push_back(fact);
        rule_.columns.push_back(column);
    }

    // Conditions stand in the order in which they are read; the facts where the first of what they
    // are made of is read, unless the table is shorter with them elsewhere.
    NodeId InBestOrder(NodeId root) {
        const auto place = std::find(order_.begin(), order_.end(), inputs_.CurrentAssistant());
        const int asRead = 2 * static_cast<int>(place - order_.begin());
        NodeId best = NONE;
        std::size_t fewest = 0;
        for (const int facts : {asRead, -1}) {
            std::vector<int> rank;
            for (std::size_t i = 0; i < rule_.columns.size(); ++i) {
                const auto read = std::find(order_.begin(), order_.end(), static_cast<int>(i));
                const int own = 2 * static_cast<int>(read - order_.begin()) + 1;
                rank.push_back(i < inputs_.inputs.size() ? own : facts);
            }
            // Ranks must differ: facts of one place keep their order.
            std::vector<std::size_t> sorted(rank.size());
            std::iota(sorted.begin(), sorted.end(), std::size_t{0});
            std::stable_sort(sorted.begin(), sorted.end(),
                             [&](std::size_t a, std::size_t b) { return rank[a] < rank[b]; });
            for (std::size_t i = 0; i < sorted.size(); ++i) {
                rank[sorted[i]] = static_cast<int>(i);
            }
            const NodeId ordered = diagram_.Ordered(root, rank);
            const std::size_t rows = RowsOf(diagram_, ordered).size();
            if (best == NONE || rows < fewest) {
                best = ordered;
                fewest = rows;
            }
        }
        return best;
    }

    NodeId Build(std::size_t depth, const std::vector<const Point*>& points) {
        if (depth == taken_.size()) {
            return points.front()->answer;
        }
        const std::size_t fact = taken_[depth];
        const int input = static_cast<int>(inputs_.inputs.size() + depth);
        std::vector<NodeId> children;
        for (const std::string& value : rule_.columns[static_cast<std::size_t>(input)].values) {
            std::vector<const Point*> there;
            for (const Point* point : points) {
                if (point->facts[fact] == value) {
                    there.push_back(point);
                }
            }
            children.push_back(there.empty() ? NONE : Build(depth + 1, there));
        }
        return diagram_.Branch(input, children);
    }

    const Inputs& inputs_;
    Diagram& diagram_;
    const std::vector<NodeId>& roots_;
    const std::vector<int>& order_;
    const Question& question_;
    std::vector<Point> points_;
    std::vector<std::size_t> taken_;
    Rule rule_;
};

}  // namespace

Rule MakeRule(const Inputs& inputs, Diagram& diagram, const std::vector<NodeId>& roots,
              const std::vector<int>& order, const Question& question) {
    return RuleMaker(inputs, diagram, roots, order, question).Make();
}

Rule MakeRule(const Inputs& inputs, Exploration& exploration, const QuestionResult& result) {
    return MakeRule(inputs, exploration.diagram, result.roots, result.order, *result.question);
}

}  // namespace explorer
