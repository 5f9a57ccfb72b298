#include "sequences_scenario.h"

#include <toml++/toml.h>

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <set>

#include "explorer/tv/state.h"
#include "host/core/toml_writer.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

// A tour that is longer is hard to read.
constexpr std::size_t LONGEST_TOUR = 80;

// ---------------------------------------------------------------------------------------------
// Steps
// ---------------------------------------------------------------------------------------------

// A press by itself turns a switch over.
toml::table PressStep(const host::Press& press) {
    toml::table step{{"press", press.item->name}};
    const bool isChoice = press.choose && press.item->kind == host::ItemKind::kList;
    if (isChoice) {
        step.insert("choose", *press.choose);
    }
    if (isChoice || press.answer != host::Answer::kNone) {
        step.insert("answer", press.answer == host::Answer::kCancel ? "cancel" : "ok");
    }
    return step;
}

toml::table StepOf(const Action& action, const NewTv& model) {
    switch (action.kind) {
        case Action::Kind::kPress:
            return PressStep(action.press);
        case Action::Kind::kFinish:
            return toml::table{{"finish", action.application.application}};
        case Action::Kind::kCancel:
            return toml::table{{"cancel", action.application.application}};
        case Action::Kind::kPublish:
            return toml::table{{"policy", model.policy.value_or("")}};
        case Action::Kind::kPowerCycle:
            break;
    }
    return toml::table{{"power-cycle", true}};
}

toml::table ExpectedPage(const host::Page& page) {
    toml::table items;
    for (const host::ItemView& view : page.items) {
        toml::table item{{"visible", page.IsReachable(*view.item)}, {"enabled", view.enabled}};
        if (view.value) {
            item.insert("value", *view.value);
        }
        items.insert(view.item->name, item);
    }
    return items;
}

// None for a setting that is of another type than the provider expects.
std::optional<vtv::Value> ExpectedValue(const Value& value) {
    if (value.kind != Value::Kind::kFails) {
        return StoredBy(value, value.text);
    }
    return value.storedType.empty() ? std::optional<vtv::Value>("(missing)") : std::nullopt;
}

// Adds the settings and files that differ; all of them without a state before.
void ExpectStore(const ConcreteTv& tv, const TvState* before, const TvState& after,
                 toml::table& expect) {
    std::map<std::string, vtv::Value> settings;
    std::vector<std::string> files;
    for (const Input& input : tv.GetInputs().inputs) {
        const int index = tv.GetInputs().IndexOf(input);
        const auto fact = static_cast<std::size_t>(index);
        if (before != nullptr && (*before)[fact] == after[fact]) {
            continue;
        }
        const Value& value = tv.ValueOf(after, index);
        if (input.kind == Input::Kind::kFile && value.number == 1) {
            files.push_back(input.key.substr(sizeof(vtv::kOwnerFolder) - 1));
        } else if (input.kind == Input::Kind::kSetting && ExpectedValue(value)) {
            settings[input.key] = *ExpectedValue(value);
        }
    }
    host::InsertAny(expect, "setting", host::TomlTable(settings));
    host::InsertAny(expect, "file", host::TomlList(files));
}

class ScenarioWriter {
  public:
    ScenarioWriter(const Stage& stage, ConcreteTv& tv)
        : stage_(stage), tv_(tv), state_(tv.Start()) {}

    std::string Write(const std::string& title, const std::vector<Action>& path, bool crashes) {
        toml::table first{{"say", "a new TV"}};
        if (!crashes || !path.empty()) {
            toml::table expect{{"page", Page()}};
            ExpectStore(tv_, nullptr, state_, expect);
            first.insert("expect", expect);
        }
        std::string text =
            host::ToToml(toml::table{{"title", title}, {"model", tv_.Model().call}}) +
            StepText(first);
        for (std::size_t i = 0; i < path.size(); ++i) {
            const bool isLast = i + 1 == path.size();
            toml::table step = StepOf(path[i], tv_.Model());
            step.insert("say", ToText(path[i]));
            if (!isLast || !crashes) {
                step.insert("expect", Expected(path[i], isLast));
            }
            text += StepText(step);
        }
        return text;
    }

  private:
    toml::table Page() {
        tv_.Load(state_);
        return ExpectedPage(LookAtPage(Current()));
    }

    const Subject& Current() const {
        return stage_.Of(tv_.ValueOf(state_, tv_.Published()).number == 1);
    }

