// The settings keys that the Voice page reads or writes, so that people can find, complete and
// mistype them with help.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The assistant policy: a JSON array.
inline constexpr char kPolicyKey[] = "db/menu/voice/mva_list";

struct KnownSetting {
    const char* key;
    const char* type;  // "bool", "int" or "string"
    const char* meaning;
    bool perAssistant = false;  // a JSON object with one member for each assistant's application id
};

const std::vector<KnownSetting>& KnownSettings();
const KnownSetting* FindKnownSetting(std::string_view key);

}  // namespace host
