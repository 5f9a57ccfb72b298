#include "beyond.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <utility>

#include "echoes.h"
#include "exploration.h"
#include "explorer/tv/lazy_tv.h"

namespace explorer {

// ---------------------------------------------------------------------------------------------
// What is drawn
// ---------------------------------------------------------------------------------------------

namespace {

class Drawer {
  public:
    explicit Drawer(const Input& input) {
        for (const Value& value : input.values) {
            if (value.kind == Value::Kind::kText) {
                texts_.push_back(value.text);
            } else if (value.kind == Value::Kind::kNumber && value.storedType != "bool") {
                numbers_.push_back(value.number);
            }
        }
    }

    bool HasMore() const { return !texts_.empty() || numbers_.size() > 1; }
    Value Next() { return texts_.empty() ? NumberValue(Number(), "int") : TextValue(Text()); }

  private:
    int Below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }
    template <typename T>
    const T& OneOf(const std::vector<T>& all) {
        return all[static_cast<std::size_t>(Below(static_cast<int>(all.size())))];
    }

    int Number() {
        switch (Below(4)) {
            case 0:
                return OneOf(numbers_) + Below(7) - 3;
            case 1:
                return Below(41) - 20;
            case 2:
                return Below(2) == 0 ? std::numeric_limits<int>::max() - Below(2)
                                     : std::numeric_limits<int>::min() + Below(2);
            default:
                return static_cast<int>(random_());
        }
    }

    std::string Text() {
        std::string text = OneOf(texts_);
        const auto inside = TextsIn(text);
        if (Below(4) == 0) {
            return Word();
        }
        if (inside.empty()) {
            return Changed(text);
        }
        const auto& [at, length] = OneOf(inside);
        return text.replace(at, length, Changed(text.substr(at, length)));
    }

    std::string Changed(std::string text) {
        const int way = text.empty() ? 3 : Below(4);
        if (way == 0) {
            text.pop_back();
        } else if (way == 1) {
            text.erase(0, 1);
        } else if (way == 2) {
            char& letter = text[static_cast<std::size_t>(Below(static_cast<int>(text.size())))];
            const auto code = static_cast<unsigned char>(letter);
            letter = static_cast<char>(std::islower(code) != 0 ? std::toupper(code)
                                                               : std::tolower(code));
        } else {
            text += Word();
        }
        return text;
    }

    std::string Word() {
        std::string word;
        do {
            word += static_cast<char>('a' + Below(26));
        } while (Below(4) != 0);
        return word;
    }

    std::vector<std::string> texts_;
    std::vector<int> numbers_;
    std::mt19937 random_;
};

std::vector<Value> NamedValues(const Input& input) {
    std::vector<Value> named = input.values;
    named.insert(named.end(), input.others.begin(), input.others.end());
    return named;
}

bool IsNamed(const std::vector<Value>& values, const Value& drawn) {
    return std::any_of(values.begin(), values.end(), [&](const Value& value) {
        return value.kind == drawn.kind && value.number == drawn.number && value.text == drawn.text;
    });
}

}  // namespace

std::vector<Value> DrawnValues(const Input& input, int count) {
    constexpr int TRIES = 20;  // for each
    const std::vector<Value> named = NamedValues(input);
    std::vector<Value> drawn;
    Drawer drawer(input);
    if (!drawer.HasMore() || input.kind == Input::Kind::kWrite) {
        return drawn;
    }
    for (int i = 0; i < count * TRIES && static_cast<int>(drawn.size()) < count; ++i) {
        Value value = drawer.Next();
        value.hasPlaceholder = value.text.find(CURRENT_PLACEHOLDER) != std::string::npos;
        if (!IsNamed(named, value) && !IsNamed(drawn, value)) {
            drawn.push_back(std::move(value));
        }
    }
    return drawn;
}

// ---------------------------------------------------------------------------------------------
// In a worker: one question under one policy
// ---------------------------------------------------------------------------------------------

namespace {

// Of an input. A TV that has taken one of them knows it by its place in memory.
struct Values {
    std::vector<Value> named;
    std::vector<Value> drawn;
};
using Drawn = std::pair<int, std::size_t>;  // an input, and the place of a drawn value
using Unnamed = std::vector<Drawn>;
using AnswersByDrawn = std::map<Drawn, std::uint64_t>;

class BeyondExplorer {
  public:
    BeyondExplorer(const Subject& subject, const Question& question, Shared& shared)
        : subject_(subject), question_(question), shared_(shared) {}

