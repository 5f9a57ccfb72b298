// Folders that are there whole or not at all, whenever the process that makes or removes them ends.
//
// What is being made, or removed, lies beside its place under a name that no TV can have, locked by
// the process that is at it. What nobody holds is a leftover of one that was killed.
#pragma once

#include <string>
#include <vector>

namespace vtv {

// Makes the parents of a place, and takes back what it has made unless that is kept.
class NewParents {
  public:
    explicit NewParents(const std::string& place);
    ~NewParents();
    NewParents(const NewParents&) = delete;
    NewParents& operator=(const NewParents&) = delete;

    void Keep() { made_.clear(); }

  private:
    std::vector<std::string> made_;  // the deepest first
};

class NewFolder {
  public:
    // Makes the parents of the place. Throws kUsage when there is something there but an empty
    // folder, or when its name is one of those that leftovers have.
    explicit NewFolder(const std::string& place);
    // Removes what was not put in place.
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    // Where it is made.
    const std::string& Aside() const { return aside_; }
    // From here on it is at its place. Throws when another process was sooner.
    void PutInPlace();

  private:
    std::string place_;
    NewParents parents_;
    std::string aside_;
    int lock_ = -1;
};

// Returns the place. Throws kUsage as NewFolder does.
std::string RequireFreePlace(const std::string& place);
// The name of what is being made or removed.
bool IsAsideName(const std::string& name);
// Moves a folder, whole, to a place that is free.
void MoveFolder(const std::string& from, const std::string& place);
// It is gone from its place when this returns or throws while deleting. Follows no link.
void RemoveFolder(const std::string& dir);
// Syncs a folder. Throws kPlatform.
void SyncFolder(const std::string& dir);

}  // namespace vtv
