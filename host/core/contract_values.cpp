// Values of items: asked, set, and the action value, which is none.
#include <climits>
#include <functional>

#include "contract_subject.h"
#include "supervised.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

constexpr int kUnwritten = -7;
constexpr int kUnwrittenToo = 4711;

int Ask(const Subject& subject, const std::string& key, int prefill) {
    int value = prefill;
    subject.table->get_int(key.c_str(), &value);
    return value;
}

std::vector<const Item*> ItemsOfKind(ItemKind kind) {
    std::vector<const Item*> items;
    for (const Item& item : PageItems()) {
        if (item.kind == kind) {
            items.push_back(&item);
        }
    }
    return items;
}

void ValueSlotsReturnZero(const std::string& file) {
    const Subject subject(file);
    std::vector<std::string> keys = StrangeKeys();
    for (const Item& item : PageItems()) {
        if (HasValue(item)) {
            keys.emplace_back(item.key);
        }
    }
    for (const std::string& key : keys) {
        int value = 0;
        Require(subject.table->get_int(key.c_str(), &value) == 0,
                "get_int() of " + QuotedKey(key) + " does not return 0");
        for (const int given : {0, 1, 2, SI_ACTION_VALUE}) {
            Require(subject.table->set_int(key.c_str(), given) == 0,
                    "set_int() of " + QuotedKey(key) + " does not return 0");
        }
    }
}

void ValuesWrittenOrLeft(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        if (!HasValue(item)) {
            continue;
        }
        const int one = Ask(subject, item.key, kUnwritten);
        const int two = Ask(subject, item.key, kUnwrittenToo);
        Require(one == two || (one == kUnwritten && two == kUnwrittenToo),
                std::string(item.name) + ": get_int() makes " + std::to_string(one) + " of " +
                    std::to_string(kUnwritten) + " and " + std::to_string(two) + " of " +
                    std::to_string(kUnwrittenToo));
    }
}

struct GuardedInt {
    int before = 0x5a5a5a5a;
    int value = kUnwritten;
    int after = 0x5a5a5a5a;
};

void RequireFourBytes(const std::string& what, const std::function<void(int*)>& write) {
    GuardedInt guarded;
    write(&guarded.value);
    Require(guarded.before == 0x5a5a5a5a && guarded.after == 0x5a5a5a5a,
            what + " writes more than the four bytes of an int");
}

void IntegersTakeFourBytes(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        const std::string of = std::string(" of ") + item.name;
        if (HasValue(item)) {
            RequireFourBytes("get_int()" + of,
                             [&](int* value) { subject.table->get_int(item.key, value); });
        }
        BoxBuffers buffers;
        RequireFourBytes("get_messagebox_info()" + of, [&](int* count) {
            subject.table->get_messagebox_info(item.key, buffers[0], buffers[1], buffers[2], count);
        });
        RequireFourBytes("get_disablepopup_info()" + of, [&](int* count) {
            subject.table->get_disablepopup_info(item.key, buffers[0], buffers[1], buffers[2],
                                                 buffers[3], count, buffers[4]);
        });
        ListItem** items = nullptr;
        int length = 0;
        RequireFourBytes("get_list_items()" + of, [&](int* count) {
            items = subject.table->get_list_items(item.key, count);
            length = *count;
        });
        for (int i = 0; items != nullptr && i < length; ++i) {
            RequireFourBytes("list_item_value()" + of,
                             [&](int* value) { subject.table->list_item_value(items[i], value); });
            RequireFourBytes("list_item_kind()" + of,
                             [&](int* kind) { subject.table->list_item_kind(items[i], kind); });
        }
    }
}

void ActionIsNoValue(const std::string& file) {
    const Subject subject(file);
    for (const Item& pressed : PageItems()) {
        std::vector<int> before;
        for (const Item& item : PageItems()) {
            before.push_back(HasValue(item) ? Ask(subject, item.key, kUnwritten) : 0);
        }
        subject.table->set_int(pressed.key, SI_ACTION_VALUE);
        for (size_t i = 0; i < before.size(); ++i) {
            const Item& item = PageItems()[i];
            Require(!HasValue(item) || Ask(subject, item.key, kUnwritten) == before[i],
                    std::string(item.name) + ": set_int() of " + pressed.name + " with " +
                        SI_ACTION_TEXT + " changes the value");
        }
    }
    subject.table->set_int(nullptr, SI_ACTION_VALUE);
    subject.table->set_int("x", SI_ACTION_VALUE);
}

