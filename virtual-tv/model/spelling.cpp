#include "spelling.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace vtv {

namespace {

// How many letters have to be changed, added or dropped.
size_t Distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

std::string Lower(std::string_view word) {
    std::string lower(word);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

}  // namespace

std::vector<std::string> Similar(std::string_view word,
                                 const std::vector<std::string>& candidates) {
    const std::string wanted = Lower(word);
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const std::string& candidate : candidates) {
        const std::string lower = Lower(candidate);
        const bool part = wanted.size() >= 3 && lower.find(wanted) != std::string::npos;
        const size_t distance = part ? 1 : Distance(wanted, lower);
        if (distance <= 3 && 2 * distance <= wanted.size()) {
            ranked.emplace_back(distance, candidate);
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> words;
    words.reserve(ranked.size());
    for (auto& [distance, similar] : ranked) {
        words.push_back(std::move(similar));
    }
    return words;
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    const std::vector<std::string> similar = Similar(word, candidates);
    return similar.empty() ? "" : " Did you mean \"" + similar.front() + "\"?";
}

std::string Join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

}  // namespace vtv
