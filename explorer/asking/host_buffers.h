// The buffers of a host that a box is written into, and every byte that is written there.
#pragma once

#include <array>
#include <cstddef>

namespace explorer {

class HostBuffers {
  public:
    static constexpr int COUNT = 6;

    static constexpr std::size_t SIZE = 256;
    using Bytes = std::array<char, (COUNT + 1) * SIZE>;

    // What they hold at first: the text each; behind it, and behind the last buffer, the filling.
    static Bytes Filled(const char* text, char filling);
    // Must outlive this.
    explicit HostBuffers(const Bytes& before) : before_(before), bytes_(before) {}

    char* operator[](int buffer) { return bytes_.data() + PlaceOf(buffer); }
    // Answers what was written into the first ones: their texts, and what is behind those. The
    // others answer nothing, unless something was written there.
    void AnswerFirst(int count, const char* about) const;

  private:
    static std::size_t PlaceOf(int buffer) { return static_cast<std::size_t>(buffer) * SIZE; }
    void AnswerBehind(std::size_t from, std::size_t behind) const;

    bool IsAsBefore(std::size_t from, std::size_t behind) const;

    const Bytes& before_;
    Bytes bytes_;
};

// What a block of the provider's holds from there on that is not zero, and how long it is.
void AnswerBlock(const char* block, std::size_t from);

}  // namespace explorer
