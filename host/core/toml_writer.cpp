#include "toml_writer.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

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

bool IsListOfTables(const toml::node& node) {
    return node.is_array() && node.as_array()->is_array_of_tables();
}

// The values of a table, and then its tables, each under its whole name.
std::string TableText(const toml::table& table, const std::string& path) {
    std::string text;
    for (const auto& [key, value] : table) {
        if (!value.is_table() && !IsListOfTables(value)) {
            text += KeyText(std::string(key.str())) + " = " + ValueText(value) + "\n";
        }
    }
    for (const auto& [key, value] : table) {
        const std::string name = path + (path.empty() ? "" : ".") + KeyText(std::string(key.str()));
        const auto separate = [&text] { text += text.empty() ? "" : "\n"; };
        if (const toml::table* inner = value.as_table()) {
            separate();
            text += "[" + name + "]\n" + TableText(*inner, name);
        } else if (IsListOfTables(value)) {
            for (const toml::node& element : *value.as_array()) {
                separate();
                text += "[[" + name + "]]\n" + TableText(*element.as_table(), name);
            }
        }
    }
    return text;
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
    return IsReadBack(TableText(alone, ""), alone);
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
    std::string text = TableText(document, "");
    if (!IsReadBack(text, document)) {
        throw std::runtime_error(Quoted(FindCulprit(document), false) +
                                 " cannot be written as TOML: its text is no UTF-8.");
    }
    return text;
}

std::string TomlText(const std::string& text) {
    const std::string quoted = Quoted(text, true);
    return IsReadBack("text = " + quoted, toml::table{{"text", text}}) ? quoted
                                                                       : Quoted(text, false);
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

}  // namespace host
