#include "dump.h"

#include <toml++/toml.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace host {

namespace {

constexpr char kDumpFormat[] = "vtv-dump";
constexpr char kSnapshotFormat[] = "vtv-snapshot";
constexpr char kModePrefix[] = "always_on_voice/";
constexpr char kModelPrefix[] = "com.vantelo/featureconf/";

[[noreturn]] void Fail(const std::string& file, const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kUsage, file + ": " + text);
}

Json::Value ValueToJson(const vtv::Value& value) {
    return std::visit([](const auto& v) { return Json::Value(v); }, value);
}

vtv::Value ParseJsonValue(const Json::Value& json, const std::string& file,
                          const std::string& name) {
    if (json.isBool()) {
        return json.asBool();
    }
    if (json.isInt()) {
        return json.asInt();
    }
    if (json.isString()) {
        return json.asString();
    }
    Fail(file,
         "\"" + name + "\" must be true, false, a whole number of 32 bits, or a text in quotes.");
}

Json::Value MapToJson(const std::map<std::string, vtv::Value>& values) {
    Json::Value json(Json::objectValue);
    for (const auto& [key, value] : values) {
        json[key] = ValueToJson(value);
    }
    return json;
}

const Json::Value& RequireObject(const Json::Value& json, const std::string& file,
                                 const std::string& name) {
    if (!json.isObject()) {
        Fail(file, "\"" + name + "\" must be an object: {\"...\": ...}.");
    }
    return json;
}

std::map<std::string, vtv::Value> ParseMap(const Json::Value& json, const std::string& file,
                                           const std::string& name) {
    std::map<std::string, vtv::Value> values;
    for (const std::string& key : RequireObject(json, file, name).getMemberNames()) {
        values[key] = ParseJsonValue(json[key], file, key);
    }
    return values;
}

std::map<std::string, vtv::Value> ParseSettings(const Json::Value& json, const std::string& file) {
    std::map<std::string, vtv::Value> settings = ParseMap(json, file, "settings");
    for (const auto& [key, value] : settings) {
        if (key.rfind("db/", 0) != 0 && key.rfind("memory/", 0) != 0) {
            Fail(file, "\"" + key + "\" is no settings key: one begins with db/ or memory/.");
        }
    }
    return settings;
}

std::vector<std::string> ParseStrings(const Json::Value& json, const std::string& file,
                                      const std::string& name) {
    if (!json.isArray()) {
        Fail(file, "\"" + name + "\" must be a list of texts.");
    }
    std::vector<std::string> texts;
    for (const Json::Value& entry : json) {
        if (!entry.isString()) {
            Fail(file, "\"" + name + "\" must be a list of texts.");
        }
        texts.push_back(entry.asString());
    }
    return texts;
}

std::vector<vtv::Package> ParsePackages(const Json::Value& json, const std::string& file) {
    if (!json.isArray()) {
        Fail(file, "\"packages\" must be a list of objects.");
    }
    std::vector<vtv::Package> packages;
    for (const Json::Value& entry : json) {
        if (!entry.isObject() || !entry["app"].isString() || entry["app"].asString().empty()) {
            Fail(file, "each of \"packages\" needs an \"app\", its application id.");
        }
        vtv::Package package;
        package.appId = entry["app"].asString();
        package.name = entry.get("name", "").isString() ? entry.get("name", "").asString() : "";
        for (const std::string& key :
             RequireObject(entry.get("metadata", Json::objectValue), file, "metadata")
                 .getMemberNames()) {
            const Json::Value& value = entry["metadata"][key];
            if (!value.isString() && !value.isNull()) {
                Fail(file, "the metadata \"" + key + "\" of " + package.appId +
                               " must be a text or null.");
            }
            package.metadata[key] =
                value.isNull() ? std::nullopt : std::optional<std::string>(value.asString());
        }
        packages.push_back(std::move(package));
    }
    return packages;
}

void CheckMembers(const Json::Value& json, const std::string& file, const char* format,
                  const std::set<std::string>& known) {
    RequireObject(json, file, "the document");
    if (json.get("format", format) != format) {
        Fail(file, "\"format\" is " + json["format"].toStyledString().substr(0, 40) +
                       "but must be \"" + format + "\".");
    }
    if (json.get("version", 1) != 1) {
        Fail(file, "\"version\" must be 1; the file was written by a newer vtv.");
    }
    for (const std::string& name : json.getMemberNames()) {
        if (known.count(name) == 0) {
            std::string names;
            for (const std::string& one : known) {
                names += (names.empty() ? "" : ", ") + one;
            }
            Fail(file, "\"" + name + "\" is unknown. Known: " + names + ".");
        }
    }
}

bool IsKnownFeature(const std::string& key) {
    const auto& known = vtv::KnownFeatures();
    return std::any_of(known.begin(), known.end(),
                       [&](const vtv::FeatureKey& one) { return one.key == key; });
}

template <typename Table>
void Insert(Table& table, const std::string& key, const vtv::Value& value) {
    std::visit([&](const auto& v) { table.insert_or_assign(key, v); }, value);
}

}  // namespace

Dump TakeDump(const vtv::Tv& tv) {
    Dump dump;
    dump.title = tv.GetModel().title;
    dump.settings = tv.TakeSnapshot().settings;
    dump.features = tv.Features();
    dump.packages = tv.GetModel().packages;
    for (const char* item : {"tnc", "pp"}) {
        dump.consents[item] = tv.Consent(item);
    }
    dump.signedIn = tv.SignedIn();
    dump.network = tv.GetNetwork();
    for (const auto& [key, value] : tv.State()) {
        if (key.rfind(kModePrefix, 0) == 0 && std::holds_alternative<int>(value)) {
            dump.alwaysOnVoice[key.substr(sizeof kModePrefix - 1)] = std::get<int>(value);
        }
    }
    dump.files = tv.OwnerFiles();
    return dump;
}

