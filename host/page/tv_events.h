// What a TV tells of what came of a press, beside what its page then looks like.
#pragma once

#include <string>
#include <vector>

#include "virtual-tv/model/launch.h"

namespace host {

class TvEvents {
  public:
    virtual ~TvEvents() = default;

    // Where the TV's record of launches ends now.
    virtual vtv::LaunchMark LaunchMark() = 0;
    // What was launched behind the mark, oldest first.
    virtual std::vector<vtv::Launch> LaunchesSince(const vtv::LaunchMark& mark) = 0;
    // Serves everything that has happened, so that the provider knows of it.
    virtual void Settle() = 0;
    // What the TV could not do although it was asked to, for people. Told once.
    virtual std::vector<std::string> TakeFailures() = 0;
};

}  // namespace host
