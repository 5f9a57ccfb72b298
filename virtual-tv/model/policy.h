// The assistant policy: a JSON array in the setting kPolicyKey, read and written.
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "assistants.h"

namespace vtv {

// The members of an entry.
namespace policy {
inline constexpr char kOrder[] = "VAOrder";
inline constexpr char kId[] = "VAId";
inline constexpr char kAppId[] = "VAAppId";
inline constexpr char kName[] = "VAName";
inline constexpr char kFarField[] = "VAFFSupport";
}  // namespace policy

Json::Value ToJson(const Assistant& assistant);
// The whole document, on one line.
std::string WritePolicy(const std::vector<Assistant>& assistants);

// What a TV takes from a policy.
struct PolicyReading {
    std::vector<Assistant> assistants;      // none unless the problem is empty
    Json::Value entries{Json::arrayValue};  // the same as they are written
    bool isJson = false;
    bool isRefused = false;  // for an entry: the TV goes on with the assistants that it has
    // Why it offers nobody: "is empty", "is no JSON"; empty when it can be read.
    std::string problem;
};
PolicyReading ReadPolicy(const std::string& text);

// An entry as it can be shown: "?" for what is no text and no number.
struct PolicyEntry {
    std::string order;
    std::string id;
    std::string appId;
    std::string name;
    bool farField = false;
};
// All of them, also of a policy that a TV refuses.
std::vector<PolicyEntry> PolicyEntries(const std::string& text);

// "the policy offers two assistants", "the policy is no JSON".
std::string DescribePolicy(const std::string& text);

}  // namespace vtv
