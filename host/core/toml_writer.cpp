#include "toml_writer.h"

#include <toml++/toml.h>

#include <sstream>
#include <stdexcept>

namespace host {

namespace {

// No literal strings: nothing can be escaped in them, and the library closes them wrongly behind a
// text that holds their quotes. No strings of several lines: these have rules of their own for
// newlines.
constexpr toml::format_flags kFlags =
    toml::format_flags::allow_unicode_strings | toml::format_flags::indentation;

std::string Format(const toml::table& document) {
    std::ostringstream text;
    text << toml::toml_formatter(document, kFlags) << '\n';
    return text.str();
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
    return IsReadBack(Format(alone), alone);
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
    std::string text = Format(document);
    if (!IsReadBack(text, document)) {
        throw std::runtime_error("\"" + FindCulprit(document) +
                                 "\" cannot be written as TOML: its text is no UTF-8.");
    }
    return text;
}

std::string TomlText(const std::string& text) {
    std::ostringstream quoted;
    quoted << toml::toml_formatter(toml::value<std::string>(text), kFlags);
    return quoted.str();
}

std::string TomlComment(const std::string& text) {
    std::string comment = "# ";
    for (const char c : text) {
        const bool plain = static_cast<unsigned char>(c) >= 0x20 && c != 0x7f;
        comment += plain ? c : ' ';
    }
    // Not even a comment may hold what is no UTF-8.
    return IsReadBack(comment + "\n", toml::table()) ? comment + "\n" : "# (no UTF-8)\n";
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
