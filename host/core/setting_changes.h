// Settings as people name and write them on a command line, collected before any is written.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "virtual-tv/virtual_tv.h"

namespace host {

// "db/x", or a member of the JSON that a setting holds: "db/x.MEMBER", "db/x.0.MEMBER". Keys and
// members may hold dots themselves: what exists decides.
struct SettingName {
    std::string key;
    std::string member;  // empty: the setting itself
};
// Throws kUsage for what is no key.
SettingName ParseSettingName(const vtv::Tv& tv, const std::string& name);

// A member of the JSON in a setting: a number, a flag and a text as such, anything else as JSON;
// absent when there is none.
std::optional<vtv::Value> MemberOf(const vtv::Value& setting, const std::string& member);

class SettingChanges {
  public:
    explicit SettingChanges(const vtv::Tv& tv) : tv_(tv) {}

    // The text becomes a value of the type that the key is known to have, else of the one that it
    // has on the TV; a member keeps its type. Members of one setting may be set one by one. Throws
    // kUsage for a text that is no such value, kNoSuch for a place that a list does not have, and
    // kNo for a member of what holds no JSON.
    void Set(const std::string& name, const std::string& text);
    // The TV as it would be.
    std::optional<vtv::Value> Get(const std::string& key) const;

    const std::map<std::string, vtv::Value>& Values() const { return values_; }
    // Writes all or nothing.
    void Write(vtv::Tv& tv) const;

  private:
    const vtv::Tv& tv_;
    std::map<std::string, vtv::Value> values_;
};

// The value that a text is for a setting; throws as SettingChanges::Set().
vtv::Value ParseSetting(const vtv::Tv& tv, const std::string& key, const std::string& text);

}  // namespace host
