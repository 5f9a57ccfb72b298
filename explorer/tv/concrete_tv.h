// The TV of this process with nothing left open: every input has one value, and each run leads from
// one state of the TV to the next.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "inputs.h"
#include "new_tv.h"

namespace explorer {

// A state, by the numbers of its facts' values: equal states are equal texts.
using TvState = std::u16string;

class ConcreteTv {
  public:
    // Takes the TV of this process into use; one at a time. Both must outlive it.
    ConcreteTv(const Inputs& inputs, const NewTv& model);
    ConcreteTv(const ConcreteTv&) = delete;
    ConcreteTv& operator=(const ConcreteTv&) = delete;

    const NewTv& Model() const { return model_; }
    const Inputs& GetInputs() const { return inputs_; }
    const TvState& Start() const { return start_; }

    // Facts are the inputs, by their index, and these.
    int Running() const { return inputCount_; }
    int Modes() const { return inputCount_ + 1; }
    int Published() const { return inputCount_ + 2; }
    // Inputs that never change need not be looked at.
    bool CanChange(int fact) const { return canChange_[static_cast<std::size_t>(fact)]; }

    const Value& ValueOf(const TvState& state, int fact) const;
    void Set(TvState& state, int fact, const Value& value);
    // The same by key. What the inputs do not name is left alone and reads as nothing.
    void Set(TvState& state, Input::Kind kind, const char* key, const Value& value);
    std::string TextOf(const TvState& state, const char* settingsKey) const;
    bool IsOn(const TvState& state, Input::Kind kind, const char* key) const;

    // Applications that wait for the viewer, each as it was started: "APP key="value"", sorted.
    std::vector<std::string> RunningIn(const TvState& state) const;
    void SetRunning(TvState& state, const std::vector<std::string>& running);

    // The next run finds this state.
    void Load(const TvState& state);
    // Puts into the state what the run has written, and what else it did.
    void TakeOver(TvState& state);
    // The viewer goes through with an application that waits, or leaves it.
    void Finish(TvState& state, const std::string& launch);
    void Cancel(TvState& state, const std::string& launch);
    // Pulls the plug: applications end, settings below "memory/" are gone.
    void PowerCycle(TvState& state);

  private:
    struct Pool {
        std::map<std::string, std::uint16_t> ids;
        std::vector<Value> values;
    };

    void SetMode(TvState& state, const std::string& mode);
    std::uint16_t Intern(int fact, const Value& value);
    // What follows from other facts: the mode of the current assistant, whether its application
    // runs.
    void Derive(TvState& state);

    const Inputs& inputs_;
    const NewTv& model_;
    int inputCount_;
    Inputs loaded_;  // as inputs_, with the one value of the loaded state each
    TvState loadedState_;
    TvState start_;
    std::vector<Pool> pools_;
    std::vector<bool> canChange_;
    int modeInput_ = -1;
    int contextInput_ = -1;
};

// "com.vantelo.tv.alexa" of "com.vantelo.tv.alexa key="value"".
std::string ApplicationOf(const std::string& launch);

}  // namespace explorer
