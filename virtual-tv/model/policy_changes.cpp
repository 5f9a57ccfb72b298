#include "policy_changes.h"

#include <algorithm>

#include "assistants.h"
#include "json_text.h"
#include "policy.h"

namespace vtv {

namespace {

std::string NameOf(const Json::Value& entry) {
    for (const char* member : {policy::kName, policy::kId, policy::kAppId}) {
        if (!entry[member].asString().empty()) {
            return entry[member].asString();
        }
    }
    return "an assistant without a name";
}

bool Offers(const Json::Value& entries, const std::string& id) {
    return std::any_of(entries.begin(), entries.end(), [&](const Json::Value& entry) {
        return entry[policy::kId].asString() == id;
    });
}

void AddFlagChanges(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        Json::Value other = entries;
        const bool flag = entries[i][policy::kFarField].asBool();
        other[i][policy::kFarField] = !flag;
        const std::string name = NameOf(entries[i]);
        const std::string now = entries[i].isMember(policy::kFarField)
                                    ? std::string("says VAFFSupport=") + (flag ? "true" : "false")
                                    : "has no VAFFSupport";
        changes->push_back({CompactJson(other), "the policy " + now + " for " + name,
                            std::string("VAFFSupport=") + (flag ? "false" : "true") + " for " +
                                name + " in the policy"});
    }
}

// An entry whose kind no provider knows.
void AddKindChanges(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        const std::string id = entries[i][policy::kId].asString();
        if (FindKnownAssistant(id) != nullptr) {
            continue;
        }
        for (const KnownAssistant& assistant : KnownAssistants()) {
            Json::Value other = entries;
            other[i][policy::kId] = assistant.id;
            const std::string name = NameOf(entries[i]);
            changes->push_back(
                {CompactJson(other), "the policy says VAId=" + id + " for " + name,
                 std::string("VAId=") + assistant.id + " for " + name + " in the policy"});
        }
    }
}

void AddAdditions(const Json::Value& entries, const std::vector<Assistant>& own,
                  std::vector<PolicyChange>* changes) {
    const int order = static_cast<int>(entries.size()) + 1;
    for (const KnownAssistant& known : KnownAssistants()) {
        if (Offers(entries, known.id)) {
            continue;
        }
        std::string appId = known.appId;
        std::string name = known.name;
        for (const Assistant& one : own) {
            if (one.id == known.id) {
                appId = one.appId;
                name = one.name;
            }
        }
        for (const bool farField : {false, true}) {
            Json::Value other = entries;
            other.append(ToJson({order, known.id, appId, name, farField}));
            changes->push_back(
                {CompactJson(other), "the policy does not offer " + name,
                 name + (farField ? " with VAFFSupport=true" : "") + " in the policy"});
        }
    }
}

void AddRemovals(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        const int order = entries[i][policy::kOrder].asInt();
        Json::Value other(Json::arrayValue);
        for (Json::ArrayIndex j = 0; j < entries.size(); ++j) {
            if (j != i) {
                Json::Value kept = entries[j];
                if (kept[policy::kOrder].asInt() > order) {
                    kept[policy::kOrder] = kept[policy::kOrder].asInt() - 1;
                }
                other.append(kept);
            }
        }
        const std::string name = NameOf(entries[i]);
        changes->push_back(
            {CompactJson(other), "the policy offers " + name, name + " taken out of the policy"});
    }
}

void AddOthers(const Json::Value& entries, const std::string& now,
               const std::vector<Assistant>& own, std::vector<PolicyChange>* changes) {
    const std::string written = WritePolicy(own);
    if (!own.empty() && written != CompactJson(entries)) {
        changes->push_back({written, now, "the policy that the model came with", true});
    }
    std::vector<Assistant> all;
    for (const KnownAssistant& known : KnownAssistants()) {
        all.push_back({static_cast<int>(all.size()) + 1, known.id, known.appId, known.name, true});
    }
    changes->push_back({WritePolicy(all), now, "every assistant in the policy", true});
    if (!entries.empty()) {
        changes->push_back({"[]", now, "no assistant in the policy", true});
    }
}

}  // namespace

std::vector<PolicyChange> PolicyChanges(const std::string& text,
                                        const std::vector<Assistant>& own) {
    const PolicyReading reading = ReadPolicy(text);
    std::vector<PolicyChange> changes;
    if (reading.problem.empty()) {
        AddFlagChanges(reading.entries, &changes);
        AddKindChanges(reading.entries, &changes);
        if (!reading.entries.empty()) {
            AddAdditions(reading.entries, own, &changes);
        }
        AddRemovals(reading.entries, &changes);
    }
    AddOthers(reading.entries, DescribePolicy(text), own, &changes);
    return changes;
}

}  // namespace vtv