    Unnamed Run(const std::vector<Values>& values) {
        Unnamed unnamed;
        AnswersWith(-1, nullptr);
        const std::set<int> read = read_;
        for (const int input : read) {
            const auto& [named, drawn] = values[Place(input)];
            std::vector<NodeId> answers = {NONE};  // first the drawn value's, then the named ones'
            for (const Value& value : drawn.empty() ? drawn : named) {
                answers.push_back(AnswersWith(input, &value));
            }
            for (std::size_t i = 0; i < drawn.size() && !IsInterrupted(); ++i) {
                answers.front() = AnswersWith(input, &drawn[i]);
                if (IsInterrupted()) {
                    break;  // what was asked in part is nothing to compare
                }
                answers_[{input, i}] = HashOf(answers.front());
                if (!Comparison(*this, drawn[i], named).IsAlike(answers)) {
                    unnamed.emplace_back(input, i);
                }
            }
        }
        return unnamed;
    }

    // What each drawn value led to, to compare with another provider.
    const AnswersByDrawn& Answers() const { return answers_; }

  private:
    static std::size_t Place(int input) { return static_cast<std::size_t>(input); }

    // In every state in which the input has the value; without an input in every state.
    NodeId AnswersWith(int input, const Value* value) {
        DiagramBuilder builder(diagram_);
        if (input >= 0) {
            tv().Preset(input, value);
        }
        const bool isWhole = ForEachPath(
            shared_.choices, shared_.runs, [this] { Ask(subject_, question_); },
            [&] {
                builder.Add(shared_.choices, outcomes_.Intern(RecordOf(input, value)));
                read_.insert(tv().Touched(), tv().Touched() + tv().TouchedSize());
            });
        if (input >= 0) {
            tv().Preset(input, nullptr);
        }
        if (!isWhole) {
            return NONE;
        }
        std::vector<int> rank(tv().GetInputs().inputs.size());
        std::iota(rank.begin(), rank.end(), 0);
        return diagram_.Ordered(builder.Root(), rank);
    }

    // Of ordered answers: the same for another provider that answers alike, whatever it reads
    // first.
    std::uint64_t HashOf(NodeId node) {
        if (node == NONE) {
            return 0;
        }
        if (const auto known = hashes_.find(node); known != hashes_.end()) {
            return known->second;
        }
        const Node& one = diagram_[node];
        std::uint64_t hash = one.input < 0 ? std::hash<std::string>()(outcomes_[one.outcome])
                                           : static_cast<std::uint64_t>(one.input) + 1;
        for (const NodeId child : one.children) {
            hash = (hash ^ HashOf(child)) * 1099511628211U;  // FNV-1a
        }
        return hashes_[node] = hash;
    }

    // A document that is about the current assistant is another text for each.
    static std::string RecordOf(int input, const Value* value) {
        std::string record(tv().Record());
        if (value != nullptr && value->hasPlaceholder) {
            const std::string text = tv().FirstText(input);
            for (std::size_t at = 0; (at = record.find(text, at)) != std::string::npos;) {
                record.replace(at, text.size(), value->text);
                at += value->text.size();
            }
        }
        return record;
    }

    // Whether in each state of the other inputs some named value is answered as the drawn one.
    class Comparison {
      public:
        Comparison(const BeyondExplorer& explorer, const Value& drawn,
                   const std::vector<Value>& named)
            : diagram_(explorer.diagram_), outcomes_(explorer.outcomes_) {
            for (const Value& value : named) {
                echoes_.emplace_back(drawn, value);
            }
        }

        // Ordered nodes: of the drawn value first.
        bool IsAlike(const std::vector<NodeId>& nodes) {
            if (std::find(nodes.begin() + 1, nodes.end(), nodes.front()) != nodes.end()) {
                return true;
            }
            const auto [place, isNew] = known_.emplace(nodes, true);
            if (isNew) {
                const int input = FirstInput(nodes);
                place->second = input < 0 ? IsLeafAlike(nodes) : IsAlikeFor(input, nodes);
            }
            return place->second;
        }

      private:
        int FirstInput(const std::vector<NodeId>& nodes) const {
            int first = -1;
            for (const NodeId node : nodes) {
                const int input = node == NONE ? -1 : diagram_[node].input;
                first = first < 0 || (input >= 0 && input < first) ? input : first;
            }
            return first;
        }

