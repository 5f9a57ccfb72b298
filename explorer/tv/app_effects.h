// What the applications that the page starts do to a TV: the same as those of the virtual TV.
#pragma once

#include <string>

#include "concrete_tv.h"

namespace explorer {

// It waits for the viewer from now on, unless it is not installed, only a notification, or running
// already.
void StartApplication(ConcreteTv& tv, TvState& state, const Started& started);
void EndApplication(ConcreteTv& tv, TvState& state, const std::string& application);
// Whether the viewer can go through with it now; it needs the network, for example.
bool CanFinish(const ConcreteTv& tv, const TvState& state, const Started& started);
// What has changed when the viewer is through with it. It goes on running.
void FinishApplication(ConcreteTv& tv, TvState& state, const Started& started);

}  // namespace explorer
