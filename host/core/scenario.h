// Scenarios: what happens to a TV, step by step, and what is expected of its page.
// docs/scenarios.md describes the file, which is TOML.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "page_user.h"

namespace host {

struct ScenarioStep;  // scenario_steps.h

struct Scenario {
    std::string file;
    std::string title;
    std::string model;  // its file
    // All that is wrong with it, "FILE:LINE: what, and what to write instead". A scenario with
    // problems cannot be played.
    std::vector<std::string> problems;
    std::shared_ptr<const std::vector<ScenarioStep>> steps;
};

// Reads and checks a scenario whole. Throws vtv::Error for a file that cannot be read: kNoSuch for
// a missing one, kUsage for what is no file, kPlatform for the rest.
Scenario ReadScenario(const std::string& file);
// The same for a text that is to become the file.
Scenario ParseScenario(const std::string& text, const std::string& file);

// The scenarios of a folder and of the folders in it, in the order of their paths: all TOML files
// but those of TVs and the models that the scenarios name. Throws kUsage when there is none.
std::vector<Scenario> ReadScenarios(const std::string& folder);

struct StepResult {
    std::string name;  // "step 3: the viewer presses OK"
    int line = 0;
    std::vector<std::string> failures;  // "FILE:LINE: what was expected and what was there"
    std::vector<std::string> beside;    // what was done for the user of the page, who could not
    bool played = false;
    double seconds = 0;
};

struct ScenarioResult {
    std::string file;
    std::string title;
    std::vector<std::string> problems;  // of a broken scenario, which is not played
    std::string error;  // why it could not be played to its end; says nothing of the page
    std::vector<StepResult> steps;  // those after a failed one are not played
    bool Passed() const;
    bool Failed() const;  // neither, when it could not be played, or not to its end
};

// Nothing of it is played yet.
ScenarioResult Unplayed(const Scenario& scenario);

// Plays a scenario on a new TV in that folder, which must not exist yet. Before each step it asks
// whether to go on. The page is used by whoever `hire` makes: else by a Viewer.
ScenarioResult PlayScenario(
    const Scenario& scenario, const std::string& providerFile, const std::string& tvDir,
    const std::function<bool()>& goOn = [] { return true; }, const HirePageUser& hire = {});

}  // namespace host
