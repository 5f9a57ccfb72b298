// Typed values under string keys in a folder, one file per key, shared by any number of processes.
//
// A file's name is the key, percent-encoded; its content is "TYPE LENGTH\nVALUE\n", for example
// "string 5\nhello\n", so that a truncated or foreign file is recognised and `cat` reads it. A
// value is written to a temporary file, synced and renamed over the old one: a reader sees the old
// value or the new one, whole, and so does whoever looks after a crash or a power loss.
//
// The format is the same for 32-bit and 64-bit processes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_tv.h"

namespace vtv {

// The machine did not do what a TV asked of it: a full disk, a missing permission.
class MachineFailed : public Error {
    using Error::Error;
};

// It kept something from being read: that is there, and whoever would go on without it would tell
// of another TV.
class Unreadable : public MachineFailed {
  public:
    // Throws it when the error is one of the machine's and none of the file's.
    static void ThrowIf(int error, const std::string& path);

  private:
    using MachineFailed::MachineFailed;
};

// A TV has more of something than can be listed: somebody sent it so.
class HasTooMany : public Error {
    using Error::Error;
};
// Throws it. what: "settings".
void RequireNotTooMany(const std::string& where, const std::string& what, size_t count);

class Store {
  public:
    enum class Durability {
        kDurable,   // a write is on the disk when it returns
        kVolatile,  // a write is atomic, but nothing is synced
    };
    enum class Status { kOk, kMissing, kDamaged };

    static constexpr int kVersion = 1;
    // Makes an empty store; the folder may exist.
    static void Create(const std::string& dir);
    // The same of one in a TV's folder, by no link from there.
    static void Create(const std::string& tvDir, const std::string& name);

    Store(const std::string& dir, Durability durability) : Store(dir, "", durability) {}
    // remedy: what people can do about a damaged value.
    Store(const std::string& tvDir, const std::string& name, Durability durability,
          const char* remedy = "Write the key again, or unset it.");
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    const std::string& Dir() const { return dir_; }
    // Why the store as a whole cannot be used; empty when it can. Every read and write fails then.
    // Throws Unreadable.
    const std::string& Problem() const;
    // Another folder may have come to lie where this one did: that one is opened when it is needed.
    void Reopen();
    // The problem is that it says to be of a version that this program does not know, or of none.
    bool IsOfUnknownVersion() const { return !Problem().empty() && unknownVersion_; }

    // Throws Unreadable, and nothing else; problem is written for kDamaged only.
    Status Read(std::string_view key, Value* value, std::string* problem) const;
    // Throws kUsage for a key that is empty or too long and for a longer value, HasTooMany for a
    // new key in a full store, kPlatform when the system refuses; the old value stays then.
    void Write(std::string_view key, const Value& value);
    // False when there was no such key. Throws kPlatform when the system refuses.
    bool Remove(std::string_view key);
    // What is told of a value that is damaged in this way: its file, and what to do.
    std::string Damaged(std::string_view key, const std::string& what) const;
    // Absent when there is no such key.
    std::optional<Writing> LastWriting(std::string_view key) const;
    // Sorted by key; damaged ones with their problem. Throws Unreadable and, before it reads any
    // value, HasTooMany.
    std::vector<Setting> List() const;
    void RemoveAll();
    // Removes the temporary files of writers that were killed, and no other's: a writer locks its.
    void RemoveLeftovers();

    // Empty for a key that cannot be one.
    static std::string EncodeKey(std::string_view key);
    // Empty for a file that is no key's: a temporary one, or a name that EncodeKey() gives to none.
    static std::string DecodeKey(std::string_view fileName);

    // The name of the key's file. Throws kUsage for a key that is empty or too long.
    static std::string RequireKey(std::string_view key);

  private:
    void Open() const;
    void Close() const;
    void CheckVersion() const;
    std::string RequireName(std::string_view key) const;
    std::vector<std::string> Keys() const;
    void RequireRoom(const std::string& name);
    [[noreturn]] void Fail(const char* what, std::string_view key, int error) const;

    std::string tvDir_;
    std::string name_;
    std::string dir_;
    Durability durability_;
    const char* remedy_;
    // Of the folder as it was when it was opened last: one that was gone can be back.
    mutable int dirFd_ = -1;
    // At least as many as there are, but for those that other processes have written since.
    mutable size_t mostKeys_ = 0;
    mutable std::string problem_;
    mutable bool unknownVersion_ = false;
};

}  // namespace vtv
