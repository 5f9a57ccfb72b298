#include "suppositions.h"

#include <json/json.h>

#include <algorithm>
#include <filesystem>

#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/model/policy_changes.h"

namespace host {

namespace {

constexpr char kAgreement[] = "GetDisclaimerItemAgreement";

// Of a call that reads nothing but one thing, that; of others, what the model of a TV knows of the
// setting, feature or consent that they read.
std::optional<vtv::YesAndNo> WordsOf(const vtv::Read& read) {
    if (read.function == "sso_get_login_state") {
        return vtv::YesAndNo{"signed in", "signed out"};
    }
    if (read.function == "connection_profile_check_default_gateway") {
        return vtv::YesAndNo{"the network is up", "the network is down"};
    }
    if (read.function == "AOVSystemDataGetAOVMode") {
        return vtv::YesAndNo{"always-on voice is on", "always-on voice is off"};
    }
    return vtv::WordsOf(read.subject);
}

bool IsYes(const std::optional<vtv::Value>& value) {
    if (!value) {
        return false;
    }
    if (const int* number = std::get_if<int>(&*value)) {
        return *number > 0;
    }
    if (const bool* flag = std::get_if<bool>(&*value)) {
        return *flag;
    }
    return !std::get<std::string>(*value).empty();
}

bool IsFeature(const vtv::Read& read) {
    return read.function.rfind("system_info_get_custom_", 0) == 0;
}

bool IsSetting(const vtv::Read& read) {
    return read.function.rfind("vconf_get_", 0) == 0;
}

// "bool", "int" or "string": what the call reads.
std::string TypeOf(const vtv::Read& read) {
    const std::string name = read.function.substr(read.function.rfind('_') + 1);
    return name == "str" ? "string" : name;
}

std::string Quoted(const std::optional<vtv::Value>& value) {
    if (!value) {
        return "missing";
    }
    const std::string text = vtv::ToText(*value);
    return std::holds_alternative<std::string>(*value) ? "\"" + text + "\"" : text;
}

std::string TextRead(const vtv::Read& read) {
    return read.value ? vtv::ToText(*read.value) : "";
}

// As a provider reads a setting that holds one JSON object. The problem is told in words.
struct Document {
    Json::Value root;
    std::string problem;  // "is missing", "is no JSON", "is no JSON object"
};

Document ReadDocument(const vtv::Read& read) {
    Document document;
    if (!read.value) {
        document.problem = "is missing";
        return document;
    }
    const bool parsed = vtv::ParseJson(TextRead(read), &document.root);
    if (!parsed || !document.root.isObject()) {
        document.problem = parsed ? "is no JSON object" : "is no JSON";
        document.root = Json::Value(Json::objectValue);
    }
    return document;
}

std::string AssistantInWords(const std::string& assistant) {
    return assistant.empty() ? "\"\"" : assistant;
}

// The assistant's member of a setting that holds one JSON object for all of them.
std::string DescribeMember(const vtv::Read& read, const std::string& assistant) {
    const Document document = ReadDocument(read);
    if (!document.problem.empty()) {
        return read.subject + " " + document.problem;
    }
    if (!document.root.isMember(assistant)) {
        return read.subject + " says nothing about " + AssistantInWords(assistant);
    }
    const Json::Value& member = document.root[assistant];
    return read.subject + " has \"" +
           (member.isConvertibleTo(Json::stringValue) ? member.asString() : "...") + "\" for " +
           AssistantInWords(assistant);
}

std::string DescribeTencent(const vtv::Read& read) {
    const Document document = ReadDocument(read);
    if (!document.problem.empty()) {
        return "Tencent's onboarding is not done: " + read.subject + " " + document.problem;
    }
    return document.root.isMember("onboarding_completed") ? "Tencent's onboarding is done"
                                                          : "Tencent's onboarding is not done";
}

std::string DescribeMarker(const vtv::Read& read) {
    const std::string name = std::filesystem::path(read.subject).filename().string();
    return IsYes(read.value) ? "the sign-in marker " + name + " is there"
                             : "there is no sign-in marker " + name;
}

std::string AsToldTo(const std::string& function) {
    return function + " fails, as it was told to";
}

// Why a read failed that is not simply of something missing; empty when there is no such reason.
std::string WhyFailed(const vtv::Read& read, const vtv::Tv& tv) {
    if (read.value) {
        return "";
    }
    for (const vtv::Fault& fault : tv.Faults()) {
        if (fault.function == read.function && fault.kind == vtv::Fault::Kind::kAlways) {
            return AsToldTo(read.function);
        }
    }
    if (!IsSetting(read)) {
        return "";
    }
    try {
        const std::optional<vtv::Value> stored = tv.Get(read.subject);
        return stored && vtv::TypeName(*stored) != TypeOf(read)
                   ? read.subject + " is of type " + vtv::TypeName(*stored) + ", and read as " +
                         TypeOf(read)
                   : "";
    } catch (const vtv::Error& error) {
        return error.kind() == vtv::ErrorKind::kPlatform ? read.subject + " is damaged" : "";
    }
}

// What it would be like "with", for a read whose values need no further words.
std::string Then(const vtv::Read& read) {
    const bool yes = IsYes(read.value);
    const auto choose = [&](const char* ifYes, const char* ifNo) { return yes ? ifYes : ifNo; };
    if (read.function == kAgreement) {
        return "consent " + read.subject + choose("", " withdrawn");
    }
    if (read.function == "sso_get_login_state") {
        return choose("the account signed in", "the account signed out");
    }
    if (read.function == "connection_profile_check_default_gateway") {
        return choose("the network up", "the network down");
    }
    if (read.function == "AOVSystemDataGetAOVMode") {
        return choose("always-on voice on", "always-on voice off");
    }
    if (read.function == "access") {
        const bool owners = read.subject.rfind(vtv::kOwnerFolder, 0) == 0;
        return "the file " +
               (owners ? read.subject.substr(sizeof vtv::kOwnerFolder - 1) : read.subject) +
               choose("", " removed");
    }
    if (read.subject == vtv::kCurrentAssistantKey) {
        return yes ? TextRead(read) + " as the current assistant" : "no current assistant";
    }
    const std::string name =
        IsFeature(read) ? "the feature " + vtv::ShortFeatureName(read.subject) : read.subject;
    return name + (read.value ? "=" + TextRead(read) : " missing");
}

class Collector {
  public:
    Collector(const vtv::Read& read, std::string now) : read_(read), now_(std::move(now)) {}

