// Trace storage: call sites and events, appended to the TV's trace file while tracing is on.
#include <cxxabi.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>

#include "platform/trace_storage.h"
#include "serve.h"
#include "trace_format.h"
#include "tv_impl.h"

namespace ht {

// The event that a thread is writing.
class TCThread {
  public:
    std::string record;
    size_t payload = 0;
};

}  // namespace ht

namespace vtv {

namespace {

Tv::Impl* tracedTv = nullptr;
int nextLocationId = 0;
std::map<std::string, std::string> sites;  // of this process: what each says, and its last record

uint32_t Session() {
    static const auto session =
        static_cast<uint32_t>(Now().time_since_epoch().count() & 0xffffffff);
    return session;
}

std::string Header(TraceRecordKind kind, size_t bodySize, int siteId) {
    TraceRecordHeader header{};
    header.magic = kTraceMagic;
    header.size = static_cast<uint32_t>(bodySize);
    header.kind = kind;
    header.pid = static_cast<uint32_t>(getpid());
    header.thread = static_cast<uint32_t>(gettid());
    header.session = Session();
    header.time = static_cast<uint64_t>(Now().time_since_epoch().count());
    header.siteId = static_cast<uint32_t>(siteId);
    return std::string(reinterpret_cast<const char*>(&header), sizeof header);
}

void Append(const std::string& record) {
    if (tracedTv == nullptr) {
        return;
    }
    const int fd = tracedTv->trace.Descriptor();
    std::string text;
    if (tracedTv->trace.IsAnother()) {
        // A call site is told of once, by a process that may go on for long.
        for (const auto& [what, site] : sites) {
            text += site;
        }
    }
    text += record;
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        tracedTv->LogLine(kError, tracedTv->dir + "/" + kTraceFile.name +
                                      ": a trace record is lost: " + std::strerror(errno));
    }
}

void AppendNumber(std::string* body, uint32_t number) {
    body->append(reinterpret_cast<const char*>(&number), sizeof number);
}

void AppendText(std::string* body, std::string_view text) {
    AppendNumber(body, static_cast<uint32_t>(text.size()));
    body->append(text);
}

}  // namespace

void UseTraceOf(Tv::Impl* tv) {
    tracedTv = tv;
    if (tv == nullptr) {
        TIStorageManagerState::enabled = false;
    }
}

void FollowTraceSwitch(Tv::Impl& tv) {
    if (&tv == tracedTv) {
        TIStorageManagerState::enabled = !Experimenting() && tv.StateOr<bool>(kTraceSwitch, false);
    }
}

bool Tv::TraceEnabled() const {
    return impl_->StateOr<bool>(kTraceSwitch, false);
}

void Tv::SetTraceEnabled(bool enabled) {
    impl_->state.Write(kTraceSwitch, enabled);
    impl_->switches.Announce();
    FollowTraceSwitch(*impl_);
}

void Tv::ClearTrace() {
    kTraceFile.Remove(impl_->dir);
}

}  // namespace vtv

VTV_EXPORT std::atomic<bool> TIStorageManagerState::enabled{false};

namespace ht {

VTV_EXPORT std::string TSDemangler::Demangle(const char* typeName) {
    int status = 0;
    char* name = abi::__cxa_demangle(typeName, nullptr, nullptr, &status);
    std::string text = status == 0 && name != nullptr ? name : typeName;
    std::free(name);
    return text;
}

VTV_EXPORT void TCStorage::SaveLocation(TCStorage*, const TCCallLocation& location) {
    std::string body;
    vtv::AppendNumber(&body, static_cast<uint32_t>(location.line));
    for (const char* text : {location.file, location.function, location.format}) {
        vtv::AppendText(&body, text != nullptr ? text : "");
    }
    vtv::AppendNumber(&body, static_cast<uint32_t>(location.argumentTypes.size()));
    for (const std::string& type : location.argumentTypes) {
        vtv::AppendText(&body, type);
    }
    const std::string record =
        vtv::Header(vtv::TraceRecordKind::kLocation, body.size(), location.id) + body;
    vtv::Append(record);
    vtv::sites[body] = record;
}

VTV_EXPORT TCThread* TCStorage::ThreadHandle(TCStorage*) {
    thread_local TCThread thread;
    return &thread;
}

VTV_EXPORT void* TCStorage::PrepareCallBuffer(TCStorage*, TCThread* thread, size_t payloadSize,
                                              int /*reserved*/, int siteId) {
    return vtv::ServeOr<void*>(nullptr, "PrepareCallBuffer", [&](vtv::Tv::Impl&) -> void* {
        if (thread == nullptr) {
            return nullptr;
        }
        thread->record = vtv::Header(vtv::TraceRecordKind::kEvent, payloadSize, siteId);
        thread->payload = thread->record.size();
        // Never an empty buffer: an event without arguments has a place too.
        thread->record.resize(thread->payload + payloadSize + 1);
        return thread->record.data() + thread->payload;
    });
}

VTV_EXPORT void TCStorage::Commit(TCStorage*, TCThread* thread) {
    if (thread == nullptr || thread->record.empty()) {
        return;
    }
    thread->record.pop_back();
    vtv::Append(thread->record);
    thread->record.clear();
}

}  // namespace ht

VTV_EXPORT TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}

VTV_EXPORT int TIStorageManager::NewLocationId() {
    return ++vtv::nextLocationId;
}

// There is one storage, the file; its address only has to be one.
VTV_EXPORT ht::TCStorage* TIStorageManager::CurrentStorage() {
    static ht::TCStorage storage;
    return &storage;
}
