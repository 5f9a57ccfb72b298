// Whether a TV can be opened: nobody else can change it meanwhile, and nothing in it leads out of
// it.
#pragma once

#include <string>

namespace vtv {

// Throws kPlatform when a folder on the way to the TV, or anything in it, belongs to another user
// but root, or can be written by others; kUsage for a link, a pipe or a device in the TV's folder,
// because the TV writes into its files, and for a file that is too large to be a TV's, because the
// TV reads them, and for more files than any TV has; kPlatform when the folder cannot be read.
void RequireTrustedTv(const std::string& dir);

}  // namespace vtv
