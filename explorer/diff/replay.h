// What was found on a path, as steps of a scenario: a virtual TV asks the same and expects the
// same.
#pragma once

#include <string>
#include <string_view>

#include "explorer/asking/question.h"
#include "explorer/tv/inputs.h"
#include "explorer/tv/state.h"

namespace explorer {

// The steps that ask the question and expect what the record of it says, and not what another
// record says. Empty where no host can tell the two by asking for an item.
std::string ToReplay(const Inputs& inputs, const State& state, const Question& question,
                     std::string_view record, std::string_view other);

}  // namespace explorer
