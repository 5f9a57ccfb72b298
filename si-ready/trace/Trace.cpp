#include "Trace.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <typeinfo>

namespace trace {

namespace {

constexpr unsigned char NULL_TEXT[] = {0xFF, 0x7F};

std::string TypeName(const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Int:
            return ht::TSDemangler::Demangle(typeid(int).name());
        case Argument::Kind::Bool:
            return ht::TSDemangler::Demangle(typeid(bool).name());
        case Argument::Kind::Text:
            break;
    }
    return ht::TSDemangler::Demangle(typeid(const char*).name());
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

std::size_t PayloadSize(const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Int:
            return sizeof(std::int32_t);
        case Argument::Kind::Bool:
            return 1;
        case Argument::Kind::Text:
            break;
    }
    if (argument.text == nullptr) {
        return sizeof(NULL_TEXT);
    }
    const std::size_t length = std::strlen(argument.text);
    return LengthPrefixSize(length) + length;
}

// The length in 7-bit groups, least significant first, each but the last with its top bit set; then
// the characters.
unsigned char* WriteText(unsigned char* to, const char* text) {
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

unsigned char* WritePayload(unsigned char* to, const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Int: {
            const std::int32_t number = argument.number;
            std::memcpy(to, &number, sizeof(number));
            return to + sizeof(number);
        }
        case Argument::Kind::Bool:
            *to = static_cast<unsigned char>(argument.number);
            return to + 1;
        case Argument::Kind::Text:
            break;
    }
    return WriteText(to, argument.text);
}

void RecordOrThrow(const CallSite& site, const char* format,
                   std::initializer_list<Argument> arguments) {
    if (*site.id == 0) {
        RegisterSite(site, format, arguments);
    }
    std::size_t size = 0;
    for (const Argument& argument : arguments) {
        size += PayloadSize(argument);
    }
    ht::TCStorage* storage = TIStorageManager::Instance().CurrentStorage();
    ht::TCThread* thread = ht::TCStorage::ThreadHandle(storage);
    void* buffer = ht::TCStorage::PrepareCallBuffer(storage, thread, size, 1, *site.id);
    if (buffer == nullptr) {
        return;
    }
    unsigned char* to = static_cast<unsigned char*>(buffer);
    for (const Argument& argument : arguments) {
        to = WritePayload(to, argument);
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
