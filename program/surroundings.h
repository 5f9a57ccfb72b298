// What the programs take from the environment and from files, for their man pages.
#pragma once

#include <vector>

namespace program {

struct Surrounding {
    const char* name;
    const char* text;
};

const std::vector<Surrounding>& EnvironmentVariables();
const std::vector<Surrounding>& Files();

}  // namespace program
