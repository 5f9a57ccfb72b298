// What can be asked of a provider that has been created, with its answers as C++ values.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "abi/si_provider.h"

namespace host {

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

class AskableProvider {
  public:
    using Check = int (*)(const char* key, int value);

    // The provider must be there for as long as it is asked.
    AskableProvider(Check visible, Check enabled, const SIProviderTable& table);

    bool IsVisible(const char* key) const { return visible_(key, 0) != 0; }
    bool IsEnabled(const char* key) const { return enabled_(key, 0) != 0; }
    // Absent when the provider has no such text.
    std::optional<std::string> Title(const char* key) const;
    std::optional<std::string> Help(const char* key) const;
    // Ask only for items that have a value; absent for a key that the provider does not know.
    std::optional<int> GetInt(const char* key) const;
    void SetInt(const char* key, int value) const;
    // In the viewer's order; empty for an item without choices.
    std::vector<Choice> Choices(const char* key) const;
    // The box that is shown before the value of the item is changed.
    std::optional<Box> Confirmation(const char* key) const;
    // Why the item is dimmed, in words for the viewer.
    std::optional<std::string> DisableText(const char* key) const;
    // What a dimmed item offers when it is selected.
    std::optional<Box> DisablePopup(const char* key) const;
    // "provider/owner", "provider/main-component", "provider/sub-component".
    std::optional<std::string> Property(const char* key) const;

  private:
    struct BoxTexts;

    Check visible_;
    Check enabled_;
    const SIProviderTable* table_;
    std::shared_ptr<BoxTexts> box_;
};

}  // namespace host
