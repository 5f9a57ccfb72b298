#include "toml_writer.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace host {

namespace {

// By hand: the library writes a key with a newline, a tab or a quote as it is, and closes literal
// strings wrongly behind a text that holds their quotes. Basic strings of one line can hold
// everything.
std::string Quoted(const std::string& text, bool isUtf8) {
    std::string quoted = "\"";
    for (const char c : text) {
        const unsigned code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (code < 0x20 || code == 0x7f || (code > 0x7f && !isUtf8)) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", code);
            quoted += escape;
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string KeyText(const std::string& key) {
    const auto isBare = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-';
    };
    return !key.empty() && std::all_of(key.begin(), key.end(), isBare) ? key : Quoted(key, true);
}

std::string ValueText(const toml::node& node) {
    if (const auto* text = node.as_string()) {
        return Quoted(text->get(), true);
    }
    if (const auto* flag = node.as_boolean()) {
        return flag->get() ? "true" : "false";
    }
    if (const auto* number = node.as_integer()) {
        return std::to_string(number->get());
    }
    std::string list;
    if (const auto* array = node.as_array()) {
        for (const toml::node& element : *array) {
            list += (list.empty() ? "" : ", ") + ValueText(element);
        }
        return "[" + list + "]";
    }
    if (const auto* table = node.as_table()) {
        for (const auto& [key, value] : *table) {
            list += (list.empty() ? " " : ", ") + KeyText(std::string(key.str())) + " = " +
                    ValueText(value);
        }
        return "{" + list + (list.empty() ? "}" : " }");
    }
    throw std::runtime_error("only texts, whole numbers, true and false can be written as TOML.");
}

// No line is longer where a list or table can have several.
constexpr std::size_t WIDTH = 100;

// What a thing is called and what it does is read first, and what comes of it last; the rest stands
// in the order of the alphabet.
std::size_t PlaceOf(std::string_view key) {
    const bool isName = key == "title" || key == "say" || key == "do";
    return isName ? 0 : key == "press" ? 1 : key == "expect" || key == "never" ? 3 : 2;
}

std::string MembersText(const toml::table& table, const std::string& prefix);

std::string MemberText(const std::string& name, const toml::node& value) {
    const std::string line = name + " = " + ValueText(value) + "\n";
    const bool isLong = line.size() > WIDTH;
    const auto isTable = [](const auto& member) { return member.second.is_table(); };
    const toml::table* table = value.as_table();
    if (table != nullptr && !table->empty() &&
        (isLong || std::any_of(table->begin(), table->end(), isTable))) {
        return MembersText(*table, name + ".");
    }
    const toml::array* array = value.as_array();
    if (array == nullptr || !isLong) {
        return line;
    }
    std::string text = name + " = [\n";
    for (const toml::node& element : *array) {
        text += "    " + ValueText(element) + ",\n";
    }
    return text + "]\n";
}

std::string MembersText(const toml::table& table, const std::string& prefix) {
    std::string texts[4];
    for (const auto& [key, value] : table) {
        texts[PlaceOf(key.str())] += MemberText(prefix + KeyText(std::string(key.str())), value);
    }
    return texts[0] + texts[1] + texts[2] + texts[3];
}

// Its values, and then its tables, each under its name.
std::string DocumentText(const toml::table& document) {
    toml::table values;
    std::string tables;
    for (const auto& [key, value] : document) {
        const std::string name = KeyText(std::string(key.str()));
        if (const toml::table* table = value.as_table()) {
            tables += "\n[" + name + "]\n" + MembersText(*table, "");
        } else if (value.is_array() && value.as_array()->is_array_of_tables()) {
            for (const toml::node& element : *value.as_array()) {
                tables += "\n[[" + name + "]]\n" + MembersText(*element.as_table(), "");
            }
        } else {
            values.insert(key, value);
        }
    }
    const std::string text = MembersText(values, "") + tables;
    return values.empty() && !text.empty() ? text.substr(1) : text;
}

bool IsReadBack(const std::string& text, const toml::table& meant) {
    try {
        return toml::parse(text) == meant;
    } catch (const toml::parse_error&) {
        return false;
    }
}

bool CanBeWritten(const std::string& key, const toml::node& value) {
    toml::table alone;
    alone.insert(key, value);
    return IsReadBack(DocumentText(alone), alone);
}

// The key behind which something cannot be written; empty when each can be alone.
std::string FindCulprit(const toml::node& node) {
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table) {
            const std::string name(key.str());
            const std::string below = FindCulprit(value);
            if (!below.empty() || !CanBeWritten(name, value)) {
                return below.empty() ? name : name + "." + below;
            }
        }
    } else if (const toml::array* array = node.as_array()) {
        for (const toml::node& element : *array) {
            if (const std::string below = FindCulprit(element); !below.empty()) {
                return below;
            }
        }
    }
    return "";
}

}  // namespace

std::string ToToml(const toml::table& document) {
    std::string text = DocumentText(document);
    if (!IsReadBack(text, document)) {
        throw std::runtime_error(Quoted(FindCulprit(document), false) +
                                 " cannot be written as TOML: its text is no UTF-8.");
    }
    return text;
}

std::string TomlComment(const std::string& text) {
    std::string comment = "# ";
    for (const char c : text) {
        const bool plain = static_cast<unsigned char>(c) >= 0x20 && c != 0x7f;
        comment += plain ? c : ' ';
    }
    // Not even a comment may hold what is no UTF-8.
    if (!IsReadBack(comment + "\n", toml::table())) {
        const auto isNoAscii = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
        std::replace_if(comment.begin(), comment.end(), isNoAscii, '?');
    }
    return comment + "\n";
}

void RequireToml(const std::string& document) {
    try {
        static_cast<void>(toml::parse(document));
    } catch (const toml::parse_error& error) {
        throw std::runtime_error("what was to be written is no TOML: " +
                                 std::string(error.description()));
    }
}

void Insert(toml::table& table, const std::string& key, const vtv::Value& value) {
    std::visit([&](const auto& v) { table.insert_or_assign(key, v); }, value);
}

toml::table TomlTable(const std::map<std::string, vtv::Value>& values) {
    toml::table table;
    for (const auto& [key, value] : values) {
        Insert(table, key, value);
    }
    return table;
}

toml::array TomlList(const std::vector<std::string>& texts) {
    toml::array list;
    for (const std::string& text : texts) {
        list.push_back(text);
    }
    return list;
}

void InsertAny(toml::table& table, const std::string& key, const toml::node& members) {
    const toml::array* list = members.as_array();
    if (list != nullptr ? !list->empty() : !members.as_table()->empty()) {
        table.insert(key, members);
    }
}

}  // namespace host
