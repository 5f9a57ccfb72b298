// What the platform hands out and the provider must give back: heap strings and handles.
#include <cstdlib>
#include <cstring>

#include "recorder.h"

// Built without sanitizers: free() comes here before they are ready. Where the process has one, it
// watches freed blocks better than this does.
extern "C" __attribute__((weak)) void __asan_init();

namespace recording {

namespace {

bool BlocksAreWatchedBySanitizer() {
    return __asan_init != nullptr;
}

constexpr int MAX_STRINGS = 128;

// Plain arrays: free() looks here and must not allocate.
struct HeapString {
    void* block;
    std::size_t size;
    const char* function;
    int freed;
};
HeapString strings[MAX_STRINGS];
int stringCount = 0;

struct Handle {
    platform::Object object = platform::Object::NOTHING;
    bool ended = false;
};
struct Handles {
    std::map<const void*, Handle> all;
    std::vector<std::string> misuse;
};
Handles& handles() {
    static Handles instance;
    return instance;
}

char* Keep(std::string_view text, const char* function);

// Whether this process's free() comes here at all: not when a tool has replaced it, nor in an
// executable without allocation_faults.cpp. Strings are not counted then.
bool FreeIsSeen() {
    static const bool seen = [] {
        std::free(Keep("probe", "probe"));
        const bool counted = strings[stringCount - 1].freed == 1;
        stringCount -= counted ? 0 : 1;
        return counted;
    }();
    return seen;
}

// Blocks whose debt is settled make room for new ones.
void ForgetFreedStrings() {
    int kept = 0;
    for (int i = 0; i < stringCount; ++i) {
        if (strings[i].freed == 1) {
            if (!BlocksAreWatchedBySanitizer()) {
                void* block = strings[i].block;
                strings[i].block = nullptr;
                std::free(block);
            }
        } else {
            strings[kept++] = strings[i];
        }
    }
    stringCount = kept;
}

char* Keep(std::string_view text, const char* function) {
    if (stringCount == MAX_STRINGS) {
        ForgetFreedStrings();
    }
    if (stringCount == MAX_STRINGS && !FreeIsSeen()) {
        stringCount = 0;
    }
    if (stringCount == MAX_STRINGS) {
        std::abort();  // that many strings, and nobody frees any
    }
    char* block = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(block, text.data(), text.size());
    block[text.size()] = '\0';
    strings[stringCount++] = {block, text.size() + 1, function, 0};
    return block;
}

}  // namespace

char* HandOut(const Call& call, std::string_view text) {
    if (call.Object() != platform::Object::TEXT) {
        std::abort();  // the list of calls says that something else comes back
    }
    return Keep(text, call.Function());
}

bool KeepFreed(void* block) {
    // The youngest first: with a sanitizer an address comes back.
    for (int i = stringCount - 1; i >= 0; --i) {
        if (strings[i].block == block) {
            ++strings[i].freed;
            if (BlocksAreWatchedBySanitizer()) {
                return false;
            }
            std::memset(block, 0xDD, strings[i].size);
            return true;
        }
    }
    return false;
}

void* NewHandle(const Call& call) {
    char* handle = new char;
    handles().all[handle] = {call.Object()};
    return handle;
}

bool IsHandle(const Call& call, const void* handle) {
    const auto found = handles().all.find(handle);
    return found != handles().all.end() && found->second.object == call.Object() &&
           !found->second.ended;
}

bool EndHandle(const Call& call, void* handle) {
    if (!IsHandle(call, handle)) {
        handles().misuse.push_back(std::string(platform::InWords(call.Object())) +
                                   (handle == nullptr ? ": null" : ": not a live handle") +
                                   " given back");
        return false;
    }
    handles().all[handle].ended = true;
    return true;
}

std::vector<std::string> Debts() {
    PlatformCode inside;
    std::vector<std::string> debts = handles().misuse;
    for (const auto& [address, handle] : handles().all) {
        if (!handle.ended) {
            debts.push_back(std::string(platform::InWords(handle.object)) + ": not given back");
        }
    }
    for (int i = 0; FreeIsSeen() && i < stringCount; ++i) {
        if (strings[i].freed == 0) {
            debts.push_back(std::string(strings[i].function) + ": string not freed");
        } else if (strings[i].freed > 1) {
            debts.push_back(std::string(strings[i].function) + ": string freed twice");
        }
    }
    return debts;
}

void ResetDebts() {
    FreeIsSeen();
    for (const auto& [address, handle] : handles().all) {
        delete static_cast<const char*>(address);
    }
    handles() = Handles();
    ForgetFreedStrings();
    stringCount = 0;
}

}  // namespace recording
