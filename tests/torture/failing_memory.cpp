// Preloaded into a program: an allocation of it fails.
//
// FAILING_ALLOCATION is the number of the one that fails; with a "+" behind it, so does each that
// follows. How many there were is written into the file that ALLOCATIONS_FILE names.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

long count = 0;
long failing = -1;  // unknown before the first
bool fromThenOn = false;

bool Fails() {
    if (failing < 0) {
        const char* const text = getenv("FAILING_ALLOCATION");
        failing = text != nullptr ? atol(text) : 0;
        fromThenOn = text != nullptr && strchr(text, '+') != nullptr;
    }
    ++count;
    const bool fails = failing > 0 && (count == failing || (fromThenOn && count > failing));
    if (fails) {
        errno = ENOMEM;
    }
    return fails;
}

struct Teller {
    ~Teller() {
        const char* const name = getenv("ALLOCATIONS_FILE");
        const int file =
            name != nullptr ? open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600) : -1;
        if (file >= 0) {
            dprintf(file, "%ld\n", count);
            close(file);
        }
    }
} teller;

}  // namespace

extern "C" {

void* malloc(size_t size) {
    return Fails() ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) {
    return Fails() ? nullptr : __libc_realloc(block, size);
}

void* memalign(size_t alignment, size_t size) {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    if (Fails()) {
        return ENOMEM;
    }
    *block = __libc_memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

}  // extern "C"
