#include "coverage.h"

namespace explorer {

BigNumber::BigNumber(std::uint64_t number) {
    for (; number != 0; number >>= 32) {
        digits_.push_back(static_cast<std::uint32_t>(number));
    }
}

void BigNumber::Multiply(std::uint32_t factor) {
    if (factor == 0) {
        digits_.clear();
        return;
    }
    std::uint64_t carry = 0;
    for (std::uint32_t& digit : digits_) {
        carry += std::uint64_t{digit} * factor;
        digit = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    if (carry != 0) {
        digits_.push_back(static_cast<std::uint32_t>(carry));
    }
}

void BigNumber::Add(const BigNumber& other) {
    if (digits_.size() < other.digits_.size()) {
        digits_.resize(other.digits_.size());
    }
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < digits_.size(); ++i) {
        carry += digits_[i];
        carry += i < other.digits_.size() ? other.digits_[i] : 0;
        digits_[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    if (carry != 0) {
        digits_.push_back(static_cast<std::uint32_t>(carry));
    }
}

std::string BigNumber::ToString() const {
    std::vector<std::uint32_t> rest = digits_;
    std::string text;
    int printed = 0;
    do {
        std::uint64_t remainder = 0;
        for (std::size_t i = rest.size(); i-- > 0;) {
            remainder = (remainder << 32) | rest[i];
            rest[i] = static_cast<std::uint32_t>(remainder / 10);
            remainder %= 10;
        }
        while (!rest.empty() && rest.back() == 0) {
            rest.pop_back();
        }
        if (printed > 0 && printed % 3 == 0) {
            text.insert(text.begin(), ',');
        }
        text.insert(text.begin(), static_cast<char>('0' + remainder));
        ++printed;
    } while (!rest.empty());
    return text;
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

void Coverage::Merge(const Coverage& other) {
    for (const auto& [shape, paths] : other.shapes_) {
        shapes_[shape] += paths;
    }
    inputs_.insert(other.inputs_.begin(), other.inputs_.end());
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
            product.Multiply(static_cast<std::uint32_t>(i + 1));
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
        for (std::uint64_t rest = paths; rest != 0; rest >>= 31) {
            // Paths are far fewer than 2^31 a shape; the loop only keeps the arithmetic honest.
            BigNumber part = states;
            part.Multiply(static_cast<std::uint32_t>(rest & 0x7FFFFFFF));
            covered.Add(part);
            states.Multiply(0x80000000U);
        }
    }
    return covered;
}

}  // namespace explorer
