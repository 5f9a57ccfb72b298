#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <set>

#include "contract_subject.h"
#include "page.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

// --- Texts and lists ---

void TextsAreFresh(const std::string& file) {
    const Subject subject(file);
    int texts = 0;
    for (const Item& item : PageItems()) {
        for (int (*slot)(const char*, char**) :
             {subject.table->get_display_name, subject.table->get_help_text}) {
            char* one = nullptr;
            char* two = nullptr;
            Require(slot(item.key, &one) == 0,
                    item.name + std::string(": a text slot does not return 0"));
            slot(item.key, &two);
            Require((one == nullptr) == (two == nullptr),
                    item.name + std::string(": the text comes and goes"));
            Require(one == nullptr || one != two,
                    item.name + std::string(": the same text is handed out twice"));
            texts += one != nullptr ? 1 : 0;
            std::free(one);
            std::free(two);
        }
    }
    Require(texts > 0, "no item has a title or a help text");
}

void TextsAreNotLeaked(const std::string& file) {
    const Subject subject(file);
    const auto ask = [&subject] {
        for (const Item& item : PageItems()) {
            char* text = nullptr;
            subject.table->get_display_name(item.key, &text);
            std::free(text);
            text = nullptr;
            subject.table->get_help_text(item.key, &text);
            std::free(text);
        }
    };
    ask();
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 50; ++i) {
        ask();
    }
    const size_t after = mallinfo2().uordblks;
    Require(after < before + 2048, "the titles and helps grow the heap by " +
                                       std::to_string((after - before) / 50) + " bytes a round");
}

void Properties(const std::string& file) {
    const Subject subject(file);
    for (const char* key :
         {"provider/owner", "provider/main-component", "provider/sub-component"}) {
        char* text = nullptr;
        Require(subject.table->provider_property(key, &text) == 0,
                std::string(key) + " does not return 0");
        Require(text != nullptr && *text != '\0', std::string(key) + " has no text");
        Require(malloc_usable_size(text) >= SI_PROPERTY_SIZE,
                std::string(key) + " is no buffer of 255 bytes");
        std::free(text);
    }
}

void ListsAreWhole(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        int count = 0;
        ListItem** items = subject.table->get_list_items(item.key, &count);
        if (items == nullptr) {
            continue;
        }
        Require(count > 0,
                item.name + std::string(": a list of ") + std::to_string(count) + " entries");
        std::set<int> values;
        for (int i = 0; i < count; ++i) {
            const std::string where = item.name + std::string(", entry ") + std::to_string(i);
            Require(items[i] != nullptr, where + " is null");
            char* text = nullptr;
            int value = 0;
            int kind = 0;
            subject.table->list_item_text(items[i], &text);
            subject.table->list_item_value(items[i], &value);
            subject.table->list_item_kind(items[i], &kind);
            Require(text != nullptr && text == items[i]->text,
                    where + ": its text is not the item's own");
            Require(value == items[i]->value, where + ": its value is not the item's own");
            Require(kind == SI_LIST_ITEM_INTEGER, where + ": its kind is not that of an integer");
            Require(values.insert(value).second, where + ": its value is there already");
        }
        Require(subject.table->free_list_items(items, count) == 0,
                item.name + std::string(": freeing is not 0"));
    }
}

void ListsAreFreedWhole(const std::string& file) {
    const Subject subject(file);
    const auto ask = [&subject] {
        int count = 0;
        ListItem** items = subject.table->get_list_items(kAssistantKey, &count);
        if (items != nullptr) {
            subject.table->free_list_items(items, count);
        }
        return items != nullptr;
    };
    Require(ask(), "the TV offers three assistants, but there is no list of them");
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 200; ++i) {
        ask();
    }
    const size_t after = mallinfo2().uordblks;
    Require(after < before + 2048, "each list leaves " + std::to_string((after - before) / 200) +
                                       " bytes behind when it is freed");
}

