// The proof that an exploration is complete. Every path stands for all states that agree with its
// decisions; together the paths must stand for exactly as many states as the inputs that were read
// have, no more (a state visited twice) and no fewer (a state missed).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "choices.h"

namespace explorer {

// A natural number of any size, as people write it: in groups of three digits. Boost's integers
// would come with 135 MB of headers for these few functions, and group no digits.
class BigNumber {
  public:
    BigNumber(std::uint64_t number = 0) { Append(number); }
    // By less than 2^50, so that a group by it is a number of the machine's.
    void Multiply(std::uint64_t factor);
    void Add(const BigNumber& other);
    bool operator==(const BigNumber& other) const = default;
    // "5,971,968".
    std::string ToString() const;
    // What ToString() gives.
    static BigNumber Parse(const std::string& text);

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(groups_);
    }

  private:
    static constexpr std::uint64_t GROUP = 1000;
    void Append(std::uint64_t rest);

    std::vector<std::uint64_t> groups_;  // least significant first; no leading zero
};

class Coverage {
  public:
    static constexpr int MAX_VALUES = 16;
    // How many decisions of a path had 0, 1, ... MAX_VALUES - 1 values to choose from, less one.
    using Shape = std::array<std::uint8_t, MAX_VALUES>;

    void Add(const Decision* path, std::size_t depth);

    std::uint64_t Paths() const;
    // The number of states of those inputs.
    BigNumber States() const;
    // The number of states that the paths stand for; equals States() when nothing is missing.
    BigNumber Covered() const;
    bool IsComplete() const { return Covered() == States(); }

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(shapes_, inputs_);
    }

  private:
    std::map<Shape, std::uint64_t> shapes_;
    std::map<int, int> inputs_;  // that any path read, with their number of values
};

}  // namespace explorer
