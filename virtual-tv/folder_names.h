// What lies in a folder that others write to.
#pragma once

#include <dirent.h>

#include <string>
#include <vector>

namespace vtv {

// As fdopendir(), but the descriptor is closed also when that fails; negative is none.
DIR* OpenListing(int folder);
// The names in a folder; none where there is no such folder. One that is there all the time is
// listed, also when its file is replaced meanwhile. Throws Unreadable.
std::vector<std::string> NamesIn(const std::string& folder);
// The same of one that was opened, which is closed behind it; the path is for people.
std::vector<std::string> NamesIn(int folder, const std::string& path);

}  // namespace vtv
