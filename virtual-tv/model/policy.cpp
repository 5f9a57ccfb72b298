#include "policy.h"

#include <iterator>
#include <optional>

#include "json_text.h"

namespace vtv {

namespace {

std::optional<Assistant> ReadAssistant(const Json::Value& entry) {
    if (!entry.isObject()) {
        return std::nullopt;
    }
    try {
        return Assistant{entry[policy::kOrder].asInt(), entry[policy::kId].asString(),
                         entry[policy::kAppId].asString(), entry[policy::kName].asString(),
                         entry[policy::kFarField].asBool()};
    } catch (const Json::Exception&) {
        return std::nullopt;
    }
}

std::string MemberText(const Json::Value& entry, const char* member) {
    return entry.isObject() && entry[member].isConvertibleTo(Json::stringValue)
               ? entry[member].asString()
               : "?";
}

}  // namespace

Json::Value ToJson(const Assistant& assistant) {
    Json::Value entry;
    entry[policy::kOrder] = assistant.order;
    entry[policy::kId] = assistant.id;
    entry[policy::kAppId] = assistant.appId;
    entry[policy::kName] = assistant.name;
    entry[policy::kFarField] = assistant.farField;
    return entry;
}

std::string WritePolicy(const std::vector<Assistant>& assistants) {
    Json::Value document(Json::arrayValue);
    for (const Assistant& assistant : assistants) {
        document.append(ToJson(assistant));
    }
    return CompactJson(document);
}

PolicyReading ReadPolicy(const std::string& text) {
    PolicyReading reading;
    Json::Value document;
    reading.isJson = ParseJson(text, &document);
    if (!reading.isJson) {
        reading.problem = text.empty() ? "is empty" : "is no JSON";
        return reading;
    }
    if (!document.isArray()) {
        reading.problem = "is no JSON array";
        return reading;
    }
    for (const Json::Value& entry : document) {
        const std::optional<Assistant> assistant = ReadAssistant(entry);
        if (!assistant) {
            reading.problem = "is refused: its entry " +
                              std::to_string(reading.assistants.size() + 1) +
                              " is no object with members of the right types";
            reading.isRefused = true;
            reading.assistants.clear();
            return reading;
        }
        reading.assistants.push_back(*assistant);
    }
    reading.entries = document;
    return reading;
}

std::vector<PolicyEntry> PolicyEntries(const std::string& text) {
    std::vector<PolicyEntry> entries;
    Json::Value document;
    if (!ParseJson(text, &document) || !document.isArray()) {
        return entries;
    }
    for (const Json::Value& entry : document) {
        entries.push_back({MemberText(entry, policy::kOrder), MemberText(entry, policy::kId),
                           MemberText(entry, policy::kAppId), MemberText(entry, policy::kName),
                           MemberText(entry, policy::kFarField) == "true"});
    }
    return entries;
}

std::string DescribePolicy(const std::string& text) {
    static constexpr const char* kWords[] = {"no", "one", "two", "three", "four", "five", "six"};
    const PolicyReading reading = ReadPolicy(text);
    if (!reading.problem.empty()) {
        return "the policy " + reading.problem;
    }
    const size_t count = reading.assistants.size();
    return "the policy offers " +
           (count < std::size(kWords) ? kWords[count] : std::to_string(count)) +
           (count == 1 ? " assistant" : " assistants");
}

}  // namespace vtv
