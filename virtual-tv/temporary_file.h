// Where a writer writes before the file that it means is replaced.
#pragma once

#include <string>

namespace vtv {

// A file of a writer's own in a folder, locked for as long as the writer needs it: a lock is seen
// also where process numbers mean something else, as in a container.
class TemporaryFile {
  public:
    // On failure fd is negative, and errno tells why.
    explicit TemporaryFile(int dir);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string name;
    int fd = -1;  // the caller closes it; the lock stays

  private:
    // False when the file was taken for a leftover before it was locked.
    bool Guard(int dir);

    int guard_ = -1;
};

// Removes those of writers that were killed: nobody holds their locks.
void RemoveLeftTemporaryFiles(int dir);

}  // namespace vtv
