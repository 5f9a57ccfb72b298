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
    int workers = 0;
    bool progress = true;
};

int DependsMain(const DependsOptions& options);

}  // namespace explorer
