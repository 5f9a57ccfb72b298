// The 13 items of the Voice page, and the provider's functions behind each.
#pragma once

#include <string_view>
#include <vector>

namespace explorer {

struct Item {
    const char* name;  // "voice-wake-up"
    const char* key;   // "menu/system/general-voice-voice-wake-up"
    const char* visibilityRule;
    const char* enableRule;
    // Null where the item has none.
    const char* reader;
    const char* writer;
    const char* listBuilder;
};

// In the page's order.
const std::vector<Item>& Items();
// By name or by whole key; null when there is none.
const Item* FindItem(std::string_view nameOrKey);

}  // namespace explorer
