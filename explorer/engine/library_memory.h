// The memory that a library may write to, to see whether it remembers something.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace explorer {

// Of the library that an address lies in: what it may write to, without what the loader protects.
std::vector<std::pair<char*, std::size_t>> WritableAreasAround(const void* inside);
// Where it begins and ends.
std::pair<std::uintptr_t, std::uintptr_t> RangeAround(const void* inside);

// For programs whose malloc is a sanitizer's, where nothing can be put back.
class LibraryMemory {
  public:
    // Of the library that an address lies in.
    explicit LibraryMemory(const void* inside);

    // Whether it is as it was when this was last called, or at first. What was 0 and is one of the
    // `count` numbers above `above` does not count: ids of trace sites, once they are registered.
    bool IsAsBefore(int above = 0, int count = 0);

  private:
    const std::vector<std::pair<char*, std::size_t>> areas_;
    std::string before_;
};

}  // namespace explorer
