#include "recorder.h"

#include <set>

#include "record_file.h"
#include "tv_recording.h"

namespace host {

Recorder::Recorder(const std::string& file, const vtv::Tv& tv,
                   const std::function<Recording::Step()>& step) {
    std::set<std::string> files;
    if (!file.empty()) {
        files.insert(RecordFile::PathOf(file));
    }
    const std::string others = RecordingOf(tv);
    if (!others.empty()) {
        files.insert(others);
    }
    const Recording::Step done = files.empty() ? Recording::Step() : step();
    if (done.empty()) {
        return;
    }
    for (const std::string& one : files) {
        try {
            recordings_.emplace_back(one, tv, done);
        } catch (const vtv::Error& error) {
            if (one != others) {
                throw;
            }
            throw vtv::Error(error.kind(),
                             std::string(error.what()) +
                                 " The TV is being recorded into it; end that: vtv record stop");
        }
    }
}

void Recorder::Done() {
    for (Recording& recording : recordings_) {
        recording.Done();
    }
}

void Recorder::Done(const PressResult& result) {
    for (Recording& recording : recordings_) {
        recording.Done(result);
    }
}

Recording::Step StepOf(const Press& press) {
    Recording::Step step = {{"press", std::string(press.item->name)}};
    if (press.choose) {
        step["choose"] = *press.choose;
    }
    if (press.answer != Answer::kNone) {
        step["answer"] = std::string(press.answer == Answer::kOk ? "ok" : "cancel");
    }
    return step;
}

}  // namespace host
