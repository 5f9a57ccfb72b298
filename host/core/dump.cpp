#include "dump.h"

#include <algorithm>

#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/limits.h"
#include "virtual-tv/model/owner_files.h"
#include "virtual-tv/model/spelling.h"

namespace host {

namespace {

constexpr char kDumpFormat[] = "vtv-dump";
constexpr char kSnapshotFormat[] = "vtv-snapshot";

[[noreturn]] void Fail(const vtv::JsonText& document, const Json::Value& part,
                       const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kUsage, document.At(part, text));
}

Json::Value ValueToJson(const vtv::Value& value) {
    return std::visit([](const auto& v) { return Json::Value(v); }, value);
}

// Runs a check of the virtual TV's own, whose complaint gets the place in the document.
template <typename Check>
auto At(const vtv::JsonText& document, const Json::Value& part, Check check) {
    try {
        return check();
    } catch (const vtv::Error& error) {
        Fail(document, part, error.what());
    }
}

vtv::Value ParseJsonValue(const vtv::JsonText& document, const Json::Value& json,
                          const std::string& name) {
    if (json.isBool()) {
        return json.asBool();
    }
    if (json.isInt()) {
        return json.asInt();
    }
    if (json.isString()) {
        const std::string problem = vtv::TooLong(name, json.asString().size());
        if (!problem.empty()) {
            Fail(document, json, problem);
        }
        return json.asString();
    }
    Fail(document, json,
         "\"" + name + "\" must be true, false, a whole number of 32 bits, or a text in quotes.");
}

Json::Value MapToJson(const std::map<std::string, vtv::Value>& values) {
    Json::Value json(Json::objectValue);
    for (const auto& [key, value] : values) {
        json[key] = ValueToJson(value);
    }
    return json;
}

void RequireObject(const vtv::JsonText& document, const Json::Value& json,
                   const std::string& name) {
    if (!json.isObject()) {
        Fail(document, json, "\"" + name + "\" must be an object: {\"...\": ...}.");
    }
}

// Of an object or a list.
void RequireFew(const vtv::JsonText& document, const Json::Value& json, const std::string& name) {
    const std::string problem = vtv::TooMany(name, json.size(), vtv::kMostEntries);
    if (!problem.empty()) {
        Fail(document, json, problem);
    }
}

// Calls back with each member of an object; the object may be left out.
template <typename Each>
void ForEachMember(const vtv::JsonText& document, const Json::Value& parent, const char* name,
                   Each each) {
    if (!parent.isMember(name)) {
        return;
    }
    const Json::Value& json = parent[name];
    RequireObject(document, json, name);
    RequireFew(document, json, name);
    for (const std::string& key : json.getMemberNames()) {
        each(key, json[key]);
    }
}

std::map<std::string, vtv::Value> ParseMap(const vtv::JsonText& document, const char* name) {
    std::map<std::string, vtv::Value> values;
    ForEachMember(document, document.Root(), name,
                  [&](const std::string& key, const Json::Value& value) {
                      values[key] = ParseJsonValue(document, value, key);
                  });
    return values;
}

std::map<std::string, vtv::Value> ParseSettings(const vtv::JsonText& document) {
    const std::map<std::string, vtv::Value> settings = ParseMap(document, "settings");
    for (const auto& [key, value] : settings) {
        const Json::Value& part = document.Root()["settings"][key];
        At(document, part, [&] { vtv::CheckSettingKey(key); });
        const std::string problem = vtv::TypeProblem(key, vtv::TypeName(value));
        if (!problem.empty()) {
            Fail(document, part, problem);
        }
    }
    return settings;
}

std::map<std::string, vtv::Value> ParseFeatures(const vtv::JsonText& document) {
    const std::map<std::string, vtv::Value> features = ParseMap(document, "features");
    for (const auto& [key, value] : features) {
        const Json::Value& part = document.Root()["features"][key];
        At(document, part, [&] {
            vtv::CheckFeature(key, value);
            vtv::CheckState(vtv::kAbsentFeatureState + key, true);
        });
        if (vtv::FindKnownFeature(vtv::kFeaturePrefix + key) != nullptr) {
            Fail(document, part,
                 "\"" + key + "\" is short for \"" + vtv::kFeaturePrefix + key +
                     "\": a dump names features in full.");
        }
    }
    return features;
}

std::vector<std::string> ParseFiles(const vtv::JsonText& document) {
    const Json::Value& json = document.Root()["files"];
    if (!json.isArray()) {
        Fail(document, json, "\"files\" must be a list of texts.");
    }
    RequireFew(document, json, "files");
    std::vector<std::string> files;
    vtv::OwnerFileNames names;
    for (const Json::Value& entry : json) {
        if (!entry.isString()) {
            Fail(document, entry, "\"files\" must be a list of texts.");
        }
        files.push_back(entry.asString());
        At(document, entry, [&] { names.Add(files.back()); });
    }
    return files;
}

std::string ParseText(const vtv::JsonText& document, const Json::Value& json, const char* name) {
    if (!json.isString()) {
        Fail(document, json, "\"" + std::string(name) + "\" must be a text in quotes.");
    }
    return vtv::ToText(ParseJsonValue(document, json, name));
}

// what: "a dump".
void RequireKnown(const vtv::JsonText& document, const Json::Value& json, const std::string& what,
                  const std::vector<std::string>& known) {
    for (const std::string& name : json.getMemberNames()) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            Fail(document, json[name],
                 "\"" + name + "\" is unknown in " + what + "." + vtv::DidYouMean(name, known) +
                     " Known: " + vtv::Join(known) + ".");
        }
    }
}

