#include "tv_recording.h"

#include "record_file.h"
#include "recording.h"
#include "virtual-tv/recording_note.h"

namespace host {

std::string RecordingOf(const vtv::Tv& tv) {
    return vtv::RecordingNote(tv.Dir()).Read();
}

void StartRecording(const vtv::Tv& tv, const std::string& file) {
    const std::string path = RecordFile::PathOf(file);
    vtv::RecordingNote(tv.Dir()).Write(path, [&] { Recording::Begin(path, tv); });
}

std::string StopRecording(const vtv::Tv& tv) {
    std::string file = RecordingOf(tv);
    if (file.empty()) {
        throw vtv::Error(vtv::ErrorKind::kNo,
                         "The TV is not being recorded. Begin: vtv record start FILE");
    }
    vtv::RecordingNote(tv.Dir()).Remove();
    return file;
}

}  // namespace host
