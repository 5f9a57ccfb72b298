// Why an item is hidden, dimmed, or reads as it does: the reads behind each answer, in words.
#pragma once

#include <string>
#include <vector>

#include "page.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

// One answer of the provider and what it was made of.
struct Reasons {
    std::string question;          // "visible", "enabled", "value"
    std::string answer;            // "hidden", "dimmed", "off", ...
    std::vector<vtv::Read> reads;  // in order; the last is the one that settled it
    // The read that settled it in words, "signed out"; or that nothing had to be read.
    std::string because;
};

struct Explanation {
    const Item* item = nullptr;
    ItemView view;
    std::string sentence;  // "Hands-free wake-up is dimmed: signed out"
    std::vector<Reasons> reasons;
};

// The provider's own TV must be on.
Explanation Explain(const Provider& provider, const vtv::Tv& tv, const Item& item);

// What a read found, in words: "signed out", "the terms are not agreed",
// "db/menu/voice/is_k_voice is true".
std::string Describe(const vtv::Read& read, const vtv::Tv& tv);

}  // namespace host
