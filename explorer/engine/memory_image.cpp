#include "memory_image.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "library_memory.h"

namespace explorer {

namespace {

using Word = std::uintptr_t;
using Range = std::pair<Word, Word>;

// Of the whole process, with what may be written to.
std::vector<Range> WritableRanges() {
    std::vector<Range> ranges;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0;
        unsigned long end = 0;
        char isWritable = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx %*c%c", &begin, &end, &isWritable) == 3 &&
            isWritable == 'w') {
            ranges.emplace_back(begin, end);
        }
    }
    return ranges;
}

bool IsIn(const Range& range, Word word) {
    return word >= range.first && word < range.second;
}

// Breadth-first: each block that a word leads to has the number of its first visit.
class Writer {
  public:
    Writer(std::vector<Arena::Block> live, const Range& library)
        : live_(std::move(live)), library_(library), numbers_(live_.size(), 0) {}

    void Write(const char* begin, std::size_t size) {
        while (size >= sizeof(Word)) {
            Word word = 0;
            std::memcpy(&word, begin, sizeof word);
            Write(word);
            begin += sizeof word;
            size -= sizeof word;
        }
        Put('b', std::string(begin, size));
    }

    void Write(Word word) {
        if (!Arena::Has(std::bit_cast<const void*>(word))) {
            if (IsIn(library_, word)) {
                Put('l', word - library_.first);
            } else {
                Put('w', word);
                rest_.push_back(word);
            }
            return;
        }
        const auto behind =
            std::upper_bound(live_.begin(), live_.end(), word,
                             [](Word place, const Arena::Block& one) { return place < one.begin; });
        if (behind == live_.begin() || word > std::prev(behind)->begin + std::prev(behind)->size) {
            Put('d', 0);  // to what was given back
            return;
        }
        const auto index = static_cast<std::size_t>(behind - live_.begin()) - 1;
        if (numbers_[index] == 0) {
            visited_.push_back(index);
            numbers_[index] = visited_.size();
        }
        Put('p', numbers_[index]);
        Put('o', word - live_[index].begin);
    }

    void WriteReached() {
        for (std::size_t i = 0; i < visited_.size(); ++i) {
            const Arena::Block& block = live_[visited_[i]];
            Put('s', block.size);
            Write(std::bit_cast<const char*>(block.begin), block.size);
        }
    }

    int FreeLost() const {
        int lost = 0;
        for (std::size_t i = 0; i < live_.size(); ++i) {
            if (numbers_[i] == 0) {
                Arena::Free(std::bit_cast<void*>(live_[i].begin));
                ++lost;
            }
        }
        return lost;
    }

    const std::vector<Word>& Rest() const { return rest_; }
    const std::string& Text() const { return text_; }

  private:
    void Put(char kind, Word number) {
        text_ += kind;
        text_.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    void Put(char kind, const std::string& bytes) {
        text_ += kind;
        text_ += bytes;
    }

    const std::vector<Arena::Block> live_;
    const Range library_;
    std::vector<std::size_t> numbers_;  // by block; 0: not reached
    std::vector<std::size_t> visited_;
    std::vector<Word> rest_;  // neither the arena's nor the library's
    std::string text_;
};

}  // namespace

bool LeadsElsewhere(const std::vector<std::uintptr_t>& strangeWords) {
    const std::vector<Range> ranges = WritableRanges();
    return std::any_of(strangeWords.begin(), strangeWords.end(), [&](Word word) {
        return std::any_of(ranges.begin(), ranges.end(),
                           [word](const Range& range) { return IsIn(range, word); });
    });
}

LibraryState::LibraryState(const void* inside, Arena& arena)
    : areas_(WritableAreasAround(inside)), library_(RangeAround(inside)), arena_(arena) {}

MemoryImage LibraryState::Image() const {
    MemoryImage image;
    for (const auto& [begin, size] : areas_) {
        image.segment.append(begin, size);
    }
    image.arena = arena_.Image();
    return image;
}

bool LibraryState::Is(const MemoryImage& image) const {
    const char* at = image.segment.data();
    for (const auto& [begin, size] : areas_) {
        if (std::memcmp(begin, at, size) != 0) {
            return false;
        }
        at += size;
    }
    return arena_.Is(image.arena);
}

void LibraryState::PutBack(const MemoryImage& image) {
    const char* at = image.segment.data();
    for (const auto& [begin, size] : areas_) {
        std::memcpy(begin, at, size);
        at += size;
    }
    arena_.PutBack(image.arena);
}

CanonicalForm LibraryState::Canonical(const std::vector<std::uintptr_t>& roots) {
    Writer writer(arena_.LiveBlocks(), library_);
    for (const auto& [begin, size] : areas_) {
        writer.Write(begin, size);
    }
    for (const std::uintptr_t root : roots) {
        writer.Write(root);
    }
    writer.WriteReached();
    const int lost = writer.FreeLost();
    arena_.Settle();
    return {writer.Text(), lost, writer.Rest()};
}

std::map<std::size_t, std::int32_t> LibraryState::TakeNumbers(std::int32_t above, int count) {
    std::map<std::size_t, std::int32_t> taken;
    std::size_t offset = 0;
    for (const auto& [begin, size] : areas_) {
        for (std::size_t at = 0; at + sizeof(std::int32_t) <= size; at += sizeof(std::int32_t)) {
            std::int32_t number = 0;
            std::memcpy(&number, begin + at, sizeof number);
            if (number > above && number <= above + count) {
                taken[offset + at] = number;
                std::memset(begin + at, 0, sizeof number);
            }
        }
        offset += size;
    }
    return taken;
}

void LibraryState::PutNumber(std::size_t at, std::int32_t number) {
    for (const auto& [begin, size] : areas_) {
        if (at < size) {
            std::memcpy(begin + at, &number, sizeof number);
            return;
        }
        at -= size;
    }
}

}  // namespace explorer
