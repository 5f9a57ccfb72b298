// A TV as one JSON document: taken from a TV, read from a real set, put onto a TV. docs/vtv.md
// describes the document.
#pragma once

#include <json/json.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "virtual-tv/model/json_text.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

// What a document leaves out stays as it is on the TV that it is put onto.
struct Dump {
    std::optional<std::string> title;
    std::optional<std::map<std::string, vtv::Value>> settings;
    std::optional<std::map<std::string, vtv::Value>> features;  // by full key
    std::optional<std::vector<vtv::Package>> packages;
    std::map<std::string, bool> consents;
    std::optional<bool> signedIn;
    std::optional<vtv::Network> network;
    std::map<std::string, int> alwaysOnVoice;       // by application id
    std::optional<std::vector<std::string>> files;  // below /home/owner
};

Dump TakeDump(const vtv::Tv& tv);
Json::Value ToJson(const Dump& dump);
// Throws vtv::Error (kUsage) with the place of what is wrong, before anything is done.
Dump ParseDump(const vtv::JsonText& document);
// The TV with everything of the document but the packages, which belong to the model. Settings and
// files that the document does not list are gone when it has a list of them.
vtv::Snapshot SnapshotWith(const Dump& dump, const vtv::Tv& tv);
// The text of a model (TOML) with the features and packages of the document; the rest is for
// SnapshotWith().
std::string ModelText(const Dump& dump);

// The state that vtv::Tv::Restore() takes, as a document.
Json::Value ToJson(const vtv::Snapshot& snapshot);
vtv::Snapshot ParseSnapshot(const vtv::JsonText& document);

}  // namespace host
