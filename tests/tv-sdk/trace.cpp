#include <tv/trace.h>

std::atomic<bool> TIStorageManagerState::enabled{false};

namespace ht {
std::string TSDemangler::Demangle(const char* type_name) {
    return type_name;
}
void TCStorage::SaveLocation(TCStorage* storage, const TCCallLocation& location) {}
TCThread* TCStorage::ThreadHandle(TCStorage* storage) {
    return nullptr;
}
void* TCStorage::PrepareCallBuffer(TCStorage* storage, TCThread* thread, size_t size, int reserved,
                                   int id) {
    return nullptr;
}
void TCStorage::Commit(TCStorage* storage, TCThread* thread) {}
}  // namespace ht

TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}
int TIStorageManager::NewLocationId() {
    return 0;
}
ht::TCStorage* TIStorageManager::CurrentStorage() {
    return nullptr;
}
