// Keys as file names, and back.
#include "store.h"
#include "virtual-tv/model/limits.h"

namespace vtv {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

std::string Store::EncodeKey(std::string_view key) {
    static const char hex[] = "0123456789ABCDEF";
    std::string name;
    name.reserve(key.size() + 16);
    for (const char c : key) {
        // A leading dot would hide the file and could name one of the store's own.
        if (IsPlainInAKey(c) && (c != '.' || !name.empty())) {
            name += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        name += '%';
        name += hex[byte >> 4];
        name += hex[byte & 15];
    }
    if (name.size() > kMaxEncodedKey) {
        name.clear();
    }
    return name;
}

std::string Store::DecodeKey(std::string_view fileName) {
    std::string key;
    if (fileName.empty() || fileName.front() == '.') {
        return key;
    }
    for (size_t i = 0; i < fileName.size(); ++i) {
        if (fileName[i] != '%') {
            key += fileName[i];
            continue;
        }
        if (i + 2 >= fileName.size() || HexDigit(fileName[i + 1]) < 0 ||
            HexDigit(fileName[i + 2]) < 0) {
            return std::string();
        }
        key += static_cast<char>(HexDigit(fileName[i + 1]) * 16 + HexDigit(fileName[i + 2]));
        i += 2;
    }
    // A key has one name; another hand's second one is no value of it.
    return EncodeKey(key) == fileName ? key : std::string();
}

std::string Store::RequireKey(std::string_view key) {
    if (const std::string problem = KeyProblem(std::string(key)); !problem.empty()) {
        throw Error(ErrorKind::kUsage, problem);
    }
    return EncodeKey(key);
}

}  // namespace vtv
