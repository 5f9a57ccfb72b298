// The step of a scenario that makes a TV what is wanted.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "recording.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

Recording::Step StepTo(const vtv::Snapshot& wanted, const vtv::Tv& tv);

// What is in the first list and not in the second.
std::vector<std::string> Missing(const std::vector<std::string>& all,
                                 const std::vector<std::string>& some);
std::vector<std::string> KeysOf(const std::map<std::string, vtv::Value>& values);

}  // namespace host
