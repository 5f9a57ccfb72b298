#include "askable_provider.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace host {

namespace {

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

std::optional<std::string> TakeText(int (*slot)(const char*, char**), const char* key) {
    if (slot == nullptr) {
        return std::nullopt;
    }
    char* text = nullptr;
    slot(key, &text);
    const OwnedText owned(text);
    return owned ? std::optional<std::string>(owned.get()) : std::nullopt;
}

std::optional<int> ParseAction(const std::string& text) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    return end != text.c_str() && *end == '\0' ? std::optional<int>(static_cast<int>(value))
                                               : std::nullopt;
}

}  // namespace

// Slots 39, 50 and 51 write whole texts without asking for the room: it holds twice the longest
// text that a TV translates. Between two calls all is zero; zeroing the whole room for each took
// longer than asking.
struct AskableProvider::BoxTexts {
    struct Text {
        char room[128 * 1024] = "";
        std::string Take() {
            std::string text(room, strnlen(room, sizeof(room)));
            std::fill_n(room, text.size(), '\0');
            return text;
        }
    };

    Box Take(int count) {
        Box box{title.Take(),
                message.Take(),
                {first.Take(), second.Take()},
                ParseAction(action.Take())};
        box.buttons.resize(static_cast<size_t>(std::clamp(count, 0, 2)));
        return box;
    }

    Text title;
    Text message;
    Text first;
    Text second;
    Text action;
};

AskableProvider::AskableProvider(Check visible, Check enabled, const SIProviderTable& table)
    : visible_(visible), enabled_(enabled), table_(&table), box_(std::make_shared<BoxTexts>()) {}

std::optional<std::string> AskableProvider::Title(const char* key) const {
    return TakeText(table_->get_display_name, key);
}

std::optional<std::string> AskableProvider::Help(const char* key) const {
    return TakeText(table_->get_help_text, key);
}

std::optional<std::string> AskableProvider::Property(const char* key) const {
    return TakeText(table_->provider_property, key);
}

std::optional<int> AskableProvider::GetInt(const char* key) const {
    if (table_->get_int == nullptr) {
        return std::nullopt;
    }
    int value = INT_MIN;
    table_->get_int(key, &value);
    return value != INT_MIN ? std::optional<int>(value) : std::nullopt;
}

void AskableProvider::SetInt(const char* key, int value) const {
    if (table_->set_int != nullptr) {
        table_->set_int(key, value);
    }
}

std::vector<Choice> AskableProvider::Choices(const char* key) const {
    std::vector<Choice> choices;
    if (table_->get_list_items == nullptr) {
        return choices;
    }
    int count = 0;
    ListItem** items = table_->get_list_items(key, &count);
    if (items == nullptr) {
        return choices;
    }
    for (int i = 0; i < count; ++i) {
        if (items[i] == nullptr) {
            continue;
        }
        Choice choice;
        char* text = nullptr;
        if (table_->list_item_text != nullptr) {
            table_->list_item_text(items[i], &text);
        }
        if (table_->list_item_value != nullptr) {
            table_->list_item_value(items[i], &choice.value);
        }
        choice.text = text != nullptr ? text : "";
        choices.push_back(std::move(choice));
    }
    if (table_->free_list_items != nullptr) {
        table_->free_list_items(items, count);
    }
    return choices;
}

std::optional<Box> AskableProvider::Confirmation(const char* key) const {
    if (table_->get_messagebox_info == nullptr) {
        return std::nullopt;
    }
    int buttons = 0;
    table_->get_messagebox_info(key, box_->message.room, box_->first.room, box_->second.room,
                                &buttons);
    if (buttons > 0 && table_->get_messagebox_title != nullptr) {
        table_->get_messagebox_title(key, box_->title.room);
    }
    Box box = box_->Take(buttons);
    return buttons > 0 ? std::optional<Box>(std::move(box)) : std::nullopt;
}

std::optional<std::string> AskableProvider::DisableText(const char* key) const {
    if (table_->get_disable_text == nullptr) {
        return std::nullopt;
    }
    char* text = nullptr;
    bool flag = false;
    table_->get_disable_text(key, &text, &flag);
    const OwnedText owned(text);
    return flag && owned ? std::optional<std::string>(owned.get()) : std::nullopt;
}

std::optional<Box> AskableProvider::DisablePopup(const char* key) const {
    if (table_->get_disablepopup_info == nullptr) {
        return std::nullopt;
    }
    int buttons = 0;
    table_->get_disablepopup_info(key, box_->message.room, box_->title.room, box_->first.room,
                                  box_->second.room, &buttons, box_->action.room);
    Box box = box_->Take(buttons);
    return buttons > 0 ? std::optional<Box>(std::move(box)) : std::nullopt;
}

}  // namespace host
