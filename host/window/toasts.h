// The notifications that come and go by themselves when another assistant is chosen.
#pragma once

#include <vector>

#include "shots.h"
#include "virtual-tv/virtual_tv.h"

namespace window {

// Sets up every assistant that the TV offers, so that a change needs nothing but to be told of.
// Returns what the TV has become; from now on it starts no application. The TV must be on.
vtv::Snapshot SetUpAll(vtv::Tv& tv, const host::Provider& provider);

// The page with each notification, by choosing one assistant after the other on a TV that is made
// what SetUpAll() has returned. The TV is another one then.
std::vector<Shot> ToastsOf(vtv::Tv& tv, const host::Provider& provider, const vtv::Snapshot& ready,
                           const std::string& menuLanguage);

}  // namespace window
