// Why an item is hidden, dimmed, or reads as it does. The reasons are found by experiment: what
// would have to be otherwise for another answer.
#pragma once

#include <string>
#include <vector>

#include "host/page/page.h"
#include "host/page/rules.h"
#include "virtual-tv/virtual_tv.h"
#include "what_if.h"

namespace host {

// One answer of the provider, what it was made of, and what would change it.
struct Reasons {
    std::string question;          // "visible", "enabled", "value", "reason"
    std::string answer;            // "hidden", "dimmed", "off", the text of the reason, ...
    Rule rule;                     // where the provider's source decides it
    std::vector<vtv::Read> reads;  // in order
    Differences differences;
    // In words: "the terms are not agreed; it would show with consent tnc and pp". Where nothing
    // that was tried changes the answer it says so.
    std::string because;
};

struct Explanation {
    const Item* item = nullptr;
    ItemView view;
    bool reachable = false;  // as Page::IsReachable()
    // What keeps the item from being reached although its own rule shows it, or whatever its own
    // rule says: the page or the item that it lies below; null when it is nothing but itself.
    const Item* barrier = nullptr;
    Reasons barrierReasons;
    // "Hands-free Wake-up is dimmed: signed out; it would be enabled with the account signed in"
    std::string sentence;
    std::vector<Reasons> reasons;
    std::vector<FurtherRule> further;
};

// The provider's own TV must be on. Nothing on the TV is changed.
Explanation Explain(const Provider& provider, const vtv::Tv& tv, const Item& item);

// What the answer says: "dimmed", "reads on", "tells the viewer "..."".
std::string Heading(const Reasons& reasons);
// "consent tnc and pp".
std::string ToText(const Difference& difference);

}  // namespace host
