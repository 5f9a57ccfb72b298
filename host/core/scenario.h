// Scenarios: what happens to a TV, step by step, and what is expected of its page.
// docs/scenarios.md describes the file, which is TOML.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "virtual-tv/virtual_tv.h"

namespace host {

struct Scenario {
    std::string file;
    std::string title;
    std::string model;  // as vtv::FindModel() takes it
    struct Steps;       // scenario_steps.h
    std::shared_ptr<const Steps> steps;
};

// Reads and checks a scenario. Throws vtv::Error: kNoSuch for a missing file, kUsage with file and
// line for a broken one.
Scenario LoadScenario(const std::string& file);

struct StepResult {
    std::string name;  // "step 3, line 21: the viewer presses OK"
    int line = 0;
    std::vector<std::string> failures;  // "FILE:LINE: what was expected and what was there"
    bool played = false;
    double seconds = 0;
};

struct ScenarioResult {
    std::string file;
    std::string title;
    std::vector<StepResult> steps;  // those after a failed one are not played
    bool Passed() const;
};

// Plays a scenario on a new TV in that folder, which must not exist yet.
ScenarioResult PlayScenario(const Scenario& scenario, const std::string& providerFile,
                            const std::string& tvDir);

}  // namespace host
