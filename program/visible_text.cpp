#include "visible_text.h"

#include <cstdio>
#include <random>
#include <utility>

namespace program {

namespace {

constexpr char kEscape = '\033';

enum class Kind { kPlain, kHarmful, kNoUtf8, kUnfinished };

struct Character {
    Kind kind;
    size_t size;
    char32_t code;
};

// Controls, and what turns text or ends lines. Joiners and soft hyphens belong to words of people.
bool IsHarmful(char32_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x061c ||
           (code >= 0x200e && code <= 0x200f) || (code >= 0x2028 && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x206f) || code == 0xfeff ||
           (code >= 0xfff9 && code <= 0xfffb) || (code >= 0xe0000 && code <= 0xe007f);
}

Character First(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const Character noUtf8 = {Kind::kNoUtf8, 1, byte(0)};
    const unsigned lead = byte(0);
    const size_t size = lead < 0x80 ? 1 : lead < 0xc2 ? 0 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (size == 0 || lead > 0xf4) {
        return noUtf8;
    }
    char32_t code = size == 1 ? lead : lead & (0x7fU >> size);
    for (size_t i = 1; i < size; ++i) {
        if (i == text.size()) {
            return {Kind::kUnfinished, i, 0};
        }
        if ((byte(i) & 0xc0U) != 0x80) {
            return noUtf8;
        }
        code = (code << 6U) | (byte(i) & 0x3fU);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[size] || (code >= 0xd800 && code <= 0xdfff) || code > 0x10ffff) {
        return noUtf8;
    }
    return {IsHarmful(code) ? Kind::kHarmful : Kind::kPlain, size, code};
}

std::string Hexadecimal(const char* prefix, int digits, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, "%s%0*x", prefix, digits, number);
    return text;
}

std::string Escaped(char32_t code) {
    switch (code) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    if (code < 0x10000) {
        return Hexadecimal("\\u", 4, code);
    }
    return Hexadecimal("\\u", 4, 0xd800 + ((code - 0x10000) >> 10U)) +
           Hexadecimal("\\u", 4, 0xdc00 + (code & 0x3ffU));
}

std::string ByteShown(unsigned byte, Form form) {
    return form == Form::kJson ? "\\ufffd" : Hexadecimal("\\x", 2, byte);
}

// The escape character, where this program means it.
const std::string& Mark() {
    static const std::string mark = [] {
        std::random_device random;
        return kEscape + Hexadecimal("", 8, random()) + Hexadecimal("", 8, random());
    }();
    return mark;
}

}  // namespace

std::string OneLine(const std::string& text) {
    std::string line;
    for (std::string_view rest = text; !rest.empty();) {
        const Character next = First(rest);
        if (next.kind == Kind::kPlain) {
            line += rest.substr(0, next.size);
        } else if (next.kind == Kind::kHarmful) {
            line += Escaped(next.code);
        } else {
            for (size_t i = 0; i < next.size; ++i) {
                line += ByteShown(static_cast<unsigned char>(rest[i]), Form::kText);
            }
        }
        rest.remove_prefix(next.size);
    }
    return line;
}

std::string Control(const std::string& sequence) {
    return Mark() + sequence;
}

std::string VisibleText::Next(std::string_view piece, Form form) {
    if (form == Form::kExact) {
        return End() + std::string(piece);
    }
    const std::string text = std::exchange(unfinished_, {}) + std::string(piece);
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        if (rest[0] == kEscape && rest.substr(0, Mark().size()) == Mark()) {
            shown += kEscape;
            rest.remove_prefix(Mark().size());
            continue;
        }
        const Character next = First(rest);
        const bool mayBeMark = rest[0] == kEscape && Mark().compare(0, rest.size(), rest) == 0;
        if (next.kind == Kind::kUnfinished || mayBeMark) {
            unfinished_ = rest;
            break;
        }
        const bool isLayout = rest[0] == '\n' || rest[0] == '\t';
        if (next.kind == Kind::kPlain || isLayout) {
            shown += rest.substr(0, next.size);
        } else {
            shown += next.kind == Kind::kHarmful ? Escaped(next.code) : ByteShown(next.code, form);
        }
        rest.remove_prefix(next.size);
    }
    return shown;
}

std::string Shown(const std::string& text, Form form) {
    VisibleText visible;
    const std::string shown = visible.Next(text, form);
    return shown + visible.End();
}

std::string VisibleText::End() {
    return OneLine(std::exchange(unfinished_, {}));
}

}  // namespace program
