// The step of a scenario that makes a TV what is wanted.
#pragma once

#include "recording.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

Recording::Step StepTo(const vtv::Snapshot& wanted, const vtv::Snapshot& now);

}  // namespace host
