// Parts of one work, done by processes of their own (--shard I/N): what each tells of itself, and
// several of them read back.
#pragma once

#include <json/json.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "nearness.h"
#include "walk.h"

namespace explorer {

// Equal for the parts of one work.
struct WholeWork {
    const char* verb = "";
    std::vector<std::string> names;
    std::vector<std::string> providers;  // their files
    Json::Value options = Json::objectValue;
};
Json::Value BoundsAsJson(const WalkBounds& bounds);

// What a part says of itself. `way` is equal for parts that came to the same states; empty: they
// cannot be merged.
Json::Value PartAsJson(const CommonOptions& options, const WholeWork& work, const std::string& way);
std::string WayOf(const WalkCount& count);
// By content, so that it does not matter where a file lies, or on which machine.
std::string HashOf(std::string_view text);

// "part 2 of 8 of the work".
std::string InWords(const Shard& shard);
// What the name of a part's file has in addition: parts may write to the same folder.
std::string InFileName(const Shard& shard);

// What a part printed.
struct PartFile {
    std::string file;
    Json::Value root;

    int Of() const { return root["part"]["of"].asInt(); }
    int Index() const { return root["part"]["index"].asInt(); }
    const Json::Value& Whole() const { return root["part"]["work"]; }
};
// All parts of one work, the first one first. Throws CommandError for what is none, or not whole,
// and vtv::Error.
std::vector<PartFile> ReadParts(const std::vector<std::string>& files);

// Of what was read; they throw std::exception for what is not as a part has it.
const Json::Value& MemberOf(const Json::Value& json, const char* name);
const Json::Value& ListOf(const Json::Value& json, const char* name);
std::vector<std::string> TextsOf(const Json::Value& json, const char* name);

Json::Value ToJson(const Nearness& nearness);
Nearness NearnessOf(const Json::Value& json);
// States are the same in all parts, calls and paths are each part's own.
void AddCount(const WalkCount& one, WalkCount& to);
// Throws CommandError with the file's name for what `read` throws.
void ForEachPart(const std::vector<PartFile>& parts,
                 const std::function<void(const Json::Value& root)>& read);

}  // namespace explorer
