// What the provider allocates and does not give back. The program's own malloc (allocations.cpp)
// keeps the books; without it everything here reads 0.
#pragma once

#include <cstddef>

namespace explorer {

class Arena;

struct MemoryBooks {
    bool counting = false;   // the provider is at work
    Arena* arena = nullptr;  // where it allocates then; null: where everybody does
    bool poisoning = false;  // freed memory is overwritten at once
    long balance = 0;        // blocks allocated less blocks freed
};
inline MemoryBooks memoryBooks;

// While one lives, memory counts as the provider's.
class ProviderMemory {
  public:
    ProviderMemory() { memoryBooks.counting = true; }
    ~ProviderMemory() { memoryBooks.counting = false; }
    ProviderMemory(const ProviderMemory&) = delete;
    ProviderMemory& operator=(const ProviderMemory&) = delete;
};

// While one lives, memory is the platform's own and does not count.
class PlatformMemory {
  public:
    PlatformMemory() : counting_(memoryBooks.counting) { memoryBooks.counting = false; }
    ~PlatformMemory() { memoryBooks.counting = counting_; }
    PlatformMemory(const PlatformMemory&) = delete;
    PlatformMemory& operator=(const PlatformMemory&) = delete;

  private:
    bool counting_;
};

}  // namespace explorer
