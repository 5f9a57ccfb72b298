// Which key of a keyboard is which of the remote control, and of the window itself.
#pragma once

#include <optional>
#include <string>

#include "navigator.h"

namespace window {

// What the window itself does by a key; from kLanguage on only beside the open panel.
enum class Tool {
    kKeys,
    kPanel,
    kVoiceGuide,
    kLargeText,
    kContrast,
    kLanguage,
    kAccount,
    kNetwork,
    kPowerCycle,
    kRecord,
    kCopy
};
inline bool IsOfPanel(Tool tool) {
    return tool >= Tool::kLanguage;
}

struct Stroke {
    std::optional<Key> key;
    std::optional<Tool> tool;
};

// By the name that the toolkit has for it ("Return"); nothing for any other.
Stroke StrokeOf(const std::string& keyName);
// By the name that stands in a file of keys ("ok", "voice-guide"): what the toolkit calls a key
// that does it. Absent for no such name.
std::optional<std::string> KeyNameOf(const std::string& name);
// All those names, for people.
std::string NamesOfKeys();
// The keys for people, a line each; `whyNoVoiceGuide` is why one of them does nothing.
std::string KeysInWords(const std::optional<std::string>& whyNoVoiceGuide);

}  // namespace window
