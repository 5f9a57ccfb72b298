// What a new assistant policy changes on TVs that have the old one.
#pragma once

#include <string>
#include <vector>

namespace explorer {

struct ImpactOptions {
    std::string provider;
    std::string oldFile;
    std::string newFile;
    std::vector<std::string>
        models;                   // TOML files or names; empty: all that come with the virtual TV
    std::string format = "text";  // "text", "json", "html"
    int workers = 0;
    bool progress = true;
};

// 0: nothing changes; 1: something does; 2: a policy is malformed.
int ImpactMain(const ImpactOptions& options);

}  // namespace explorer
