// What somebody who mistyped a word may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vtv {

// Best first: candidates that hold the word, or differ from it in few letters.
std::vector<std::string> Similar(std::string_view word, const std::vector<std::string>& candidates);
// " Did you mean \"a\"?" for the candidate that comes closest; "" when none comes close.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);
// "a, b, c".
std::string Join(const std::vector<std::string>& words);

}  // namespace vtv
