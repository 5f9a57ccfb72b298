#include "viewer_actions.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "explorer/tv/app_effects.h"
#include "explorer/tv/lazy_tv.h"

namespace explorer {

namespace {

constexpr char PAGE_ITEM[] = "voice";
constexpr char ENTRY_ITEM[] = "onboarding";
constexpr std::size_t BOX_TEXT_SIZE = 1024;

// A run on the loaded state.
class LoadedRun {
  public:
    LoadedRun() { tv().Begin(choices_); }

  private:
    Choices choices_;
};

bool IsEntry(const Item& item) {
    return std::strcmp(item.name, PAGE_ITEM) == 0 || std::strcmp(item.name, ENTRY_ITEM) == 0;
}

std::vector<int> ChoicesOf(const Subject& subject, const Item& item) {
    const SIProviderTable& table = subject.Table();
    int count = 0;
    ListItem** items = table.get_list_items(item.key, &count);
    std::vector<int> values;
    for (int i = 0; items != nullptr && i < count; ++i) {
        int value = 0;
        table.list_item_value(items[i], &value);
        values.push_back(value);
    }
    if (items != nullptr) {
        table.free_list_items(items, count);
    }
    return values;
}

bool AsksFirst(const Subject& subject, const Item& item) {
    char text[BOX_TEXT_SIZE] = "";
    char first[BOX_TEXT_SIZE] = "";
    char second[BOX_TEXT_SIZE] = "";
    int buttons = 0;
    subject.Table().get_messagebox_info(item.key, text, first, second, &buttons);
    return buttons > 0;
}

struct Popup {
    bool offered = false;
    std::optional<int> action;
};

Popup PopupOf(const Subject& subject, const Item& item) {
    char texts[4][BOX_TEXT_SIZE] = {};
    char action[BOX_TEXT_SIZE] = "";
    int buttons = 0;
    subject.Table().get_disablepopup_info(item.key, texts[0], texts[1], texts[2], texts[3],
                                          &buttons, action);
    Popup popup;
    popup.offered = buttons > 0;
    char* end = nullptr;
    const long value = std::strtol(action, &end, 10);
    if (end != action && *end == '\0') {
        popup.action = static_cast<int>(value);
    }
    return popup;
}

Action Press(Action::Kind kind, const Item& item, int value, bool confirmed = true) {
    Action action;
    action.kind = kind;
    action.item = &item;
    action.value = value;
    action.confirmed = confirmed;
    return action;
}

void AddDimmed(const Subject& subject, const Item& item, std::vector<Action>& actions) {
    Popup popup;
    {
        const LoadedRun run;
        popup = PopupOf(subject, item);
    }
    if (!popup.offered) {
        return;
    }
    if (popup.action) {
        actions.push_back(Press(Action::Kind::kPopup, item, *popup.action));
    }
    actions.push_back(Press(Action::Kind::kPopup, item, 0, false));
}

void AddList(const Subject& subject, const Item& item, std::vector<Action>& actions) {
    std::vector<int> values;
    bool asks = false;
    {
        const LoadedRun run;
        values = ChoicesOf(subject, item);
        asks = AsksFirst(subject, item);
    }
    for (const int value : values) {
        actions.push_back(Press(Action::Kind::kChoose, item, value));
        if (asks) {
            actions.push_back(Press(Action::Kind::kChoose, item, value, false));
        }
    }
}

void AddItem(const Subject& subject, const ItemLook& look, std::vector<Action>& actions) {
    const Item& item = *look.item;
    if (!look.reachable) {
        return;
    }
    if (!look.enabled) {
        AddDimmed(subject, item, actions);
    } else if (std::strcmp(item.name, ENTRY_ITEM) == 0) {
        actions.push_back(Press(Action::Kind::kSetUp, item, SI_ACTION_VALUE));
    } else if (item.listBuilder != nullptr) {
        AddList(subject, item, actions);
    } else if (item.reader != nullptr) {
        const int opposite = look.value.value_or(0) == 1 ? 0 : 1;
        actions.push_back(Press(Action::Kind::kSwitch, item, opposite));
    }
}

// What the settings application asks and writes.
void Play(const Subject& subject, const Action& action) {
    const SIProviderTable& table = subject.Table();
    if (action.kind == Action::Kind::kChoose) {
        AsksFirst(subject, *action.item);
    } else if (action.kind == Action::Kind::kPopup) {
        PopupOf(subject, *action.item);
    }
    if (action.confirmed) {
        table.set_int(action.item->key, action.value);
    }
}

Consequences ReadConsequences() {
    Consequences consequences;
    for (const RecordEntry& entry : ReadRecord(tv().Record())) {
        const bool starts = entry.kind == Entry::kLaunch || entry.kind == Entry::kPopup;
        if (starts && IsNotification(ApplicationOf(entry.text))) {
            consequences.notified = true;
        } else if (starts) {
            consequences.launched.push_back(entry.text);
        } else if (entry.kind == Entry::kTerminate) {
            consequences.terminated.push_back(entry.text);
        }
    }
    return consequences;
}

}  // namespace

bool Action::operator==(const Action& other) const {
    return kind == other.kind && item == other.item && value == other.value &&
           confirmed == other.confirmed && application == other.application;
}

std::string ToText(const Action& action) {
    const std::string press =
        action.item != nullptr ? std::string("press ") + action.item->name : "";
    switch (action.kind) {
        case Action::Kind::kSwitch:
            return press + (action.value == 1 ? " (on)" : " (off)");
        case Action::Kind::kSetUp:
            return press;
        case Action::Kind::kChoose:
            return press + ", choose " + std::to_string(action.value) +
                   (action.confirmed ? ", OK" : ", Cancel");
        case Action::Kind::kPopup:
            return press + (action.confirmed ? " (dimmed), OK" : " (dimmed), Cancel");
        case Action::Kind::kFinish:
            return "finish " + ApplicationOf(action.application);
        case Action::Kind::kCancel:
            return "cancel " + ApplicationOf(action.application);
        case Action::Kind::kPublish:
            return "the policy is published again";
        case Action::Kind::kPowerCycle:
            break;
    }
    return "power cycle";
}

PageLook LookAtPage(const Subject& subject) {
    PageLook page;
    page.reserve(Items().size());
    const LoadedRun run;
    for (const Item& item : Items()) {
        ItemLook look;
        look.item = &item;
        look.reachable = subject.checkVisible(item.key, 0) != 0;
        look.enabled = subject.checkEnabled(item.key, 0) != 0;
        if (item.reader != nullptr) {
            int value = INT_MIN;
            subject.Table().get_int(item.key, &value);
            look.value = value != INT_MIN ? std::optional<int>(value) : std::nullopt;
        }
        page.push_back(look);
    }
    const bool isOpen = page.front().reachable && page.front().enabled;
    for (ItemLook& look : page) {
        look.reachable = look.reachable && (isOpen || IsEntry(*look.item));
    }
    return page;
}

std::vector<Action> ActionsIn(const Subject& subject, const ConcreteTv& tv, const TvState& state,
                              const PageLook& page) {
    std::vector<Action> actions;
    for (const ItemLook& look : page) {
        AddItem(subject, look, actions);
    }
    for (const std::string& launch : tv.RunningIn(state)) {
        Action action;
        action.application = launch;
        action.kind = Action::Kind::kFinish;
        if (CanFinish(tv, state, launch)) {
            actions.push_back(action);
        }
        action.kind = Action::Kind::kCancel;
        actions.push_back(action);
    }
    Action action;
    if (tv.Model().policy) {
        action.kind = Action::Kind::kPublish;
        actions.push_back(action);
    }
    action.kind = Action::Kind::kPowerCycle;
    actions.push_back(action);
    return actions;
}

Consequences CarryOut(const Subject& subject, ConcreteTv& tv, const Action& action,
                      TvState& state) {
    Consequences consequences;
    switch (action.kind) {
        case Action::Kind::kFinish:
            tv.Finish(state, action.application);
            return consequences;
        case Action::Kind::kCancel:
            tv.Cancel(state, action.application);
            return consequences;
        case Action::Kind::kPublish:
            tv.Set(state, tv.Published(), NumberValue(1, "bool"));
            return consequences;
        case Action::Kind::kPowerCycle:
            tv.PowerCycle(state);
            return consequences;
        default:
            break;
    }
    std::string wrong;
    const LoadedRun run;
    try {
        Play(subject, action);
    } catch (const std::exception& exception) {
        wrong = std::string("an exception leaves the provider: ") + exception.what();
    }
    tv.TakeOver(state);
    consequences = ReadConsequences();
    consequences.wrong = wrong;
    return consequences;
}

}  // namespace explorer
