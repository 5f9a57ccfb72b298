// Changes to a TV that happen all or not at all, whenever the process that makes them ends.
//
// What shall be is first written aside, in ".changes/staged/" of the TV's folder; renaming that to
// ".changes/decided/" is the decision. From then on nothing is left to do but to rename and remove
// files, which needs no space, and which whoever opens the TV next completes if it was cut off.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "store.h"
#include "tv_impl.h"

namespace vtv {

class StagedChanges {
  public:
    // Waits for those of other processes.
    explicit StagedChanges(const std::string& tvDir);
    // Takes back what was not committed.
    ~StagedChanges();
    StagedChanges(const StagedChanges&) = delete;
    StagedChanges& operator=(const StagedChanges&) = delete;

    // Makes a store hold exactly these values. What it holds already is not touched, so that
    // watchers hear of exactly what differs.
    void Bring(const Store& store, const std::map<std::string, Value>& wanted);
    // Writes a value of a store, or (absent) removes it.
    void Write(const Store& store, const std::string& key, const std::optional<Value>& value);
    // A file of the TV's folder, relative to it; a new one is empty.
    void AddFile(const std::string& file);
    void RemoveFile(const std::string& file);
    // Throws kPlatform when it could not be decided, and the TV is as it was; or with what keeps
    // the rest from being done, which follows when the TV is opened next.
    void Commit();

  private:
    void SyncFolders() const;

    std::string tvDir_;
    FileLock lock_;
};

// While it lives nobody commits changes to the TV; what was decided before is completed.
class ChangesHalted {
  public:
    explicit ChangesHalted(const std::string& tvDir);

  private:
    FileLock lock_;
};

// Completes what was decided, and removes what was not, when a process was cut off. Throws
// kPlatform when it cannot be completed.
void CompleteChanges(const std::string& tvDir);

}  // namespace vtv
