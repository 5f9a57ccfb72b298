// Typed access to a TOML file for which every complaint has the file and the line.
#pragma once

#include <json/json.h>
#include <toml++/toml.h>

#include <string>
#include <vector>

#include "values.h"

namespace vtv {

// A list or table of it that has too many entries, and what is to be said of it; null when none
// has.
const toml::node* FindTooMany(const toml::node& root, std::string* problem,
                              const std::string& name = "");

// What a reader of one kind of file builds on. Each function throws kUsage for what does not fit,
// with what to write instead.
class TomlReader {
  public:
    explicit TomlReader(std::string file) : file_(std::move(file)) {}

    const std::string& File() const { return file_; }
    toml::table ReadFile() const;
    [[noreturn]] void Fail(const toml::source_region& where, const std::string& text) const;
    [[noreturn]] void Fail(const toml::node& where, const std::string& text) const;

    // where: "in a model", "in [consents]", ...
    void CheckKeys(const toml::table& table, const std::string& where,
                   const std::vector<std::string>& known) const;
    // Null when the key is absent.
    const toml::table* Table(const toml::table& parent, const char* key) const;
    std::vector<const toml::table*> Tables(const toml::table& parent, const char* key) const;
    // Null when the key is absent.
    const toml::array* List(const toml::table& parent, const char* key) const;
    // Empty when the key is absent.
    std::vector<std::string> Strings(const toml::table& parent, const char* key) const;
    std::string String(const toml::table& table, const char* key,
                       const std::string& otherwise) const;
    // what: whose key it is, "an assistant".
    std::string RequiredString(const toml::table& table, const char* key,
                               const std::string& what) const;
    bool Bool(const toml::table& table, const char* key, bool otherwise) const;
    int Integer(const toml::node& node) const;
    Value Scalar(const toml::node& node, const std::string& key) const;
    Json::Value ToJson(const toml::node& node) const;

  private:
    std::string file_;
};

}  // namespace vtv
