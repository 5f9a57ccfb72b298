#include "coverage.h"

#include <algorithm>

namespace explorer {

void BigNumber::Multiply(std::uint64_t factor) {
    std::uint64_t carry = 0;
    for (std::uint64_t& group : groups_) {
        carry += group * factor;
        group = carry % GROUP;
        carry /= GROUP;
    }
    Append(carry);
}

void BigNumber::Add(const BigNumber& other) {
    groups_.resize(std::max(groups_.size(), other.groups_.size()));
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        carry += groups_[i] + (i < other.groups_.size() ? other.groups_[i] : 0);
        groups_[i] = carry % GROUP;
        carry /= GROUP;
    }
    Append(carry);
}

void BigNumber::Append(std::uint64_t rest) {
    for (; rest != 0; rest /= GROUP) {
        groups_.push_back(rest % GROUP);
    }
    while (!groups_.empty() && groups_.back() == 0) {
        groups_.pop_back();
    }
}

std::string BigNumber::ToString() const {
    std::string text = groups_.empty() ? "0" : std::to_string(groups_.back());
    for (std::size_t i = groups_.size(); i-- > 1;) {
        text += ',' + std::to_string(GROUP + groups_[i - 1]).substr(1);
    }
    return text;
}

BigNumber BigNumber::Parse(const std::string& text) {
    BigNumber number;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            number.Multiply(10);
            number.Add(static_cast<std::uint64_t>(c - '0'));
        }
    }
    return number;
}

void Coverage::Add(const Decision* path, std::size_t depth) {
    Shape shape = {};
    for (std::size_t i = 0; i < depth; ++i) {
        ++shape[path[i].count - 1U];
        // An input is new only while all of its values are: on the first path through it.
        if (path[i].value == 0) {
            inputs_.emplace(path[i].input, path[i].count);
        }
    }
    ++shapes_[shape];
}

std::uint64_t Coverage::Paths() const {
    std::uint64_t paths = 0;
    for (const auto& [shape, count] : shapes_) {
        paths += count;
    }
    return paths;
}

namespace {

BigNumber Product(const Coverage::Shape& exponents) {
    BigNumber product(1);
    for (std::size_t i = 0; i < exponents.size(); ++i) {
        for (int n = 0; n < exponents[i]; ++n) {
            product.Multiply(i + 1);
        }
    }
    return product;
}

Coverage::Shape ShapeOf(const std::map<int, int>& inputs) {
    Coverage::Shape shape = {};
    for (const auto& [input, count] : inputs) {
        ++shape[static_cast<std::size_t>(count - 1)];
    }
    return shape;
}

}  // namespace

BigNumber Coverage::States() const {
    return Product(ShapeOf(inputs_));
}

BigNumber Coverage::Covered() const {
    const Shape all = ShapeOf(inputs_);
    BigNumber covered;
    for (const auto& [shape, paths] : shapes_) {
        // A path leaves open the inputs that it did not read.
        Shape open = {};
        for (std::size_t i = 0; i < all.size(); ++i) {
            open[i] = static_cast<std::uint8_t>(all[i] - shape[i]);
        }
        BigNumber states = Product(open);
        states.Multiply(paths);
        covered.Add(states);
    }
    return covered;
}

}  // namespace explorer
