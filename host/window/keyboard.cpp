#include "keyboard.h"

#include <string_view>

namespace window {

namespace {

// The first row of a name is the one that is fed for it.
const struct {
    const char* keyName;
    const char* name;
    Stroke stroke;
} kKeyboard[] = {
    {"Up", "up", {Key::kUp, {}}},
    {"Down", "down", {Key::kDown, {}}},
    {"Left", "left", {Key::kLeft, {}}},
    {"Right", "right", {Key::kRight, {}}},
    {"Return", "ok", {Key::kOk, {}}},
    {"KP_Enter", "ok", {Key::kOk, {}}},
    {"XF86Select", "ok", {Key::kOk, {}}},
    {"Escape", "back", {Key::kBack, {}}},
    {"BackSpace", "back", {Key::kBack, {}}},
    {"XF86Back", "back", {Key::kBack, {}}},
    {"Home", "home", {Key::kHome, {}}},
    {"XF86HomePage", "home", {Key::kHome, {}}},
    {"F1", "keys", {{}, Tool::kKeys}},
    {"F2", "panel", {{}, Tool::kPanel}},
    {"v", "voice-guide", {{}, Tool::kVoiceGuide}},
    {"t", "large-text", {{}, Tool::kLargeText}},
    {"c", "contrast", {{}, Tool::kContrast}},
    {"l", "language", {{}, Tool::kLanguage}},
    {"a", "account", {{}, Tool::kAccount}},
    {"n", "network", {{}, Tool::kNetwork}},
    {"p", "power-cycle", {{}, Tool::kPowerCycle}},
    {"r", "record", {{}, Tool::kRecord}},
    {"y", "copy", {{}, Tool::kCopy}},
};

}  // namespace

Stroke StrokeOf(const std::string& keyName) {
    for (const auto& row : kKeyboard) {
        if (keyName == row.keyName) {
            return row.stroke;
        }
    }
    return {};
}

std::optional<std::string> KeyNameOf(const std::string& name) {
    for (const auto& row : kKeyboard) {
        if (name == row.name) {
            return row.keyName;
        }
    }
    return std::nullopt;
}

std::string NamesOfKeys() {
    std::string names;
    const char* last = "";
    for (const auto& row : kKeyboard) {
        if (std::string_view(row.name) != last) {
            names += (names.empty() ? "" : ", ") + std::string(row.name);
        }
        last = row.name;
    }
    return names;
}

std::string KeysInWords(const std::optional<std::string>& whyNoVoiceGuide) {
    return "Arrows: move.   Enter: OK.   Esc: Back.   Home: Home.\n"
           "T: larger text.   C: stronger colours.\nV: voice guide on or off." +
           (whyNoVoiceGuide ? " Not with this provider: " + *whyNoVoiceGuide : "") +
           "\nF2: the panel beside the TV, and with it: L: language.   A: account.   "
           "N: network.   P: power cycle.   R: record.   Y: copy the command.";
}

}  // namespace window
