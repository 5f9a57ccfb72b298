// What a new policy changes, and how that is shown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "program/findings.h"

namespace explorer {

struct Change {
    std::string item;
    std::string what;
    std::vector<std::string> when;  // one line for each group of states
    std::uint64_t paths = 0;
    bool operator==(const Change&) const = default;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(item, what, when, paths);
    }
};

struct ModelImpact {
    std::string model;
    std::vector<Change> changes;
};

// A finding for each change of each group of models, about the file of the new policy.
std::vector<program::Finding> FindingsOf(const std::vector<ModelImpact>& impacts,
                                         const std::string& file);
std::string AsText(const std::vector<ModelImpact>& impacts);
std::string AsJson(const std::vector<ModelImpact>& impacts);
std::string AsHtml(const std::vector<ModelImpact>& impacts);

}  // namespace explorer
