// What differs between two TVs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtual-tv/virtual_tv.h"

namespace host {

// One thing in which two TVs differ.
struct TvDifference {
    std::string what;  // "setting", "state", "file", "feature", "item"
    std::string name;
    std::optional<std::string> first;  // absent where that TV lacks it
    std::optional<std::string> second;
};
std::vector<TvDifference> CompareTvs(const vtv::Tv& first, const vtv::Tv& second);

}  // namespace host
