#include "policy_fault.h"

#include <set>

#include "limits.h"
#include "policy.h"

namespace vtv {

namespace {

std::string FaultOfAssistant(const JsonText& document, const Json::Value& assistant) {
    if (!assistant.isObject()) {
        return document.At(assistant, "an assistant is an object: { \"VAOrder\": 1, ... }");
    }
    const auto wrong = [&](const char* member, const std::string& must) {
        const bool isThere = assistant.isMember(member);
        return document.At(isThere ? assistant[member] : assistant,
                           '"' + std::string(member) +
                               (isThere ? "\" must be " : "\" is missing: it must be ") + must);
    };
    if (!assistant[policy::kOrder].isInt()) {
        return wrong(policy::kOrder, "a whole number");
    }
    for (const char* member : {policy::kId, policy::kAppId, policy::kName}) {
        if (!assistant[member].isString()) {
            return wrong(member, "a text");
        }
    }
    return assistant[policy::kFarField].isBool() ? "" : wrong(policy::kFarField, "true or false");
}

}  // namespace

std::string FaultOf(const JsonText& document) {
    if (!document.Problem().empty()) {
        return document.Problem();
    }
    const Json::Value& root = document.Root();
    if (!root.isArray()) {
        return document.At(root, "a policy is a list of assistants: [ ... ]");
    }
    if (std::string problem = TooMany("assistants", root.size(), kMostAssistants);
        !problem.empty()) {
        problem.pop_back();  // the full stop, which no fault has
        return document.At(root, problem);
    }
    std::set<int> orders;
    for (const Json::Value& assistant : root) {
        std::string fault = FaultOfAssistant(document, assistant);
        if (!fault.empty()) {
            return fault;
        }
        const Json::Value& order = assistant[policy::kOrder];
        if (!orders.insert(order.asInt()).second) {
            return document.At(order, "\"VAOrder\" " + order.asString() + " is here twice");
        }
    }
    const int count = static_cast<int>(root.size());
    for (const Json::Value& assistant : root) {
        const Json::Value& order = assistant[policy::kOrder];
        if (order.asInt() < 1 || order.asInt() > count) {
            return document.At(order, "\"VAOrder\" must count from 1 to " + std::to_string(count));
        }
    }
    return "";
}

}  // namespace vtv
