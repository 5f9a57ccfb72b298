#include "spelling.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "virtual_tv.h"

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

}  // namespace

std::string Nearest(std::string_view word, const std::vector<std::string>& candidates) {
    std::string nearest;
    size_t best = std::numeric_limits<size_t>::max();
    for (const std::string& candidate : candidates) {
        if (const size_t distance = Distance(word, candidate); distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::vector<std::string> Similar(std::string_view word,
                                 const std::vector<std::string>& candidates) {
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const std::string& candidate : candidates) {
        const bool part = word.size() >= 3 && candidate.find(word) != std::string::npos;
        const size_t distance = part ? 1 : Distance(word, candidate);
        if (distance <= 3 && 2 * distance <= word.size()) {
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

std::string Join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

}  // namespace vtv
