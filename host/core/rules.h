// Where the provider's source has the rules of each item, for people who want to read on.
#pragma once

#include <string_view>

#include "virtual-tv/model/items.h"

namespace host {

struct Rule {
    const char* function;  // null: the item has none
    const char* source;
};

// What answers a question of Explanation: "visible", "enabled", "value", "reason".
Rule RuleOf(const vtv::Item& item, std::string_view question);

}  // namespace host
