#include "echoes.h"

#include <algorithm>
#include <sstream>

namespace explorer {

std::vector<std::pair<std::size_t, std::size_t>> TextsIn(const std::string& document) {
    std::vector<std::pair<std::size_t, std::size_t>> texts;
    for (std::size_t at = 0; (at = document.find(":\"", at)) != std::string::npos;) {
        at += 2;
        const std::size_t end = std::min(document.find('"', at), document.size());
        texts.emplace_back(at, end - at);
        at = end;
    }
    return texts;
}

namespace {

// What of a value may stand in a record: all of it, a text in it, an entry of a list, or the
// beginning of one, as of a locale its language.
std::vector<std::string> EchoesOf(const Value& value) {
    constexpr std::size_t LONGEST_BEGINNING = 8;
    if (value.kind == Value::Kind::kNumber) {
        return {std::to_string(value.number)};
    }
    if (value.kind != Value::Kind::kText) {
        return {};
    }
    std::vector<std::string> parts = {value.text};
    for (const auto& [at, length] : TextsIn(value.text)) {
        parts.push_back(value.text.substr(at, length));
    }
    std::istringstream entries(parts.size() == 1 ? value.text : "");
    for (std::string entry; std::getline(entries, entry, ',');) {
        parts.push_back(entry);
    }
    std::set<std::string> echoes(parts.begin(), parts.end());
    for (const std::string& part : parts) {
        for (std::size_t size = 2; size < std::min(part.size(), LONGEST_BEGINNING); ++size) {
            echoes.insert(part.substr(0, size));
        }
    }
    return {echoes.begin(), echoes.end()};
}

}  // namespace

EchoComparison::EchoComparison(const Value& a, const Value& b)
    : echoesOfA_(EchoesOf(a)), echoesOfB_(EchoesOf(b)) {}

bool EchoComparison::IsAlike(std::string_view a, std::string_view b) const {
    std::set<Left> tried;
    return IsAlike(a, b, tried);
}

bool EchoComparison::IsAlike(std::string_view a, std::string_view b, std::set<Left>& tried) const {
    while (!a.empty() || !b.empty()) {
        for (const std::string& one : echoesOfA_) {
            for (const std::string& other : echoesOfB_) {
                if (one != other && a.substr(0, one.size()) == one &&
                    b.substr(0, other.size()) == other &&
                    tried.emplace(a.size() - one.size(), b.size() - other.size()).second &&
                    IsAlike(a.substr(one.size()), b.substr(other.size()), tried)) {
                    return true;
                }
            }
        }
        if (a.empty() || b.empty() || a.front() != b.front()) {
            return false;
        }
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return true;
}

}  // namespace explorer
