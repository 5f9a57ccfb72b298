// What a step of a scenario expects, held against what came of it.
#pragma once

#include <toml++/toml.h>

#include <optional>
#include <string>
#include <vector>

#include "viewer.h"

namespace host {

struct StepOutcome {
    const Provider* provider = nullptr;  // for what is asked whether a viewer can get to it or not
    std::optional<PressResult> press;
    Page page;
    size_t launchesBefore = 0;
    size_t logBefore = 0;
    size_t traceBefore = 0;
};

// One text for each expectation of the step that is not met: file, line, what was expected and what
// was there. A press that was refused is one unless the step expects it.
std::vector<std::string> Unmet(const std::string& file, const toml::table& step,
                               const StepOutcome& outcome, const vtv::Tv& tv);

}  // namespace host
