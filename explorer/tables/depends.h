// Which inputs an item depends on, and the reverse.
#pragma once

#include <string>
#include <vector>

namespace explorer {

struct DependsOptions {
    std::string provider;
    std::vector<std::string> names;  // items, functions, questions; with `reverse` keys
    bool reverse = false;
    bool json = false;
    bool source = false;  // as host/core/page_dependencies.cpp: all items, nothing else
    int workers = 0;
    bool progress = true;
};

int DependsMain(const DependsOptions& options);

}  // namespace explorer
