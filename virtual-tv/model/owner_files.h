// Names of files below /home/owner, as people write them.
#pragma once

#include <set>
#include <string>

namespace vtv {

// The path in its shortest form. Throws kUsage for what is no file below /home/owner.
std::string RequireOwnerFile(const std::string& path);

// Files that shall be there together.
class OwnerFileNames {
  public:
    // Throws kUsage for what is no such file, or cannot be beside those that were added before.
    void Add(const std::string& path);
    const std::set<std::string>& All() const { return names_; }

  private:
    std::set<std::string> names_;
};

}  // namespace vtv
