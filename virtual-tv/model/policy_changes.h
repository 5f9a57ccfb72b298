// What else an assistant policy could say.
#pragma once

#include <string>
#include <vector>

#include "assistants.h"

namespace vtv {

// Another policy, and what makes it another.
struct PolicyChange {
    std::string text;           // the whole document
    std::string now;            // "the policy says VAFFSupport=false for Alexa"
    std::string then;           // "VAFFSupport=true for Alexa in the policy"
    bool quiteAnother = false;  // nothing of the old one is left
};
// The nearest first: a flag, an assistant more, an assistant less, quite another policy. The second
// is the policy that the model came with.
std::vector<PolicyChange> PolicyChanges(const std::string& text, const std::vector<Assistant>& own);

}  // namespace vtv
