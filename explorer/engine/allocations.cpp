// The program's malloc and its kin: the C library's, with books kept. For executables only.
// Sanitizers bring their own, and find more than these books do.
#if !defined(__SANITIZE_ADDRESS__)

#include <malloc.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "memory.h"

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    void* block = __libc_malloc(size);
    if (explorer::memoryBooks.counting && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* calloc(std::size_t count, std::size_t size) {
    void* block = __libc_calloc(count, size);
    if (explorer::memoryBooks.counting && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* realloc(void* old, std::size_t size) {
    void* block = __libc_realloc(old, size);
    if (explorer::memoryBooks.counting && old == nullptr && block != nullptr) {
        ++explorer::memoryBooks.balance;
    }
    return block;
}

void* memalign(std::size_t alignment, std::size_t size) {
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
    if (explorer::memoryBooks.counting) {
        --explorer::memoryBooks.balance;
        if (explorer::memoryBooks.poisoning) {
            std::memset(block, 0xDF, malloc_usable_size(block));
        }
    }
    __libc_free(block);
}

}  // extern "C"

#endif
