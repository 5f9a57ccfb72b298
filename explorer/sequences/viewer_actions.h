// What a viewer can do with a TV next, and doing it: as a settings application would, in memory.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/subject.h"
#include "explorer/tv/concrete_tv.h"
#include "host/page/press.h"

namespace explorer {

struct Action {
    enum class Kind { kPress, kFinish, kCancel, kPublish, kPowerCycle };
    Kind kind = Kind::kPowerCycle;
    host::Press press;    // kPress
    Started application;  // kFinish, kCancel

    bool operator==(const Action&) const = default;
};

// "press voice-assistant, choose 2, OK".
std::string ToText(const Action& action);

// What came of an action beside the state.
struct Consequences {
    std::vector<Started> launched;        // notifications left out
    std::vector<std::string> terminated;  // applications
    bool notified = false;
    std::string wrong;  // an exception; empty when all went well
};

// Each begins runs of its own on the TV, which must have been brought into the state. Exceptions
// that leave the provider come out of the first two.
host::Page LookAtPage(const Subject& subject);
std::vector<Action> ActionsIn(const Subject& subject, const ConcreteTv& tv, const TvState& state,
                              const host::Page& page);
// On the page as it looks in the state, which becomes the one behind the action.
Consequences CarryOut(const Subject& subject, ConcreteTv& tv, const host::Page& page,
                      const Action& action, TvState& state);

}  // namespace explorer
