#include "toml_reader.h"

#include <algorithm>
#include <limits>

#include "limits.h"
#include "spelling.h"
#include "text_file.h"

namespace vtv {

const toml::node* FindTooMany(const toml::node& root, std::string* problem,
                              const std::string& name) {
    const toml::table* table = root.as_table();
    const toml::array* list = root.as_array();
    *problem = TooMany("entries of \"" + name + "\"",
                       table != nullptr  ? table->size()
                       : list != nullptr ? list->size()
                                         : 0,
                       kMostEntries);
    if (!problem->empty()) {
        return &root;
    }
    const toml::node* found = nullptr;
    if (table != nullptr) {
        for (const auto& [key, node] : *table) {
            found = found != nullptr ? found : FindTooMany(node, problem, std::string(key.str()));
        }
    } else if (list != nullptr) {
        for (const toml::node& node : *list) {
            found = found != nullptr ? found : FindTooMany(node, problem, name);
        }
    }
    return found;
}

void TomlReader::Fail(const toml::source_region& where, const std::string& text) const {
    throw Error(ErrorKind::kUsage, file_ + ":" + std::to_string(where.begin.line) + ": " + text);
}

void TomlReader::Fail(const toml::node& where, const std::string& text) const {
    Fail(where.source(), text);
}

toml::table TomlReader::ReadFile() const {
    try {
        return toml::parse(ReadTextFile(file_), file_);
    } catch (const toml::parse_error& error) {
        Fail(error.source(), std::string(error.description()));
    }
}

void TomlReader::CheckKeys(const toml::table& table, const std::string& where,
                           const std::vector<std::string>& known) const {
    for (const auto& [key, node] : table) {
        if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
            Fail(key.source(), "\"" + std::string(key.str()) + "\" is unknown " + where + "." +
                                   DidYouMean(key.str(), known) + " Known: " + Join(known) + ".");
        }
    }
}

const toml::table* TomlReader::Table(const toml::table& parent, const char* key) const {
    const toml::node* node = parent.get(key);
    if (node != nullptr && !node->is_table()) {
        Fail(*node, "\"" + std::string(key) + "\" must be a table: write [" + key +
                        "] on a line of its own and its "
                        "keys below.");
    }
    return node != nullptr ? node->as_table() : nullptr;
}

std::vector<const toml::table*> TomlReader::Tables(const toml::table& parent,
                                                   const char* key) const {
    std::vector<const toml::table*> tables;
    const toml::node* node = parent.get(key);
    if (node == nullptr) {
        return tables;
    }
    const toml::array* array = node->as_array();
    if (array == nullptr) {
        Fail(*node, "\"" + std::string(key) + "\" must be a list of tables: begin each with [[" +
                        key + "]].");
    }
    for (const toml::node& element : *array) {
        if (!element.is_table()) {
            Fail(element, "\"" + std::string(key) +
                              "\" must be a list of tables: begin each with [[" + key + "]].");
        }
        tables.push_back(element.as_table());
    }
    return tables;
}

const toml::array* TomlReader::List(const toml::table& parent, const char* key) const {
    const toml::node* node = parent.get(key);
    if (node != nullptr && !node->is_array()) {
        Fail(*node, "\"" + std::string(key) + "\" must be a list: write " + key + " = [...].");
    }
    return node != nullptr ? node->as_array() : nullptr;
}

std::vector<std::string> TomlReader::Strings(const toml::table& parent, const char* key) const {
    std::vector<std::string> strings;
    if (const toml::array* list = List(parent, key)) {
        for (const toml::node& node : *list) {
            if (!node.is_string()) {
                Fail(node, "\"" + std::string(key) + "\" must be a list of texts in quotes.");
            }
            strings.push_back(node.as_string()->get());
        }
    }
    return strings;
}

std::string TomlReader::String(const toml::table& table, const char* key,
                               const std::string& otherwise) const {
    const toml::node* node = table.get(key);
    if (node == nullptr) {
        return otherwise;
    }
    if (!node->is_string()) {
        Fail(*node, "\"" + std::string(key) + "\" must be a text: write it in quotes.");
    }
    return node->as_string()->get();
}

std::string TomlReader::RequiredString(const toml::table& table, const char* key,
                                       const std::string& what) const {
    std::string text = String(table, key, "");
    if (text.empty()) {
        Fail(table, what + " needs \"" + key + "\": write " + key + " = \"...\".");
    }
    return text;
}

bool TomlReader::Bool(const toml::table& table, const char* key, bool otherwise) const {
    const toml::node* node = table.get(key);
    if (node == nullptr) {
        return otherwise;
    }
    if (!node->is_boolean()) {
        Fail(*node, "\"" + std::string(key) + "\" must be true or false, without quotes.");
    }
    return node->as_boolean()->get();
}

int TomlReader::Integer(const toml::node& node) const {
    const int64_t number = node.as_integer()->get();
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
        Fail(node, std::to_string(number) + " does not fit into 32 bits.");
    }
    return static_cast<int>(number);
}

Value TomlReader::Scalar(const toml::node& node, const std::string& key) const {
    if (node.is_boolean()) {
        return node.as_boolean()->get();
    }
    if (node.is_integer()) {
        return Integer(node);
    }
    if (node.is_string()) {
        return node.as_string()->get();
    }
    Fail(node, "\"" + key + "\" must be true, false, a whole number or a text in quotes.");
}

Json::Value TomlReader::ToJson(const toml::node& node) const {
    if (const toml::table* table = node.as_table()) {
        Json::Value object(Json::objectValue);
        for (const auto& [key, value] : *table) {
            object[std::string(key.str())] = ToJson(value);
        }
        return object;
    }
    if (const toml::array* array = node.as_array()) {
        Json::Value list(Json::arrayValue);
        for (const toml::node& value : *array) {
            list.append(ToJson(value));
        }
        return list;
    }
    const Value value = Scalar(node, "a JSON value");
    if (const bool* flag = std::get_if<bool>(&value)) {
        return *flag;
    }
    if (const int* number = std::get_if<int>(&value)) {
        return *number;
    }
    return std::get<std::string>(value);
}

}  // namespace vtv
