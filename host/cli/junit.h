// Results in the XML that continuous integration systems read.
#pragma once

#include <string>
#include <vector>

#include "host/core/scenario.h"

namespace cli {

std::string JUnit(const std::vector<host::ScenarioResult>& results);

}  // namespace cli
