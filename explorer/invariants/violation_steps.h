// What was seen of a violation, as steps of a scenario.
#pragma once

#include <string>

#include "look.h"

namespace explorer {

// The steps that ask and do the same, and fail where the same is seen. Empty where no page shows
// it.
std::string StepsOf(const Observed& observed);
// Of a question that did not come to an end; null is none.
Observed Unanswered(const Question* question);

}  // namespace explorer