Json::Value ToJson(const Dump& dump) {
    Json::Value json;
    json["format"] = kDumpFormat;
    json["version"] = 1;
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

Dump ParseDump(const Json::Value& json, const std::string& file) {
    CheckMembers(json, file, kDumpFormat,
                 {"format", "version", "title", "settings", "features", "packages", "consents",
                  "signed_in", "network", "always_on_voice", "files"});
    Dump dump;
    if (json.isMember("title")) {
        dump.title = vtv::ToText(ParseJsonValue(json["title"], file, "title"));
    }
    if (json.isMember("settings")) {
        dump.settings = ParseSettings(json["settings"], file);
    }
    if (json.isMember("features")) {
        dump.features = ParseMap(json["features"], file, "features");
    }
    if (json.isMember("packages")) {
        dump.packages = ParsePackages(json["packages"], file);
    }
    for (const auto& [item, value] :
         ParseMap(json.get("consents", Json::objectValue), file, "consents")) {
        if ((item != "tnc" && item != "pp") || !std::holds_alternative<bool>(value)) {
            Fail(file, "\"consents\" has true or false for \"tnc\" and \"pp\".");
        }
        dump.consents[item] = std::get<bool>(value);
    }
    if (json.isMember("signed_in")) {
        if (!json["signed_in"].isBool()) {
            Fail(file, "\"signed_in\" must be true or false.");
        }
        dump.signedIn = json["signed_in"].asBool();
    }
    if (json.isMember("network")) {
        dump.network =
            vtv::ParseNetwork(vtv::ToText(ParseJsonValue(json["network"], file, "network")));
    }
    for (const auto& [app, value] :
         ParseMap(json.get("always_on_voice", Json::objectValue), file, "always_on_voice")) {
        if (!std::holds_alternative<int>(value)) {
            Fail(file, "\"always_on_voice\" has a whole number for each application id.");
        }
        dump.alwaysOnVoice[app] = std::get<int>(value);
    }
    if (json.isMember("files")) {
        dump.files = ParseStrings(json["files"], file, "files");
    }
    return dump;
}

void PutDump(const Dump& dump, vtv::Tv& tv) {
    vtv::Snapshot snapshot = tv.TakeSnapshot();
    if (dump.settings) {
        snapshot.settings = *dump.settings;
    }
    if (dump.files) {
        snapshot.ownerFiles = *dump.files;
    }
    for (const auto& [app, mode] : dump.alwaysOnVoice) {
        snapshot.state[kModePrefix + app] = mode;
    }
    tv.Restore(snapshot);
    if (dump.features) {
        for (const auto& [key, value] : tv.Features()) {
            if (dump.features->count(key) == 0) {
                tv.SetFeature(key, std::nullopt);
            }
        }
        for (const auto& [key, value] : *dump.features) {
            if (tv.Feature(key) != std::optional<vtv::Value>(value)) {
                tv.SetFeature(key, value);
            }
        }
    }
    for (const auto& [item, agreed] : dump.consents) {
        tv.SetConsent(item, agreed);
    }
    if (dump.signedIn) {
        tv.SetSignedIn(*dump.signedIn);
    }
    if (dump.network) {
        tv.SetNetwork(*dump.network);
    }
}

std::string ModelText(const Dump& dump) {
    toml::table root;
    root.insert("title", dump.title.value_or("Imported TV"));
    toml::table features;
    toml::table others;
    for (const auto& [key, value] : dump.features.value_or(std::map<std::string, vtv::Value>())) {
        if (IsKnownFeature(key)) {
            Insert(features, key.substr(sizeof kModelPrefix - 1), value);
        } else {
            Insert(others, key, value);
        }
    }
    root.insert("features", features);
    root.insert("other-features", others);
    toml::array packages;
    for (const vtv::Package& package : dump.packages.value_or(std::vector<vtv::Package>())) {
        toml::table metadata;
        for (const auto& [key, value] : package.metadata) {
            if (value) {
                metadata.insert_or_assign(key, *value);
            } else {
                metadata.insert_or_assign(key, false);
            }
        }
        packages.push_back(
            toml::table{{"app", package.appId}, {"name", package.name}, {"metadata", metadata}});
    }
    if (!packages.empty()) {
        root.insert("packages", packages);
    }
    std::ostringstream text;
    text << "# Made from a dump.\n" << root << '\n';
    return text.str();
}

Json::Value ToJson(const vtv::Snapshot& snapshot) {
    Json::Value json;
    json["format"] = kSnapshotFormat;
    json["version"] = 1;
    json["settings"] = MapToJson(snapshot.settings);
    json["state"] = MapToJson(snapshot.state);
    json["files"] = Json::Value(Json::arrayValue);
    for (const std::string& file : snapshot.ownerFiles) {
        json["files"].append(file);
    }
    return json;
}

vtv::Snapshot ParseSnapshot(const Json::Value& json, const std::string& file) {
    CheckMembers(json, file, kSnapshotFormat, {"format", "version", "settings", "state", "files"});
    for (const char* name : {"format", "settings", "state", "files"}) {
        if (!json.isMember(name)) {
            Fail(file, std::string("is no whole snapshot: \"") + name + "\" is missing.");
        }
    }
    vtv::Snapshot snapshot;
    snapshot.settings = ParseSettings(json["settings"], file);
    snapshot.state = ParseMap(json["state"], file, "state");
    snapshot.ownerFiles = ParseStrings(json["files"], file, "files");
    return snapshot;
}

}  // namespace host
