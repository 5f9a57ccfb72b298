// What a viewer can do with a TV next, and doing it: as a settings application would, in memory.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "explorer/asking/items.h"
#include "explorer/asking/subject.h"
#include "explorer/tv/concrete_tv.h"

namespace explorer {

// One item as the viewer finds it.
struct ItemLook {
    const Item* item = nullptr;
    bool reachable = false;  // it is shown, and the page that it lies on can be opened
    bool enabled = false;
    std::optional<int> value;
};

// In the order of Items().
using PageLook = std::vector<ItemLook>;

struct Action {
    enum class Kind { kSwitch, kSetUp, kChoose, kPopup, kFinish, kCancel, kPublish, kPowerCycle };
    Kind kind = Kind::kPowerCycle;
    const Item* item = nullptr;
    int value = 0;            // that is written
    bool confirmed = true;    // kChoose, kPopup: OK was pressed, not Cancel
    std::string application;  // kFinish, kCancel: as it was started

    bool operator==(const Action& other) const;
};

// "press voice-assistant, choose 2, OK".
std::string ToText(const Action& action);

// What came of an action beside the state.
struct Consequences {
    std::vector<std::string> launched;    // "APP key="value"", notifications left out
    std::vector<std::string> terminated;  // applications
    bool notified = false;
    std::string wrong;  // an exception; empty when all went well
};

// Each begins runs of its own on the TV, which must have been brought into the state. Exceptions
// that leave the provider come out of the first two.
PageLook LookAtPage(const Subject& subject);
std::vector<Action> ActionsIn(const Subject& subject, const ConcreteTv& tv, const TvState& state,
                              const PageLook& page);
// The state becomes the one behind the action.
Consequences CarryOut(const Subject& subject, ConcreteTv& tv, const Action& action, TvState& state);

}  // namespace explorer
