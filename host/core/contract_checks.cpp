#include "contract_checks.h"

#include <climits>
#include <set>

#include "contract_subject.h"
#include "page.h"

namespace host {

namespace {

constexpr size_t kSlots = SI_SLOT_COUNT;

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
    BoxBuffers buffers;
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
        BoxBuffers buffers;
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

}  // namespace

const std::vector<ContractCheck>& ContractChecks() {
    static const std::vector<ContractCheck> checks = [] {
        std::vector<ContractCheck> all = {
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
            {"unknown-keys-are-hidden",
             "Unknown keys of any bytes and length are hidden and dimmed.", UnknownKeysHidden},
            {"unknown-keys-write-nothing",
             "For an unknown key no value, text, list or box is written.", UnknownKeysWriteNothing},
            {"null-out-pointers-are-spared", "A null out-pointer is not written.", NullOutPointers},
            {"typed-checks-say-yes", "The bool, double and string checks answer 1 for any key.",
             TypedChecksSayYes},
            {"answers-are-0-or-1", "Visibility and enabling answer 0 or 1, whatever the value is.",
             AnswersAreZeroOrOne},
        };
        all.insert(all.end(), AnswerChecks().begin(), AnswerChecks().end());
        return all;
    }();
    return checks;
}

}  // namespace host