void EmptyListsAreFreed(const std::string& file) {
    const Subject subject(file);
    auto** none = static_cast<ListItem**>(std::calloc(1, sizeof(ListItem*)));
    Require(subject.table->free_list_items(none, 0) == 0, "freeing a list of 0 entries is not 0");
    auto** holes = static_cast<ListItem**>(std::calloc(3, sizeof(ListItem*)));
    holes[1] = static_cast<ListItem*>(std::calloc(1, sizeof(ListItem)));
    Require(subject.table->free_list_items(holes, 3) == 0,
            "freeing a list with null entries is not 0");
}

// --- Boxes ---

void BoxesAreTerminated(const std::string& file) {
    const Subject subject(file);
    BoxBuffers buffers;
    subject.table->get_messagebox_info(kAssistantKey, buffers[0], buffers[1], buffers[2],
                                       &buffers.count);
    subject.table->get_messagebox_title(kAssistantKey, buffers[3]);
    Require(buffers.count == 1 || buffers.count == 2,
            "the confirmation of the assistant has " + std::to_string(buffers.count) + " buttons");
    for (size_t i : {0, 1, 3}) {
        Require(memchr(buffers[i], '\0', kBoxBufferSize) != nullptr,
                "a text of the box has no end");
        Require(*buffers[i] != '\0', "a text of the box is empty");
    }
}

void PopupsAct(const std::string& file) {
    const Subject subject(file);
    int popups = 0;
    for (const Item& item : PageItems()) {
        BoxBuffers buffers;
        subject.table->get_disablepopup_info(item.key, buffers[0], buffers[1], buffers[2],
                                             buffers[3], &buffers.count, buffers[4]);
        if (buffers.count == -7) {
            Require(buffers.Untouched(), item.name + std::string(": half a popup is written"));
            continue;
        }
        ++popups;
        Require(std::string(buffers[4]) == SI_ACTION_TEXT,
                item.name + std::string(": the action is \"") +
                    std::string(buffers[4]).substr(0, 20) + "\", not " + SI_ACTION_TEXT);
        Require(buffers.count >= 1 && buffers.count <= 2 && *buffers[2] != '\0',
                item.name + std::string(": the popup has no first button"));
    }
    Require(popups > 0, "no item offers a popup");
}

void SurvivesPlatformFailure(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    for (const std::string& function : vtv::PlatformFunctions()) {
        // Without a log there is nothing to see; a provider writes there all the time.
        if (function != "__dlog_print") {
            vtv::Fault fault;
            fault.function = function;
            fault.kind = vtv::Fault::Kind::kAlways;
            tv.SetFault(fault);
        }
    }
    const Provider provider(file);
    LookAtPage(provider);
    for (const Item& item : PageItems()) {
        if (HasValue(item)) {
            provider.SetInt(item.key, 1);
            provider.SetInt(item.key, 0);
        }
        provider.SetInt(item.key, SI_ACTION_VALUE);
    }
}

}  // namespace

const std::vector<ContractCheck>& AnswerChecks() {
    static const std::vector<ContractCheck> checks = {
        {"texts-are-fresh", "Each title and help is a heap text of its own, which the host frees.",
         TextsAreFresh},
        {"texts-are-not-leaked",
         "Titles and helps leave nothing behind once the host has freed them.", TextsAreNotLeaked},
        {"properties-are-buffers", "The provider's descriptions are heap buffers of 255 bytes.",
         Properties},
        {"lists-are-whole",
         "Every entry of a list is there, with a text, a value of its own and a kind.",
         ListsAreWhole},
        {"lists-are-freed-whole", "Slot 24 frees a list with all that belongs to it.",
         ListsAreFreedWhole},
        {"empty-lists-are-freed", "Slot 24 takes lists without entries and with null entries.",
         EmptyListsAreFreed},
        {"boxes-are-terminated",
         "The confirmation of the assistant has texts that end, and buttons.", BoxesAreTerminated},
        {"popups-act", "The popup of a dimmed item has a button, which sends 9999.", PopupsAct},
        {"survives-a-failing-platform",
         "With every platform call failing the page can be asked and pressed.",
         SurvivesPlatformFailure},
    };
    return checks;
}

}  // namespace host