    // Of what did not change all the same where it might have, and at the end: `isWhole`.
    toml::table Expected(const Action& action, bool isWhole) {
        const TvState before = state_;
        tv_.Load(state_);
        const Consequences consequences =
            CarryOut(Current(), tv_, LookAtPage(Current()), action, state_);
        // A notification is there for some seconds, and what is told to end does so in its own
        // time: what runs is then not certain until the next power cycle.
        const bool isFresh = action.kind == Action::Kind::kPowerCycle;
        isSettled_ =
            isFresh || (isSettled_ && !consequences.notified && consequences.terminated.empty());
        std::vector<std::string> launched;
        for (const Started& started : consequences.launched) {
            launched.push_back(ExpectedLaunch(started.application, started.extras));
        }
        std::vector<std::string> running;
        for (const Started& started : tv_.RunningIn(state_)) {
            running.push_back(started.application);
        }
        toml::table expect{{"launched", host::TomlList(launched)}, {"page", Page()}};
        if (isSettled_) {
            expect.insert("running", host::TomlList(running));
        }
        toml::array ends;
        for (const std::string& application : consequences.terminated) {
            ends.push_back("end of " + application + ": asked");
        }
        host::InsertAny(expect, "log", ends);
        ExpectStore(tv_, isWhole || isFresh ? nullptr : &before, state_, expect);
        return expect;
    }

    const Stage& stage_;
    ConcreteTv& tv_;
    TvState state_;
    bool isSettled_ = true;
};

// ---------------------------------------------------------------------------------------------
// Tours
// ---------------------------------------------------------------------------------------------

class Guide {
  public:
    explicit Guide(const Search& search) : search_(search) {
        isTaken_.resize(static_cast<std::size_t>(search.Kinds()), false);
    }

    std::vector<std::vector<Action>> Tours() {
        std::vector<std::vector<Action>> tours;
        for (;;) {
            const std::vector<Action> tour = NextTour();
            if (tour.empty()) {
                return tours;
            }
            tours.push_back(tour);
        }
    }

  private:
    std::vector<Action> NextTour() {
        std::vector<Action> tour;
        bool isNew = false;
        int state = 0;
        ending_.clear();
        while (tour.size() < LONGEST_TOUR) {
            const std::vector<const Step*> way = NearestNew(state);
            if (way.empty()) {
                break;
            }
            for (const Step* step : way) {
                if (!MayTake(*step)) {
                    break;  // the way there has made it impossible: look for another one
                }
                isNew = Take(*step) || isNew;
                tour.push_back(ActionOf(*step));
                state = step->target;
            }
        }
        return isNew ? tour : std::vector<Action>();
    }

    const Action& ActionOf(const Step& step) const {
        return search_.Actions()[static_cast<std::size_t>(step.action)];
    }

    // An application that was told to end may still be there when it is started again at once.
    bool MayTake(const Step& step) const {
        const bool restarts = step.launched >= 0 && step.launched == step.terminated;
        return !restarts && ending_.count(step.launched) == 0;
    }

    bool Take(const Step& step) {
        const auto kind = static_cast<std::size_t>(step.kind);
        const bool isNew = !isTaken_[kind];
        isTaken_[kind] = true;
        if (ActionOf(step).kind == Action::Kind::kPowerCycle) {
            ending_.clear();
        } else if (step.terminated >= 0) {
            ending_.insert(step.terminated);
        }
        return isNew;
    }

    // The shortest way to a step of a new kind, that step included.
    std::vector<const Step*> NearestNew(int from) const {
        std::vector<std::pair<int, const Step*>> cameFrom(search_.States(), {-1, nullptr});
        std::deque<int> waiting = {from};
        while (!waiting.empty()) {
            const int state = waiting.front();
            waiting.pop_front();
            for (const Step& step : search_.StepsFrom(state)) {
                if (!MayTake(step)) {
                    continue;
                }
                if (!isTaken_[static_cast<std::size_t>(step.kind)]) {
                    std::vector<const Step*> way = {&step};
                    for (int at = state; at != from;
                         at = cameFrom[static_cast<std::size_t>(at)].first) {
                        way.push_back(cameFrom[static_cast<std::size_t>(at)].second);
                    }
                    std::reverse(way.begin(), way.end());
                    return way;
                }
                auto& origin = cameFrom[static_cast<std::size_t>(step.target)];
                if (origin.second == nullptr && step.target != from) {
                    origin = {state, &step};
                    waiting.push_back(step.target);
                }
            }
        }
        return {};
    }

    const Search& search_;
    std::vector<bool> isTaken_;
    std::set<int> ending_;
};

}  // namespace

std::string ToScenario(const Stage& stage, ConcreteTv& tv, const std::string& title,
                       const std::vector<Action>& path, bool crashes) {
    return ScenarioWriter(stage, tv).Write(title, path, crashes);
}

std::vector<std::vector<Action>> Tours(const Search& search) {
    return Guide(search).Tours();
}

std::string WordsOf(const Input& input, const Value& value) {
    for (const Value& known : input.values) {
        if (known.kind == value.kind && known.number == value.number && known.text == value.text &&
            known.storedType.empty() == value.storedType.empty()) {
            return known.words;
        }
    }
    std::string words = value.kind == Value::Kind::kText ? value.text : value.words;
    std::replace(words.begin(), words.end(), '\n', ' ');
    return words;
}

}  // namespace explorer
