// The trace file: records one after the other, each appended in one write, so that many processes
// share the file. All numbers are little-endian and of fixed width.
#pragma once

#include <cstdint>

namespace vtv {

// The version is that of a record: a newer program adds to the file of an older one.
inline constexpr int kTraceVersion = 1;
inline constexpr uint32_t kTraceMagic = 0x30525456 + (uint32_t{kTraceVersion} << 24);  // "VTR1"

enum class TraceRecordKind : uint32_t { kLocation = 1, kEvent = 2 };

struct TraceRecordHeader {
    uint32_t magic;
    uint32_t size;  // of what follows the header
    TraceRecordKind kind;
    uint32_t pid;
    uint32_t thread;
    uint32_t session;  // tells processes apart that had the same number
    uint64_t time;     // microseconds since 1970
    uint32_t siteId;
    uint32_t reserved;
};
static_assert(sizeof(TraceRecordHeader) == 40);

// A location's body: line (4 bytes), then file, function and format, each as length (4 bytes) and
// characters, then the number of argument types (4 bytes) and the types likewise.
// An event's body: the payload.

}  // namespace vtv
