// Compiled with -fno-builtin: a calloc made of malloc and memset must not become a calloc again.
#include "allocation_faults.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <new>

#include "recorder.h"

// The sanitizer's own, where there is one.
extern "C" __attribute__((weak)) void* __interceptor_malloc(std::size_t size);
extern "C" __attribute__((weak)) void __interceptor_free(void* block);

namespace {

using Malloc = void* (*)(std::size_t);
using Free = void (*)(void*);

bool armed = false;
int skip = 0;
int left = 0;
int counted = 0;

// The loader allocates while it looks up the C library's functions.
alignas(std::max_align_t) char arena[16384];
std::size_t arenaUsed = 0;

void* FromArena(std::size_t size) {
    const std::size_t aligned = (size + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) *
                                alignof(std::max_align_t);
    if (aligned > sizeof(arena) - arenaUsed) {
        return nullptr;
    }
    void* block = arena + arenaUsed;
    arenaUsed += aligned;
    return block;
}

bool IsFromArena(const void* block) {
    return block >= arena && block < arena + sizeof(arena);
}

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void* RealMalloc(std::size_t size) {
    if (__interceptor_malloc != nullptr) {
        return __interceptor_malloc(size);
    }
    static Malloc real = nullptr;
    static bool searching = false;
    if (real == nullptr) {
        if (searching) {
            return FromArena(size);
        }
        searching = true;
        real = Next<Malloc>("malloc");
        searching = false;
    }
    return real(size);
}

void RealFree(void* block) {
    if (IsFromArena(block)) {
        return;
    }
    if (__interceptor_free != nullptr) {
        __interceptor_free(block);
        return;
    }
    static Free real = nullptr;
    static bool searching = false;
    if (real == nullptr) {
        if (searching) {
            return;  // what the loader gives back while it looks up: some bytes, once
        }
        searching = true;
        real = Next<Free>("free");
        searching = false;
    }
    real(block);
}

bool Fails() {
    if (!armed || recording::platformDepth > 0) {
        return false;
    }
    ++counted;
    if (skip > 0) {
        --skip;
        return false;
    }
    if (left == recording::EVERY_FOLLOWING) {
        return true;
    }
    if (left > 0) {
        --left;
        return true;
    }
    return false;
}

void* Allocate(std::size_t size) {
    if (Fails()) {
        errno = ENOMEM;
        return nullptr;
    }
    return RealMalloc(size);
}

}  // namespace

namespace recording {

void ArmAllocationFaults(int nth, int count) {
    skip = nth > 0 ? nth - 1 : 0;
    left = nth > 0 ? count : 0;
    counted = 0;
    armed = true;
}

void DisarmAllocationFaults() {
    armed = false;
}

int AllocationCount() {
    return counted;
}

bool AllocationFaultsWork() {
    bool viaNew = false;
    bool viaCalloc = false;
    ArmAllocationFaults(1, EVERY_FOLLOWING);
    try {
        ::operator delete(::operator new(1));
    } catch (const std::bad_alloc&) {
        viaNew = true;
    }
    void* (*volatile allocate)(std::size_t, std::size_t) = calloc;
    void* block = allocate(1, 1);
    viaCalloc = block == nullptr;
    DisarmAllocationFaults();
    free(block);
    return viaNew && viaCalloc;
}

}  // namespace recording

extern "C" {

void* malloc(std::size_t size) {
    return Allocate(size);
}

void* calloc(std::size_t count, std::size_t size) {
    if (size != 0 && count > static_cast<std::size_t>(-1) / size) {
        errno = ENOMEM;
        return nullptr;
    }
    void* block = Allocate(count * size);
    if (block != nullptr) {
        std::memset(block, 0, count * size);
    }
    return block;
}

char* strdup(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    char* copy = static_cast<char*>(Allocate(size));
    if (copy != nullptr) {
        std::memcpy(copy, text, size);
    }
    return copy;
}

void free(void* block) {
    if (block != nullptr && !recording::KeepFreed(block)) {
        RealFree(block);
    }
}

}  // extern "C"

void* operator new(std::size_t size) {
    void* block = Allocate(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new[](std::size_t size) {
    return ::operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size > 0 ? size : 1);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size > 0 ? size : 1);
}

void operator delete(void* block) noexcept {
    free(block);
}

void operator delete[](void* block) noexcept {
    free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    free(block);
}
