// The Voice page as a viewer sees it: what its items are, and a snapshot of what they show.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "provider.h"

namespace host {

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
};

// The 13 items, in the page's order.
const std::vector<Item>& PageItems();
// By name or by whole key; null when there is none.
const Item* FindItem(std::string_view nameOrKey);

inline bool HasValue(const Item& item) {
    return item.kind == ItemKind::kSwitch || item.kind == ItemKind::kList;
}

// One item as it looks now. Everything is asked for hidden items, too.
struct ItemView {
    const Item* item = nullptr;
    bool visible = false;
    bool enabled = false;
    std::optional<std::string> title;
    std::optional<std::string> help;
    std::optional<int> value;     // items with a value only
    std::vector<Choice> choices;  // list items only
    // Dimmed items only: what a viewer gets who selects it.
    std::optional<std::string> disableText;
    std::optional<Box> disablePopup;

    // The value in words: "on", "off", the text of the choice, or the number.
    std::string ValueText() const;
    // The title, or the item's name where it has none.
    std::string Label() const;
    // Which of its texts are not translated: "title", "help", "choices", ...
    std::vector<std::string> MissingTexts() const;

    bool operator==(const ItemView&) const = default;
};

struct Page {
    std::vector<ItemView> items;  // as PageItems()

    const ItemView& operator[](std::string_view name) const;
    // Whether the item is to be seen: it is shown, and so is all that it lies below.
    bool IsShown(const Item& item) const { return FirstHidden(item) == nullptr; }
    // The outermost thing that keeps it from being shown: an item that it lies below, or itself;
    // null when there is none.
    const ItemView* FirstHidden(const Item& item) const;
    // Whether a viewer can get to the item: it is shown, and the page that it lies on can be
    // opened.
    bool IsReachable(const Item& item) const;

    bool operator==(const Page&) const = default;
};

ItemView LookAt(const Provider& provider, const Item& item);
Page LookAtPage(const Provider& provider);

// Whether a text holds the id of a text in place of its translation: "TV_SID_SETTINGS_VOICE".
bool HoldsTextId(std::string_view text);

// One difference between two looks at the page, as a viewer sees it: of an item that cannot be
// reached nothing is to be seen.
struct PageChange {
    const Item* item;
    std::string what;  // "visible", "enabled", "value", "title", "help", "choices", "reason"
    std::string before;
    std::string after;
};
std::vector<PageChange> ComparePages(const Page& before, const Page& after);
// "Hands-free wake-up: off -> on".
std::string ToText(const PageChange& change, const Page& after);

}  // namespace host
