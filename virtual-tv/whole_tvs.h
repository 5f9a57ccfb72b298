// Whole TVs: listed, copied, renamed, removed. Each happens whole or not at all, whenever its
// process ends; throws kNoSuch for a folder that is no TV, and kUsage for a place that is not free.
#pragma once

#include <string>
#include <vector>

#include "virtual_tv.h"

namespace vtv {

// The folder that a name or a path stands for, whether or not there is a TV: with a slash, or where
// the working folder is seen to have a TV of that name, a path; else a TV among those in HomeDir().
VTV_EXPORT std::string TvPath(const std::string& nameOrDir);
// The folders of the TVs that lie in a folder, sorted, and those that cannot be looked into:
// opening one tells why.
VTV_EXPORT std::vector<std::string> TvsIn(const std::string& folder);
// Removes what was left there when a process was killed that made or removed a TV.
VTV_EXPORT void RemoveLeftFolders(const std::string& folder);

// The copy is what the TV is and knows, each value as it was at some moment of the copying; it has
// nothing of what happened: no log, no trace, no launches, no running application.
VTV_EXPORT void CopyTv(const std::string& from, const std::string& to);
// Returns what runs on the TV, and has to find that its folder is gone.
VTV_EXPORT std::vector<RunningApplication> RenameTv(const std::string& from, const std::string& to);
// Throws kNo while applications run on it, and for a folder that holds what is no part of a TV; by
// force they are ended (and returned), and that is removed. Links are removed, and never followed.
// Works on a TV that cannot be opened.
VTV_EXPORT std::vector<RunningApplication> RemoveTv(const std::string& dir, bool byForce);

}  // namespace vtv
