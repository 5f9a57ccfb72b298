// Which inputs an item depends on, and the reverse.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/command.h"

namespace explorer {

struct DependsOptions : CommonOptions {
    std::vector<std::string> names;  // items, functions, questions; with `reverse` keys
    bool reverse = false;
    bool source = false;  // as host/core/page_dependencies.cpp: all items, nothing else
};

int DependsMain(const DependsOptions& options);

}  // namespace explorer
