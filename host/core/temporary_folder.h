// A folder that does not outlive the process that made it.
#pragma once

#include <sys/types.h>

#include <string>

namespace host {

// Lies where writing is fast and nothing is meant to last: below $TMPDIR where that is set, else in
// memory where there is room, else in /tmp.
//
// Gone with this object, and with the process, whatever ends it: a process of its own watches from
// before the folder is made, and removes it when all who work in it have ended.
class TemporaryFolder {
  public:
    // The folder's name begins with "NAME-". Throws vtv::Error when it cannot be made.
    explicit TemporaryFolder(const std::string& name);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return path_; }
    pid_t Watcher() const { return watcher_; }

  private:
    std::string path_;
    pid_t watcher_ = -1;
    int alive_ = -1;
};

}  // namespace host
