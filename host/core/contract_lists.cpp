// Lists of choices: whole, the host's own until it gives them back, and freed by slot 24.
#include <malloc.h>

#include <cstdlib>
#include <set>

#include "contract_subject.h"
#include "program/counted.h"
#include "supervised.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

std::string Entries(int count) {
    return program::Counted(std::to_string(count), "entry", "entries");
}

// A list of the host's, given back at the end.
class OpenList {
  public:
    OpenList(const Subject& subject, const char* key) : subject_(subject), name_(QuotedKey(key)) {
        items = subject.table->get_list_items(key, &count);
    }
    ~OpenList() {
        if (items != nullptr) {
            subject_.table->free_list_items(items, count);
        }
    }
    OpenList(const OpenList&) = delete;
    OpenList& operator=(const OpenList&) = delete;

    // Before anything is read of it: a count that is too large would lead out of the array.
    void RequireRoom() const {
        if (items == nullptr) {
            return;
        }
        Require(count > 0, name_ + ": a list of " + Entries(count));
        const size_t room = malloc_usable_size(items) / sizeof(ListItem*);
        Require(room >= static_cast<size_t>(count), name_ + ": the list has " + Entries(count) +
                                                        " in an array for " + std::to_string(room));
    }
    std::string Where(int i) const { return name_ + ", entry " + std::to_string(i); }
    std::string Text(int i) const {
        char* text = nullptr;
        subject_.table->list_item_text(items[i], &text);
        Require(text != nullptr, Where(i) + " has no text");
        return text;
    }

    ListItem** items = nullptr;
    int count = 0;

  private:
    const Subject& subject_;
    std::string name_;
};

void ListSlotsReturnZero(const std::string& file) {
    const Subject subject(file);
    int count = 0;
    ListItem** items = subject.table->get_list_items(kAssistantKey, &count);
    Require(items != nullptr, "the TV offers three assistants, but there is no list of them");
    char* text = nullptr;
    int number = 0;
    Require(subject.table->list_item_text(items[0], &text) == 0,
            "list_item_text() does not return 0");
    Require(subject.table->list_item_value(items[0], &number) == 0,
            "list_item_value() does not return 0");
    Require(subject.table->list_item_kind(items[0], &number) == 0,
            "list_item_kind() does not return 0");
    Require(subject.table->free_list_items(items, count) == 0,
            "free_list_items() does not return 0");
}

void ListsHaveRoom(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        const OpenList list(subject, item.key);
        list.RequireRoom();
    }
}

void ListsAreWhole(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        Doing(std::string("the list of ") + item.name);
        const OpenList list(subject, item.key);
        list.RequireRoom();
        for (int i = 0; list.items != nullptr && i < list.count; ++i) {
            const ListItem* entry = list.items[i];
            Require(entry != nullptr, list.Where(i) + " is null");
            char* text = nullptr;
            int value = 0;
            int kind = 0;
            subject.table->list_item_text(entry, &text);
            subject.table->list_item_value(entry, &value);
            subject.table->list_item_kind(entry, &kind);
            Require(text != nullptr && text == entry->text,
                    list.Where(i) + ": its text is not the item's own");
            Require(value == entry->value, list.Where(i) + ": its value is not the item's own");
            Require(kind == SI_LIST_ITEM_INTEGER,
                    list.Where(i) + ": its kind is not that of an integer");
        }
    }
}

void ListValuesDiffer(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        const OpenList list(subject, item.key);
        std::set<int> values;
        for (int i = 0; list.items != nullptr && i < list.count; ++i) {
            Require(values.insert(list.items[i]->value).second,
                    list.Where(i) + ": its value is there already");
        }
    }
}

void ListKindsNeedNoItem(const std::string& file) {
    const Subject subject(file);
    int kind = 0;
    Doing("list_item_kind() without an item");
    subject.table->list_item_kind(nullptr, &kind);
    Require(kind == SI_LIST_ITEM_INTEGER,
            "list_item_kind() without an item is not " + std::to_string(SI_LIST_ITEM_INTEGER));
}

