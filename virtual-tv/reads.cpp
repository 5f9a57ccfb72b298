// What platform calls read, collected for a host that wants to know what an answer was made of.
#include <utility>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

bool recording = false;
std::vector<Read> reads;

}  // namespace

void StartRecordingReads() {
    reads.clear();
    recording = true;
}

std::vector<Read> StopRecordingReads() {
    recording = false;
    return std::exchange(reads, {});
}

void NoteRead(const char* function, const char* subject, std::optional<Value> value) {
    if (recording) {
        reads.push_back({function, subject != nullptr ? subject : "", std::move(value)});
    }
}

bool RecordingReads() {
    return recording;
}

}  // namespace vtv
