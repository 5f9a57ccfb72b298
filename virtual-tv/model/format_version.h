// The versions of what is written to be read later. docs/formats.md says where each stands.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vtv {

inline constexpr int kModelVersion = 1;
inline constexpr int kDumpVersion = 1;
inline constexpr int kSnapshotVersion = 1;
inline constexpr int kScenarioVersion = 1;  // of recordings, too
inline constexpr int kAllowedCommandsVersion = 1;

// Why something ("a dump") cannot be read by who knows its versions up to `known`; empty when it
// can. Absent: there is no whole number where the version should be.
std::string VersionProblem(const std::string& kind, std::optional<int64_t> version, int known);
// What stands there in a JSON document.
std::optional<int64_t> VersionOf(const Json::Value& json);

}  // namespace vtv