void ListsAreFresh(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        OpenList one(subject, item.key);
        const OpenList two(subject, item.key);
        if (one.items == nullptr || two.items == nullptr) {
            continue;
        }
        Require(one.items != two.items, two.Where(0) + ": the same list is handed out twice");
        std::vector<std::string> texts;
        for (int i = 0; i < two.count; ++i) {
            Require(one.items[i] != two.items[i] && one.items[i]->text != two.items[i]->text,
                    two.Where(i) + " belongs to two lists");
            texts.push_back(two.Text(i));
        }
        subject.table->free_list_items(one.items, one.count);
        one.items = nullptr;
        for (int i = 0; i < two.count; ++i) {
            Require(two.Text(i) == texts[static_cast<size_t>(i)],
                    two.Where(i) + " changes when another list is freed");
        }
    }
}

void ListReadersSpareNull(const std::string& file) {
    const Subject subject(file);
    const OpenList list(subject, kAssistantKey);
    Require(list.items != nullptr, "the TV offers three assistants, but there is no list of them");
    Doing("list_item_text() with a null out-pointer");
    subject.table->list_item_text(list.items[0], nullptr);
    Doing("list_item_value() with a null out-pointer");
    subject.table->list_item_value(list.items[0], nullptr);
    Doing("list_item_kind() with a null out-pointer");
    subject.table->list_item_kind(list.items[0], nullptr);
}

void ListsAreFreedWhole(const std::string& file) {
    const Subject subject(file);
    Require(OpenList(subject, kAssistantKey).items != nullptr,
            "the TV offers three assistants, but there is no list of them");
    RequireNoGrowth("lists that were freed", [&] { const OpenList list(subject, kAssistantKey); });
}

void EmptyListsAreFreed(const std::string& file) {
    const Subject subject(file);
    for (const int count : {0, -1}) {
        Doing("freeing a list of " + Entries(count));
        auto** none = static_cast<ListItem**>(std::calloc(1, sizeof(ListItem*)));
        subject.table->free_list_items(none, count);
    }
    Doing("freeing a list with null entries");
    auto** holes = static_cast<ListItem**>(std::calloc(3, sizeof(ListItem*)));
    holes[1] = static_cast<ListItem*>(std::calloc(1, sizeof(ListItem)));
    subject.table->free_list_items(holes, 3);
}

void ListsOutliveAPolicy(const std::string& file) {
    const Subject subject(file);
    const OpenList list(subject, kAssistantKey);
    Require(list.items != nullptr, "the TV offers three assistants, but there is no list of them");
    std::vector<std::string> texts;
    for (int i = 0; i < list.count; ++i) {
        texts.push_back(list.Text(i));
    }
    const std::string others =
        vtv::WritePolicy({{1, "GVA", "a", "Other", false}, {2, "SVA", "b", "More", false}});
    for (const std::string& policy : {std::string("[]"), others, std::string("{")}) {
        Doing("a list is open while this policy is published: " + policy);
        vtv::Current()->Set(vtv::kPolicyKey, policy);
        vtv::Current()->Dispatch();
        {
            const OpenList another(subject, kAssistantKey);
        }
        for (int i = 0; i < list.count; ++i) {
            Require(list.Text(i) == texts[static_cast<size_t>(i)],
                    list.Where(i) + " of an open list changes when a policy is published");
        }
    }
    Doing("the list that was open while policies were published is freed");
}

}  // namespace

std::vector<ContractCheck> ListChecks() {
    return {
        {"list-slots-return-0", "The slots for items of a list return 0.", ListSlotsReturnZero},
        {"lists-have-room", "The array of a list has room for as many entries as it counts.",
         ListsHaveRoom},
        {"lists-are-whole", "Every entry of a list is there, with a text, a value and a kind.",
         ListsAreWhole},
        {"list-values-differ", "No two entries of a list have the same value.", ListValuesDiffer},
        {"list-kinds-need-no-item", "The kind of a list's values is told without an item.",
         ListKindsNeedNoItem},
        {"lists-are-fresh", "Two lists at a time have nothing in common.", ListsAreFresh},
        {"list-readers-spare-null", "The slots for items of a list write no null out-pointer.",
         ListReadersSpareNull},
        {"lists-are-freed-whole", "Slot 24 frees a list with all that belongs to it.",
         ListsAreFreedWhole},
        {"empty-lists-are-freed", "Slot 24 takes lists without entries and with null entries.",
         EmptyListsAreFreed},
        {"lists-outlive-a-policy", "An open list stays as it is when a new policy is published.",
         ListsOutliveAPolicy},
    };
}

}  // namespace host
