// The translation that somebody works on, seen on the page without a build.
#pragma once

#include <string>

#include "temporary_folder.h"

namespace host {

// Makes all texts of this process come from a .po file for as long as this lives.
class TriedPoFile {
  public:
    // Throws vtv::Error: kNoSuch for no file, kUsage for one that gettext's msgfmt refuses, with
    // its line, kPlatform where msgfmt is not installed.
    explicit TriedPoFile(const std::string& file);
    ~TriedPoFile();
    TriedPoFile(const TriedPoFile&) = delete;
    TriedPoFile& operator=(const TriedPoFile&) = delete;

  private:
    TemporaryFolder folder_;
};

}  // namespace host
