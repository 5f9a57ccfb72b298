// Where a value shows in what a provider does with it.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "explorer/tv/inputs.h"

namespace explorer {

// The texts in a document, which a provider may hand on: of {"state":"dim"} it is dim. Places and
// lengths.
std::vector<std::pair<std::size_t, std::size_t>> TextsIn(const std::string& document);

// Two records, made with two values, that differ in nothing but where these show.
class EchoComparison {
  public:
    EchoComparison(const Value& a, const Value& b);

    bool IsAlike(std::string_view a, std::string_view b) const;

  private:
    using Left = std::pair<std::size_t, std::size_t>;
    // `tried`: how much was left where an echo was taken for one, in vain.
    bool IsAlike(std::string_view a, std::string_view b, std::set<Left>& tried) const;

    std::vector<std::string> echoesOfA_;
    std::vector<std::string> echoesOfB_;
};

}  // namespace explorer
