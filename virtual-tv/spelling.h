// What somebody who mistyped a word may have meant; the public face has Similar().
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vtv {

// The candidate that differs least from the word; "" when there is none.
std::string Nearest(std::string_view word, const std::vector<std::string>& candidates);
// "a, b, c".
std::string Join(const std::vector<std::string>& words);

}  // namespace vtv
