// Trace storage: call sites are saved once under an id; events refer to the id.
#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

struct TIStorageManagerState {
    static std::atomic<bool> enabled;
};

namespace ht {

class TCThread;  // one per recording thread; opaque

struct TCCallLocation {
    const char* file;
    int line;
    int id;
    const char* function;
    const char* format;
    std::vector<std::string> argumentTypes;  // empty for an event without arguments
};

struct TSDemangler {
    static std::string Demangle(const char* typeName);
};

class TCStorage {
  public:
    // The location lives during the call. Its three texts are constants of the library that records
    // and live until that is unloaded; a storage that reads them later than that copies them.
    static void SaveLocation(TCStorage* storage, const TCCallLocation& location);
    static TCThread* ThreadHandle(TCStorage* storage);
    // Null: the event is dropped. The buffer is the storage's; Commit ends its use.
    static void* PrepareCallBuffer(TCStorage* storage, TCThread* thread, size_t payloadSize,
                                   int reserved, int siteId);
    static void Commit(TCStorage* storage, TCThread* thread);
};

}  // namespace ht

class TIStorageManager {
  public:
    static TIStorageManager& Instance();
    int NewLocationId();
    ht::TCStorage* CurrentStorage();
};
