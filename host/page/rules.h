// Where the provider's source decides what each item answers, for people who want to read on.
#pragma once

#include <string_view>
#include <vector>

#include "virtual-tv/model/items.h"

namespace host {

struct Rule {
    const char* function;  // null: the item has none
    const char* source;
};

// What answers a question about the item: "visible", "enabled", "value", "choices", "set", or one
// of those that SlotOf() knows.
Rule RuleOf(const vtv::Item& item, std::string_view question);

// The function of the provider's table that answers "title", "help", "value", "choices",
// "confirmation", "reason", "popup", "set", "press" or "properties" for every key, and the one that
// decides what a popup's "button" starts; null for another question.
const char* SlotOf(std::string_view question);

// What else is answered of an item, besides whether it is visible and enabled and what it reads.
struct FurtherRule {
    const char* question;
    const char* inWords;
    Rule rule;
};
std::vector<FurtherRule> FurtherRulesOf(const vtv::Item& item);

}  // namespace host
