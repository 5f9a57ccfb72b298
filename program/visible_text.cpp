#include "visible_text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
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

struct Range {
    char32_t first;
    char32_t last;
};
// Unicode's controls, format characters and separators but the space itself; what it tells programs
// to draw as nothing where they do not know it; and the blank of Braille.
constexpr Range kUnseen[] = {
    {0x0000, 0x001f},   {0x007f, 0x00a0},   {0x00ad, 0x00ad},   {0x034f, 0x034f},
    {0x0600, 0x0605},   {0x061c, 0x061c},   {0x06dd, 0x06dd},   {0x070f, 0x070f},
    {0x0890, 0x0891},   {0x08e2, 0x08e2},   {0x115f, 0x1160},   {0x1680, 0x1680},
    {0x17b4, 0x17b5},   {0x180b, 0x180f},   {0x2000, 0x200f},   {0x2028, 0x202f},
    {0x205f, 0x206f},   {0x2800, 0x2800},   {0x3000, 0x3000},   {0x3164, 0x3164},
    {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},   {0xffa0, 0xffa0},   {0xfff0, 0xfffb},
    {0x110bd, 0x110bd}, {0x110cd, 0x110cd}, {0x13430, 0x1343f}, {0x1bca0, 0x1bca3},
    {0x1d173, 0x1d17a}, {0xe0000, 0xe0fff}};

bool IsUnseen(char32_t code) {
    return std::any_of(std::begin(kUnseen), std::end(kUnseen), [&](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

}  // namespace

std::string FirstUnseen(const std::string& text) {
    size_t number = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const Character next = First(rest);
        ++number;
        const bool isRead = next.kind == Kind::kPlain || next.kind == Kind::kHarmful;
        if (isRead && IsUnseen(next.code)) {
            char name[16];
            std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(next.code));
            return "character " + std::to_string(number) + ", " + name;
        }
        rest.remove_prefix(next.size);
    }
    return "";
}

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
