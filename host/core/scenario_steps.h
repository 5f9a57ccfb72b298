// What the steps of a scenario can do: one table, by which they are checked and played.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scenario.h"
#include "scenario_expect.h"
#include "scenario_reader.h"

namespace host {

// What a step acts on.
struct StepScene {
    vtv::Tv& tv;
    const Provider& provider;
    PageUser& user;
    StepOutcome& outcome;
};

// A member of a step that was read and found right.
struct Action {
    int line = 0;
    std::function<void(const StepScene&)> play;
};

struct ScenarioStep {
    std::string name;  // "step 3: the viewer presses OK"
    int line = 0;
    std::vector<Action> changes;  // of the TV; the provider hears of them before what comes next
    std::vector<Action> uses;     // of the page
    std::vector<Expectation> expectations;
};

// Notes what is wrong with the step; what is returned can then not be played.
ScenarioStep ReadStep(ScenarioReader& reader, const toml::table& table, size_t number);

}  // namespace host
