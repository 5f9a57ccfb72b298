#include "sequences_search.h"

#include <algorithm>

#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/trace_sites.h"

namespace explorer {

// ---------------------------------------------------------------------------------------------
// The provider, twice
// ---------------------------------------------------------------------------------------------

Stage::Stage(const std::string& provider, const NewTv& model) {
    policy_.name = model.model.name;
    const auto watch = [this](const Subject& subject) {
        subject.ForgetLanguages();
        watched_.push_back({&subject, std::make_unique<LibraryMemory>(
                                          reinterpret_cast<const void*>(subject.Entry().create))});
    };
    if (!model.policy) {
        first_ = std::make_unique<Subject>(provider, policy_);
        watch(*first_);
        return;
    }
    policy_.published = {*model.policy};
    first_ = std::make_unique<Subject>(provider, policy_);
    again_ = std::make_unique<Subject>(provider, policy_, Subject::Copy::kPrivate);
    again_->Publish(policy_.published.front());
    for (const RecordEntry& entry : ReadRecord(tv().Record())) {
        if (entry.kind == Entry::kWrong) {
            trouble_ = WhatIsSaid(entry);
        }
    }
    if (tv().HasEffects() && trouble_.empty()) {
        trouble_ = "publishing the policy changes the TV";
    }
    watch(*first_);
    watch(*again_);
}

bool Stage::HasChanged() const {
    bool hasChanged = false;
    for (const Watched& one : watched_) {
        one.subject->ForgetLanguages();
        const int sites = static_cast<int>(TraceSites().size());
        hasChanged = !one.memory->IsAsBefore(BEFORE_SITES, sites) || hasChanged;
    }
    return hasChanged;
}

// ---------------------------------------------------------------------------------------------
// The search
// ---------------------------------------------------------------------------------------------

Search::Search(const Stage& stage, ConcreteTv& tv, const std::vector<Case>& cases,
               const SearchOptions& options, Shared& shared)
    : stage_(stage), tv_(tv), cases_(cases), options_(options), shared_(shared) {
    for (std::vector<Known>& known : known_) {
        known.resize(cases.size());
    }
    isBroken_.resize(cases.size(), false);
    if (tv.Model().policy) {
        explorer::Publish(*tv.Model().policy, policy_);
    }
    Add(tv.Start(), -1, -1);
}

bool Search::Run() {
    for (std::size_t i = 0; i < states_.size(); ++i) {
        if (IsInterrupted()) {
            return false;
        }
        const int state = static_cast<int>(i);
        Check(state);
        if (options_.depth < 0 || depths_[i] < options_.depth) {
            Expand(state);
            ++expanded_;
        }
        shared_.runs.store(states_.size(), std::memory_order_relaxed);
    }
    remembers_ = remembers_ || stage_.HasChanged();
    return true;
}

const std::vector<Step>& Search::StepsFrom(int state) const {
    return steps_[static_cast<std::size_t>(state)];
}

std::vector<Action> Search::PathTo(int state) const {
    std::vector<Action> path;
    while (parents_[static_cast<std::size_t>(state)].first >= 0) {
        const auto [parent, action] = parents_[static_cast<std::size_t>(state)];
        path.push_back(actions_[static_cast<std::size_t>(action)]);
        state = parent;
    }
    std::reverse(path.begin(), path.end());
    return path;
}

std::vector<Action> Search::PathTo(const BrokenSequence& broken) const {
    std::vector<Action> path = PathTo(broken.state);
    if (broken.action >= 0) {
        path.push_back(actions_[static_cast<std::size_t>(broken.action)]);
    }
    return path;
}

int Search::Add(const TvState& state, int parent, int action) {
    const auto [place, isNew] = ids_.emplace(state, static_cast<int>(states_.size()));
    if (isNew) {
        states_.push_back(&place->first);
        parents_.emplace_back(parent, action);
        depths_.push_back(parent < 0 ? 0 : depths_[static_cast<std::size_t>(parent)] + 1);
        steps_.emplace_back();
    }
    return place->second;
}

bool Search::MayRun(std::string& crash) {
    shared_.step = ++run_;
    remembers_ = remembers_ || stage_.HasChanged();
    const auto known = options_.crashes.find(run_);
    if (known == options_.crashes.end()) {
        return true;
    }
    crash = known->second;
    return false;
}

void Search::Note(const Case& one, BrokenSequence broken) {
    broken.invariant = one.invariant;
    broken.question = one.question != nullptr ? one.question->name : std::string("the page");
    broken_.push_back(std::move(broken));
    for (std::size_t i = 0; i < cases_.size(); ++i) {
        isBroken_[i] = isBroken_[i] || cases_[i].invariant == one.invariant;
    }
}

// What goes wrong with no invariant at work: told once.
void Search::NoteWrong(const std::string& what, int state, int action, bool crashed) {
    const auto invariant = std::find_if(
        Invariants().begin(), Invariants().end(),
        [](const Invariant& one) { return std::string_view(one.name) == "nothing-goes-wrong"; });
    const bool isKnown =
        std::any_of(broken_.begin(), broken_.end(),
                    [&](const BrokenSequence& broken) { return broken.invariant == &*invariant; });
    if (isKnown) {
        return;
    }
    BrokenSequence broken;
    broken.what = what;
    broken.state = state;
    broken.action = action;
    broken.crashed = crashed;
    Note({&*invariant, nullptr}, broken);
}

// ---------------------------------------------------------------------------------------------
// Invariants
// ---------------------------------------------------------------------------------------------

void Search::Check(int state) {
    const bool published = tv_.ValueOf(StateAt(state), tv_.Published()).number == 1;
    std::vector<Known>& known = known_[published ? 1 : 0];
    for (std::size_t i = 0; i < cases_.size(); ++i) {
        if (!isBroken_[i] && !Holds(known[i], StateAt(state))) {
            CheckCase(state, i, known[i]);
        }
    }
}

bool Search::Holds(const Known& known, const TvState& state) {
    if (known.nodes.empty()) {
        return false;
    }
    const Node* node = &known.nodes.front();
    while (node->input >= 0) {
        const char16_t value = state[static_cast<std::size_t>(node->input)];
        const auto next = std::find_if(node->next.begin(), node->next.end(),
                                       [&](const auto& one) { return one.first == value; });
        if (next == node->next.end()) {
            return false;
        }
        node = &known.nodes[static_cast<std::size_t>(next->second)];
    }
    return true;
}

void Search::CheckCase(int state, std::size_t index, Known& known) {
    const Case& one = cases_[index];
    BrokenSequence broken;
    broken.state = state;
    std::string& wrong = broken.what;
    if (!MayRun(wrong)) {
        broken.crashed = true;
        Note(one, broken);
        return;
    }
    const bool published = tv_.ValueOf(StateAt(state), tv_.Published()).number == 1;
    tv_.Load(StateAt(state));
    Choices choices;
    tv().Begin(choices);
    try {
        const Look look(stage_.Of(published), policy_);
        const ProviderMemory counted;
        wrong = one.invariant->check(look, one.question);
    } catch (const std::exception& exception) {
        wrong = std::string("an exception leaves the provider: ") + exception.what();
    }
    if (wrong.empty() && !Learn(known, StateAt(state), choices)) {
        wrong = "asks differently when it is asked again";
    }
    if (!wrong.empty()) {
        for (std::size_t i = 0; i < choices.Depth(); ++i) {
            broken.inputs.push_back(choices.Path()[i].input);
        }
        Note(one, broken);
    }
}

// False when equal values led to other questions before: the provider knows more than its TV.
bool Search::Learn(Known& known, const TvState& state, const Choices& choices) const {
    if (known.nodes.empty()) {
        known.nodes.emplace_back();
    }
    const bool isNew = known.nodes.size() == 1 && known.nodes.front().next.empty();
    std::size_t at = 0;
    bool isOwn = isNew;  // nobody has come here with these values yet
    for (std::size_t i = 0; i < choices.Depth(); ++i) {
        const int input = choices.Path()[i].input;
        if (!tv_.CanChange(input)) {
            continue;
        }
        if (isOwn) {
            known.nodes[at].input = input;
        } else if (known.nodes[at].input != input) {
            return false;
        }
        const char16_t value = state[static_cast<std::size_t>(input)];
        std::vector<std::pair<char16_t, int>>& next = known.nodes[at].next;
        const auto place = std::find_if(next.begin(), next.end(),
                                        [&](const auto& one) { return one.first == value; });
        if (place != next.end()) {
            at = static_cast<std::size_t>(place->second);
            isOwn = false;
            continue;
        }
        next.emplace_back(value, static_cast<int>(known.nodes.size()));
        at = known.nodes.size();
        known.nodes.emplace_back();
        isOwn = true;
    }
    return isOwn || known.nodes[at].input < 0;
}

// ---------------------------------------------------------------------------------------------
// Actions
// ---------------------------------------------------------------------------------------------

void Search::Expand(int state) {
    const TvState& from = StateAt(state);
    const bool published = tv_.ValueOf(from, tv_.Published()).number == 1;
    const Subject& subject = stage_.Of(published);
    std::string wrong;
    if (!MayRun(wrong)) {
        NoteWrong(wrong, state, -1, true);
        return;
    }
    tv_.Load(from);
    host::Page page;
    std::vector<Action> actions;
    try {
        page = LookAtPage(subject);
        actions = ActionsIn(subject, tv_, from, page);
    } catch (const std::exception& exception) {
        NoteWrong(std::string("an exception leaves the provider: ") + exception.what(), state, -1,
                  true);
        return;
    }
    for (const Action& action : actions) {
        Follow(state, action, subject, page);
    }
}

void Search::Follow(int state, const Action& action, const Subject& subject,
                    const host::Page& page) {
    const auto known = std::find(actions_.begin(), actions_.end(), action);
    const int index = static_cast<int>(known - actions_.begin());
    if (known == actions_.end()) {
        actions_.push_back(action);
    }
    TvState to = StateAt(state);
    std::string wrong;
    if (!MayRun(wrong)) {
        NoteWrong(wrong, state, index, true);
        return;
    }
    tv_.Load(to);
    const Consequences consequences = CarryOut(subject, tv_, page, action, to);
    ++transitions_;
    const int target = Add(to, state, index);
    if (!consequences.wrong.empty()) {
        NoteWrong(consequences.wrong, state, index, true);
    }
    if (action.kind == Action::Kind::kPublish && !stage_.Trouble().empty()) {
        NoteWrong(stage_.Trouble(), state, index, false);
    }
    steps_[static_cast<std::size_t>(state)].push_back(
        StepOf(index, StateAt(state), target, consequences));
}

Step Search::StepOf(int action, const TvState& from, int target, const Consequences& consequences) {
    const auto numberOf = [this](const std::string& application) {
        return applications_.emplace(application, static_cast<int>(applications_.size()))
            .first->second;
    };
    const TvState& to = StateAt(target);
    Kind kind = {action, {}, consequences.launched, consequences.notified};
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (from[i] != to[i]) {
            kind.changed.push_back(i);
        }
    }
    Step step;
    step.action = action;
    step.target = target;
    step.kind = kinds_.emplace(kind, static_cast<int>(kinds_.size())).first->second;
    if (!consequences.launched.empty()) {
        step.launched = numberOf(consequences.launched.front().application);
    }
    if (!consequences.terminated.empty()) {
        step.terminated = numberOf(consequences.terminated.front());
    }
    return step;
}

}  // namespace explorer
