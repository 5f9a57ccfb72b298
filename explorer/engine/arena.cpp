#include "arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "memory.h"

namespace explorer {

namespace {

constexpr std::uint32_t USED = 0x5EEDB10C;
constexpr std::uint32_t FREED = 0xF4EEB10C;
// What nobody has written yet, and what nobody may read any more, by the filling.
constexpr unsigned char UNWRITTEN[] = {0xA5, 0x5B};
constexpr unsigned char GIVEN_BACK[] = {0xDF, 0x23};

std::size_t RoundedUp(std::size_t size, std::size_t to) {
    return (size + to - 1) / to * to;
}

int wrongFrees = 0;

}  // namespace

// In front of each block.
struct Arena::Header {
    std::uint32_t size;
    std::uint32_t mark;
    std::uint32_t previous;  // offset of the header before; 0: none
    std::uint32_t unused;
};

// At the begin of the arena, and so part of its image.
struct Arena::Books {
    std::uint32_t last;  // offset of the last header; 0: none
    std::uint32_t top;   // behind the last block
    std::uint32_t unused[2];
};

bool Arena::IsServed() {
    memoryBooks.arena = &Of(0);
    // The compiler knows malloc() as a function that does not look at the books.
    void* (*volatile allocate)(std::size_t) = std::malloc;
    void* block = nullptr;
    {
        const ProviderMemory counted;
        block = allocate(1);
    }
    memoryBooks.arena = nullptr;
    const bool isServed = Has(block);
    std::free(block);
    return isServed;
}

Arena& Arena::Of(int number) {
    static Arena first(0);
    if (number == 0) {
        return first;
    }
    static Arena second(1);
    return second;
}

Arena::Arena(int number)
    : begin_(std::bit_cast<char*>(PLACE + static_cast<std::size_t>(number) * SIZE)) {
    static_assert(sizeof(Header) == 16 && sizeof(Books) == 16);
    const void* got =
        mmap(begin_, SIZE, PROT_READ | PROT_WRITE,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
    if (got != begin_) {
        throw std::runtime_error(
            std::string("there is no place for what the provider allocates: ") +
            std::strerror(errno));
    }
    Own() = {0, sizeof(Books), {}};
    highest_ = sizeof(Books);
}

Arena::Header* Arena::At(std::uint32_t offset) const {
    return reinterpret_cast<Header*>(begin_ + offset);
}

Arena::Books& Arena::Own() const {
    return *reinterpret_cast<Books*>(begin_);
}

void* Arena::Allocate(std::size_t size, std::size_t alignment) {
    Books& own = Own();
    alignment = std::max<std::size_t>(alignment, sizeof(Header));
    const std::size_t place = RoundedUp(own.top + sizeof(Header), alignment);
    const std::size_t rounded = RoundedUp(size, sizeof(Header));
    if (size > SIZE || place + rounded > SIZE) {
        isFull_ = true;
        return nullptr;
    }
    const auto offset = static_cast<std::uint32_t>(place - sizeof(Header));
    // What lies between is part of the image, too.
    std::memset(begin_ + own.top, 0, offset - own.top);
    *At(offset) = {static_cast<std::uint32_t>(size), USED, own.last, 0};
    own.last = offset;
    own.top = static_cast<std::uint32_t>(place + rounded);
    highest_ = std::max<std::size_t>(highest_, own.top);
    std::memset(begin_ + place, UNWRITTEN[static_cast<int>(filling_)], rounded);
    return begin_ + place;
}

void Arena::Free(void* block) {
    const std::size_t from = reinterpret_cast<std::uintptr_t>(block) - PLACE;
    const Arena& arena = Of(static_cast<int>(from / SIZE));
    const std::size_t place = from % SIZE;
    const Books& own = arena.Own();
    Header* header =
        place % sizeof(Header) == 0 && place >= sizeof(Books) + sizeof(Header) && place <= own.top
            ? arena.At(static_cast<std::uint32_t>(place - sizeof(Header)))
            : nullptr;
    if (header == nullptr || header->mark != USED) {
        ++wrongFrees;
        return;
    }
    header->mark = FREED;
    arena.Clear(place, place + RoundedUp(header->size, sizeof(Header)));
}

bool Arena::Settle() {
    Books& own = Own();
    while (own.last != 0 && At(own.last)->mark == FREED) {
        const std::uint32_t last = own.last;
        own.last = At(last)->previous;
        // With what aligns it.
        const std::size_t before =
            own.last == 0
                ? sizeof(Books)
                : own.last + sizeof(Header) + RoundedUp(At(own.last)->size, sizeof(Header));
        Clear(before, last + sizeof(Header));
        own.top = static_cast<std::uint32_t>(before);
    }
    const bool isWhole = IsClear(own.top, highest_);
    if (!isWhole) {
        Clear(own.top, highest_);
    }
    return isWhole;
}

void Arena::Clear(std::size_t begin, std::size_t end) const {
    std::memset(begin_ + begin, GIVEN_BACK[static_cast<int>(filling_)], end - begin);
}

bool Arena::IsClear(std::size_t begin, std::size_t end) const {
    // Each byte is the one before it.
    return begin == end ||
           (static_cast<unsigned char>(begin_[begin]) == GIVEN_BACK[static_cast<int>(filling_)] &&
            std::memcmp(begin_ + begin, begin_ + begin + 1, end - begin - 1) == 0);
}

template <typename Visit>
void Arena::ForEachGap(Visit visit) const {
    for (std::uint32_t at = Own().last; at != 0; at = At(at)->previous) {
        if (At(at)->mark == FREED) {
            const std::size_t place = at + sizeof(Header);
            visit(place, place + RoundedUp(At(at)->size, sizeof(Header)));
        }
    }
}

bool Arena::HasWholeGaps() const {
    bool areWhole = true;
    ForEachGap(
        [&](std::size_t begin, std::size_t end) { areWhole = areWhole && IsClear(begin, end); });
    return areWhole;
}

void Arena::FillWith(Filling filling) {
    if (filling_ != filling) {
        filling_ = filling;
        ForEachGap([this](std::size_t begin, std::size_t end) { Clear(begin, end); });
        Clear(Own().top, highest_);
    }
}

std::size_t Arena::SizeOf(const void* block) {
    return static_cast<const Header*>(block)[-1].size;
}

int Arena::TakeWrongFrees() {
    const int count = wrongFrees;
    wrongFrees = 0;
    return count;
}

std::vector<Arena::Block> Arena::LiveBlocks() const {
    std::vector<Block> blocks;
    for (std::uint32_t at = Own().last; at != 0; at = At(at)->previous) {
        if (At(at)->mark == USED) {
            blocks.push_back({reinterpret_cast<std::uintptr_t>(At(at) + 1), At(at)->size});
        }
    }
    std::reverse(blocks.begin(), blocks.end());
    return blocks;
}

std::string Arena::Image() const {
    return {begin_, Own().top};
}

bool Arena::Is(const std::string& image) const {
    return Own().top == image.size() && std::memcmp(begin_, image.data(), image.size()) == 0;
}

void Arena::PutBack(const std::string& image) {
    std::memcpy(begin_, image.data(), image.size());
    highest_ = std::max(highest_, image.size());
    Clear(image.size(), highest_);
    isFull_ = false;
}

}  // namespace explorer
