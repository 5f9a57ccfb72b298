#include "pseudo.h"

#include "virtual-tv/model/page_texts.h"
#include "virtual-tv/texts.h"

namespace window {

namespace {

constexpr struct {
    char plain;
    const char* accented;
} kAccents[] = {{'a', "á"}, {'e', "é"}, {'i', "í"}, {'o', "ö"}, {'u', "ü"},
                {'A', "Å"}, {'E', "É"}, {'O', "Ø"}, {'U', "Û"}, {'c', "ç"}};

std::string Accented(char c) {
    for (const auto& row : kAccents) {
        if (c == row.plain) {
            return row.accented;
        }
    }
    return {c};
}

// Not within a character of several bytes.
size_t CutAt(const std::string& text, size_t size) {
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        ++size;
    }
    return size;
}

std::string Longer(const std::string& text) {
    std::string longer;
    bool isPlaceholder = false;
    for (size_t i = 0; i < text.size(); ++i) {
        isPlaceholder = isPlaceholder || text.compare(i, 2, "<<") == 0;
        longer += isPlaceholder ? std::string(1, text[i]) : Accented(text[i]);
        isPlaceholder = isPlaceholder && (i == 0 || text.compare(i - 1, 2, ">>") != 0);
    }
    const size_t more = (2 * text.size() + 4) / 5;
    const std::string filling = " lörém ípsüm dölör sít ámét";
    for (size_t added = 0; added < more; added += filling.size()) {
        longer += more - added < filling.size() ? filling.substr(0, CutAt(filling, more - added))
                                                : filling;
    }
    return longer;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return quoted + "\"";
}

}  // namespace

std::string LongerEnglish() {
    std::string po =
        "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n"
        "\"Content-Transfer-Encoding: 8bit\\n\"\n";
    for (const vtv::PageText& text : vtv::PageTexts()) {
        if (const std::optional<std::string> english = vtv::TextIn("en", text.id)) {
            po += "\nmsgid " + Quoted(text.id) + "\nmsgstr " + Quoted(Longer(*english)) + "\n";
        }
    }
    return po;
}

}  // namespace window
