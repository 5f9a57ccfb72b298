// Trace storage: events go into the log record, in the order in which they were committed.
#include <string>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"
#include "platform/trace_storage.h"

std::atomic<bool> TIStorageManagerState::enabled = false;

namespace {

std::string event;
std::vector<std::string> sites;  // by id, from 1

}  // namespace

namespace ht {

std::string TSDemangler::Demangle(const char* typeName) {
    return typeName != nullptr ? typeName : "";
}

void TCStorage::SaveLocation(TCStorage*, const TCCallLocation& location) {
    const explorer::PlatformMemory own;
    std::string site =
        std::to_string(location.line) + ' ' + location.function + ' ' + location.format;
    for (const std::string& type : location.argumentTypes) {
        site += ' ' + type;
    }
    sites.resize(static_cast<std::size_t>(location.id));
    sites.back() = site;
}

TCThread* TCStorage::ThreadHandle(TCStorage*) {
    return nullptr;
}

void* TCStorage::PrepareCallBuffer(TCStorage*, TCThread*, size_t payloadSize, int reserved,
                                   int siteId) {
    const explorer::PlatformMemory own;
    const bool isKnown = siteId > 0 && static_cast<std::size_t>(siteId) <= sites.size();
    event = (isKnown ? sites[static_cast<std::size_t>(siteId - 1)] : "?") + ' ' +
            std::to_string(reserved) + ' ';
    const std::size_t head = event.size();
    event.resize(head + payloadSize);
    return event.data() + head;
}

void TCStorage::Commit(TCStorage*, TCThread*) {
    const explorer::PlatformMemory own;
    // Payload bytes may be zero, which would end the entry.
    std::string shown;
    for (const char byte : event) {
        shown += byte != '\0' ? byte : '0';
    }
    explorer::tv().AppendTrace(shown);
}

}  // namespace ht

TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}

int TIStorageManager::NewLocationId() {
    return static_cast<int>(sites.size()) + 1;
}

ht::TCStorage* TIStorageManager::CurrentStorage() {
    return nullptr;
}
