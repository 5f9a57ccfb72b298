// What a model settles on its TVs, and what their users can change.
#pragma once

#include <vector>

#include "inputs.h"
#include "policy.h"

namespace explorer {

// Features, and settings that a market has and that its users have no hand in, such as the country.
bool IsOfModel(const Input& input);
// Leaves each other input the values that a user's TV can have, one of each kind: broken documents,
// refused writes and failing services are left out. The current assistant is one of the policies'.
void KeepUserValues(Inputs& inputs, const std::vector<PolicyState>& policies);

}  // namespace explorer
