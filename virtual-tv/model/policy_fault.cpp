#include "policy_fault.h"

#include <set>

#include "limits.h"
#include "policy.h"

namespace vtv {

namespace {

std::optional<PolicyFault> FaultOfAssistant(const Json::Value& policy, Json::ArrayIndex index) {
    const Json::Value& assistant = policy[index];
    if (!assistant.isObject()) {
        return PolicyFault{&assistant, "an assistant is an object: { \"VAOrder\": 1, ... }", index};
    }
    const auto wrong = [&](const char* member, const std::string& must) {
        const bool isThere = assistant.isMember(member);
        return PolicyFault{isThere ? &assistant[member] : &assistant,
                           '"' + std::string(member) +
                               (isThere ? "\" must be " : "\" is missing: it must be ") + must,
                           index};
    };
    if (!assistant[policy::kOrder].isInt()) {
        return wrong(policy::kOrder, "a whole number");
    }
    for (const char* member : {policy::kId, policy::kAppId, policy::kName}) {
        if (!assistant[member].isString()) {
            return wrong(member, "a text");
        }
    }
    if (!assistant[policy::kFarField].isBool()) {
        return wrong(policy::kFarField, "true or false");
    }
    return std::nullopt;
}

}  // namespace

std::optional<PolicyFault> FindFault(const Json::Value& policy) {
    if (!policy.isArray()) {
        return PolicyFault{&policy, "a policy is a list of assistants: [ ... ]", std::nullopt};
    }
    if (std::string problem = TooMany("assistants", policy.size(), kMostAssistants);
        !problem.empty()) {
        problem.pop_back();  // the full stop, which no fault has
        return PolicyFault{&policy, problem, std::nullopt};
    }
    std::set<int> orders;
    for (Json::ArrayIndex i = 0; i < policy.size(); ++i) {
        if (auto fault = FaultOfAssistant(policy, i)) {
            return fault;
        }
        const Json::Value& order = policy[i][policy::kOrder];
        if (!orders.insert(order.asInt()).second) {
            return PolicyFault{&order, "\"VAOrder\" " + order.asString() + " is here twice", i};
        }
    }
    const int count = static_cast<int>(policy.size());
    for (Json::ArrayIndex i = 0; i < policy.size(); ++i) {
        const Json::Value& order = policy[i][policy::kOrder];
        if (order.asInt() < 1 || order.asInt() > count) {
            return PolicyFault{&order, "\"VAOrder\" must count from 1 to " + std::to_string(count),
                               i};
        }
    }
    return std::nullopt;
}

std::optional<DocumentFault> FindFault(const JsonText& document) {
    if (!document.Problem().empty()) {
        return DocumentFault{document.Problem(), document.ProblemLine()};
    }
    const std::optional<PolicyFault> fault = FindFault(document.Root());
    return fault ? std::optional(DocumentFault{document.At(*fault->at, fault->what),
                                               document.LineOf(*fault->at)})
                 : std::nullopt;
}

}  // namespace vtv
