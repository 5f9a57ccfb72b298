#include "contract_checks.h"

#include <malloc.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "page.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

constexpr char kAssistantKey[] = "menu/system/general-voice-voice-assistant";
constexpr size_t kSlots = SI_SLOT_COUNT;
constexpr size_t kBufferSize = 64 * 1024;

void Require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw CheckFailed(otherwise);
    }
}

// A provider by hand: nothing here softens what the library does.
class Subject {
  public:
    explicit Subject(const std::string& file) : loaded(file) {
        Require(loaded.Entry().create(&slots) == 0, "create_provider() does not return 0");
        Require(slots != nullptr, "create_provider() hands out no table");
        table = reinterpret_cast<SIProviderTable*>(slots);
    }
    ~Subject() { loaded.Entry().destroy(&slots); }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    ProviderLibrary loaded;
    void** slots = nullptr;
    SIProviderTable* table = nullptr;
};

struct Slot {
    size_t index;
    const char* name;
};
constexpr Slot kFilled[] = {{0, "set_int"},
                            {8, "get_int"},
                            {13, "get_display_name"},
                            {14, "get_help_text"},
                            {16, "get_list_items"},
                            {17, "list_item_text"},
                            {20, "list_item_value"},
                            {23, "list_item_kind"},
                            {24, "free_list_items"},
                            {39, "get_messagebox_info"},
                            {41, "get_disable_text"},
                            {44, "provider_property"},
                            {50, "get_messagebox_title"},
                            {51, "get_disablepopup_info"}};

// Slots 39, 50 and 51 with buffers whose every byte is known.
struct Buffers {
    Buffers() {
        for (std::vector<char>& buffer : text) {
            buffer.assign(kBufferSize, '#');
            buffer[0] = '\0';
        }
    }
    char* operator[](size_t i) { return text[i].data(); }
    bool Untouched() const {
        for (const std::vector<char>& buffer : text) {
            if (buffer[0] != '\0' || buffer[1] != '#') {
                return false;
            }
        }
        return count == -7;
    }
    std::vector<char> text[5];
    int count = -7;
};

const std::vector<std::string>& StrangeKeys() {
    static const std::vector<std::string> keys = {"",
                                                  "x",
                                                  "menu",
                                                  "menu/system/general-voice-",
                                                  "MENU/SYSTEM/GENERAL-VOICE",
                                                  std::string(kAssistantKey) + "x",
                                                  "%s%s%n%d",
                                                  "\xff\xfe\x01",
                                                  std::string(100000, 'k')};
    return keys;
}

// --- Life ---

void ExportsEntryPoints(const std::string& file) {
    ProviderLibrary library(file);
}

void CreatesTable(const std::string& file) {
    Subject subject(file);
}

void FillsSlots(const std::string& file) {
    const Subject subject(file);
    for (const Slot& slot : kFilled) {
        Require(subject.slots[slot.index] != nullptr,
                "slot " + std::to_string(slot.index) + " (" + slot.name + ") is null");
    }
}

void LeavesSlotsNull(const std::string& file) {
    const Subject subject(file);
    std::set<size_t> filled;
    for (const Slot& slot : kFilled) {
        filled.insert(slot.index);
    }
    for (size_t i = 0; i < kSlots; ++i) {
        Require(filled.count(i) == 1 || subject.slots[i] == nullptr,
                "slot " + std::to_string(i) + " has no meaning and must be null");
    }
}

void DeletesTable(const std::string& file) {
    ProviderLibrary library(file);
    void** slots = nullptr;
    library.Entry().create(&slots);
    Require(library.Entry().destroy(&slots) == 0, "delete_provider() of a table does not return 0");
}

void DeletesNothing(const std::string& file) {
    const ProviderLibrary library(file);
    Require(library.Entry().destroy(nullptr) == 1, "delete_provider(NULL) does not return 1");
    void** none = nullptr;
    Require(library.Entry().destroy(&none) == 0,
            "delete_provider() of a null table does not return 0");
}

void LivesAgain(const std::string& file) {
    for (int i = 0; i < 20; ++i) {
        Subject subject(file);
        Require(subject.loaded.Entry().visibleInt("x", 0) == 0,
                "an unknown key is visible the " + std::to_string(i + 1) + ". time");
    }
}

// --- Keys ---

void NullKeys(const std::string& file) {
    const Subject subject(file);
    const Provider::EntryPoints& entry = subject.loaded.Entry();
    Require(entry.visibleInt(nullptr, 0) == 0, "a null key is visible");
    Require(entry.enabledInt(nullptr, 0) == 0, "a null key is enabled");
    int value = -7;
    subject.table->get_int(nullptr, &value);
    Require(value == -7, "get_int() of a null key writes a value");
    subject.table->set_int(nullptr, 1);
    char* text = nullptr;
    subject.table->get_display_name(nullptr, &text);
    Require(text == nullptr, "a null key has a title");
    subject.table->get_help_text(nullptr, &text);
    Require(text == nullptr, "a null key has a help text");
    int count = -7;
    Require(subject.table->get_list_items(nullptr, &count) == nullptr, "a null key has choices");
    subject.table->provider_property(nullptr, &text);
    Require(text == nullptr, "a null key is a property");
    Buffers buffers;
    bool flag = false;
    subject.table->get_messagebox_info(nullptr, buffers[0], buffers[1], buffers[2], &buffers.count);
    subject.table->get_messagebox_title(nullptr, buffers[3]);
    subject.table->get_disablepopup_info(nullptr, buffers[0], buffers[1], buffers[2], buffers[3],
                                         &buffers.count, buffers[4]);
    Require(buffers.Untouched(), "a null key writes into the host's buffers");
    subject.table->get_disable_text(nullptr, &text, &flag);
    Require(text == nullptr, "a null key has a disable text");
}

