// Files that others wrote, read with a limit.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "error.h"

namespace vtv {

// More than anybody writes by hand, and little enough for any machine.
inline constexpr std::size_t kMostBytes = std::size_t{16} << 20U;

// "-" is the standard input. Only a plain file is read, or what the program has open already
// (/dev/stdin, /dev/fd/3): another device may never end, and a pipe may never begin. Throws
// kNoSuch, kUsage for what is no plain file or has more bytes than that, kPlatform.
std::string ReadTextFile(const std::string& file, std::size_t most = kMostBytes);

// What has the name, not followed where it is a link; not_found when nothing has. Throws kPlatform
// when that cannot be found out: it is there for all that anybody knows.
std::filesystem::file_type KindOf(const std::string& path);
// Whether it leads to something. Throws kPlatform likewise.
bool IsThere(const std::string& path);

}  // namespace vtv
