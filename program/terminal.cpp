#include "terminal.h"

#include <iconv.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

namespace program {

namespace {

Colour colour = Colour::kAuto;
// This, and what is converted with, is kept to the end of the process: what std::cout still holds
// is converted after the other objects are gone.
std::string& codeset = *new std::string("UTF-8");
bool isLost = false;

// What this program draws with, and the marks of people's writing that are shaped alike.
const std::pair<const char*, const char*> kMarks[] = {
    {"─", "-"},    {"│", "|"},  {"╭", "+"}, {"╮", "+"},  {"╰", "+"},      {"╯", "+"},
    {"├", "+"},    {"┤", "+"},  {"▸", ">"}, {"●", "*"},  {"○", "o"},      {"›", ">"},
    {"✕", "x"},    {"▣", "#"},  {"·", "-"}, {"→", ">"},  {"←", "<"},      {"…", "..."},
    {"‘", "'"},    {"’", "'"},  {"‚", "'"}, {"“", "\""}, {"”", "\""},     {"„", "\""},
    {"«", "\""},   {"»", "\""}, {"–", "-"}, {"—", "-"},  {"\u00a0", " "}, {"\u202f", " "},
    {"\u00ad", ""}};

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool IsOpen(iconv_t converter) {
    return reinterpret_cast<std::intptr_t>(converter) != -1;
}

// Converts a text; false where the other code cannot express it.
bool Convert(iconv_t converter, std::string_view text, std::string* converted) {
    if (!IsOpen(converter)) {
        return false;
    }
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    std::string input(text);
    char* in = input.data();
    size_t left = input.size();
    char buffer[64];
    converted->clear();
    while (left > 0) {
        char* out = buffer;
        size_t room = sizeof buffer;
        const size_t result = iconv(converter, &in, &left, &out, &room);
        converted->append(buffer, sizeof buffer - room);
        if (result == static_cast<size_t>(-1) && errno != E2BIG) {
            return false;
        }
    }
    return true;
}

iconv_t Converter(const std::string& to, const std::string& from) {
    static auto& open = *new std::map<std::pair<std::string, std::string>, iconv_t>;
    const auto [entry, isNew] = open.try_emplace({to, from});
    if (isNew) {
        entry->second = iconv_open(to.c_str(), from.c_str());
    }
    return entry->second;
}

// The whole character that a UTF-8 text begins with, or the byte that begins none.
std::string_view FirstOf(std::string_view text) {
    size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xc0U) == 0x80) {
        ++size;
    }
    return text.substr(0, size);
}

std::string Replacement(std::string_view character) {
    std::string encoded;
    if (Convert(Converter(codeset, "UTF-8"), character, &encoded)) {
        return std::string(character);
    }
    for (const auto& [mark, instead] : kMarks) {
        if (character == mark) {
            return instead;
        }
    }
    // The C library knows what comes close to a letter, in the language of C.UTF-8.
    std::string similar;
    if (Convert(Converter("ASCII//TRANSLIT", "UTF-8"), character, &similar) && similar != "?") {
        return similar;
    }
    isLost = true;
    return "?";
}

}  // namespace

void SetColour(Colour wanted) {
    colour = wanted;
}

bool IsColoured() {
    if (colour != Colour::kAuto) {
        return colour == Colour::kAlways;
    }
    return isatty(STDOUT_FILENO) == 1 && Environment("NO_COLOR").empty();
}

size_t Columns() {
    const std::string told = Environment("COLUMNS");
    size_t columns = 0;
    const auto [end, error] = std::from_chars(told.data(), told.data() + told.size(), columns);
    if (error == std::errc() && end == told.data() + told.size() && columns > 0) {
        return columns;
    }
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

size_t Rows() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_row : 0;
}

void ReadCodeset() {
    if (setlocale(LC_CTYPE, "") != nullptr) {
        codeset = nl_langinfo(CODESET);
        return;
    }
    // A locale that this machine lacks: its name says what the terminal expects.
    std::string name;
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        name = name.empty() ? Environment(variable) : name;
    }
    const size_t dot = name.find('.');
    codeset = dot == std::string::npos ? "ASCII" : name.substr(dot + 1, name.find('@') - dot - 1);
    if (!IsOpen(Converter(codeset, "UTF-8"))) {
        codeset = "ASCII";
    }
}

bool IsUtf8() {
    return strcasecmp(codeset.c_str(), "UTF-8") == 0 || strcasecmp(codeset.c_str(), "UTF8") == 0;
}

std::string Representable(std::string_view text) {
    if (IsUtf8()) {
        return std::string(text);
    }
    static auto& known = *new std::map<std::string, std::string, std::less<>>;
    std::string shown;
    while (!text.empty()) {
        const std::string_view character = FirstOf(text);
        text.remove_prefix(character.size());
        if (character.size() == 1) {
            shown += character;
            continue;
        }
        auto entry = known.find(character);
        if (entry == known.end()) {
            entry = known.emplace(character, Replacement(character)).first;
        }
        shown += entry->second;
    }
    return shown;
}

std::string InCodeset(std::string_view text) {
    if (IsUtf8()) {
        return std::string(text);
    }
    const std::string shown = Representable(text);
    std::string encoded;
    return Convert(Converter(codeset, "UTF-8"), shown, &encoded) ? encoded : shown;
}

std::string LettersLost() {
    return !isLost ? ""
                   : "some letters cannot be shown in the character set of your locale, " +
                         codeset + ": set LANG to a locale with UTF-8, such as C.UTF-8.";
}

}  // namespace program
