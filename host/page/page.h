// The Voice page as a viewer sees it: a snapshot of what its items show.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "askable_provider.h"
#include "virtual-tv/model/items.h"

namespace host {

using vtv::FindItem;
using vtv::HasValue;
using vtv::Item;
using vtv::ItemKind;
using vtv::PageItems;

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

    // The value in words: "on", "off", the text of the choice, "neither on nor off (-1)", or the
    // number.
    std::string ValueText() const;
    // The title, or the item's name where it has none or only what an empty placeholder leaves.
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

ItemView LookAt(const AskableProvider& provider, const Item& item);
Page LookAtPage(const AskableProvider& provider);

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
// The same of an item by itself, which is to be seen wherever its own rule shows it.
std::vector<PageChange> CompareItems(const ItemView& before, const ItemView& after);
// "off -> on".
std::string ToText(const PageChange& change);
// "Hands-free wake-up: off -> on".
std::string ToText(const PageChange& change, const Page& after);

// "Title: message [OK] [Cancel]".
std::string ToText(const Box& box);

}  // namespace host
