// The one writer of TOML: for models and scenarios that are made from what others have written.
#pragma once

#include <toml++/impl/forward_declarations.h>

#include <map>
#include <string>
#include <vector>

#include "virtual-tv/model/values.h"

namespace host {

// The document as text that ends with a newline. It is read back and compared before it is
// returned: whatever stands in a text, it stays a text. Throws std::runtime_error, with the key,
// for what TOML cannot hold: a text or key that is no UTF-8.
std::string ToToml(const toml::table& document);
// A comment that ends with its line, whatever the text holds.
std::string TomlComment(const std::string& text);
// Throws std::runtime_error where the document is no TOML.
void RequireToml(const std::string& document);

// What documents are made of.
void Insert(toml::table& table, const std::string& key, const vtv::Value& value);
toml::table TomlTable(const std::map<std::string, vtv::Value>& values);
toml::array TomlList(const std::vector<std::string>& texts);
// Inserts a table or list, unless it is empty.
void InsertAny(toml::table& table, const std::string& key, const toml::node& members);

}  // namespace host