vtv::Package ParsePackage(const vtv::JsonText& document, const Json::Value& json) {
    if (!json.isObject() || !json["app"].isString() || json["app"].asString().empty()) {
        Fail(document, json, "each of \"packages\" needs an \"app\", its application id.");
    }
    RequireKnown(document, json, "a package", {"app", "name", "metadata"});
    vtv::Package package;
    package.appId = json["app"].asString();
    package.name = json.isMember("name") ? ParseText(document, json["name"], "name") : "";
    ForEachMember(
        document, json, "metadata", [&](const std::string& key, const Json::Value& value) {
            if (!value.isString() && !value.isNull()) {
                Fail(document, value,
                     "the metadata \"" + key + "\" of " + package.appId +
                         " must be a text or null.");
            }
            package.metadata[key] =
                value.isNull() ? std::nullopt : std::optional<std::string>(value.asString());
        });
    return package;
}

std::vector<vtv::Package> ParsePackages(const vtv::JsonText& document) {
    const Json::Value& json = document.Root()["packages"];
    if (!json.isArray()) {
        Fail(document, json, "\"packages\" must be a list of objects.");
    }
    RequireFew(document, json, "packages");
    std::vector<vtv::Package> packages;
    for (const Json::Value& entry : json) {
        packages.push_back(ParsePackage(document, entry));
    }
    return packages;
}

void CheckMembers(const vtv::JsonText& document, const char* format, const char* kind, int version,
                  const std::vector<std::string>& known) {
    if (!document.Problem().empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage, document.Problem());
    }
    const Json::Value& json = document.Root();
    RequireObject(document, json, "the document");
    if (json.get("format", format) != format) {
        Fail(document, json["format"],
             "\"format\" is " + vtv::CompactJson(json["format"]).substr(0, 40) + " but must be \"" +
                 format + "\".");
    }
    if (json.isMember("version")) {
        const std::string problem =
            vtv::VersionProblem(kind, vtv::VersionOf(json["version"]), version);
        if (!problem.empty()) {
            Fail(document, json["version"], problem);
        }
    }
    RequireKnown(document, json, kind, known);
}

}  // namespace

Dump TakeDump(const vtv::Tv& tv) {
    Dump dump;
    dump.title = tv.GetModel().title;
    dump.settings = tv.TakeSnapshot().settings;
    dump.features = tv.Features();
    dump.packages = tv.GetModel().packages;
    for (const char* item : vtv::kConsents) {
        dump.consents[item] = tv.Consent(item);
    }
    dump.signedIn = tv.SignedIn();
    dump.network = tv.GetNetwork();
    for (const auto& [key, value] : tv.State()) {
        if (key.rfind(vtv::kModeState, 0) == 0 && std::holds_alternative<int>(value)) {
            dump.alwaysOnVoice[key.substr(sizeof vtv::kModeState - 1)] = std::get<int>(value);
        }
    }
    dump.files = tv.OwnerFiles();
    return dump;
}

Json::Value ToJson(const Dump& dump) {
    Json::Value json;
    json["format"] = kDumpFormat;
    json["version"] = vtv::kDumpVersion;
    json["title"] = dump.title.value_or("");
    json["settings"] = MapToJson(dump.settings.value_or(std::map<std::string, vtv::Value>()));
    json["features"] = MapToJson(dump.features.value_or(std::map<std::string, vtv::Value>()));
    json["packages"] = Json::Value(Json::arrayValue);
    for (const vtv::Package& package : dump.packages.value_or(std::vector<vtv::Package>())) {
        Json::Value entry;
        entry["app"] = package.appId;
        entry["name"] = package.name;
        entry["metadata"] = Json::Value(Json::objectValue);
        for (const auto& [key, value] : package.metadata) {
            entry["metadata"][key] = value ? Json::Value(*value) : Json::Value();
        }
        json["packages"].append(entry);
    }
    json["consents"] = Json::Value(Json::objectValue);
    for (const auto& [item, agreed] : dump.consents) {
        json["consents"][item] = agreed;
    }
    json["signed_in"] = dump.signedIn.value_or(false);
    json["network"] = vtv::ToText(dump.network.value_or(vtv::Network::kConnected));
    json["always_on_voice"] = Json::Value(Json::objectValue);
    for (const auto& [app, mode] : dump.alwaysOnVoice) {
        json["always_on_voice"][app] = mode;
    }
    json["files"] = Json::Value(Json::arrayValue);
    for (const std::string& file : dump.files.value_or(std::vector<std::string>())) {
        json["files"].append(file);
    }
    return json;
}

