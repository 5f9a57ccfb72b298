#include "policy.h"

#include <json/json.h>

#include <algorithm>
#include <memory>

namespace explorer {

namespace {

const char* const KNOWN_IDS[] = {"ALEXA", "ORVIK2", "GVA", "SBER", "SVA", "TENCENT"};

bool Parse(const std::string& document, Json::Value& root) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    return reader->parse(document.data(), document.data() + document.size(), &root, &errors) &&
           errors.empty();
}

// False when the element cannot be an assistant.
bool ReadAssistant(const Json::Value& element, Assistant& assistant) {
    if (!element.isObject()) {
        return false;
    }
    try {
        assistant = {element["VAOrder"].asInt(), element["VAId"].asString(),
                     element["VAAppId"].asString(), element["VAName"].asString(),
                     element["VAFFSupport"].asBool()};
    } catch (const Json::Exception&) {
        return false;
    }
    return true;
}

}  // namespace

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
    Json::Value root;
    if (!Parse(document, root)) {
        return;
    }
    if (!root.isArray() || root.empty()) {
        state.list.clear();
        return;
    }
    PolicyState next;
    for (const Json::Value& element : root) {
        Assistant assistant;
        if (!ReadAssistant(element, assistant)) {
            return;
        }
        next.list.push_back(assistant);
        if (std::find(std::begin(KNOWN_IDS), std::end(KNOWN_IDS), assistant.id) !=
            std::end(KNOWN_IDS)) {
            next.kinds[assistant.appId] = assistant.id;
        }
    }
    state = next;
}

PolicyState StateOf(const Policy& policy) {
    PolicyState state;
    for (const std::string& document : policy.published) {
        Publish(document, state);
    }
    return state;
}

}  // namespace explorer
