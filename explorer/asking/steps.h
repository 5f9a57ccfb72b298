// What a record says, as members of a scenario's step.
#pragma once

#include <toml++/impl/forward_declarations.h>

#include <map>
#include <string>
#include <vector>

#include "explorer/tv/record.h"
#include "question.h"
#include "virtual-tv/model/values.h"

namespace explorer {

// A member of an item's answer; empty for what is no question of an item's look.
toml::table AnswerIn(Asks kind, const std::vector<RecordEntry>& record);

// What an answer does beside: applications and notifications as a scenario names them, and what it
// writes.
struct Effects {
    std::vector<std::string> launches;
    std::vector<std::string> toasts;
    std::map<std::string, vtv::Value> settings;
    std::map<std::string, vtv::Value> state;  // modes of always-on voice
};
Effects EffectsIn(const std::vector<RecordEntry>& record);

// Steps: an item is handed a value; asked, it answers so, with the word "expect" or "never". Empty
// without answers.
toml::table HandStep(const char* item, int value);
toml::table AnswerStep(const char* word, const char* item, const toml::table& answers);
// Adds what is met by these effects to the step's expectations with that word.
void AddEffects(const Effects& effects, const char* word, toml::table& step);

}  // namespace explorer
