// The TV of this process with nothing left open: every input has one value, and each run leads from
// one state of the TV to the next.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "inputs.h"
#include "new_tv.h"
#include "virtual-tv/model/launch.h"

namespace explorer {

// A state, by the numbers of its facts' values: equal states are equal texts.
using TvState = std::u16string;

// An application as it was started.
struct Started {
    std::string application;
    vtv::Extras extras;
    auto operator<=>(const Started&) const = default;
};
using StartedApplications = std::set<Started>;

class ConcreteTv {
  public:
    // Takes the TV of this process into use; one at a time. Both must outlive it.
    ConcreteTv(const Inputs& inputs, const NewTv& model);
    ConcreteTv(const ConcreteTv&) = delete;
    ConcreteTv& operator=(const ConcreteTv&) = delete;

    const NewTv& Model() const { return model_; }
    const Inputs& GetInputs() const { return inputs_; }
    const TvState& Start() const { return start_; }

    // Facts are the inputs, by their index, and whether the policy was published again; what runs
    // and which modes are set stands behind them in a state.
    int Published() const { return inputCount_; }
    // Inputs that never change need not be looked at.
    bool CanChange(int fact) const { return canChange_[static_cast<std::size_t>(fact)]; }

    const Value& ValueOf(const TvState& state, int fact) const;
    void Set(TvState& state, int fact, const Value& value);
    // The same by key. What the inputs do not name is left alone and reads as nothing.
    void Set(TvState& state, Input::Kind kind, const std::string& key, const Value& value);
    std::string TextOf(const TvState& state, const char* settingsKey) const;
    bool IsOn(const TvState& state, Input::Kind kind, const char* key) const;

    // Applications that wait for the viewer, one of each.
    const StartedApplications& RunningIn(const TvState& state) const;
    void SetRunning(TvState& state, const StartedApplications& running);

    // The next run finds this state.
    void Load(const TvState& state);
    // Puts into the state what the run has written, and what else it did.
    void TakeOver(TvState& state);
    // The viewer goes through with an application that waits, or leaves it.
    void Finish(TvState& state, const Started& started);
    void Cancel(TvState& state, const std::string& application);
    // Pulls the plug: applications end, settings below "memory/" are gone.
    void PowerCycle(TvState& state);

  private:
    using Modes = std::map<std::string, int>;  // by application; a mode that was never set is 0
    // The values that a fact has had, and their numbers in states.
    template <typename T, typename Less = std::less<T>>
    struct Pool {
        char16_t Intern(const T& value);
        std::map<T, char16_t, Less> numbers;
        std::vector<const T*> values;
    };
    struct IsOtherOnATv {
        bool operator()(const Value& a, const Value& b) const;
    };

    const Modes& ModesIn(const TvState& state) const;
    void SetMode(TvState& state, const std::string& application, int mode);
    // What follows from other facts: the mode of the current assistant, whether its application
    // runs.
    void Derive(TvState& state);

    const Inputs& inputs_;
    const NewTv& model_;
    int inputCount_;
    Inputs loaded_;  // as inputs_, with the one value of the loaded state each
    TvState loadedState_;
    TvState start_;
    std::vector<Pool<Value, IsOtherOnATv>> pools_;
    Pool<StartedApplications> runningPool_;
    Pool<Modes> modesPool_;
    std::vector<bool> canChange_;
    int modeInput_ = -1;
    int contextInput_ = -1;
};

}  // namespace explorer
