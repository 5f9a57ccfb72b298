// The dull model's second half: what the page reads, says and does, and what other programs of the
// TV ask of the same library.
//
// Texts are told by their ids; where a text names somebody, the name stands behind the id.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "page_model.h"

namespace model {

// What happens on the TV, in order, in words: "writes KEY = string TEXT", "starts APP
// key=\"value\"".
using Effects = std::vector<std::string>;
using Choices = std::vector<std::pair<int, std::string>>;

struct Box {
    std::string title;
    std::string message;
    std::string first;
    std::string second;  // empty: one button
};

struct Reason {
    bool shown = false;
    std::optional<std::string> text;
};

std::optional<int> ValueOf(const State& state, Item item);
std::string TitleOf(const State& state, Item item);
std::string HelpOf(const State& state, Item item);
Choices ChoicesOf(const State& state, Item item);
std::optional<Box> ConfirmationOf(Item item);
Reason ReasonOf(const State& state, Item item);
// Of a dimmed item.
std::optional<Box> PopupOf(const State& state, Item item);

// The state afterwards is what the TV then reads.
Effects Write(State& state, Item item, int value);
// The action button of a popup. `fails` becomes true when the sign-in cannot be opened.
Effects PressPopup(const State& state, bool& fails);

// What other programs ask.
Effects LaunchOnboarding(const State& state);
Effects NoticeOfChange(const State& state);
Effects ShowPopup(const State& state, const std::string& text);
Effects SwitchVoiceGuide(bool on);
Effects SwitchPassThrough(bool on);
Choices WakeUpChoices(const State& state);
bool DisabledByPolicy(const State& state);
bool SignageTv(const State& state);
bool PassThroughDimmed(const State& state);
std::string PassThroughText(const State& state);
std::string DeviceKind(const State& state);
std::string TextForDevice(const State& state, const std::string& tv, const std::string& screen,
                          const std::string& other);
bool MenuLanguageIsSpoken(const State& state);

}  // namespace model
