// What a new assistant policy changes on TVs that have the old one.
#pragma once

#include "explorer/asking/command.h"
#include "program/impact_options.h"

namespace explorer {

struct ImpactOptions : CommonOptions {
    program::ImpactOptions asked;
};

// 0: nothing changes; 1: something does; 2: a policy is malformed.
int ImpactMain(const ImpactOptions& options);

}  // namespace explorer
