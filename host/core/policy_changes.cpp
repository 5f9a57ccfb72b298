#include "policy_changes.h"

#include <json/json.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "known_settings.h"

namespace host {

namespace {

struct Policy {
    Json::Value entries = Json::Value(Json::arrayValue);
    std::string problem;  // why it offers nobody: "is no JSON"; empty when it can be read
};

bool IsRefused(const Json::Value& entry) {
    return !entry.isObject() || !entry["VAOrder"].isConvertibleTo(Json::intValue) ||
           !entry["VAId"].isConvertibleTo(Json::stringValue) ||
           !entry["VAAppId"].isConvertibleTo(Json::stringValue) ||
           !entry["VAName"].isConvertibleTo(Json::stringValue) ||
           !entry["VAFFSupport"].isConvertibleTo(Json::booleanValue);
}

std::optional<Json::Value> Parse(const std::string& text) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value document;
    std::string errors;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
            return document;
        }
    } catch (const Json::Exception&) {  // nested deeper than the library reads
    }
    return std::nullopt;
}

Policy ReadPolicy(const std::string& text) {
    Policy policy;
    const std::optional<Json::Value> document = Parse(text);
    if (!document) {
        policy.problem = text.empty() ? "is empty" : "is no JSON";
    } else if (!document->isArray()) {
        policy.problem = "is no JSON array";
    } else {
        for (Json::ArrayIndex i = 0; i < document->size(); ++i) {
            if (IsRefused((*document)[i])) {
                policy.problem = "is refused: its entry " + std::to_string(i + 1) +
                                 " is no object with members of the right types";
                return policy;
            }
        }
        policy.entries = *document;
    }
    return policy;
}

std::string Written(const Json::Value& entries) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, entries);
}

std::string NameOf(const Json::Value& entry) {
    for (const char* member : {"VAName", "VAId", "VAAppId"}) {
        if (!entry[member].asString().empty()) {
            return entry[member].asString();
        }
    }
    return "an assistant without a name";
}

Json::Value Entry(int order, const std::string& id, const std::string& appId,
                  const std::string& name, bool farField) {
    Json::Value entry;
    entry["VAOrder"] = order;
    entry["VAId"] = id;
    entry["VAAppId"] = appId;
    entry["VAName"] = name;
    entry["VAFFSupport"] = farField;
    return entry;
}

std::string CountText(Json::ArrayIndex count) {
    static constexpr const char* kWords[] = {"no", "one", "two", "three", "four", "five", "six"};
    const std::string number = count < std::size(kWords) ? kWords[count] : std::to_string(count);
    return number + (count == 1 ? " assistant" : " assistants");
}

bool Offers(const Json::Value& entries, const std::string& id) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const Json::Value& entry) { return entry["VAId"].asString() == id; });
}

void AddFlagChanges(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        Json::Value other = entries;
        const bool flag = entries[i]["VAFFSupport"].asBool();
        other[i]["VAFFSupport"] = !flag;
        const std::string name = NameOf(entries[i]);
        const std::string now = entries[i].isMember("VAFFSupport")
                                    ? std::string("says VAFFSupport=") + (flag ? "true" : "false")
                                    : "has no VAFFSupport";
        changes->push_back({Written(other), "the policy " + now + " for " + name,
                            std::string("VAFFSupport=") + (flag ? "false" : "true") + " for " +
                                name + " in the policy"});
    }
}

// An entry whose kind no provider knows.
void AddKindChanges(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    const std::vector<KnownAssistant>& known = KnownAssistants();
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        const std::string id = entries[i]["VAId"].asString();
        if (std::any_of(known.begin(), known.end(),
                        [&](const KnownAssistant& one) { return id == one.id; })) {
            continue;
        }
        for (const KnownAssistant& assistant : known) {
            Json::Value other = entries;
            other[i]["VAId"] = assistant.id;
            const std::string name = NameOf(entries[i]);
            changes->push_back(
                {Written(other), "the policy says VAId=" + id + " for " + name,
                 std::string("VAId=") + assistant.id + " for " + name + " in the policy"});
        }
    }
}

void AddAdditions(const Json::Value& entries, const vtv::Model& model,
                  std::vector<PolicyChange>* changes) {
    const int order = static_cast<int>(entries.size()) + 1;
    for (const KnownAssistant& known : KnownAssistants()) {
        if (Offers(entries, known.id)) {
            continue;
        }
        std::string appId = known.appId;
        std::string name = known.name;
        for (const vtv::Assistant& own : model.assistants) {
            if (own.id == known.id) {
                appId = own.appId;
                name = own.name;
            }
        }
        for (const bool farField : {false, true}) {
            Json::Value other = entries;
            other.append(Entry(order, known.id, appId, name, farField));
            changes->push_back(
                {Written(other), "the policy does not offer " + name,
                 name + (farField ? " with VAFFSupport=true" : "") + " in the policy"});
        }
    }
}

void AddRemovals(const Json::Value& entries, std::vector<PolicyChange>* changes) {
    for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
        const int order = entries[i]["VAOrder"].asInt();
        Json::Value other(Json::arrayValue);
        for (Json::ArrayIndex j = 0; j < entries.size(); ++j) {
            if (j != i) {
                Json::Value kept = entries[j];
                if (kept["VAOrder"].asInt() > order) {
                    kept["VAOrder"] = kept["VAOrder"].asInt() - 1;
                }
                other.append(kept);
            }
        }
        const std::string name = NameOf(entries[i]);
        changes->push_back(
            {Written(other), "the policy offers " + name, name + " taken out of the policy"});
    }
}

void AddOthers(const Policy& policy, const std::string& now, const vtv::Model& model,
               std::vector<PolicyChange>* changes) {
    Json::Value own(Json::arrayValue);
    for (const vtv::Assistant& one : model.assistants) {
        own.append(Entry(one.order, one.id, one.appId, one.name, one.farField));
    }
    if (!own.empty() && own != policy.entries) {
        changes->push_back({Written(own), now, "the policy that the model came with", true});
    }
    Json::Value all(Json::arrayValue);
    for (const KnownAssistant& known : KnownAssistants()) {
        all.append(
            Entry(static_cast<int>(all.size()) + 1, known.id, known.appId, known.name, true));
    }
    changes->push_back({Written(all), now, "every assistant in the policy", true});
    if (!policy.entries.empty()) {
        changes->push_back({"[]", now, "no assistant in the policy", true});
    }
}

}  // namespace

std::string DescribePolicy(const std::string& text) {
    const Policy policy = ReadPolicy(text);
    return "the policy " +
           (policy.problem.empty() ? "offers " + CountText(policy.entries.size()) : policy.problem);
}

std::vector<std::string> OfferedApplications(const std::string& text) {
    std::vector<std::string> applications;
    const Policy policy = ReadPolicy(text);
    for (const Json::Value& entry : policy.entries) {
        applications.push_back(entry["VAAppId"].asString());
    }
    return applications;
}

std::vector<PolicyChange> PolicyChanges(const std::string& text, const vtv::Model& model) {
    const Policy policy = ReadPolicy(text);
    std::vector<PolicyChange> changes;
    if (policy.problem.empty()) {
        AddFlagChanges(policy.entries, &changes);
        AddKindChanges(policy.entries, &changes);
        if (!policy.entries.empty()) {
            AddAdditions(policy.entries, model, &changes);
        }
        AddRemovals(policy.entries, &changes);
    }
    AddOthers(policy, DescribePolicy(text), model, &changes);
    return changes;
}

}  // namespace host
