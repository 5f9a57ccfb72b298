// The steps of a scenario as they are in the file, for those who play them.
#pragma once

#include <toml++/toml.h>

#include "scenario.h"

namespace host {

struct Scenario::Steps {
    // Moved from the parser, never copied: a copy of a node has forgotten its line.
    toml::table document;
    const toml::array& tables;  // of the document; their members are known to be those of a step

    explicit Steps(toml::table&& parsed)
        : document(std::move(parsed)), tables(*document.get("step")->as_array()) {}
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;
};

}  // namespace host
