// Memory at a fixed place for what one library allocates, so that it can be stored and put back as
// it was. Everything there lies where the library's own calls put it: the same calls give the same
// bytes. What was given back is not handed out again before Settle(), and holds a filling that
// tells whether somebody writes there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace explorer {

class Arena {
  public:
    static constexpr int MOST = 2;
    static constexpr std::size_t SIZE = std::size_t{16} << 20;

    // Whether the provider's blocks come to lie there: not where malloc is a sanitizer's.
    static bool IsServed();
    // The arena of that number, below MOST: the same one each time. Throws std::runtime_error when
    // its place is taken.
    static Arena& Of(int number);
    static bool Has(const void* place) {
        return reinterpret_cast<std::uintptr_t>(place) - PLACE < MOST * SIZE;
    }

    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // What lies in memory that nobody has written yet, and in memory that was given back.
    enum class Filling : unsigned char { kUsual, kOther };
    // From now on, and in what was given back before.
    void FillWith(Filling filling);

    // Null when there is no room; IsFull() from then on.
    void* Allocate(std::size_t size, std::size_t alignment = 16);
    // Of whichever arena the block lies in. What is no block is noted as a wrong one.
    static void Free(void* block);
    static std::size_t SizeOf(const void* block);

    // What was given back last can be handed out again. Whether nobody wrote behind the last block
    // that is still used.
    bool Settle();
    // Whether nobody wrote to what was given back between blocks that are still used.
    bool HasWholeGaps() const;

    bool IsFull() const { return isFull_; }
    // How often something was given back that was not allocated; counted from the last call.
    static int TakeWrongFrees();

    struct Block {
        std::uintptr_t begin = 0;
        std::size_t size = 0;
    };
    // In the order of their places.
    std::vector<Block> LiveBlocks() const;

    std::string Image() const;
    bool Is(const std::string& image) const;
    void PutBack(const std::string& image);

  private:
    // Nobody else's numbers look like places here.
    static constexpr std::uintptr_t PLACE =
        sizeof(void*) == 8 ? static_cast<std::uintptr_t>(0x2A5F00000000ULL) : 0x4A000000U;

    explicit Arena(int number);
    struct Header;
    struct Books;
    Header* At(std::uint32_t offset) const;
    Books& Own() const;
    void Clear(std::size_t begin, std::size_t end) const;
    bool IsClear(std::size_t begin, std::size_t end) const;
    // Of those that were given back.
    template <typename Visit>
    void ForEachGap(Visit visit) const;

    char* const begin_;
    Filling filling_ = Filling::kUsual;
    std::size_t highest_ = 0;  // nothing was ever handed out from there on
    bool isFull_ = false;
};

}  // namespace explorer
