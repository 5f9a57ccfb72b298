#include "verdict_frame.h"

#include <sys/random.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace host {

namespace {

// After the token: the outcome, the length of the reason, the reason, the token again.
constexpr size_t kHeaderSize = 1 + 8;

std::optional<Verdict> TakeFrame(const std::string& token, const std::string& bytes, size_t* at) {
    const size_t header = *at + token.size();
    if (bytes.compare(*at, token.size(), token) != 0 || bytes.size() < header + kHeaderSize) {
        return std::nullopt;
    }
    const size_t size =
        std::strtoul(bytes.substr(header + 1, kHeaderSize - 1).c_str(), nullptr, 16);
    const size_t reason = header + kHeaderSize;
    if (bytes.size() < reason + size + token.size() ||
        bytes.compare(reason + size, token.size(), token) != 0) {
        return std::nullopt;
    }
    *at = reason + size + token.size();
    return Verdict{static_cast<Outcome>(bytes[header] - '0'), bytes.substr(reason, size), 0};
}

}  // namespace

std::string RandomToken() {
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        throw std::runtime_error("no random numbers");
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        token += digits;
    }
    return token;
}

std::string ToFrame(const std::string& token, Outcome outcome, const std::string& why) {
    char header[kHeaderSize + 1];
    std::snprintf(header, sizeof header, "%d%08zx", static_cast<int>(outcome), why.size());
    return token + header + why + token;
}

std::optional<Verdict> ParseFrames(const std::string& token, const std::string& bytes) {
    std::optional<Verdict> said;
    for (size_t at = 0; at < bytes.size();) {
        const std::optional<Verdict> next = TakeFrame(token, bytes, &at);
        if (!next) {
            return std::nullopt;
        }
        if (!said || said->outcome == Outcome::kPassed) {
            said = next;
        }
    }
    return said;
}

}  // namespace host
