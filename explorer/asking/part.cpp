#include "part.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/text_file.h"

namespace explorer {

namespace {

// Tables of everything are some MiB.
constexpr std::size_t MOST_BYTES = std::size_t{1} << 30U;

std::string InHexadecimal(std::uint64_t number) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
    return text;
}

std::string HashOfFile(const std::string& file) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return HashOf(content.str());
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Written
// ---------------------------------------------------------------------------------------------

Json::Value BoundsAsJson(const WalkBounds& bounds) {
    Json::Value json;
    json["mostStates"] = bounds.states;
    json["mostSeconds"] = bounds.seconds;
    return json;
}

Json::Value PartAsJson(const CommonOptions& options, const WholeWork& work,
                       const std::string& way) {
    Json::Value json;
    json["index"] = options.shard.index + 1;
    json["of"] = options.shard.count;
    json["way"] = way;
    json["work"]["verb"] = work.verb;
    json["work"]["names"] = JsonList(work.names);
    json["work"]["options"] = work.options;
    json["work"]["options"]["full"] = options.full;
    json["work"]["options"]["beyond"] = options.beyond;
    for (const std::string& file : work.providers) {
        json["work"]["providers"].append(HashOfFile(file));
    }
    json["work"]["inputs"] = HashOfFile(InputsFile());
    // Another build of this program may ask other questions.
    json["work"]["program"] = HashOfFile("/proc/self/exe");
    return json;
}

std::string WayOf(const WalkCount& count) {
    return InHexadecimal(count.way);
}

std::string HashOf(std::string_view text) {
    std::uint64_t hash = 14695981039346656037U;  // FNV-1a
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return InHexadecimal(hash);
}

std::string InWords(const Shard& shard) {
    return "part " + std::to_string(shard.index + 1) + " of " + std::to_string(shard.count) +
           " of the work";
}

std::string InFileName(const Shard& shard) {
    return !shard.IsPart()
               ? ""
               : "-part-" + std::to_string(shard.index + 1) + "-of-" + std::to_string(shard.count);
}

// ---------------------------------------------------------------------------------------------
// Read
// ---------------------------------------------------------------------------------------------

const Json::Value& MemberOf(const Json::Value& json, const char* name) {
    if (!json.isObject() || !json.isMember(name)) {
        throw std::runtime_error(std::string("there is no \"") + name + "\"");
    }
    return json[name];
}

const Json::Value& ListOf(const Json::Value& json, const char* name) {
    const Json::Value& list = MemberOf(json, name);
    if (!list.isArray()) {
        throw std::runtime_error(std::string("\"") + name + "\" is no list");
    }
    return list;
}

std::vector<std::string> TextsOf(const Json::Value& json, const char* name) {
    std::vector<std::string> texts;
    for (const Json::Value& text : ListOf(json, name)) {
        texts.push_back(text.asString());
    }
    return texts;
}

namespace {

void RequirePart(const PartFile& read) {
    try {
        const Json::Value& part = MemberOf(read.root, "part");
        const int of = MemberOf(part, "of").asInt();
        const int index = MemberOf(part, "index").asInt();
        if (of < 2 || index < 1 || index > of) {
            throw std::runtime_error("part " + std::to_string(index) + " of " + std::to_string(of));
        }
        MemberOf(MemberOf(part, "work"), "verb").asString();
        if (MemberOf(part, "way").asString().empty()) {
            throw std::runtime_error("it was made by a program that is built with a sanitizer");
        }
    } catch (const std::exception& error) {
        throw CommandError(kExitUsage, read.file +
                                           ": is no part of an exploration, as --shard I/N --json "
                                           "prints one: " +
                                           error.what());
    }
}

PartFile ReadPart(const std::string& file) {
    const vtv::JsonText text(file, vtv::ReadTextFile(file, MOST_BYTES));
    if (!text.Problem().empty()) {
        throw CommandError(kExitUsage, text.Problem());
    }
    PartFile read = {file, text.Root()};
    RequirePart(read);
    return read;
}

void RequireTheSameWork(const PartFile& first, const PartFile& other) {
    const std::string both = first.file + " and " + other.file + ": ";
    for (const auto& [member, differs] :
         {std::pair("verb", "are of different verbs"),
          {"names", "were told different names"},
          {"options", "were told different options"},
          {"providers", "explored different providers"},
          {"inputs", "had different inputs (inputs.toml)"},
          {"program", "were made by different builds of vtv-explore"}}) {
        if (first.Whole()[member] != other.Whole()[member]) {
            throw CommandError(kExitUsage, both + differs + ", so they are no parts of one work");
        }
    }
    if (first.Of() != other.Of()) {
        throw CommandError(kExitUsage, both + "one is of " + std::to_string(first.Of()) +
                                           " parts, and the other of " +
                                           std::to_string(other.Of()));
    }
}

void RequireTheSameStates(const PartFile& first, const PartFile& other) {
    if (first.root["part"]["way"] != other.root["part"]["way"]) {
        throw CommandError(kExitUsage, first.file + " and " + other.file +
                                           ": the parts came to different states; run unsharded");
    }
}

std::string MissingOf(const std::map<int, PartFile>& parts, int of) {
    std::string missing;
    for (int index = 1; index <= of; ++index) {
        if (parts.count(index) == 0) {
            missing +=
                (missing.empty() ? "" : ", ") + std::to_string(index) + "/" + std::to_string(of);
        }
    }
    return missing;
}

}  // namespace

std::vector<PartFile> ReadParts(const std::vector<std::string>& files) {
    std::map<int, PartFile> parts;
    for (const std::string& file : files) {
        PartFile read = ReadPart(file);
        if (!parts.empty()) {
            RequireTheSameWork(parts.begin()->second, read);
        }
        const int index = read.Index();
        const auto [place, isNew] = parts.emplace(index, std::move(read));
        if (!isNew) {
            throw CommandError(kExitUsage, place->second.file + " and " + file +
                                               ": both are part " + std::to_string(index) +
                                               " of the work");
        }
    }
    const PartFile& first = parts.begin()->second;
    const std::string missing = MissingOf(parts, first.Of());
    if (!missing.empty()) {
        throw CommandError(kExitUsage, "beside " + first.file + " there is no part " + missing);
    }
    std::vector<PartFile> all;
    for (auto& [index, part] : parts) {
        RequireTheSameStates(first, part);
        all.push_back(part);
    }
    return all;
}

// ---------------------------------------------------------------------------------------------
// What parts have in common
// ---------------------------------------------------------------------------------------------

Json::Value ToJson(const Nearness& nearness) {
    Json::Value json;
    json["length"] = nearness.length;
    json["weight"] = nearness.weight;
    json["question"] = nearness.question;
    json["joint"] = nearness.joint;
    json["call"] = nearness.call;
    json["path"] = Json::arrayValue;
    for (const auto& [input, value] : nearness.path) {
        json["path"].append(input);
        json["path"].append(value);
    }
    return json;
}

Nearness NearnessOf(const Json::Value& json) {
    Nearness nearness;
    nearness.length = MemberOf(json, "length").asInt();
    nearness.weight = MemberOf(json, "weight").asInt();
    nearness.question = MemberOf(json, "question").asString();
    nearness.joint = MemberOf(json, "joint").asInt();
    nearness.call = MemberOf(json, "call").asInt();
    const Json::Value& path = ListOf(json, "path");
    for (Json::ArrayIndex i = 0; i + 1 < path.size(); i += 2) {
        nearness.path.emplace_back(path[i].asInt(), path[i + 1].asInt());
    }
    return nearness;
}

void AddCount(const WalkCount& one, WalkCount& to) {
    to.questions += one.questions;
    to.paths += one.paths;
    for (const auto& [place, asked] : one.asked) {
        to.asked[place].Add(asked);
    }
    for (const std::string& reason : one.open) {
        if (std::find(to.open.begin(), to.open.end(), reason) == to.open.end()) {
            to.open.push_back(reason);
        }
    }
}

void ForEachPart(const std::vector<PartFile>& parts,
                 const std::function<void(const Json::Value& root)>& read) {
    for (const PartFile& part : parts) {
        try {
            read(part.root);
        } catch (const std::exception& error) {
            throw CommandError(kExitUsage, part.file + ": is damaged: " + error.what());
        }
    }
}

}  // namespace explorer
