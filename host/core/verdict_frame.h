// How the process of a task says what came of it, so that nothing else is taken for it.
#pragma once

#include <optional>
#include <string>

#include "supervised.h"

namespace host {

// A word that nobody writes by accident.
std::string RandomToken();

std::string ToFrame(const std::string& token, Outcome outcome, const std::string& why);

// What is said in nothing but whole frames; of several the first that is no pass counts. Absent
// when anything is missing, or there is anything else.
std::optional<Verdict> ParseFrames(const std::string& token, const std::string& bytes);

}  // namespace host
