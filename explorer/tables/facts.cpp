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
    const Assistant* Listed() const { return state.Find(AppId()); }
};

std::string NameOf(const Situation& now, const char* kind) {
    for (const Assistant& assistant : now.state.list) {
        if (now.state.KindOf(assistant.appId) == kind) {
            return assistant.name.empty() ? "empty" : assistant.name;
        }
    }
    return "none";
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
    {"assistants offered", POLICY_SETTING,
     [](const Situation& now) -> std::string {
         const std::size_t count = now.state.list.size();
         return count == 0 ? "none" : count == 1 ? "one" : "several";
     }},
    {"an assistant is chosen", CURRENT,
     [](const Situation& now) -> std::string { return now.AppId().empty() ? "no" : "yes"; }},
    {"current assistant is listed as", BOTH,
     [](const Situation& now) { return now.Listed() == nullptr ? "none" : now.Listed()->id; }},
    {"current assistant's kind", BOTH,
     [](const Situation& now) {
         const std::string kind = now.state.KindOf(now.AppId());
         return kind.empty() ? "none" : kind;
     }},
    {"its far-field flag", BOTH,
     [](const Situation& now) -> std::string {
         return now.Listed() != nullptr && now.Listed()->farField ? "yes" : "no";
     }},
    {"its number", BOTH,
     [](const Situation& now) {
         return now.Listed() == nullptr ? "none" : std::to_string(now.Listed()->order);
     }},
    {"Alexa's name", POLICY_SETTING, [](const Situation& now) { return NameOf(now, "ALEXA"); }},
    {"Google's name", POLICY_SETTING, [](const Situation& now) { return NameOf(now, "GVA"); }},
    {"Salute's name", POLICY_SETTING, [](const Situation& now) { return NameOf(now, "SBER"); }},
    {"the chosen assistant", POLICY_SETTING, Chosen},
    {"current application", CURRENT, [](const Situation& now) { return now.current.words; }},
    {"policy", POLICY_SETTING, [](const Situation& now) { return now.policy.name; }},
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
    RuleMaker(const Inputs& inputs, Diagram& diagram, const QuestionResult& result)
        : inputs_(inputs),
          diagram_(diagram),
          roots_(result.roots),
          order_(result.order),
          question_(*result.question) {}

    Rule Make() {
        for (const Input& input : inputs_.inputs) {
            Column column{input.name, std::string(ToText(input.kind)) + ' ' + input.key, {}, {}};
            for (const Value& value : input.values) {
                const bool isNumber = value.kind == Value::Kind::kNumber &&
                                      value.words == std::to_string(value.number);
                column.values.push_back(value.words);
                column.numbers.push_back(isNumber ? std::optional(value.number) : std::nullopt);
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
        if (!all.empty()) {
            PutInBestOrder(Build(0, all));
        }
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
        Column column{FACTS[fact].name, FACTS[fact].source, {}, {}};
        for (const Point& point : points_) {
            const std::string& value = point.facts[fact];
            if (std::find(column.values.begin(), column.values.end(), value) ==
                column.values.end()) {
                column.values.push_back(value);
                column.numbers.emplace_back();
            }
        }
        taken_.push_back(fact);
        rule_.columns.push_back(column);
    }

    // Conditions stand in the order in which they are read; the facts where the first of what they
    // are made of is read, unless the table is shorter with them elsewhere.
    void PutInBestOrder(NodeId root) {
        const auto place = std::find(order_.begin(), order_.end(), inputs_.CurrentAssistant());
        const int asRead = 2 * static_cast<int>(place - order_.begin());
        for (const int facts : {asRead, -1}) {
            const std::vector<int> rank = RankWithFactsAt(facts);
            const NodeId ordered = diagram_.Ordered(root, rank);
            DecisionList rows = DecisionListOf(diagram_, ordered, rank);
            if (rule_.root == NONE || LengthOf(rows) < LengthOf(rule_.rows)) {
                rule_.root = ordered;
                rule_.rank = rank;
                rule_.rows = std::move(rows);
            }
        }
    }

    std::vector<int> RankWithFactsAt(int facts) const {
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
        return rank;
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

Rule MakeRule(const Inputs& inputs, Exploration& exploration, const QuestionResult& result) {
    return RuleMaker(inputs, exploration.diagram, result).Make();
}

}  // namespace explorer
