// The texts of the Voice page: their ids, spellings included, and where each is to be seen.
#pragma once

#include <string>
#include <vector>

namespace vtv {

// What a text is a part of.
struct TextPlace {
    const char* where;  // an item's name; a function of the provider for what no item shows
    const char* part;   // "title", "help", "choice", "confirmation", "reason", "popup", "toast";
                        // "text" of what a function names
};

struct PageText {
    const char* id;
    std::vector<TextPlace> places;
};

// In the order of the catalogues.
const std::vector<PageText>& PageTexts();

// The placeholders in a text, sorted: "<<A>>", "<<B>>". A translation has those of the others.
std::vector<std::string> PlaceholdersOf(const std::string& text);

}  // namespace vtv
