// What would be if: a TV in memory that is as another one is now, to try something on.
#pragma once

#include <string>
#include <vector>

#include "temporary_folder.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

class TrialTv {
  public:
    // A copy of the TV in a folder. Starting an application on it only notes that. Nothing of the
    // TV is changed, and nothing that this process writes from now on is synced.
    explicit TrialTv(const std::string& dir);

    const std::string& Dir() const { return dir_; }

  private:
    TemporaryFolder folder_;
    std::string dir_;
};

// Makes the TV what "NAME=VALUE" says: a setting or a member of one, a feature, "account",
// "network", "language", "voice-guide", "tnc" or "pp"; the value "(missing)" takes a setting or a
// feature away. Throws kUsage for a value that the name cannot have, and kNoSuch for a name that
// there is not.
void TryOut(vtv::Tv& tv, const std::vector<std::string>& assignments);

}  // namespace host
