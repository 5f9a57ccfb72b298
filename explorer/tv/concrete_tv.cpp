#include "concrete_tv.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "app_effects.h"
#include "keys.h"
#include "lazy_tv.h"

namespace explorer {

namespace {

constexpr char MODE_CALL[] = "AOVSystemDataGetAOVMode";
constexpr char CONTEXT_CALL[] = "app_manager_get_app_context";

constexpr std::size_t MAX_VALUES = 0x10000;

std::string Canonical(const Value& value) {
    return std::to_string(static_cast<int>(value.kind)) + ' ' + std::to_string(value.number) + ' ' +
           value.storedType + ' ' + value.text;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string JoinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    return text;
}

bool IsChangeable(const Input& input) {
    const bool isState = input.kind == Input::Kind::kSetting || input.kind == Input::Kind::kFile ||
                         input.kind == Input::Kind::kConsent;
    return isState || input.key == MODE_CALL || input.key == CONTEXT_CALL ||
           input.key == keys::LOGIN;
}

int IndexOf(const Inputs& inputs, Input::Kind kind, const char* key) {
    const Input* input = inputs.Find(kind, key);
    return input != nullptr ? inputs.IndexOf(*input) : -1;
}

}  // namespace

std::string ApplicationOf(const std::string& launch) {
    return launch.substr(0, launch.find(' '));
}

ConcreteTv::ConcreteTv(const Inputs& inputs, const NewTv& model)
    : inputs_(inputs),
      model_(model),
      inputCount_(static_cast<int>(inputs.inputs.size())),
      loaded_(inputs),
      modeInput_(IndexOf(inputs, Input::Kind::kCall, MODE_CALL)),
      contextInput_(IndexOf(inputs, Input::Kind::kCall, CONTEXT_CALL)) {
    const std::size_t facts = inputs.inputs.size() + 3;
    pools_.resize(facts);
    canChange_.resize(facts, true);
    start_.resize(facts, u'\0');
    for (std::size_t i = 0; i < inputs.inputs.size(); ++i) {
        const int input = static_cast<int>(i);
        canChange_[i] = IsChangeable(inputs.inputs[i]);
        Set(start_, input, model.values.at(input));
        loaded_.inputs[i].values.assign(1, model.values.at(input));
    }
    Set(start_, Running(), TextValue(""));
    Set(start_, Modes(), TextValue(""));
    Set(start_, Published(), NumberValue(0, "bool"));
    loadedState_ = start_;
    Derive(start_);
    explorer::tv().Use(loaded_);
}

// ---------------------------------------------------------------------------------------------
// Facts
// ---------------------------------------------------------------------------------------------

std::uint16_t ConcreteTv::Intern(int fact, const Value& value) {
    Pool& pool = pools_[static_cast<std::size_t>(fact)];
    const auto [place, isNew] =
        pool.ids.emplace(Canonical(value), static_cast<std::uint16_t>(pool.values.size()));
    if (isNew) {
        if (pool.values.size() == MAX_VALUES) {
            throw std::runtime_error("a setting takes more values than can be told apart");
        }
        pool.values.push_back(value);
    }
    return place->second;
}

const Value& ConcreteTv::ValueOf(const TvState& state, int fact) const {
    const auto index = static_cast<std::size_t>(fact);
    return pools_[index].values[state[index]];
}

void ConcreteTv::Set(TvState& state, int fact, const Value& value) {
    state[static_cast<std::size_t>(fact)] = static_cast<char16_t>(Intern(fact, value));
}

void ConcreteTv::Set(TvState& state, Input::Kind kind, const char* key, const Value& value) {
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

std::vector<std::string> ConcreteTv::RunningIn(const TvState& state) const {
    return SplitLines(ValueOf(state, Running()).text);
}

void ConcreteTv::SetRunning(TvState& state, const std::vector<std::string>& running) {
    std::vector<std::string> sorted = running;
    std::sort(sorted.begin(), sorted.end());
    Set(state, Running(), TextValue(JoinLines(sorted)));
}

void ConcreteTv::SetMode(TvState& state, const std::string& mode) {
    // "APP to MODE"; a mode that was never set is 0.
    const std::size_t split = mode.rfind(" to ");
    const std::string application = mode.substr(0, split);
    const std::string number = mode.substr(split + 4);
    std::vector<std::string> modes = SplitLines(ValueOf(state, Modes()).text);
    modes.erase(std::remove_if(modes.begin(), modes.end(),
                               [&](const std::string& one) {
                                   return one.rfind(application + " to ", 0) == 0;
                               }),
                modes.end());
    if (number != "0") {
        modes.push_back(mode);
    }
    std::sort(modes.begin(), modes.end());
    Set(state, Modes(), TextValue(JoinLines(modes)));
}

void ConcreteTv::Derive(TvState& state) {
    const std::string current = TextOf(state, keys::CURRENT);
    int mode = 0;
    for (const std::string& one : SplitLines(ValueOf(state, Modes()).text)) {
        if (one.rfind(current + " to ", 0) == 0) {
            mode = std::stoi(one.substr(current.size() + 4));
        }
    }
    const std::vector<std::string> running = RunningIn(state);
    const bool runs = std::any_of(running.begin(), running.end(), [&](const std::string& launch) {
        return ApplicationOf(launch) == current;
    });
    if (modeInput_ >= 0) {
        Set(state, modeInput_, NumberValue(mode, "int"));
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
            loaded_.inputs[i].values.front() = pools_[i].values[state[i]];
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
                SetMode(state, entry.text);
                break;
            case Entry::kLaunch:
            case Entry::kPopup:
                StartApplication(*this, state, entry.text);
                break;
            case Entry::kTerminate:
                EndApplication(*this, state, entry.text);
                break;
            default:
                break;
        }
    }
    Derive(state);
}

void ConcreteTv::Finish(TvState& state, const std::string& launch) {
    FinishApplication(*this, state, launch);
    EndApplication(*this, state, ApplicationOf(launch));
    Derive(state);
}

void ConcreteTv::Cancel(TvState& state, const std::string& launch) {
    EndApplication(*this, state, ApplicationOf(launch));
    Derive(state);
}

void ConcreteTv::PowerCycle(TvState& state) {
    SetRunning(state, {});
    for (int input = 0; input < inputCount_; ++input) {
        const Input& one = inputs_.inputs[static_cast<std::size_t>(input)];
        if (one.kind == Input::Kind::kSetting && one.key.rfind("memory/", 0) == 0) {
            Set(state, input, MissingValue());
        }
    }
    Derive(state);
}

}  // namespace explorer
