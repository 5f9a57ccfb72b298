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
const Experiment* experiment = nullptr;

}  // namespace

Experiment::Experiment(std::vector<Read> reads, std::vector<std::string> mended)
    : reads_(std::move(reads)), mended_(std::move(mended)), outer_(experiment) {
    experiment = this;
    FollowTraceSwitch(Require("an experiment"));
}

Experiment::~Experiment() {
    experiment = outer_;
    if (outer_ == nullptr && Current() != nullptr) {
        FollowTraceSwitch(Current()->impl());
    }
}

bool Experiment::Mends(const std::string& function) const {
    return std::find(mended_.begin(), mended_.end(), function) != mended_.end();
}

bool Experimenting() {
    return experiment != nullptr;
}

bool IsMended(const std::string& function) {
    return experiment != nullptr && experiment->Mends(function);
}

const Read* SubstituteFor(const char* function, const char* subject) {
    if (experiment == nullptr) {
        return nullptr;
    }
    const std::string_view about = subject != nullptr ? subject : "";
    const std::vector<Read>& reads = experiment->Reads();
    const auto found = std::find_if(reads.begin(), reads.end(), [&](const Read& read) {
        return read.function == function && read.subject == about;
    });
    return found != reads.end() ? &*found : nullptr;
}

bool IsSilenced(const char* function) {
    if (experiment == nullptr) {
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
