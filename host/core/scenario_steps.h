// The steps of a scenario as they are in the file, for those who play them.
#pragma once

#include <toml++/toml.h>

#include "scenario.h"

namespace host {

struct Scenario::Steps {
    toml::array tables;  // their members are known to be those of a step
};

}  // namespace host
