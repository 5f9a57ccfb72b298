#include "exploration.h"

#include <algorithm>
#include <atomic>

#include "explorer/engine/bytes.h"
#include "explorer/engine/memory.h"
#include "explorer/engine/workers.h"
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

bool ForEachPath(Choices& choices, std::atomic<std::uint64_t>& runs,
                 const std::function<void()>& run, const std::function<void()>& visit) {
    choices.Clear();
    do {
        if (IsInterrupted()) {
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

// What a worker finds out about one question under one policy.
struct Part {
    Diagram diagram;
    Outcomes outcomes;
    Coverage coverage;
    NodeId root = NONE;
    std::vector<int> order;
    std::map<int, int> mostReads;
    std::string trouble;
    std::vector<Decision> path;
};

class PartExplorer {
  public:
    PartExplorer(const Subject& subject, const Question& question, Shared& shared)
        : subject_(subject), question_(question), shared_(shared), builder_(part_.diagram) {}

    Part Run() {
        isKnown_.resize(tv().GetInputs().inputs.size());
        const bool whole = ForEachPath(
            shared_.choices, shared_.runs, [this] { Ask(subject_, question_); },
            [this] { Visit(); });
        part_.root = whole ? builder_.Root() : NONE;
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
        if (last_ < 0 || part_.outcomes[last_] != record) {
            last_ = part_.outcomes.Intern(record);
        }
        return last_;
    }

    const Subject& subject_;
    const Question& question_;
    Shared& shared_;
    Part part_;
    DiagramBuilder builder_;
    OutcomeId last_ = -1;
    std::vector<int> isKnown_;
};

void WritePath(BytesWriter& bytes, const std::vector<Decision>& path) {
    bytes.Number(path.size());
    for (const Decision& decision : path) {
        bytes.Number(decision.input);
        bytes.Number(decision.value);
        bytes.Number(decision.count);
    }
}

std::vector<Decision> ReadPath(BytesReader& bytes) {
    std::vector<Decision> path(bytes.Number());
    for (Decision& decision : path) {
        decision.input = static_cast<std::uint16_t>(bytes.Number());
        decision.value = static_cast<std::uint16_t>(bytes.Number());
        decision.count = static_cast<std::uint16_t>(bytes.Number());
    }
    return path;
}

// Only what the root reaches, children before parents.
void WriteNodes(BytesWriter& bytes, const Diagram& diagram, const Outcomes& outcomes, NodeId root) {
    std::map<NodeId, std::uint64_t> places;
    std::vector<NodeId> ordered;
    const std::function<void(NodeId)> visit = [&](NodeId id) {
        if (id == NONE || places.count(id) != 0) {
            return;
        }
        for (const NodeId child : diagram[id].children) {
            visit(child);
        }
        places[id] = ordered.size();
        ordered.push_back(id);
    };
    visit(root);
    bytes.Number(ordered.size());
    for (const NodeId id : ordered) {
        const Node& node = diagram[id];
        bytes.Number(static_cast<std::uint64_t>(node.input + 1));
        if (node.input < 0) {
            bytes.Text(outcomes[node.outcome]);
            continue;
        }
        bytes.Number(node.children.size());
        for (const NodeId child : node.children) {
            bytes.Number(places.at(child));
        }
    }
}

NodeId ReadNodes(BytesReader& bytes, Exploration& into) {
    std::vector<NodeId> nodes(bytes.Number());
    for (NodeId& id : nodes) {
        const int input = bytes.Int() - 1;
        if (input < 0) {
            id = into.diagram.Leaf(into.outcomes.Intern(bytes.Text()));
            continue;
        }
        std::vector<NodeId> children(bytes.Number());
        for (NodeId& child : children) {
            child = nodes[bytes.Number()];
        }
        id = into.diagram.Branch(input, children);
    }
    return nodes.empty() ? NONE : nodes.back();
}

void WriteCoverage(BytesWriter& bytes, const Coverage& coverage) {
    bytes.Number(coverage.Shapes().size());
    for (const auto& [shape, paths] : coverage.Shapes()) {
        bytes.Text({reinterpret_cast<const char*>(shape.data()), shape.size()});
        bytes.Number(paths);
    }
    bytes.Number(coverage.Inputs().size());
    for (const auto& [input, count] : coverage.Inputs()) {
        bytes.Number(static_cast<std::uint64_t>(input));
        bytes.Number(static_cast<std::uint64_t>(count));
    }
}

Coverage ReadCoverage(BytesReader& bytes) {
    Coverage coverage;
    for (std::uint64_t shapes = bytes.Number(); shapes > 0; --shapes) {
        Coverage::Shape shape = {};
        const std::string text = bytes.Text();
        std::copy(text.begin(), text.end(), shape.begin());
        coverage.AddShape(shape, bytes.Number());
    }
    for (std::uint64_t inputs = bytes.Number(); inputs > 0; --inputs) {
        const int input = bytes.Int();
        coverage.AddInput(input, bytes.Int());
    }
    return coverage;
}

void WritePart(BytesWriter& bytes, int question, const Part& part) {
    bytes.Number(static_cast<std::uint64_t>(question));
    WriteNodes(bytes, part.diagram, part.outcomes, part.root);
    WriteCoverage(bytes, part.coverage);
    bytes.Number(part.order.size());
    for (const int input : part.order) {
        bytes.Number(static_cast<std::uint64_t>(input));
    }
    bytes.Number(part.mostReads.size());
    for (const auto& [input, reads] : part.mostReads) {
        bytes.Number(static_cast<std::uint64_t>(input));
        bytes.Number(static_cast<std::uint64_t>(reads));
    }
    bytes.Text(part.trouble);
    WritePath(bytes, part.path);
}

// ---------------------------------------------------------------------------------------------
// In the starting process
// ---------------------------------------------------------------------------------------------

void ReadPart(BytesReader& bytes, int policy, Exploration& into) {
    QuestionResult& result = into.results[bytes.Number()];
    const auto at = static_cast<std::size_t>(policy);
    result.roots[at] = ReadNodes(bytes, into);
    result.coverage[at] = ReadCoverage(bytes);
    for (std::uint64_t inputs = bytes.Number(); inputs > 0; --inputs) {
        result.orders[at].push_back(bytes.Int());
    }
    for (std::uint64_t inputs = bytes.Number(); inputs > 0; --inputs) {
        int& most = result.mostReads[bytes.Int()];
        most = std::max(most, bytes.Int());
    }
    Trouble trouble;
    trouble.policy = policy;
    trouble.what = bytes.Text();
    trouble.path = ReadPath(bytes);
    if (!trouble.what.empty()) {
        result.troubles.push_back(trouble);
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
                                     const ExplorationOptions& options) {
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
    // By policy: the questions that crashed there.
    std::vector<std::set<int>> skipped(inputs.policies.size());

    const auto task = [&](int policy, Shared& shared) {
        tv().Use(inputs);
        memoryBooks.poisoning = options.poison;
        const Subject subject(options.provider, inputs.policies[static_cast<std::size_t>(policy)]);
        BytesWriter bytes;
        for (std::size_t i = 0; i < questions.size(); ++i) {
            const int index = static_cast<int>(i);
            shared.step = index;
            if (skipped[static_cast<std::size_t>(policy)].count(index) == 0) {
                WritePart(bytes, index, PartExplorer(subject, *questions[i], shared).Run());
            }
        }
        BytesWriter whole;
        whole.Text(bytes.Bytes());
        for (const std::string& key : tv().UnknownKeys()) {
            whole.Text(key);
        }
        return whole.Bytes();
    };
    const auto finished = [&](const WorkerResult& result) {
        if (!result.trouble.empty()) {
            skipped[static_cast<std::size_t>(result.task)].insert(result.step);
            exploration->results[static_cast<std::size_t>(result.step)].troubles.push_back(
                {result.task, result.trouble, result.path});
            return true;
        }
        BytesReader whole(result.bytes);
        const std::string parts = whole.Text();
        BytesReader bytes(parts);
        while (!bytes.AtEnd()) {
            ReadPart(bytes, result.task, *exploration);
        }
        while (!whole.AtEnd()) {
            exploration->unknownKeys.insert(whole.Text());
        }
        return false;
    };
    WorkOptions work;
    work.workers = options.workers;
    work.progress = options.progress;
    Work(static_cast<int>(inputs.policies.size()), work, task, finished);
    for (QuestionResult& result : exploration->results) {
        MergeOrders(result);
    }
    exploration->interrupted = IsInterrupted();
    return exploration;
}

}  // namespace explorer
