// What must hold in every state of every TV.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/question.h"
#include "look.h"

namespace explorer {

struct Invariant {
    const char* name;
    const char* sentence;
    // Empty when it holds, else what is wrong.
    std::string (*check)(const Look& look, const Question* question);
    // Asked of each of these questions in turn; null: asked once, of the page.
    bool (*isAbout)(const Question& question);
    // kOnce: it asks for the question's record and does nothing else with the provider, so that it
    // can look at the record that another one asked for.
    enum class Asks { kAnything, kOnce };
    Asks asks = Asks::kAnything;
};

const std::vector<Invariant>& Invariants();

}  // namespace explorer
