#include "exploration.h"

#include <algorithm>
#include <atomic>

#include "explorer/engine/bytes.h"
#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"

namespace explorer {

OutcomeId Outcomes::Intern(std::string_view record) {
    const auto known = ids_.find(record);
    if (known != ids_.end()) {
        return known->second;
    }
    const auto added = ids_.emplace(record, static_cast<OutcomeId>(records_.size())).first;
    records_.push_back(&added->first);
    return added->second;
}

std::uint64_t QuestionResult::Paths() const {
    std::uint64_t paths = 0;
    for (const Coverage& part : coverage) {
        paths += part.Paths();
    }
    return paths;
}

bool QuestionResult::IsComplete() const {
    return std::all_of(roots.begin(), roots.end(), [](NodeId root) { return root != NONE; }) &&
           std::all_of(coverage.begin(), coverage.end(),
                       [](const Coverage& part) { return part.IsComplete(); });
}

std::set<std::string> WorkUnderPolicies(const Inputs& inputs, const CommonOptions& options,
                                        const PolicyWork& work) {
    using Found = std::vector<std::pair<int, std::string>>;  // units, and what was found
    std::vector<std::set<int>> skipped(inputs.policies.size());
    std::set<std::string> unknown;
    const auto task = [&](int policy, Shared& shared) {
        tv().Use(inputs);
        memoryBooks.poisoning = work.poison;
        const auto index = static_cast<std::size_t>(policy);
        const Subject subject(options.provider, inputs.policies[index]);
        Found found;
        for (int unit = 0; unit < work.units; ++unit) {
            shared.step = unit;
            if (skipped[index].count(unit) == 0 && (!work.isOurs || work.isOurs(policy, unit))) {
                found.emplace_back(unit, work.look(subject, policy, unit, shared));
            }
        }
        return ToBytes(found, tv().UnknownKeys());
    };
    const auto finished = [&](const WorkerResult& result) {
        if (!result.trouble.empty()) {
            skipped[static_cast<std::size_t>(result.task)].insert(result.step);
            work.note(result);
            return true;
        }
        BytesReader bytes(result.bytes);
        for (const auto& [unit, part] : bytes.Next<Found>()) {
            work.take(result.task, unit, BytesReader(part));
        }
        unknown.merge(bytes.Next<std::set<std::string>>());
        return false;
    };
    Work(static_cast<int>(inputs.policies.size()),
         {.workers = options.workers, .progress = !options.quiet, .what = work.what}, task,
         finished);
    return unknown;
}

bool ForEachPath(Choices& choices, std::atomic<std::uint64_t>& runs,
                 const std::function<void()>& run, const std::function<void()>& visit,
                 const std::function<bool()>& isEnough) {
    choices.Clear();
    do {
        if (IsInterrupted() || isEnough()) {
            return false;
        }
        tv().Begin(choices);
        run();
        visit();
        runs.store(runs.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    } while (choices.Advance());
    return true;
}

namespace {

// ---------------------------------------------------------------------------------------------
// In a worker: one policy, all questions
// ---------------------------------------------------------------------------------------------

// A node of a diagram on its way; the children are places in the same list.
struct SentNode {
    int input = -1;
    std::string record;  // of a leaf
    std::vector<std::size_t> children;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(input, record, children);
    }
};

// What a worker finds out about one question under one policy.
struct Part {
    std::vector<SentNode> nodes;  // the last one is the root; none where it was not explored
    Coverage coverage;
    std::vector<int> order;
    std::map<int, int> mostReads;
    std::string trouble;
    std::vector<Decision> path;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(nodes, coverage, order, mostReads, trouble, path);
    }
};

// Only what the root reaches, children before parents.
std::vector<SentNode> NodesOf(const Diagram& diagram, const Outcomes& outcomes, NodeId root) {
    std::map<NodeId, std::size_t> places;
    std::vector<SentNode> nodes;
    const std::function<void(NodeId)> visit = [&](NodeId id) {
        if (id == NONE || places.count(id) != 0) {
            return;
        }
        const Node& node = diagram[id];
        SentNode sent = {node.input, node.input < 0 ? outcomes[node.outcome] : "", {}};
        for (const NodeId child : node.children) {
            visit(child);
            sent.children.push_back(places.at(child));
        }
        places[id] = nodes.size();
        nodes.push_back(std::move(sent));
    };
    visit(root);
    return nodes;
}

class PartExplorer {
  public:
    PartExplorer(const Subject& subject, const Question& question, Shared& shared)
        : subject_(subject), question_(question), shared_(shared), builder_(diagram_) {}