Dump ParseDump(const vtv::JsonText& document) {
    CheckMembers(document, kDumpFormat, "a dump", vtv::kDumpVersion,
                 {"format", "version", "title", "settings", "features", "packages", "consents",
                  "signed_in", "network", "always_on_voice", "files"});
    const Json::Value& json = document.Root();
    Dump dump;
    if (json.isMember("title")) {
        dump.title = ParseText(document, json["title"], "title");
    }
    if (json.isMember("settings")) {
        dump.settings = ParseSettings(document);
    }
    if (json.isMember("features")) {
        dump.features = ParseFeatures(document);
    }
    if (json.isMember("packages")) {
        dump.packages = ParsePackages(document);
    }
    ForEachMember(
        document, json, "consents", [&](const std::string& item, const Json::Value& value) {
            if (!vtv::IsConsent(item) || !value.isBool()) {
                Fail(document, value, "\"consents\" has true or false for \"tnc\" and \"pp\".");
            }
            dump.consents[item] = value.asBool();
        });
    if (json.isMember("signed_in")) {
        if (!json["signed_in"].isBool()) {
            Fail(document, json["signed_in"], "\"signed_in\" must be true or false.");
        }
        dump.signedIn = json["signed_in"].asBool();
    }
    if (json.isMember("network")) {
        const Json::Value& network = json["network"];
        const std::string word = ParseText(document, network, "network");
        dump.network = At(document, network, [&] { return vtv::ParseNetwork(word); });
    }
    ForEachMember(
        document, json, "always_on_voice", [&](const std::string& app, const Json::Value& value) {
            if (!value.isInt()) {
                Fail(document, value,
                     "\"always_on_voice\" has a whole number for each application id.");
            }
            dump.alwaysOnVoice[app] = value.asInt();
            At(document, value, [&] { vtv::CheckState(vtv::kModeState + app, value.asInt()); });
        });
    if (json.isMember("files")) {
        dump.files = ParseFiles(document);
    }
    return dump;
}

vtv::Snapshot SnapshotWith(const Dump& dump, const vtv::Tv& tv) {
    vtv::Snapshot snapshot = tv.TakeSnapshot();
    if (dump.settings) {
        snapshot.settings = *dump.settings;
    }
    if (dump.files) {
        snapshot.ownerFiles = *dump.files;
    }
    for (const auto& [app, mode] : dump.alwaysOnVoice) {
        snapshot.state[vtv::kModeState + app] = mode;
    }
    if (dump.features) {
        vtv::BringFeatures(tv.GetModel(), *dump.features, &snapshot.state);
    }
    for (const auto& [item, agreed] : dump.consents) {
        snapshot.state[vtv::kConsentState + item] = agreed;
    }
    if (dump.signedIn) {
        snapshot.state[vtv::kSignedInState] = *dump.signedIn;
    }
    if (dump.network) {
        snapshot.state[vtv::kNetworkState] = vtv::ToText(*dump.network);
    }
    return snapshot;
}

Json::Value ToJson(const vtv::Snapshot& snapshot) {
    Json::Value json;
    json["format"] = kSnapshotFormat;
    json["version"] = vtv::kSnapshotVersion;
    json["settings"] = MapToJson(snapshot.settings);
    json["state"] = MapToJson(snapshot.state);
    json["files"] = Json::Value(Json::arrayValue);
    for (const std::string& file : snapshot.ownerFiles) {
        json["files"].append(file);
    }
    return json;
}

vtv::Snapshot ParseSnapshot(const vtv::JsonText& document) {
    CheckMembers(document, kSnapshotFormat, "a snapshot", vtv::kSnapshotVersion,
                 {"format", "version", "settings", "state", "files"});
    for (const char* name : {"format", "settings", "state", "files"}) {
        if (!document.Root().isMember(name)) {
            Fail(document, document.Root(),
                 std::string("is no whole snapshot: \"") + name + "\" is missing.");
        }
    }
    vtv::Snapshot snapshot;
    snapshot.settings = ParseSettings(document);
    snapshot.state = ParseMap(document, "state");
    for (const auto& [name, value] : snapshot.state) {
        At(document, document.Root()["state"][name], [&] { vtv::CheckState(name, value); });
    }
    snapshot.ownerFiles = ParseFiles(document);
    return snapshot;
}

}  // namespace host