    void Add(std::optional<vtv::Value> value) { Add(std::move(value), now_, ""); }
    void Add(std::optional<vtv::Value> value, const std::string& now, std::string then,
             bool lastResort = false) {
        if (value == read_.value) {
            return;
        }
        const vtv::Read other = {read_.function, read_.subject, std::move(value)};
        std::string with = then.empty() ? Then(other) : std::move(then);
        found_.push_back({read_, other, now, std::move(with), lastResort});
    }
    std::vector<Supposition> Take() { return std::move(found_); }

  private:
    const vtv::Read& read_;
    std::string now_;
    std::vector<Supposition> found_;
};

void AddTexts(const std::string& type, const std::vector<const char*>& texts, Collector* found) {
    for (const char* text : texts) {
        found->Add(vtv::ParseValue(type, text));
    }
}

// What a read of an unknown thing may find.
void AddOfType(const std::string& type, Collector* found) {
    if (type == "bool") {
        AddTexts(type, {"true", "false"}, found);
    } else if (type == "int") {
        AddTexts(type, {"0", "1", "2"}, found);
    } else {
        AddTexts(type, {""}, found);
    }
}

void AddAssistants(const Circumstances& circumstances, Collector* found) {
    std::vector<std::string> applications;
    for (const vtv::Assistant& offered : vtv::ReadPolicy(circumstances.policy).assistants) {
        applications.push_back(offered.appId);
    }
    for (const vtv::KnownAssistant& known : vtv::KnownAssistants()) {
        if (std::find(applications.begin(), applications.end(), known.appId) ==
            applications.end()) {
            applications.emplace_back(known.appId);
        }
    }
    for (const std::string& appId : applications) {
        found->Add(vtv::Value(appId));
    }
    found->Add(vtv::Value(std::string()));
}

// Where no assistant is chosen there is none whose entry could be another.
void AddMembers(const vtv::Read& read, const vtv::KnownSetting& known, const std::string& assistant,
                Collector* found) {
    if (assistant.empty()) {
        return;
    }
    const Json::Value root = ReadDocument(read).root;
    const std::string now = DescribeMember(read, assistant);
    for (const char* value : known.values) {
        if (root.isMember(assistant) && root[assistant] == value) {
            continue;
        }
        Json::Value other = root;
        other[assistant] = value;
        found->Add(vtv::CompactJson(other), now,
                   "\"" + std::string(value) + "\" for " + assistant + " in " + read.subject);
    }
    if (root.isMember(assistant)) {
        Json::Value other = root;
        other.removeMember(assistant);
        found->Add(vtv::CompactJson(other), now,
                   "nothing for " + assistant + " in " + read.subject);
    }
}

void AddSettings(const vtv::Read& read, const Circumstances& circumstances, Collector* found) {
    if (read.subject == vtv::kCurrentAssistantKey) {
        AddAssistants(circumstances, found);
        return;
    }
    const vtv::KnownSetting* known = vtv::FindKnownSetting(read.subject);
    if (known != nullptr && known->perAssistant) {
        AddMembers(read, *known, circumstances.assistant, found);
    } else if (known != nullptr && !known->values.empty() && TypeOf(read) == known->type) {
        AddTexts(known->type, known->values, found);
    } else {
        AddOfType(TypeOf(read), found);
    }
    found->Add(std::nullopt);
}

// The mode is the current assistant's.
void AddModes(const Circumstances& circumstances, Collector* found) {
    if (!circumstances.assistant.empty()) {
        AddTexts("int", {"1", "0"}, found);
    }
}

void AddFeatures(const vtv::Read& read, Collector* found) {
    const vtv::KnownFeature* known = vtv::FindKnownFeature(read.subject);
    if (known != nullptr && known->type == TypeOf(read)) {
        AddTexts(known->type, known->values, found);
    } else {
        AddOfType(TypeOf(read), found);
    }
    found->Add(std::nullopt);
}

}  // namespace

std::string TextOf(const vtv::Tv& tv, const std::string& key) {
    try {
        const vtv::Value value = tv.Get(key).value_or(std::string());
        return std::holds_alternative<std::string>(value) ? std::get<std::string>(value) : "";
    } catch (const vtv::Error&) {
        return "";  // a damaged value is as good as none; the TV's problems tell of it
    }
}

std::string Describe(const vtv::Read& read, const vtv::Tv& tv, const std::string& assistant) {
    if (const std::string why = WhyFailed(read, tv); !why.empty()) {
        return why;
    }
    if (read.subject == vtv::kOrvikFeature && !read.value) {
        return "the TV does not tell whether it supports Orvik, which counts as support";
    }
    if (const auto words = WordsOf(read)) {
        return IsYes(read.value) ? words->yes : words->no;
    }
    if (read.subject == vtv::kCurrentAssistantKey) {
        const std::string id = TextRead(read);
        return id.empty() ? "no assistant is chosen" : "the current assistant is " + id;
    }
    if (read.subject == vtv::kPolicyKey) {
        return vtv::DescribePolicy(TextRead(read));
    }
    if (read.subject == vtv::kTencentKey) {
        return DescribeTencent(read);
    }
    if (read.function == "access") {
        return DescribeMarker(read);
    }
    const vtv::KnownSetting* known = vtv::FindKnownSetting(read.subject);
    if (known != nullptr && known->perAssistant) {
        return DescribeMember(read, assistant);
    }
    if (read.subject == vtv::kBlockKey) {
        return read.value == vtv::Value(2) ? "the content hub is blocked"
                                           : "the content hub is not blocked";
    }
    if (read.subject == vtv::kPassThroughStateKey && !ReadDocument(read).problem.empty()) {
        return read.subject + " " + ReadDocument(read).problem;
    }
    return (read.subject.empty() ? read.function : read.subject) + " is " + Quoted(read.value);
}

std::string Describe(const vtv::Read& read, const vtv::Tv& tv) {
    return Describe(read, tv, TextOf(tv, vtv::kCurrentAssistantKey));
}

Supposition Mended(const std::string& function) {
    const vtv::Read read = {function, "", std::nullopt};
    const std::string then = function + " working again (vtv fault --clear " + function + ")";
    return {read, read, AsToldTo(function), then, false, true};
}

Circumstances CircumstancesOf(const vtv::Tv& tv) {
    return {TextOf(tv, vtv::kCurrentAssistantKey), TextOf(tv, vtv::kPolicyKey)};
}

std::vector<Supposition> Suppositions(const vtv::Read& read, const vtv::Tv& tv,
                                      const Circumstances& circumstances) {
    Collector found(read, Describe(read, tv, circumstances.assistant));
    if (read.subject == vtv::kPolicyKey) {
        for (const vtv::PolicyChange& change :
             vtv::PolicyChanges(TextRead(read), tv.GetModel().assistants)) {
            found.Add(vtv::Value(change.text), change.now, change.then, change.quiteAnother);
        }
    } else if (IsSetting(read)) {
        AddSettings(read, circumstances, &found);
    } else if (IsFeature(read)) {
        AddFeatures(read, &found);
    } else if (read.function == "AOVSystemDataGetAOVMode") {
        AddModes(circumstances, &found);
    } else if (read.function == "sso_get_login_state") {
        AddTexts("int", {"1", "0"}, &found);
    } else {
        AddTexts("bool", {"true", "false"}, &found);
    }
    return found.Take();
}

}  // namespace host
