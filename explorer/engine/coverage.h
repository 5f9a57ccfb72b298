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

// A natural number of any size.
class BigNumber {
  public:
    BigNumber(std::uint64_t number = 0);
    void Multiply(std::uint32_t factor);
    void Add(const BigNumber& other);
    bool operator==(const BigNumber& other) const = default;
    // Decimal, in groups of three: "5,971,968".
    std::string ToString() const;

  private:
    std::vector<std::uint32_t> digits_;  // base 2^32, least significant first; no leading zero
};

class Coverage {
  public:
    static constexpr int MAX_VALUES = 16;
    // How many decisions of a path had 0, 1, ... MAX_VALUES - 1 values to choose from, less one.
    using Shape = std::array<std::uint8_t, MAX_VALUES>;

    void Add(const Decision* path, std::size_t depth);
    void Merge(const Coverage& other);

    std::uint64_t Paths() const;
    // The inputs that any path read, with their number of values.
    const std::map<int, int>& Inputs() const { return inputs_; }
    // The number of states of those inputs.
    BigNumber States() const;
    // The number of states that the paths stand for; equals States() when nothing is missing.
    BigNumber Covered() const;
    bool IsComplete() const { return Covered() == States(); }

    const std::map<Shape, std::uint64_t>& Shapes() const { return shapes_; }
    void AddShape(const Shape& shape, std::uint64_t paths) { shapes_[shape] += paths; }
    void AddInput(int input, int count) { inputs_[input] = count; }

  private:
    std::map<Shape, std::uint64_t> shapes_;
    std::map<int, int> inputs_;
};

}  // namespace explorer