        bool IsAlikeFor(int input, const std::vector<NodeId>& nodes) {
            std::size_t values = 0;
            for (const NodeId node : nodes) {
                values = node != NONE && diagram_[node].input == input
                             ? diagram_[node].children.size()
                             : values;
            }
            for (std::size_t value = 0; value < values; ++value) {
                std::vector<NodeId> children;
                for (const NodeId node : nodes) {
                    const bool asks = node != NONE && diagram_[node].input == input;
                    children.push_back(asks ? diagram_[node].children[value] : node);
                }
                if (!IsAlike(children)) {
                    return false;
                }
            }
            return true;
        }

        bool IsLeafAlike(const std::vector<NodeId>& nodes) const {
            for (std::size_t i = 0; nodes.front() != NONE && i < echoes_.size(); ++i) {
                if (nodes[i + 1] != NONE &&
                    echoes_[i].IsAlike(outcomes_[diagram_[nodes.front()].outcome],
                                       outcomes_[diagram_[nodes[i + 1]].outcome])) {
                    return true;
                }
            }
            return nodes.front() == NONE;
        }

        const Diagram& diagram_;
        const Outcomes& outcomes_;
        std::vector<EchoComparison> echoes_;  // with each named value
        std::map<std::vector<NodeId>, bool> known_;
    };

    const Subject& subject_;
    const Question& question_;
    Shared& shared_;
    Diagram diagram_;
    Outcomes outcomes_;
    std::set<int> read_;
    std::map<NodeId, std::uint64_t> hashes_;
    AnswersByDrawn answers_;
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// In the starting process
// ---------------------------------------------------------------------------------------------

AnswersBeyond AskBeyond(const Inputs& inputs, const std::vector<const Question*>& questions,
                        const CommonOptions& options, const RecordOptions& records) {
    if (options.beyond == 0 || IsInterrupted()) {
        return {};
    }
    std::vector<Values> values;
    for (const Input& input : inputs.inputs) {
        values.push_back({NamedValues(input), DrawnValues(input, options.beyond)});
    }
    std::map<Unnamed::value_type, std::string> unnamed;  // and where it showed
    AnswersBeyond found;
    const auto inWords = [&](const Drawn& one) {
        const Input& input = inputs.inputs[static_cast<std::size_t>(one.first)];
        const Value& value = values[static_cast<std::size_t>(one.first)].drawn[one.second];
        return input.name + " = " +
               (value.kind == Value::Kind::kText ? '"' + value.text + '"' : value.words);
    };
    PolicyWork work;
    work.units = static_cast<int>(questions.size());
    work.look = [&](const Subject& subject, int, int unit, Shared& shared) {
        const Question& question = *questions[static_cast<std::size_t>(unit)];
        UseRecords(records);
        BeyondExplorer explorer(subject, question, shared);
        const Unnamed unlike = explorer.Run(values);
        return ToBytes(unlike, explorer.Answers());
    };
    const auto where = [&](int policy, int unit) {
        return questions[static_cast<std::size_t>(unit)]->name +
               ", policy: " + inputs.policies[static_cast<std::size_t>(policy)].name;
    };
    work.take = [&](int policy, int unit, BytesReader bytes) {
        for (const Unnamed::value_type& one : bytes.Next<Unnamed>()) {
            unnamed.emplace(one, where(policy, unit));
        }
        for (const auto& [one, hash] : bytes.Next<AnswersByDrawn>()) {
            found.answers[{questions[static_cast<std::size_t>(unit)]->name,
                           inputs.policies[static_cast<std::size_t>(policy)].name, inWords(one)}] =
                hash;
        }
    };
    work.note = [&](const WorkerResult& result) {
        found.troubles.push_back(where(result.task, result.step) +
                                 ": could not be asked beyond the inputs: it " + result.trouble);
    };
    WorkUnderPolicies(inputs, options, work);
    if (IsInterrupted()) {
        found.troubles.emplace_back("it was interrupted before every drawn value was tried");
    }
    for (const auto& [one, place] : unnamed) {
        found.troubles.push_back(inWords(one) + " is answered unlike every value that " +
                                 inputs.file + " names (" + place + "): add it there");
    }
    return found;
}

}  // namespace explorer
