// The items of the Voice page: what they are, and the provider's functions behind each.
#pragma once

#include <string_view>
#include <vector>

namespace vtv {

// What can be done with an item.
enum class ItemKind {
    kPage,         // the page itself
    kSetup,        // the entry that stands for the page until the setup is done
    kSwitch,       // an integer item that reads 1 or 0
    kList,         // an integer item with choices
    kApplication,  // opens another application's own settings
};

struct Item {
    const char* key;
    const char* name;    // what people type: "voice-wake-up"
    const char* parent;  // name of the item that it is shown below; null at the top
    ItemKind kind;
    const char* visibilityRule;
    const char* enableRule;
    // Null where the item has none.
    const char* reader = nullptr;
    const char* writer = nullptr;
    const char* listBuilder = nullptr;
};

// The 13 items, in the page's order.
const std::vector<Item>& PageItems();
// By name or by whole key; null when there is none.
const Item* FindItem(std::string_view nameOrKey);

// How far below the page it is indented: 0 or more items lie between them.
int DepthOf(const Item& item);

inline bool HasValue(const Item& item) {
    return item.kind == ItemKind::kSwitch || item.kind == ItemKind::kList;
}

}  // namespace vtv
