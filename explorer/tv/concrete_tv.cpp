#include "concrete_tv.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>

#include "app_effects.h"
#include "lazy_tv.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

constexpr char CONTEXT_CALL[] = "app_manager_get_app_context";

constexpr std::size_t MAX_VALUES = 0x10000;

bool IsChangeable(const Input& input) {
    const bool isState = input.kind == Input::Kind::kSetting || input.kind == Input::Kind::kFile ||
                         input.kind == Input::Kind::kConsent;
    return isState || input.key == MODE_CALL || input.key == CONTEXT_CALL ||
           input.key == keys::LOGIN;
}

int IndexOf(const Inputs& inputs, Input::Kind kind, const std::string& key) {
    const Input* input = inputs.Find(kind, key);
    return input != nullptr ? inputs.IndexOf(*input) : -1;
}

}  // namespace

ConcreteTv::ConcreteTv(const Inputs& inputs, const NewTv& model)
    : inputs_(inputs),
      model_(model),
      inputCount_(static_cast<int>(inputs.inputs.size())),
      loaded_(inputs),
      modeInput_(IndexOf(inputs, Input::Kind::kCall, MODE_CALL)),
      contextInput_(IndexOf(inputs, Input::Kind::kCall, CONTEXT_CALL)) {
    pools_.resize(inputs.inputs.size() + 1);
    canChange_.resize(pools_.size(), true);
    start_.resize(pools_.size() + 2, u'\0');
    for (std::size_t i = 0; i < inputs.inputs.size(); ++i) {
        const int input = static_cast<int>(i);
        canChange_[i] = IsChangeable(inputs.inputs[i]);
        Set(start_, input, model.values.at(input));
        loaded_.inputs[i].values.assign(1, model.values.at(input));
    }
    SetRunning(start_, {});
    start_.back() = modesPool_.Intern({});
    Set(start_, Published(), NumberValue(0, "bool"));
    loadedState_ = start_;
    Derive(start_);
    explorer::tv().Use(loaded_);
}

// ---------------------------------------------------------------------------------------------
// Facts
// ---------------------------------------------------------------------------------------------

bool ConcreteTv::IsOtherOnATv::operator()(const Value& a, const Value& b) const {
    return std::tie(a.kind, a.number, a.storedType, a.text) <
           std::tie(b.kind, b.number, b.storedType, b.text);
}

template <typename T, typename Less>
char16_t ConcreteTv::Pool<T, Less>::Intern(const T& value) {
    const auto [place, isNew] = numbers.emplace(value, static_cast<char16_t>(values.size()));
    if (isNew) {
        if (values.size() == MAX_VALUES) {
            throw std::runtime_error("a setting takes more values than can be told apart");
        }
        values.push_back(&place->first);
    }
    return place->second;
}

const Value& ConcreteTv::ValueOf(const TvState& state, int fact) const {
    const auto index = static_cast<std::size_t>(fact);
    return *pools_[index].values[state[index]];
}

void ConcreteTv::Set(TvState& state, int fact, const Value& value) {
    const auto index = static_cast<std::size_t>(fact);
    state[index] = pools_[index].Intern(value);
}

void ConcreteTv::Set(TvState& state, Input::Kind kind, const std::string& key, const Value& value) {
    const int input = IndexOf(inputs_, kind, key);
    if (input >= 0) {
        Set(state, input, value);
    }
}

std::string ConcreteTv::TextOf(const TvState& state, const char* settingsKey) const {
    const int input = IndexOf(inputs_, Input::Kind::kSetting, settingsKey);
    if (input < 0) {
        return "";
    }
    const Value& value = ValueOf(state, input);
    return value.kind == Value::Kind::kText ? value.text : "";
}

bool ConcreteTv::IsOn(const TvState& state, Input::Kind kind, const char* key) const {
    const int input = IndexOf(inputs_, kind, key);
    if (input < 0) {
        return false;
    }
    const Value& value = ValueOf(state, input);
    return value.kind == Value::Kind::kNumber && value.number > 0;
}

const StartedApplications& ConcreteTv::RunningIn(const TvState& state) const {
    return *runningPool_.values[state[pools_.size()]];
}

void ConcreteTv::SetRunning(TvState& state, const StartedApplications& running) {
    state[pools_.size()] = runningPool_.Intern(running);
}

const ConcreteTv::Modes& ConcreteTv::ModesIn(const TvState& state) const {
    return *modesPool_.values[state[pools_.size() + 1]];
}

void ConcreteTv::SetMode(TvState& state, const std::string& application, int mode) {
    Modes modes = ModesIn(state);
    modes.erase(application);
    if (mode != 0) {
        modes[application] = mode;
    }
    state[pools_.size() + 1] = modesPool_.Intern(modes);
}

void ConcreteTv::Derive(TvState& state) {
    const std::string current = TextOf(state, vtv::kCurrentAssistantKey);
    const auto mode = ModesIn(state).find(current);
    const StartedApplications& running = RunningIn(state);
    const bool runs = std::any_of(running.begin(), running.end(), [&](const Started& started) {
        return started.application == current;
    });
    if (modeInput_ >= 0) {
        Set(state, modeInput_, NumberValue(mode != ModesIn(state).end() ? mode->second : 0, "int"));
    }
    if (contextInput_ >= 0) {
        Set(state, contextInput_, runs ? NumberValue(0, "int") : MissingValue());
    }
}

// ---------------------------------------------------------------------------------------------
// Runs
// ---------------------------------------------------------------------------------------------

void ConcreteTv::Load(const TvState& state) {
    for (std::size_t i = 0; i < loaded_.inputs.size(); ++i) {
        if (state[i] != loadedState_[i]) {
            loaded_.inputs[i].values.front() = *pools_[i].values[state[i]];
        }
    }
    loadedState_ = state;
}

void ConcreteTv::TakeOver(TvState& state) {
    for (int input = 0; input < inputCount_; ++input) {
        const bool isDerived = input == modeInput_ || input == contextInput_;
        if (explorer::tv().IsWritten(input) && !isDerived) {
            Set(state, input, *explorer::tv().Current(input));
        }
    }
    for (const RecordEntry& entry : ReadRecord(explorer::tv().Record())) {
        switch (entry.kind) {
            case Entry::kMode:
                SetMode(state, entry.subject, std::get<int>(entry.value));
                break;
            case Entry::kLaunch:
            case Entry::kPopup:
                StartApplication(*this, state, {entry.subject, entry.extras});
                break;
            case Entry::kTerminate:
                EndApplication(*this, state, entry.subject);
                break;
            default:
                break;
        }
    }
    Derive(state);
}

void ConcreteTv::Finish(TvState& state, const Started& started) {
    FinishApplication(*this, state, started);
    Cancel(state, started.application);
}

void ConcreteTv::Cancel(TvState& state, const std::string& application) {
    EndApplication(*this, state, application);
    Derive(state);
}

void ConcreteTv::PowerCycle(TvState& state) {
    SetRunning(state, {});
    for (int input = 0; input < inputCount_; ++input) {
        const Input& one = inputs_.inputs[static_cast<std::size_t>(input)];
        if (one.kind == Input::Kind::kSetting && vtv::IsPassingSetting(one.key)) {
            Set(state, input, MissingValue());
        }
    }
    Derive(state);
}

}  // namespace explorer
