// What somebody who mistyped a word may have meant; the public face has Similar().
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vtv {

// " Did you mean \"a\"?" for the candidate that comes closest; "" when none comes close.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);
// "a, b, c".
std::string Join(const std::vector<std::string>& words);

}  // namespace vtv
