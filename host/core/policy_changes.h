// The assistant policy as a document: what is wrong with it, what it says, and what it could say
// instead.
#pragma once

#include <string>
#include <vector>

#include "virtual-tv/virtual_tv.h"

namespace host {

// "the policy offers two assistants", "the policy is no JSON": what a provider takes from it.
std::string DescribePolicy(const std::string& text);
// The application ids that it offers; none when it cannot be read.
std::vector<std::string> OfferedApplications(const std::string& text);

// Another policy, and what makes it another.
struct PolicyChange {
    std::string text;           // the whole document
    std::string now;            // "the policy says VAFFSupport=false for Alexa"
    std::string then;           // "VAFFSupport=true for Alexa in the policy"
    bool quiteAnother = false;  // nothing of the old one is left
};
// The nearest first: a flag, an assistant more, an assistant less, quite another policy.
std::vector<PolicyChange> PolicyChanges(const std::string& text, const vtv::Model& model);

}  // namespace host
