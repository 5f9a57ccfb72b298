// A TV of a model as it comes out of its box: what the virtual TV makes of the model's file.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "inputs.h"
#include "models.h"

namespace explorer {

struct NewTv {
    std::string name;   // the model's
    std::string model;  // as a scenario names it: a name, or a whole path
    // Every input has a value here, by its index.
    std::map<int, Value> values;
    // What db/menu/voice/mva_list holds; nothing on a TV whose model has no policy.
    std::optional<std::string> policy;
    std::string accountUi;  // the application that signs in
    // Applications that can be started beside those that every TV has.
    std::set<std::string> installed;
    std::set<std::string> foreign;  // of these, those that the model runs with a command of its own
    // What starting one does: it waits for the viewer, finishes by itself, or is only noted.
    enum class Applications { kProcess, kAuto, kRecord };
    Applications applications = Applications::kProcess;
    bool online = true;
};

// Throws InputError.
NewTv LoadNewTv(const Inputs& inputs, const TvModel& model);

// No such setting, or a call that fails.
Value MissingValue();
Value NumberValue(int number, const char* storedType);
Value TextValue(const std::string& text);

}  // namespace explorer