    Part Run() {
        isKnown_.resize(tv().GetInputs().inputs.size());
        const bool whole = ForEachPath(
            shared_.choices, shared_.runs, [this] { Ask(subject_, question_); },
            [this] { Visit(); });
        part_.nodes = NodesOf(diagram_, outcomes_, whole ? builder_.Root() : NONE);
        return std::move(part_);
    }

  private:
    void Visit() {
        const Choices& choices = shared_.choices;
        if (choices.Diverged() && part_.trouble.empty()) {
            part_.trouble = "asks differently when it is asked again";
            part_.path.assign(choices.Path(), choices.Path() + choices.Depth());
        }
        part_.coverage.Add(choices.Path(), choices.Depth());
        builder_.Add(choices, Intern(tv().Record()));
        for (std::size_t i = 0; i < tv().TouchedSize(); ++i) {
            const int input = tv().Touched()[i];
            if (isKnown_[static_cast<std::size_t>(input)] < tv().ReadCount(input)) {
                if (isKnown_[static_cast<std::size_t>(input)] == 0) {
                    part_.order.push_back(input);
                }
                isKnown_[static_cast<std::size_t>(input)] = tv().ReadCount(input);
                part_.mostReads[input] = tv().ReadCount(input);
            }
        }
    }

    // Most runs end like the one before.
    OutcomeId Intern(std::string_view record) {
        if (last_ < 0 || outcomes_[last_] != record) {
            last_ = outcomes_.Intern(record);
        }
        return last_;
    }

    const Subject& subject_;
    const Question& question_;
    Shared& shared_;
    Part part_;
    Diagram diagram_;
    Outcomes outcomes_;
    DiagramBuilder builder_;
    OutcomeId last_ = -1;
    std::vector<int> isKnown_;
};

// ---------------------------------------------------------------------------------------------
// In the starting process
// ---------------------------------------------------------------------------------------------

NodeId Intern(const std::vector<SentNode>& sent, Exploration& into) {
    std::vector<NodeId> ids;
    for (const SentNode& node : sent) {
        std::vector<NodeId> children;
        for (const std::size_t child : node.children) {
            children.push_back(ids[child]);
        }
        ids.push_back(node.input < 0 ? into.diagram.Leaf(into.outcomes.Intern(node.record))
                                     : into.diagram.Branch(node.input, children));
    }
    return ids.empty() ? NONE : ids.back();
}

void Take(Part part, int policy, QuestionResult& result, Exploration& into) {
    const auto at = static_cast<std::size_t>(policy);
    result.roots[at] = Intern(part.nodes, into);
    result.coverage[at] = std::move(part.coverage);
    result.orders[at] = std::move(part.order);
    for (const auto& [input, reads] : part.mostReads) {
        int& most = result.mostReads[input];
        most = std::max(most, reads);
    }
    if (!part.trouble.empty()) {
        result.troubles.push_back({policy, part.trouble, part.path});
    }
}

// The same whichever policy was explored first.
void MergeOrders(QuestionResult& result) {
    for (const std::vector<int>& order : result.orders) {
        for (const int input : order) {
            if (std::find(result.order.begin(), result.order.end(), input) == result.order.end()) {
                result.order.push_back(input);
            }
        }
    }
}

}  // namespace

std::unique_ptr<Exploration> Explore(const Inputs& inputs,
                                     const std::vector<const Question*>& questions,
                                     const CommonOptions& options) {
    CheckSubject(options.provider);
    auto exploration = std::make_unique<Exploration>();
    for (const Question* question : questions) {
        QuestionResult result;
        result.question = question;
        result.roots.assign(inputs.policies.size(), NONE);
        result.coverage.resize(inputs.policies.size());
        result.orders.resize(inputs.policies.size());
        exploration->results.push_back(result);
    }
    PolicyWork work;
    work.units = static_cast<int>(questions.size());
    work.look = [&](const Subject& subject, int, int unit, Shared& shared) {
        const Question& question = *questions[static_cast<std::size_t>(unit)];
        return ToBytes(PartExplorer(subject, question, shared).Run());
    };
    work.take = [&](int policy, int unit, BytesReader bytes) {
        Take(bytes.Next<Part>(), policy, exploration->results[static_cast<std::size_t>(unit)],
             *exploration);
    };
    work.note = [&](const WorkerResult& result) {
        exploration->results[static_cast<std::size_t>(result.step)].troubles.push_back(
            {result.task, result.trouble, result.path});
    };
    exploration->unknownKeys = WorkUnderPolicies(inputs, options, work);
    for (QuestionResult& result : exploration->results) {
        MergeOrders(result);
    }
    exploration->interrupted = IsInterrupted();
    return exploration;
}

}  // namespace explorer
