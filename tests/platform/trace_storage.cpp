// The trace storage. An event gives these lines, with the site's line number for its id:
//     trace site 676 void setnode_int_voice_wake_up(int)     once, when the site is registered
//     trace prepare 676 8
//     trace commit 676
#include "platform/trace_storage.h"

#include <cxxabi.h>

#include <cstdlib>

#include "recorder.h"

std::atomic<bool> TIStorageManagerState::enabled{false};

namespace recording {

namespace {

struct Storage {
    std::map<int, CallSite> sites;
    std::vector<TraceEvent> events;
    std::optional<TraceEvent> prepared;
    std::string buffer;
    int lastId = 0;
};

Storage& storage() {
    static Storage instance;
    return instance;
}

ht::TCStorage* CurrentStorageHandle() {
    static char handle;
    return reinterpret_cast<ht::TCStorage*>(&handle);
}

ht::TCThread* ThreadOfProcess() {
    static char handle;
    return reinterpret_cast<ht::TCThread*>(&handle);
}

std::string SiteName(int id) {
    const auto site = storage().sites.find(id);
    return site != storage().sites.end() ? std::to_string(site->second.line)
                                         : "unknown site " + std::to_string(id);
}

}  // namespace

void SetTracing(bool on) {
    TIStorageManagerState::enabled = on;
}

const std::map<int, CallSite>& CallSites() {
    return storage().sites;
}

const std::vector<TraceEvent>& TraceEvents() {
    return storage().events;
}

void ResetTrace() {
    SetTracing(false);
    storage().events.clear();
    storage().prepared.reset();
}

}  // namespace recording

using namespace recording;

TIStorageManager& TIStorageManager::Instance() {
    Call call(Call::Unwritten(), "TIStorageManager::Instance");
    static TIStorageManager manager;
    return manager;
}

int TIStorageManager::NewLocationId() {
    Call call(Call::Unwritten(), "TIStorageManager::NewLocationId");
    return ++storage().lastId;
}

ht::TCStorage* TIStorageManager::CurrentStorage() {
    Call call(Call::Unwritten(), "TIStorageManager::CurrentStorage");
    return call.Fails() ? nullptr : CurrentStorageHandle();
}

std::string ht::TSDemangler::Demangle(const char* typeName) {
    Call call(Call::Unwritten(), "TSDemangler::Demangle");
    if (call.Fails() || typeName == nullptr) {
        return "";
    }
    int status = 0;
    char* name = abi::__cxa_demangle(typeName, nullptr, nullptr, &status);
    std::string text = name != nullptr ? name : typeName;
    std::free(name);
    return text;
}

void ht::TCStorage::SaveLocation(TCStorage* target, const TCCallLocation& location) {
    Call call(Call::Unwritten(), "TCStorage::SaveLocation");
    if (call.Fails()) {
        return;
    }
    RecordLine("trace site " + std::to_string(location.line) + ' ' + Printable(location.function) +
               (target == CurrentStorageHandle() ? "" : " [not the current storage]"));
    storage().sites[location.id] = {Printable(location.file),
                                    location.line,
                                    location.id,
                                    Printable(location.function),
                                    Printable(location.format),
                                    location.argumentTypes};
}

ht::TCThread* ht::TCStorage::ThreadHandle(TCStorage*) {
    Call call(Call::Unwritten(), "TCStorage::ThreadHandle");
    return call.Fails() ? nullptr : ThreadOfProcess();
}

void* ht::TCStorage::PrepareCallBuffer(TCStorage* target, TCThread* thread, size_t payloadSize,
                                       int reserved, int siteId) {
    Call call(Call::Unwritten(), "TCStorage::PrepareCallBuffer");
    RecordLine("trace prepare " + SiteName(siteId) + ' ' + std::to_string(payloadSize));
    if (call.Fails() || target != CurrentStorageHandle() || thread != ThreadOfProcess()) {
        return nullptr;
    }
    // Exactly as long as asked for, and never null: a sanitizer sees a byte too much.
    std::string& buffer = storage().buffer;
    buffer.assign(payloadSize, '?');
    buffer.shrink_to_fit();
    storage().prepared = TraceEvent{siteId, reserved, {}};
    return buffer.data();
}

void ht::TCStorage::Commit(TCStorage*, TCThread*) {
    Call call(Call::Unwritten(), "TCStorage::Commit");
    if (!storage().prepared) {
        RecordLine("trace commit of nothing");
        return;
    }
    TraceEvent event = *storage().prepared;
    event.payload = storage().buffer;
    storage().prepared.reset();
    RecordLine("trace commit " + SiteName(event.siteId));
    storage().events.push_back(std::move(event));
}