void ExtremeValuesSurvived(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        if (!HasValue(item)) {
            continue;
        }
        for (const int value : {INT_MIN, -1, 2, 3, 1000, SI_ACTION_VALUE - 1, SI_ACTION_VALUE + 1,
                                INT_MAX - 1, INT_MAX}) {
            Doing(std::string("set_int() of ") + item.name + " with " + std::to_string(value));
            subject.table->set_int(item.key, value);
            Ask(subject, item.key, kUnwritten);
        }
    }
}

// The one switch that every TV of the model can turn; the others depend on it.
void SwitchesHoldValue(const std::string& file) {
    const Subject subject(file);
    for (const int value : {1, 0, 1, 1, 0, 0}) {
        subject.table->set_int(kWakeUpKey, value);
        const int now = Ask(subject, kWakeUpKey, kUnwritten);
        Require(now == value, "voice-wake-up was set to " + std::to_string(value) + " and reads " +
                                  std::to_string(now));
    }
}

void SwitchesAreOnOrOff(const std::string& file) {
    const Subject subject(file);
    for (const int value : {2, -1, 17, INT_MAX, INT_MIN}) {
        subject.table->set_int(kWakeUpKey, 1);
        subject.table->set_int(kWakeUpKey, value);
        const int now = Ask(subject, kWakeUpKey, kUnwritten);
        Require(now == 0, "only 1 is on, but voice-wake-up was set to " + std::to_string(value) +
                              " and reads " + std::to_string(now));
    }
}

void ChoicesCanBeTaken(const std::string& file) {
    const Provider provider(file);
    for (const Item* item : ItemsOfKind(ItemKind::kList)) {
        for (const Choice& choice : provider.Choices(item->key)) {
            provider.SetInt(item->key, choice.value);
            const std::optional<int> now = provider.GetInt(item->key);
            Require(now == choice.value,
                    std::string(item->name) + ": the choice " + std::to_string(choice.value) +
                        " was taken, and the value is " + (now ? std::to_string(*now) : "none"));
        }
    }
}

void UnknownChoicesRefused(const std::string& file) {
    const Provider provider(file);
    for (const Item* item : ItemsOfKind(ItemKind::kList)) {
        const std::vector<Choice> choices = provider.Choices(item->key);
        for (const int value : {INT_MIN, -1, 0, 1000, INT_MAX}) {
            bool offered = false;
            for (const Choice& choice : choices) {
                offered = offered || choice.value == value;
            }
            const std::optional<int> before = provider.GetInt(item->key);
            provider.SetInt(item->key, value);
            Require(offered || provider.GetInt(item->key) == before,
                    std::string(item->name) + ": the value " + std::to_string(value) +
                        " is no choice and was taken");
        }
    }
}

void ValuesNotLeaked(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        if (HasValue(item)) {
            const int value = Ask(subject, item.key, 0);
            RequireNoGrowth(std::string(item.name) + ": get_int() and set_int()", [&] {
                Ask(subject, item.key, 0);
                subject.table->set_int(item.key, value);
            });
        }
    }
}

void LaunchesNotLeaked(const std::string& file) {
    const Subject subject(file);
    vtv::Current()->SetConsent(vtv::kTermsConsent, false);
    RequireNoGrowth("the applications that " SI_ACTION_TEXT " starts",
                    [&] { subject.table->set_int(kVoiceKey, SI_ACTION_VALUE); });
}

}  // namespace

std::vector<ContractCheck> ValueChecks() {
    return {
        {"value-slots-return-0", "get_int() and set_int() return 0, whatever the key.",
         ValueSlotsReturnZero},
        {"values-are-written-or-left",
         "get_int() writes the value or leaves it, whatever stood there before.",
         ValuesWrittenOrLeft},
        {"integers-take-four-bytes", "No byte beside an integer out-parameter is written.",
         IntegersTakeFourBytes},
        {"actions-are-no-values", "The value 9999 is stored for no item.", ActionIsNoValue},
        {"extreme-values-are-survived", "Any integer can be set.", ExtremeValuesSurvived},
        {"switches-hold-their-value", "A switch that was set reads what it was set to.",
         SwitchesHoldValue},
        {"switches-are-on-or-off", "Exactly 1 switches on, any other value off.",
         SwitchesAreOnOrOff},
        {"choices-can-be-taken", "Each choice of a list can be set, and reads back.",
         ChoicesCanBeTaken},
        {"unknown-choices-are-refused", "A value that is no choice of the list is not taken.",
         UnknownChoicesRefused},
        {"values-are-not-leaked", "Asking and setting values leaves nothing behind on the heap.",
         ValuesNotLeaked},
        {"launches-are-not-leaked", "Starting an application leaves nothing behind on the heap.",
         LaunchesNotLeaked},
    };
}

}  // namespace host
