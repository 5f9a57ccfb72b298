// Where the provider's source has the rules of each item, for people who want to read on.
#pragma once

#include <string_view>

#include "page.h"

namespace host {

struct Rule {
    const char* function;  // null: the item has none
    const char* source;
};

struct ItemRules {
    const char* item;  // its name
    Rule visible;
    Rule enabled;
    Rule value;
};

const ItemRules& RulesOf(const Item& item);
// What answers a question of Explanation: "visible", "enabled", "value", "reason".
Rule RuleOf(const Item& item, std::string_view question);

}  // namespace host
