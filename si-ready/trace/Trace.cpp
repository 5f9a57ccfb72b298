#include "Trace.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <typeinfo>

namespace trace {

namespace {

constexpr unsigned char NULL_TEXT[] = {0xFF, 0x7F};

std::string TypeName(const Argument& argument) {
    const char* name = std::visit([](auto value) { return typeid(value).name(); }, argument);
    return ht::TSDemangler::Demangle(name);
}

void RegisterSite(const CallSite& site, const char* format,
                  std::initializer_list<Argument> arguments) {
    ht::TCCallLocation location = {site.file, site.line, 0, site.function, format, {}};
    for (const Argument& argument : arguments) {
        location.argumentTypes.push_back(TypeName(argument));
    }
    TIStorageManager& manager = TIStorageManager::Instance();
    location.id = manager.NewLocationId();
    ht::TCStorage::SaveLocation(manager.CurrentStorage(), location);
    *site.id = location.id;
}

std::size_t LengthPrefixSize(std::size_t length) {
    std::size_t size = 1;
    while (length > 0x7F) {
        length >>= 7;
        ++size;
    }
    return size;
}

std::size_t PayloadSize(int) {
    return sizeof(std::int32_t);
}

std::size_t PayloadSize(bool) {
    return 1;
}

std::size_t PayloadSize(const char* text) {
    if (text == nullptr) {
        return sizeof(NULL_TEXT);
    }
    const std::size_t length = std::strlen(text);
    return LengthPrefixSize(length) + length;
}

unsigned char* Write(unsigned char* to, int value) {
    const std::int32_t number = value;
    std::memcpy(to, &number, sizeof(number));
    return to + sizeof(number);
}

unsigned char* Write(unsigned char* to, bool value) {
    *to = value ? 1 : 0;
    return to + 1;
}

// The length in 7-bit groups, least significant first, each but the last with its top bit set; then
// the characters.
unsigned char* Write(unsigned char* to, const char* text) {
    if (text == nullptr) {
        std::memcpy(to, NULL_TEXT, sizeof(NULL_TEXT));
        return to + sizeof(NULL_TEXT);
    }
    const std::size_t length = std::strlen(text);
    std::size_t rest = length;
    while (rest > 0x7F) {
        *to++ = static_cast<unsigned char>((rest & 0x7F) | 0x80);
        rest >>= 7;
    }
    *to++ = static_cast<unsigned char>(rest);
    return std::copy(text, text + length, to);
}

void RecordOrThrow(const CallSite& site, const char* format,
                   std::initializer_list<Argument> arguments) {
    if (*site.id == 0) {
        RegisterSite(site, format, arguments);
    }
    std::size_t size = 0;
    for (const Argument& argument : arguments) {
        size += std::visit([](auto value) { return PayloadSize(value); }, argument);
    }
    ht::TCStorage* storage = TIStorageManager::Instance().CurrentStorage();
    ht::TCThread* thread = ht::TCStorage::ThreadHandle(storage);
    void* buffer = ht::TCStorage::PrepareCallBuffer(storage, thread, size, 1, *site.id);
    if (buffer == nullptr) {
        return;
    }
    unsigned char* to = static_cast<unsigned char*>(buffer);
    for (const Argument& argument : arguments) {
        to = std::visit([to](auto value) { return Write(to, value); }, argument);
    }
    ht::TCStorage::Commit(storage, thread);
}

}  // namespace

void Record(const CallSite& site, const char* format,
            std::initializer_list<Argument> arguments) noexcept {
    try {
        RecordOrThrow(site, format, arguments);
    } catch (...) {
        // A trace is a witness, not a part of the answer: without memory the event is lost.
    }
}

}  // namespace trace
