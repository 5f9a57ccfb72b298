#include "host_buffers.h"

#if defined(__SANITIZE_ADDRESS__)
#include <malloc.h>
#endif

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "answers.h"
#include "explorer/engine/arena.h"
#include "explorer/engine/memory.h"

namespace explorer {

namespace {

// "00 7F": a text may hold no zero.
void AnswerBytes(const char* about, std::string_view bytes) {
    const PlatformMemory own;
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string shown;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        shown += shown.empty() ? "" : " ";
        shown += DIGITS[number / 16];
        shown += DIGITS[number % 16];
    }
    Answer(about, shown);
}

// 0 where nobody knows.
std::size_t SizeOf(const char* block) {
    if (Arena::Has(block)) {
        return Arena::SizeOf(block);
    }
#if defined(__SANITIZE_ADDRESS__)
    return malloc_usable_size(const_cast<char*>(block));
#else
    return 0;
#endif
}

}  // namespace

HostBuffers::Bytes HostBuffers::Filled(const char* text, char filling) {
    Bytes bytes;
    bytes.fill(filling);
    for (int i = 0; i < COUNT; ++i) {
        std::memcpy(bytes.data() + PlaceOf(i), text, std::strlen(text) + 1);
    }
    return bytes;
}

void HostBuffers::AnswerFirst(int count, const char* about) const {
    for (int i = 0; i < count; ++i) {
        const std::size_t from = PlaceOf(i);
        if (IsAsBefore(from, PlaceOf(i + 1))) {
            Answer(about);
            continue;
        }
        const std::size_t length = strnlen(bytes_.data() + from, SIZE);
        const PlatformMemory own;
        Answer(about, std::string(bytes_.data() + from, length));
        AnswerBehind(from + std::min(length + 1, SIZE), PlaceOf(i + 1));
    }
    AnswerBehind(PlaceOf(count), bytes_.size());
}

bool HostBuffers::IsAsBefore(std::size_t from, std::size_t behind) const {
    return std::memcmp(bytes_.data() + from, before_.data() + from, behind - from) == 0;
}

void HostBuffers::AnswerBehind(std::size_t from, std::size_t behind) const {
    if (IsAsBefore(from, behind)) {
        return;
    }
    while (bytes_[behind - 1] == before_[behind - 1]) {
        --behind;
    }
    AnswerBytes("written behind it", {bytes_.data() + from, behind - from});
}

void AnswerBlock(const char* block, std::size_t from) {
    const std::size_t size = SizeOf(block);
    Answer("bytes", static_cast<int>(size));
    std::size_t behind = size;
    while (behind > from && block[behind - 1] == '\0') {
        --behind;
    }
    if (behind > from) {
        AnswerBytes("written behind it", {block + from, behind - from});
    }
}

}  // namespace explorer
