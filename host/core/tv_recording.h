// The scenario that whatever vtv does to a TV is added to, for as long as that is wanted.
#pragma once

#include <string>

#include "virtual-tv/virtual_tv.h"

namespace host {

// The file, absolute; empty when nothing is recorded. A copy of a TV is not recorded.
std::string RecordingOf(const vtv::Tv& tv);
// Begins the scenario, or goes on with one that was recorded. Throws kNo while another is being
// recorded, and what Recording throws.
void StartRecording(const vtv::Tv& tv, const std::string& file);
// Returns the file. Throws kNo when nothing is being recorded.
std::string StopRecording(const vtv::Tv& tv);

}  // namespace host
