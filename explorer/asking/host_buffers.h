// The buffers of a host that a box is written into, and every byte that is written there.
#pragma once

#include <array>
#include <cstddef>

namespace explorer {

class HostBuffers {
  public:
    static constexpr int COUNT = 6;

    // Each holds the text; behind it, and behind the last buffer, there is the filling.
    HostBuffers(const char* text, char filling);

    char* operator[](int buffer) { return bytes_.data() + PlaceOf(buffer); }
    // Answers what the first ones hold: their texts, and what was written behind those. The others
    // answer nothing, unless something was written into them.
    void AnswerFirst(int count, const char* about) const;

  private:
    static constexpr std::size_t SIZE = 1024;
    static std::size_t PlaceOf(int buffer) { return static_cast<std::size_t>(buffer) * SIZE; }
    void AnswerBehind(std::size_t from, std::size_t behind) const;

    using Bytes = std::array<char, (COUNT + 1) * SIZE>;
    Bytes before_;
    Bytes bytes_;
};

// What a block of the provider's holds from there on that is not zero, and how long it is.
void AnswerBlock(const char* block, std::size_t from);

}  // namespace explorer
