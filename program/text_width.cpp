#include "text_width.h"

#include <locale.h>

#include <algorithm>
#include <cwchar>

#include "terminal.h"
#include "visible_text.h"

namespace program {

namespace {

// The C library's tables of character widths, whatever locale the user has.
class Utf8Locale {
  public:
    Utf8Locale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        old_ = locale_ != nullptr ? uselocale(locale_) : nullptr;
    }
    ~Utf8Locale() {
        if (locale_ != nullptr) {
            uselocale(old_);
            freelocale(locale_);
        }
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    locale_t locale_;
    locale_t old_;
};

struct Glyph {
    std::string bytes;
    size_t width;
};

std::vector<Glyph> Split(const std::string& words) {
    const Utf8Locale locale;
    const std::string text = Representable(OneLine(words));
    std::vector<Glyph> glyphs;
    std::mbstate_t state = {};
    size_t at = 0;
    while (at < text.size()) {
        wchar_t character = 0;
        const size_t size = std::mbrtowc(&character, text.data() + at, text.size() - at, &state);
        if (size == 0 || size > text.size() - at) {  // a character that this C library cannot read
            state = {};
            glyphs.push_back({"?", 1});
            ++at;
            continue;
        }
        const int width = wcwidth(character);
        glyphs.push_back(
            {width < 0 ? " " : text.substr(at, size), width < 0 ? 1U : static_cast<size_t>(width)});
        at += size;
    }
    return glyphs;
}

size_t WidthOf(const std::vector<Glyph>& glyphs) {
    size_t width = 0;
    for (const Glyph& glyph : glyphs) {
        width += glyph.width;
    }
    return width;
}

// What a line is filled with: a word, or one wide character, after which a line may break.
struct Piece {
    std::string text;
    size_t width = 0;
    bool afterSpace = false;
};

std::vector<Piece> SplitPieces(const std::string& line, size_t columns) {
    std::vector<Piece> pieces;
    bool open = false;  // whether the last piece may grow
    bool space = false;
    for (const Glyph& glyph : Split(line)) {
        if (glyph.bytes == " ") {
            space = true;
            open = false;
            continue;
        }
        if (!open || glyph.width == 2 || pieces.back().width + glyph.width > columns) {
            pieces.push_back({"", 0, space});
        }
        pieces.back().text += glyph.bytes;
        pieces.back().width += glyph.width;
        open = glyph.width != 2;
        space = false;
    }
    return pieces;
}

void WrapLine(const std::string& text, size_t columns, std::vector<std::string>* lines) {
    std::string line;
    size_t width = 0;
    for (const Piece& piece : SplitPieces(text, columns)) {
        const size_t gap = piece.afterSpace && width > 0 ? 1 : 0;
        if (width > 0 && width + gap + piece.width > columns) {
            lines->push_back(line);
            line.clear();
            width = 0;
        } else if (gap > 0) {
            line += ' ';
            ++width;
        }
        line += piece.text;
        width += piece.width;
    }
    lines->push_back(line);
}

}  // namespace

size_t Width(const std::string& text) {
    return WidthOf(Split(text));
}

std::string Cut(const std::string& text, size_t columns) {
    const std::vector<Glyph> glyphs = Split(text);
    const bool whole = WidthOf(glyphs) <= columns;
    const std::string ellipsis = Representable("…");
    const size_t room = whole ? columns : columns - std::min(columns, Width(ellipsis));
    std::string cut;
    size_t width = 0;
    for (const Glyph& glyph : glyphs) {
        if (width + glyph.width > room) {
            break;
        }
        cut += glyph.bytes;
        width += glyph.width;
    }
    return whole ? cut : cut + ellipsis;
}

std::string Pad(const std::string& text, size_t columns) {
    const size_t width = Width(text);
    return OneLine(text) + std::string(columns - std::min(width, columns), ' ');
}

std::vector<std::string> Wrap(const std::string& text, size_t columns) {
    std::vector<std::string> lines;
    size_t begin = 0;
    while (begin <= text.size()) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        WrapLine(text.substr(begin, end - begin), columns, &lines);
        begin = end + 1;
    }
    return lines;
}

}  // namespace program
