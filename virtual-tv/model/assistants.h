// The assistants that a TV can have.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vtv {

// One assistant of a policy.
struct Assistant {
    int order = 0;
    std::string id;
    std::string appId;
    std::string name;
    bool farField = false;
};

inline constexpr char kOrvikApp[] = "com.vantelo.tv.voice-instant-app";

struct KnownAssistant {
    const char* id;     // in a policy
    const char* appId;  // where the policy does not say otherwise
    const char* name;
    // The file below kOwnerFolder that it leaves once it is set up; null for those that note it in
    // a setting.
    const char* marker;
    // What its application shows that is started to set it up; null where it cannot do that.
    const char* setupScreen;
    // The extra that it is started with for that.
    const char* setupKey = nullptr;
    const char* setupValue = nullptr;
};

const std::vector<KnownAssistant>& KnownAssistants();
// By its id; null for an unknown one.
const KnownAssistant* FindKnownAssistant(std::string_view id);

}  // namespace vtv
