// What the verbs about settings share: how settings are told, and what is said of one that is not
// there.
#pragma once

#include <json/json.h>

#include <string>

#include "virtual-tv/virtual_tv.h"

namespace cli {

// In any case.
bool Contains(const std::string& text, const std::string& part);
// A text in quotes, anything else as it is.
std::string Shown(const vtv::Value& value);
Json::Value SettingToJson(const std::string& key, const vtv::Value& value);
// Throws kNoSuch with what may have been meant.
[[noreturn]] void ThrowNoSuchKey(const vtv::Tv& tv, const std::string& key);

}  // namespace cli
