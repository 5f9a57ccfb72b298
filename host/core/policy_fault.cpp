#include "policy_fault.h"

#include <set>

namespace host {

namespace {

std::string FaultOfAssistant(const JsonText& policy, const Json::Value& assistant) {
    if (!assistant.isObject()) {
        return policy.At(assistant, "an assistant is an object: { \"VAOrder\": 1, ... }");
    }
    const auto wrong = [&](const char* member, const std::string& must) {
        const bool isThere = assistant.isMember(member);
        return policy.At(isThere ? assistant[member] : assistant,
                         '"' + std::string(member) +
                             (isThere ? "\" must be " : "\" is missing: it must be ") + must);
    };
    if (!assistant["VAOrder"].isInt()) {
        return wrong("VAOrder", "a whole number");
    }
    for (const char* member : {"VAId", "VAAppId", "VAName"}) {
        if (!assistant[member].isString()) {
            return wrong(member, "a text");
        }
    }
    return assistant["VAFFSupport"].isBool() ? "" : wrong("VAFFSupport", "true or false");
}

}  // namespace

std::string FaultOf(const JsonText& policy) {
    if (!policy.Problem().empty()) {
        return policy.Problem();
    }
    const Json::Value& root = policy.Root();
    if (!root.isArray()) {
        return policy.At(root, "a policy is a list of assistants: [ ... ]");
    }
    std::set<int> orders;
    for (const Json::Value& assistant : root) {
        std::string fault = FaultOfAssistant(policy, assistant);
        if (!fault.empty()) {
            return fault;
        }
        const Json::Value& order = assistant["VAOrder"];
        if (!orders.insert(order.asInt()).second) {
            return policy.At(order, "\"VAOrder\" " + order.asString() + " is here twice");
        }
    }
    const int count = static_cast<int>(root.size());
    for (const Json::Value& assistant : root) {
        const Json::Value& order = assistant["VAOrder"];
        if (order.asInt() < 1 || order.asInt() > count) {
            return policy.At(order, "\"VAOrder\" must count from 1 to " + std::to_string(count));
        }
    }
    return "";
}

}  // namespace host