void UnknownKeysHidden(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : StrangeKeys()) {
        Require(subject.loaded.Entry().visibleInt(key.c_str(), 0) == 0,
                "visible: \"" + key.substr(0, 60) + "\"");
        Require(subject.loaded.Entry().enabledInt(key.c_str(), 0) == 0,
                "enabled: \"" + key.substr(0, 60) + "\"");
    }
}

void UnknownKeysWriteNothing(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : StrangeKeys()) {
        const std::string name = " of \"" + key.substr(0, 60) + "\"";
        int value = -7;
        subject.table->get_int(key.c_str(), &value);
        Require(value == -7, "get_int() writes the value" + name);
        Buffers buffers;
        subject.table->get_messagebox_info(key.c_str(), buffers[0], buffers[1], buffers[2],
                                           &buffers.count);
        subject.table->get_messagebox_title(key.c_str(), buffers[3]);
        subject.table->get_disablepopup_info(key.c_str(), buffers[0], buffers[1], buffers[2],
                                             buffers[3], &buffers.count, buffers[4]);
        Require(buffers.Untouched(), "a box is written" + name);
        char* text = nullptr;
        subject.table->get_display_name(key.c_str(), &text);
        subject.table->get_help_text(key.c_str(), &text);
        subject.table->provider_property(key.c_str(), &text);
        Require(text == nullptr, "a text is handed out" + name);
        int count = 0;
        Require(subject.table->get_list_items(key.c_str(), &count) == nullptr,
                "a list is handed out" + name);
    }
}

void NullOutPointers(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        if (HasValue(item)) {
            subject.table->get_int(item.key, nullptr);
        }
        subject.table->get_display_name(item.key, nullptr);
        subject.table->get_help_text(item.key, nullptr);
        subject.table->get_messagebox_info(item.key, nullptr, nullptr, nullptr, nullptr);
        subject.table->get_messagebox_title(item.key, nullptr);
        subject.table->get_disable_text(item.key, nullptr, nullptr);
        subject.table->get_disablepopup_info(item.key, nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr);
    }
    subject.table->provider_property("provider/owner", nullptr);
}

void TypedChecksSayYes(const std::string& file) {
    const Subject subject(file);
    const Provider::EntryPoints& entry = subject.loaded.Entry();
    for (const char* key : {"menu/system/general-voice", "x", ""}) {
        Require(
            entry.visibleBool(key, false) == 1 && entry.visibleDouble(key, 0) == 1 &&
                entry.visibleString(key, "") == 1,
            std::string("check_visibility_bool, _double or _string of \"") + key + "\" is not 1");
        Require(entry.enabledBool(key, false) == 1 && entry.enabledDouble(key, 0) == 1 &&
                    entry.enabledString(key, "") == 1,
                std::string("check_enable_bool, _double or _string of \"") + key + "\" is not 1");
    }
}

void AnswersAreZeroOrOne(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        for (const int value : {0, 1, -1, INT_MAX, INT_MIN}) {
            const int visible = subject.loaded.Entry().visibleInt(item.key, value);
            const int enabled = subject.loaded.Entry().enabledInt(item.key, value);
            Require(visible == 0 || visible == 1,
                    item.name + std::string(": visibility ") + std::to_string(visible));
            Require(enabled == 0 || enabled == 1,
                    item.name + std::string(": enabling ") + std::to_string(enabled));
        }
    }
}

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
    Buffers buffers;
    subject.table->get_messagebox_info(kAssistantKey, buffers[0], buffers[1], buffers[2],
                                       &buffers.count);
    subject.table->get_messagebox_title(kAssistantKey, buffers[3]);
    Require(buffers.count == 1 || buffers.count == 2,
            "the confirmation of the assistant has " + std::to_string(buffers.count) + " buttons");
    for (size_t i : {0, 1, 3}) {
        Require(memchr(buffers[i], '\0', kBufferSize) != nullptr, "a text of the box has no end");
        Require(*buffers[i] != '\0', "a text of the box is empty");
    }
}

void PopupsAct(const std::string& file) {
    const Subject subject(file);
    int popups = 0;
    for (const Item& item : PageItems()) {
        Buffers buffers;
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

const std::vector<ContractCheck>& ContractChecks() {
    static const std::vector<ContractCheck> checks = {
        {"exports-entry-points", "The library loads and exports the ten entry points.",
         ExportsEntryPoints},
        {"creates-a-table", "create_provider() returns 0 and hands out a table.", CreatesTable},
        {"fills-its-slots", "The slots that have a meaning are filled.", FillsSlots},
        {"leaves-other-slots-null", "The slots without a meaning are null.", LeavesSlotsNull},
        {"deletes-its-table", "delete_provider() frees the table once and returns 0.",
         DeletesTable},
        {"deletes-nothing", "delete_provider() of nothing returns 1, and of a null table 0.",
         DeletesNothing},
        {"lives-again", "A provider can be loaded, created and deleted again and again.",
         LivesAgain},
        {"null-keys-match-nothing",
         "A null key is hidden and dimmed, and nothing is written for it.", NullKeys},
        {"unknown-keys-are-hidden", "Unknown keys of any bytes and length are hidden and dimmed.",
         UnknownKeysHidden},
        {"unknown-keys-write-nothing", "For an unknown key no value, text, list or box is written.",
         UnknownKeysWriteNothing},
        {"null-out-pointers-are-spared", "A null out-pointer is not written.", NullOutPointers},
        {"typed-checks-say-yes", "The bool, double and string checks answer 1 for any key.",
         TypedChecksSayYes},
        {"answers-are-0-or-1", "Visibility and enabling answer 0 or 1, whatever the value is.",
         AnswersAreZeroOrOne},
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
