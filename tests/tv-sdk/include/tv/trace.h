// Trace storage.
#ifndef TV_TRACE_H
#define TV_TRACE_H

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

namespace ht {

class TCThread;

struct TCCallLocation {
    const char* file;
    int line;
    int id;
    const char* function;
    const char* format;
    std::vector<std::string> argumentTypes;
};

struct TSDemangler {
    static std::string Demangle(const char* type_name);
};

class TCStorage {
  public:
    static void SaveLocation(TCStorage* storage, const TCCallLocation& location);
    static TCThread* ThreadHandle(TCStorage* storage);
    static void* PrepareCallBuffer(TCStorage* storage, TCThread* thread, size_t size, int reserved,
                                   int id);
    static void Commit(TCStorage* storage, TCThread* thread);
};

}  // namespace ht

struct TIStorageManagerState {
    static std::atomic<bool> enabled;
};

class TIStorageManager {
  public:
    static TIStorageManager& Instance();
    int NewLocationId();
    ht::TCStorage* CurrentStorage();
};

#endif
