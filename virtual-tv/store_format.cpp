#include "store_format.h"

#include <charconv>

namespace vtv {

std::string FormatStored(const Value& value, const std::string& text) {
    return std::string(TypeName(value)) + " " + std::to_string(text.size()) + "\n" + text + "\n";
}

const char* ParseStored(std::string_view content, Value* value) {
    const size_t endOfHeader = content.find('\n');
    if (content.empty()) {
        return "it is empty";
    }
    if (content.size() > kLargestStoreFile) {
        return "it is larger than any value";
    }
    const std::string_view header = content.substr(0, endOfHeader);
    const size_t space = header.find(' ');
    if (endOfHeader == std::string_view::npos || space == std::string_view::npos) {
        return "it is no file of this store";
    }
    const std::string_view type = header.substr(0, space);
    const std::string_view digits = header.substr(space + 1);
    size_t length = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), length);
    if (error != std::errc() || stop != digits.data() + digits.size()) {
        return "it is no file of this store";
    }
    const std::string_view rest = content.substr(endOfHeader + 1);
    if (rest.size() <= length) {
        return "it is cut off";
    }
    if (rest.size() != length + 1 || rest.back() != '\n') {
        return "it is longer than it says";
    }
    const std::string_view text = rest.substr(0, length);
    if (type == "string") {
        *value = std::string(text);
        return nullptr;
    }
    if (type == "bool" && (text == "true" || text == "false")) {
        *value = text == "true";
        return nullptr;
    }
    if (type == "int") {
        int number = 0;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
        if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) {
            *value = number;
            return nullptr;
        }
    }
    return "its value does not fit its type";
}

}  // namespace vtv
