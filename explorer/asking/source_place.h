// Where the rule behind a question stands, for findings that are shown beside it.
#pragma once

#include <string>

namespace explorer {

struct SourcePlace {
    std::string file;
    int line = 0;  // from 1; 0: the file as a whole
};

// In the provider's sources where they lie in the current folder, as in a checkout; else the
// library itself.
SourcePlace PlaceOf(const std::string& question, const std::string& library);

}  // namespace explorer
