// A provider library, loaded as a settings application loads it, with its answers as C++ values.
//
// The platform calls that the library imports must be served by something that the process has
// loaded before. Everything happens on the calling thread.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "abi/si_provider.h"

namespace host {

// A provider that cannot be used. what() is for people: the file, what is wrong with it, what to
// do.
class ProviderError : public std::runtime_error {
  public:
    enum class Kind { kNoSuchFile, kUnusable };
    ProviderError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

// One choice of a list item.
struct Choice {
    int value = 0;  // what SetInt() takes
    std::string text;
    bool operator==(const Choice&) const = default;
};

// A box with buttons: the confirmation before a change, or the popup of a dimmed item.
struct Box {
    std::string title;
    std::string message;
    std::vector<std::string> buttons;  // at most two, the first is the one that acts
    // What the first button sends through SetInt(); a confirmation has none and sends the choice.
    std::optional<int> action;
    bool operator==(const Box&) const = default;
};

class Provider {
  public:
    // A library has its memory once a process, and several providers from it share that. A private
    // copy has a memory of its own, as fresh as after the start of the TV.
    enum class Copy { kShared, kPrivate };

    // Loads the library, finds its ten entry points and creates the provider. Throws ProviderError.
    explicit Provider(const std::string& file, Copy copy = Copy::kShared);
    // Deletes the provider and unloads the library.
    ~Provider();
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;

    const std::string& File() const { return file_; }

    bool IsVisible(const std::string& key) const;
    bool IsEnabled(const std::string& key) const;
    // Absent when the provider has no such text.
    std::optional<std::string> Title(const std::string& key) const;
    std::optional<std::string> Help(const std::string& key) const;
    // Ask only for items that have a value; absent for a key that the provider does not know.
    std::optional<int> GetInt(const std::string& key) const;
    void SetInt(const std::string& key, int value) const;
    // In the viewer's order; empty for an item without choices.
    std::vector<Choice> Choices(const std::string& key) const;
    // The box that is shown before the value of the item is changed.
    std::optional<Box> Confirmation(const std::string& key) const;
    // Why the item is dimmed, in words for the viewer.
    std::optional<std::string> DisableText(const std::string& key) const;
    // What a dimmed item offers when it is selected.
    std::optional<Box> DisablePopup(const std::string& key) const;
    // "provider/owner", "provider/main-component", "provider/sub-component".
    std::optional<std::string> Property(const std::string& key) const;

    // The bare contract, for checks of it.
    struct EntryPoints {
        int (*create)(void*** table) = nullptr;
        int (*destroy)(void*** table) = nullptr;
        int (*visibleInt)(const char*, int) = nullptr;
        int (*visibleBool)(const char*, bool) = nullptr;
        int (*visibleDouble)(const char*, double) = nullptr;
        int (*visibleString)(const char*, const char*) = nullptr;
        int (*enabledInt)(const char*, int) = nullptr;
        int (*enabledBool)(const char*, bool) = nullptr;
        int (*enabledDouble)(const char*, double) = nullptr;
        int (*enabledString)(const char*, const char*) = nullptr;
    };

  private:
    std::string file_;
    EntryPoints entry_;
    std::unique_ptr<void, int (*)(void*)> library_;
    void** slots_ = nullptr;
    const SIProviderTable* table_ = nullptr;
};

// The first half of what Provider does, for who wants to call the contract by hand: loads the
// library and finds the entry points, but creates nothing.
class ProviderLibrary {
  public:
    explicit ProviderLibrary(const std::string& file,
                             Provider::Copy copy = Provider::Copy::kShared);
    const Provider::EntryPoints& Entry() const { return entry_; }
    std::unique_ptr<void, int (*)(void*)> Release() { return std::move(library_); }

  private:
    std::unique_ptr<void, int (*)(void*)> library_;
    Provider::EntryPoints entry_;
};

}  // namespace host
