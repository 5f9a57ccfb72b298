// The program's malloc and its kin: the C library's, with books kept, and while a provider with an
// arena is at work that arena. Whose block it is, its place tells. For executables only.
#include "arena.h"
#include "memory.h"

#if defined(__SANITIZE_ADDRESS__)

#include <cstddef>

// The sanitizer's own, which tells what it does and finds what is used after it was freed. Declared
// here, because g++ brings no header for it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*allocated)(const volatile void* block, std::size_t size),
    void (*freed)(const volatile void* block));

namespace {

void OnMalloc(const volatile void*, std::size_t) {
    if (explorer::memoryBooks.counting) {
        ++explorer::memoryBooks.balance;
    }
}

void OnFree(const volatile void*) {
    if (explorer::memoryBooks.counting) {
        --explorer::memoryBooks.balance;
    }
}

[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);

}  // namespace

// What it finds in a worker process is a crash, and told with its state.
extern "C" const char* __asan_default_options() {
    return "abort_on_error=1:handle_sigill=0";
}

#else

#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace {

bool IsForArena() {
    return explorer::memoryBooks.counting && explorer::memoryBooks.arena != nullptr;
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    if (IsForArena()) {
        return explorer::memoryBooks.arena->Allocate(size);
    }
    void* block = __libc_malloc(size);
    if (explorer::memoryBooks.counting && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* calloc(std::size_t count, std::size_t size) {
    if (IsForArena()) {
        std::size_t bytes = 0;
        void* block = __builtin_mul_overflow(count, size, &bytes)
                          ? nullptr
                          : explorer::memoryBooks.arena->Allocate(bytes);
        return block != nullptr ? std::memset(block, 0, bytes) : nullptr;
    }
    void* block = __libc_calloc(count, size);
    if (explorer::memoryBooks.counting && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* realloc(void* old, std::size_t size) {
    if (explorer::Arena::Has(old) || (old == nullptr && IsForArena())) {
        void* moved = malloc(size);
        if (old != nullptr && moved != nullptr) {
            std::memcpy(moved, old, std::min(size, explorer::Arena::SizeOf(old)));
            explorer::Arena::Free(old);
        }
        return moved;
    }
    void* block = __libc_realloc(old, size);
    if (explorer::memoryBooks.counting && old == nullptr && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* memalign(std::size_t alignment, std::size_t size) {
    if (IsForArena()) {
        return explorer::memoryBooks.arena->Allocate(size, alignment);
    }
    void* block = __libc_memalign(alignment, size);
    if (explorer::memoryBooks.counting && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    if (block == nullptr) {
        return;
    }
    if (explorer::Arena::Has(block)) {
        explorer::Arena::Free(block);
        return;
    }
    if (explorer::memoryBooks.counting) {
        --explorer::memoryBooks.balance;
        if (explorer::memoryBooks.poisoning) {
            std::memset(block, 0xDF, malloc_usable_size(block));
        }
    }
    __libc_free(block);
}

// What a provider's static variables want to be done at the end: the C library would keep books of
// it in the arena, of states that are long gone. A process with an arena ends without that.
int __cxa_atexit(void (*end)(void*), void* what, void* library) {
    using Register = int (*)(void (*)(void*), void*, void*);
    static const auto inTheEnd = reinterpret_cast<Register>(dlsym(RTLD_NEXT, "__cxa_atexit"));
    return IsForArena() ? 0 : inTheEnd(end, what, library);
}

}  // extern "C"

#endif
