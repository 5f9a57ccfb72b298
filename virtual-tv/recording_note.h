// Which file a TV is being recorded into. That is this user's word, and no part of the TV: whoever
// sent a TV could else name any file of the user's to be written to.
#pragma once

#include <functional>
#include <string>

#include "virtual_tv.h"

namespace vtv {

// Kept with the user's own files, by the folder that the TV is in: it follows a folder that is
// renamed, and neither a copy nor another one that comes to lie in its place has it.
class VTV_EXPORT RecordingNote {
  public:
    explicit RecordingNote(const std::string& tvDir);

    // The file, absolute; empty when nothing is recorded. Throws kPlatform for a note that is
    // damaged, or could be of others.
    std::string Read() const;
    // Notes it once begin() has returned; nobody else does so meanwhile. Throws kNo when the TV is
    // being recorded.
    void Write(const std::string& file, const std::function<void()>& begin) const;
    // Throws kPlatform when the system refuses.
    void Remove() const;

  private:
    std::string path_;  // empty where there is no home, or no such folder
};

}  // namespace vtv
