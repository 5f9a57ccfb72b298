// What somebody who mistyped an item's name may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The names of the page's items that resemble a name or key, best first.
std::vector<std::string> SimilarItems(std::string_view nameOrKey);

}  // namespace host
