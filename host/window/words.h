// The few words of the window itself, in the languages of the provider's catalogues.
#pragma once

#include <string>

namespace window {

struct Words {
    const char* language;  // "de", "zh_CN"
    const char* on;
    const char* off;
    const char* dimmed;    // spoken of an item that cannot be used
    const char* selected;  // spoken of the choice that an item has
    const char* finish;    // an application does its work and ends
    const char* cancel;    // ... or ends without
    const char* close;
    const char* noPage;     // a TV whose menu has no Voice page
    const char* elsewhere;  // what an assistant's own settings stand for
};

// English for a language without words.
const Words& WordsOf(const std::string& menuLanguage);
// Whether the language is written from right to left, so that the page is mirrored.
bool IsMirrored(const std::string& menuLanguage);

}  // namespace window
