// What platform calls read, collected for a host that wants to know what an answer was made of, and
// what they would read if the TV were another.
#include <algorithm>
#include <string_view>
#include <utility>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

bool recording = false;
std::vector<Read> recorded;
const std::vector<Read>* substitutes = nullptr;

}  // namespace

Experiment::Experiment(std::vector<Read> reads) : reads_(std::move(reads)), outer_(substitutes) {
    substitutes = &reads_;
    FollowTraceSwitch(Require("an experiment"));
}

Experiment::~Experiment() {
    substitutes = outer_;
    if (outer_ == nullptr && Current() != nullptr) {
        FollowTraceSwitch(Current()->impl());
    }
}

bool Experimenting() {
    return substitutes != nullptr;
}

const Read* SubstituteFor(const char* function, const char* subject) {
    if (substitutes == nullptr) {
        return nullptr;
    }
    const std::string_view about = subject != nullptr ? subject : "";
    const auto found = std::find_if(
        substitutes->begin(), substitutes->end(),
        [&](const Read& read) { return read.function == function && read.subject == about; });
    return found != substitutes->end() ? &*found : nullptr;
}

bool IsSilenced(const char* function) {
    if (substitutes == nullptr) {
        return false;
    }
    const platform::Does does = WhatDoes(function);
    return does == platform::Does::CHANGES || does == platform::Does::RECORDS;
}

void StartRecordingReads() {
    recorded.clear();
    recording = true;
}

std::vector<Read> StopRecordingReads() {
    recording = false;
    return std::exchange(recorded, {});
}

void NoteRead(const char* function, const char* subject, std::optional<Value> value) {
    if (recording) {
        recorded.push_back({function, subject != nullptr ? subject : "", std::move(value)});
    }
}

bool RecordingReads() {
    return recording;
}

}  // namespace vtv
