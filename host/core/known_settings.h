// The settings keys that the Voice page reads or writes, the features and assistants behind it, and
// what they may be, so that people can find, complete and mistype them with help, and an experiment
// knows what to try.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The assistant policy: a JSON array.
inline constexpr char kPolicyKey[] = "db/menu/voice/mva_list";
inline constexpr char kCurrentAssistantKey[] = "db/multi-assistant/default_assistant_appid";
inline constexpr char kFeaturePrefix[] = "com.vantelo/featureconf/";

struct KnownSetting {
    const char* key;
    const char* type;  // "bool", "int" or "string"
    const char* meaning;
    bool perAssistant = false;  // a JSON object with one member for each assistant's application id
    // What it is known to be, the most usual first; of an assistant's member where it has those.
    std::vector<const char*> values = {};
};

const std::vector<KnownSetting>& KnownSettings();
const KnownSetting* FindKnownSetting(std::string_view key);

// What a feature is known to be, by full key; empty for an unknown one.
std::vector<const char*> KnownFeatureValues(std::string_view key);

// The assistants that a policy may offer.
struct KnownAssistant {
    const char* id;     // "VAId" of the policy
    const char* appId;  // where the policy does not say otherwise
    const char* name;
};
const std::vector<KnownAssistant>& KnownAssistants();

}  // namespace host
