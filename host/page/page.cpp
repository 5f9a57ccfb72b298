#include "page.h"

#include <algorithm>
#include <stdexcept>

namespace host {

namespace {

bool IsIdCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

std::string ChoicesText(const ItemView& view) {
    std::string text;
    for (const Choice& choice : view.choices) {
        text += (text.empty() ? "" : ", ") + std::to_string(choice.value) + " " + choice.text;
    }
    return text;
}

std::string ReasonText(const ItemView& view) {
    if (view.disableText) {
        return *view.disableText;
    }
    return view.disablePopup ? view.disablePopup->message : "";
}

void AddChanges(const ItemView& old, bool wasThere, const ItemView& now, bool isThere,
                std::vector<PageChange>* changes) {
    const auto note = [&](const char* what, const std::string& a, const std::string& b) {
        if (a != b) {
            changes->push_back({now.item, what, a, b});
        }
    };
    note("visible", wasThere ? "shown" : "hidden", isThere ? "shown" : "hidden");
    if (!wasThere || !isThere) {
        return;
    }
    note("enabled", old.enabled ? "enabled" : "dimmed", now.enabled ? "enabled" : "dimmed");
    note("value", old.ValueText(), now.ValueText());
    note("title", old.title.value_or(""), now.title.value_or(""));
    note("help", old.help.value_or(""), now.help.value_or(""));
    note("choices", ChoicesText(old), ChoicesText(now));
    if (ReasonText(old) != ReasonText(now)) {
        note("reason", ReasonText(old), ReasonText(now));
    } else if (old.disablePopup && now.disablePopup) {
        // The same words, under another title or with other buttons.
        note("reason", ToText(*old.disablePopup), ToText(*now.disablePopup));
    }
}

}  // namespace

std::string ItemView::ValueText() const {
    if (!value) {
        return "";
    }
    for (const Choice& choice : choices) {
        if (choice.value == *value) {
            return choice.text;
        }
    }
    if (item->kind == ItemKind::kSwitch && (*value == 0 || *value == 1)) {
        return *value == 1 ? "on" : "off";
    }
    if (item->kind == ItemKind::kSwitch) {
        return "neither on nor off (" + std::to_string(*value) + ")";
    }
    return item->kind == ItemKind::kList && *value == 0 ? "none" : std::to_string(*value);
}

std::string ItemView::Label() const {
    // Where the policy does not name an assistant, its title is what a placeholder leaves.
    const bool isWhole = title && !title->empty() && title->front() != ' ' && title->back() != ' ';
    return isWhole ? *title : item->name;
}

std::vector<std::string> ItemView::MissingTexts() const {
    std::vector<std::string> missing;
    const auto note = [&](const char* what, const std::optional<std::string>& text) {
        if (text && HoldsTextId(*text)) {
            missing.emplace_back(what);
        }
    };
    note("title", title);
    note("help", help);
    if (std::any_of(choices.begin(), choices.end(),
                    [](const Choice& choice) { return HoldsTextId(choice.text); })) {
        missing.emplace_back("choices");
    }
    note("disable-text", disableText);
    if (disablePopup) {
        const Box& box = *disablePopup;
        const bool button = std::any_of(box.buttons.begin(), box.buttons.end(),
                                        [](const std::string& text) { return HoldsTextId(text); });
        if (button || HoldsTextId(box.title) || HoldsTextId(box.message)) {
            missing.emplace_back("popup");
        }
    }
    return missing;
}

const ItemView& Page::operator[](std::string_view name) const {
    for (const ItemView& view : items) {
        if (name == view.item->name) {
            return view;
        }
    }
    throw std::out_of_range("no item " + std::string(name));
}

const ItemView* Page::FirstHidden(const Item& item) const {
    const Item* parent = item.parent != nullptr ? FindItem(item.parent) : nullptr;
    if (parent != nullptr) {
        if (const ItemView* hidden = FirstHidden(*parent)) {
            return hidden;
        }
    }
    const ItemView& view = (*this)[item.name];
    return view.visible ? nullptr : &view;
}

bool Page::IsReachable(const Item& item) const {
    const bool open = item.parent == nullptr || items.front().enabled;
    return open && IsShown(item);
}

ItemView LookAt(const AskableProvider& provider, const Item& item) {
    ItemView view;
    view.item = &item;
    view.visible = provider.IsVisible(item.key);
    view.enabled = provider.IsEnabled(item.key);
    view.title = provider.Title(item.key);
    view.help = provider.Help(item.key);
    if (HasValue(item)) {
        view.value = provider.GetInt(item.key);
    }
    if (item.kind == ItemKind::kList) {
        view.choices = provider.Choices(item.key);
    }
    if (!view.enabled) {
        view.disableText = provider.DisableText(item.key);
        view.disablePopup = provider.DisablePopup(item.key);
    }
    return view;
}

Page LookAtPage(const AskableProvider& provider) {
    Page page;
    for (const Item& item : PageItems()) {
        page.items.push_back(LookAt(provider, item));
    }
    return page;
}

bool HoldsTextId(std::string_view text) {
    size_t begin = 0;
    while (begin < text.size()) {
        size_t end = begin;
        while (end < text.size() && IsIdCharacter(text[end])) {
            ++end;
        }
        const std::string_view word = text.substr(begin, end - begin);
        if (word.size() >= 8 && std::count(word.begin(), word.end(), '_') >= 2) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

std::vector<PageChange> ComparePages(const Page& before, const Page& after) {
    std::vector<PageChange> changes;
    for (size_t i = 0; i < before.items.size() && i < after.items.size(); ++i) {
        const ItemView& old = before.items[i];
        const ItemView& now = after.items[i];
        AddChanges(old, before.IsReachable(*old.item), now, after.IsReachable(*now.item), &changes);
    }
    return changes;
}

std::vector<PageChange> CompareItems(const ItemView& before, const ItemView& after) {
    std::vector<PageChange> changes;
    AddChanges(before, before.visible, after, after.visible, &changes);
    return changes;
}

std::string ToText(const PageChange& change) {
    return (change.before.empty() ? "nothing" : change.before) + " -> " +
           (change.after.empty() ? "nothing" : change.after);
}

std::string ToText(const PageChange& change, const Page& after) {
    const std::string label = after[change.item->name].Label();
    const bool plain =
        change.what == "visible" || change.what == "enabled" || change.what == "value";
    return label + " (" + change.item->name + ")" + (plain ? "" : " " + change.what) + ": " +
           ToText(change);
}

std::string ToText(const Box& box) {
    std::string text = box.title.empty() ? box.message : box.title + ": " + box.message;
    for (const std::string& button : box.buttons) {
        text += " [" + button + "]";
    }
    return text;
}

}  // namespace host
