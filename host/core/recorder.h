// What is done to a TV, added to the scenarios that it is being recorded into.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "recording.h"

namespace host {

// Make it before the thing is done, which is not to be done when this throws; tell it when it is
// done.
class Recorder {
  public:
    // Into the file that is named (none when it is empty), and into the one that the TV is being
    // recorded into. The step is worked out only where it is recorded; an empty one is none.
    Recorder(const std::string& file, const vtv::Tv& tv,
             const std::function<Recording::Step()>& step);
    void Done();
    void Done(const PressResult& result);

  private:
    std::vector<Recording> recordings_;
};

// A press as a step of a scenario.
Recording::Step StepOf(const Press& press);

}  // namespace host
