// Preloaded into a program: an allocation of it fails.
//
// The allocations of the program and of all processes that it starts are counted together, in the
// file that ALLOCATIONS_FILE names, which holds zeros at first. FAILING_ALLOCATION is the number of
// the one that fails; with a "+" behind it, so does each that follows in the same process.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

struct Books {
    std::atomic<int64_t> count;
    std::atomic<int64_t> struck;  // the process
};
static_assert(std::atomic<int64_t>::is_always_lock_free);  // then processes can share it

Books* books = nullptr;
int64_t failing = 0;
bool fromThenOn = false;

// A process that cannot keep its books must not be taken for one that was spared.
void Open() {
    const char* const name = getenv("ALLOCATIONS_FILE");
    const char* const which = getenv("FAILING_ALLOCATION");
    const int file = name != nullptr && which != nullptr ? open(name, O_RDWR | O_CLOEXEC) : -1;
    void* const memory =
        file >= 0 ? mmap(nullptr, sizeof(Books), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
                  : MAP_FAILED;
    if (memory == MAP_FAILED) {
        abort();
    }
    close(file);
    failing = atoll(which);
    fromThenOn = strchr(which, '+') != nullptr;
    books = static_cast<Books*>(memory);
}

bool Fails() {
    if (books == nullptr) {
        Open();
    }
    bool fails = ++books->count == failing;
    if (fails) {
        books->struck = getpid();
    } else if (fromThenOn) {
        fails = books->struck == getpid();
    }
    if (fails) {
        errno = ENOMEM;
    }
    return fails;
}

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
