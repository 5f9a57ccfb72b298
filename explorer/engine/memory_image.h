// All that a library remembers: its writable memory and what it has allocated in an arena of its
// own; stored, put back, and written so that equal memories are equal texts wherever blocks lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "arena.h"

namespace explorer {

struct MemoryImage {
    std::string segment;
    std::string arena;

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(segment, arena);
    }
};

// Memory in words that do not tell where it lies.
struct CanonicalForm {
    std::string text;
    int lost = 0;                              // blocks that nothing leads to
    std::vector<std::uintptr_t> strangeWords;  // neither in the arena nor in the library
};
// Whether one of the words leads to memory that can be written to, which nobody compares.
bool LeadsElsewhere(const std::vector<std::uintptr_t>& strangeWords);

class LibraryState {
  public:
    // Of the library that an address lies in.
    LibraryState(const void* inside, Arena& arena);

    MemoryImage Image() const;
    bool Is(const MemoryImage& image) const;
    void PutBack(const MemoryImage& image);

    // What can be reached from the library's memory and from those places. Blocks that cannot are
    // given back, so that no image has them.
    CanonicalForm Canonical(const std::vector<std::uintptr_t>& roots);

    // Words that hold one of these numbers become 0: where they are, and which of them.
    std::map<std::size_t, std::int32_t> TakeNumbers(std::int32_t above, int count);
    void PutNumber(std::size_t at, std::int32_t number);

  private:
    std::vector<std::pair<char*, std::size_t>> areas_;
    std::pair<std::uintptr_t, std::uintptr_t> library_;
    Arena& arena_;
};

}  // namespace explorer
