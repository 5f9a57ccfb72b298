// Trace storage: events go into the log record, in the order in which they were committed.
#include <cstring>
#include <set>
#include <string>
#include <string_view>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"
#include "platform/trace_storage.h"
#include "trace_sites.h"

std::atomic<bool> TIStorageManagerState::enabled = false;

namespace {

std::string event;
std::vector<const std::string*> sites;  // by id, behind BEFORE_SITES
std::set<std::string> everySite;
bool traced = false;

const char* Basename(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

// Payload bytes may be zero, which would end the entry.
const std::string& Shown(std::string_view bytes) {
    static std::string shown;
    shown.clear();
    for (const char byte : bytes) {
        if (byte == '\0' || byte == '\\') {
            shown += byte == '\0' ? "\\0" : "\\\\";
        } else {
            shown += byte;
        }
    }
    return shown;
}

}  // namespace

namespace explorer {

const std::string* KnownSite(const std::string& site) {
    return &*everySite.insert(site).first;
}

const std::vector<const std::string*>& TraceSites() {
    return sites;
}

void SetTraceSites(const std::vector<const std::string*>& known) {
    const PlatformMemory own;
    sites = known;
    traced = false;
}

bool HasTraced() {
    return traced;
}

}  // namespace explorer

namespace ht {

std::string TSDemangler::Demangle(const char* typeName) {
    return typeName != nullptr ? typeName : "";
}

void TCStorage::SaveLocation(TCStorage*, const TCCallLocation& location) {
    const explorer::PlatformMemory own;
    std::string site = std::string(Basename(location.file)) + ' ';
    if (explorer::tv().ShowsLine(Basename(location.file), location.function, location.line)) {
        site += std::to_string(location.line) + ' ';
    }
    site += std::string(location.function) + ' ' + location.format;
    for (const std::string& type : location.argumentTypes) {
        site += ' ' + type;
    }
    sites.push_back(explorer::KnownSite(site));
}

TCThread* TCStorage::ThreadHandle(TCStorage*) {
    return nullptr;
}

void* TCStorage::PrepareCallBuffer(TCStorage*, TCThread*, size_t payloadSize, int reserved,
                                   int siteId) {
    const explorer::PlatformMemory own;
    traced = true;
    const int site = siteId - explorer::BEFORE_SITES;
    const bool isKnown = site > 0 && static_cast<std::size_t>(site) <= sites.size();
    event = isKnown ? *sites[static_cast<std::size_t>(site - 1)] : "?";
    event += ' ' + std::to_string(reserved) + ' ';
    const std::size_t head = event.size();
    event.resize(head + payloadSize);
    return event.data() + head;
}

void TCStorage::Commit(TCStorage*, TCThread*) {
    const explorer::PlatformMemory own;
    explorer::tv().AppendTrace(Shown(event));
}

}  // namespace ht

TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}

int TIStorageManager::NewLocationId() {
    traced = true;
    return explorer::BEFORE_SITES + static_cast<int>(sites.size()) + 1;
}

ht::TCStorage* TIStorageManager::CurrentStorage() {
    return nullptr;
}
