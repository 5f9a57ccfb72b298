// CSIMenuUtil::Replace gives what the plain loop gives, and comes to an end where that does not.
// The input is a text and what its placeholders are replaced by.
//
//     cmake --preset fuzz && cmake --build --preset fuzz
//     mkdir -p build/fuzz/replace      # the fuzzer writes into the first folder
//     build/fuzz/bin/replace-fuzz -max_total_time=60 build/fuzz/replace

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

#include "si-ready/src/SIMenuUtil.h"

namespace {

// As SIMenuUtil.h promises.
constexpr int MAX_REPLACEMENTS = 1000;
constexpr std::size_t MAX_SIZE = 65536;

// Placeholders, and what may become one.
std::string ConsumeText(FuzzedDataProvider& bytes) {
    constexpr const char* PIECES[] = {"<<A>>", "<<B>>", "<",   ">",   "<<", ">>",
                                      "A",     "B",     "A>>", "<<A", "x"};
    std::string text;
    for (const char byte : bytes.ConsumeRandomLengthString()) {
        text += PIECES[static_cast<unsigned char>(byte) % std::size(PIECES)];
    }
    return text;
}

// Text without what stands in it is taken over, piece by piece.
std::optional<std::string> ReplaceOnce(const std::string& text, const std::string& placeholder,
                                       const std::string& replacement) {
    std::string result;
    int count = 0;
    std::size_t from = 0;
    for (std::size_t found = text.find(placeholder); found != std::string::npos;
         found = text.find(placeholder, from)) {
        result += text.substr(from, found - from) + replacement;
        from = found + placeholder.size();
        if (++count > MAX_REPLACEMENTS || result.size() + text.size() - from > MAX_SIZE) {
            return std::nullopt;
        }
    }
    return result + text.substr(from);
}

// Nothing when a limit is met on the way.
std::optional<std::string> PlainLoop(std::string text, const std::string& placeholder,
                                     const std::string& replacement) {
    if (replacement.find(placeholder) != std::string::npos) {
        return ReplaceOnce(text, placeholder, replacement);
    }
    for (int count = 0; text.find(placeholder) != std::string::npos; ++count) {
        text.replace(text.find(placeholder), placeholder.size(), replacement);
        if (count == MAX_REPLACEMENTS || text.size() > MAX_SIZE) {
            return std::nullopt;
        }
    }
    return text;
}

void Check(const std::string& was, const std::optional<std::string>& expected, std::size_t least) {
    if (expected ? was != *expected : was.size() > std::max(MAX_SIZE, least)) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider bytes(data, size);
    const std::string a = ConsumeText(bytes);
    const std::string b = ConsumeText(bytes);
    const std::string text = ConsumeText(bytes);

    const std::optional<std::string> first = PlainLoop(text, "<<A>>", a);
    Check(CSIMenuUtil::Replace(text, a), first, text.size());
    const std::string afterFirst = first ? *first : CSIMenuUtil::Replace(text, a);
    Check(CSIMenuUtil::Replace(text, a, b), PlainLoop(afterFirst, "<<B>>", b), afterFirst.size());
    return 0;
}
