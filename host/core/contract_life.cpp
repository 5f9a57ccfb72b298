// How a provider begins and ends.
#include <dlfcn.h>
#include <malloc.h>

#include <set>

#include "contract_subject.h"
#include "supervised.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/virtual_tv.h"

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

void LoadsAndUnloads(const std::string& file) {
    {
        const ProviderLibrary library(file);
    }
    Require(dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD) == nullptr,
            "the library stays in the process when it is unloaded");
}

void CreatesTable(const std::string& file) {
    const Subject subject(file);
}

void TableIsWhole(const std::string& file) {
    const Subject subject(file);
    const size_t size = malloc_usable_size(subject.slots);
    Require(size >= kSlots * sizeof(void*), "the table has " + std::to_string(size) +
                                                " bytes, and 52 slots need " +
                                                std::to_string(kSlots * sizeof(void*)));
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
    const ProviderLibrary library(file);
    void** slots = nullptr;
    library.Entry().create(&slots);
    Require(library.Entry().destroy(&slots) == 0, "delete_provider() of a table does not return 0");
}

void DeleteLeavesPointer(const std::string& file) {
    const ProviderLibrary library(file);
    void** slots = nullptr;
    library.Entry().create(&slots);
    void** const handedOut = slots;
    library.Entry().destroy(&slots);
    Require(slots == handedOut, "delete_provider() writes the host's pointer to the table");
}

void DeletesNothing(const std::string& file) {
    const ProviderLibrary library(file);
    Require(library.Entry().destroy(nullptr) == 1, "delete_provider(NULL) does not return 1");
    void** none = nullptr;
    Require(library.Entry().destroy(&none) == 0,
            "delete_provider() of a null table does not return 0");
}

void CreatesAgain(const std::string& file) {
    const ProviderLibrary library(file);
    for (int i = 1; i <= 5; ++i) {
        const std::string where = " the " + std::to_string(i) + ". time";
        Doing("create_provider()" + where);
        void** slots = nullptr;
        Require(library.Entry().create(&slots) == 0 && slots != nullptr,
                "create_provider() fails" + where);
        Require(library.Entry().destroy(&slots) == 0, "delete_provider() fails" + where);
    }
}

void CreatesTwice(const std::string& file) {
    const ProviderLibrary library(file);
    void** one = nullptr;
    void** two = nullptr;
    Require(library.Entry().create(&one) == 0 && one != nullptr, "there is no first table");
    Require(library.Entry().create(&two) == 0 && two != nullptr,
            "a second create_provider() hands out no table");
    Require(one != two, "a second create_provider() hands out the first table again");
    Doing("the first of two tables was deleted");
    Require(library.Entry().destroy(&one) == 0, "delete_provider() of the first table is not 0");
    int value = -7;
    reinterpret_cast<SIProviderTable*>(two)->get_int(kWakeUpKey, &value);
    Require(library.Entry().destroy(&two) == 0, "delete_provider() of the second table is not 0");
}

void LivesAgain(const std::string& file) {
    for (int i = 0; i < 20; ++i) {
        const Subject subject(file);
        Require(subject.loaded.Entry().visibleInt("x", 0) == 0,
                "an unknown key is visible the " + std::to_string(i + 1) + ". time");
    }
}

void LivesAreNotLeaked(const std::string& file) {
    const ProviderLibrary library(file);
    RequireNoGrowth("create_provider() and delete_provider()", [&library] {
        void** slots = nullptr;
        library.Entry().create(&slots);
        library.Entry().destroy(&slots);
    });
}

void AnswersOutsideItsLife(const std::string& file) {
    const ProviderLibrary library(file);
    const auto ask = [&library](const std::string& when) {
        Doing(when);
        for (const std::string& key : PageKeys()) {
            const int visible = library.Entry().visibleInt(key.c_str(), 0);
            const int enabled = library.Entry().enabledInt(key.c_str(), 0);
            Require((visible == 0 || visible == 1) && (enabled == 0 || enabled == 1),
                    QuotedKey(key) + " is answered with neither 0 nor 1 " + when);
        }
    };
    ask("before create_provider()");
    void** slots = nullptr;
    library.Entry().create(&slots);
    library.Entry().destroy(&slots);
    ask("after delete_provider()");
}

void ForgetsTheTv(const std::string& file) {
    {
        const Subject subject(file);
    }
    Doing("the policy changes after the provider was deleted and unloaded");
    vtv::Current()->Set(vtv::kPolicyKey, std::string("[]"));
    vtv::Current()->Dispatch();
}

}  // namespace

std::vector<ContractCheck> LifeChecks() {
    return {
        {"loads-and-unloads", "The library loads and unloads whole, and its process goes on.",
         LoadsAndUnloads},
        {"creates-a-table", "create_provider() returns 0 and hands out a table.", CreatesTable},
        {"table-is-whole", "The table is a heap block with room for 52 slots.", TableIsWhole},
        {"fills-its-slots", "The slots that have a meaning are filled.", FillsSlots},
        {"leaves-other-slots-null", "The slots without a meaning are null.", LeavesSlotsNull},
        {"deletes-its-table", "delete_provider() frees the table once and returns 0.",
         DeletesTable},
        {"delete-leaves-the-pointer", "delete_provider() does not clear the host's pointer.",
         DeleteLeavesPointer},
        {"deletes-nothing", "delete_provider() of nothing returns 1, and of a null table 0.",
         DeletesNothing},
        {"creates-again", "A provider can be created again after it was deleted.", CreatesAgain},
        {"creates-twice", "A second create_provider() hands out a table of its own.", CreatesTwice},
        {"lives-again", "A provider can be loaded, created and deleted again and again.",
         LivesAgain},
        {"lives-are-not-leaked", "Creating and deleting leaves nothing behind on the heap.",
         LivesAreNotLeaked},
        {"answers-outside-its-life",
         "The check functions do no harm before create_provider() and after delete_provider().",
         AnswersOutsideItsLife},
        {"forgets-the-tv", "Once deleted and unloaded, the provider is not called back by the TV.",
         ForgetsTheTv},
    };
}

}  // namespace host
