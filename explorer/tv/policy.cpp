#include "policy.h"

#include "virtual-tv/model/policy.h"

namespace explorer {

const Assistant* PolicyState::Find(const std::string& appId) const {
    for (const Assistant& assistant : list) {
        if (assistant.appId == appId) {
            return &assistant;
        }
    }
    return nullptr;
}

std::string PolicyState::KindOf(const std::string& appId) const {
    const auto kind = kinds.find(appId);
    return kind == kinds.end() ? "" : kind->second;
}

void Publish(const std::string& document, PolicyState& state) {
    const vtv::PolicyReading reading = vtv::ReadPolicy(document);
    if (!reading.isJson || reading.isRefused) {
        return;
    }
    if (reading.assistants.empty()) {
        state.list.clear();
        return;
    }
    state = PolicyState{reading.assistants, {}};
    for (const Assistant& assistant : state.list) {
        if (vtv::FindKnownAssistant(assistant.id) != nullptr) {
            state.kinds[assistant.appId] = assistant.id;
        }
    }
}

PolicyState StateOf(const Policy& policy) {
    PolicyState state;
    for (const std::string& document : policy.published) {
        Publish(document, state);
    }
    return state;
}

}  // namespace explorer
