// What a record says, as members of a scenario's step.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "explorer/tv/record.h"
#include "question.h"

namespace explorer {

// "WHAT = VALUE" of an item's answer; empty for what is no question of an item's look.
std::string AnswerIn(Asks kind, const std::vector<RecordEntry>& record);

// What an answer does beside: applications and notifications as a scenario names them, and what it
// writes, with values as TOML.
struct Effects {
    std::vector<std::string> launches;
    std::vector<std::string> toasts;
    std::map<std::string, std::string> settings;
    std::map<std::string, std::string> modes;  // of always-on voice, by application
};
Effects EffectsIn(const std::vector<RecordEntry>& record);

// Lines of a step that are met by these effects: "expect.launched = [...]", with that word.
std::string MembersOf(const std::string& word, const Effects& effects);

}  // namespace explorer
