#include "tv_recording.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "record_file.h"
#include "recording.h"
#include "virtual-tv/model/text_file.h"

namespace host {

namespace {

// Holds the name of the scenario's file.
std::string NoteOf(const vtv::Tv& tv) {
    return tv.Dir() + "/recording";
}

[[noreturn]] void FailWith(const vtv::Tv& tv, const char* what) {
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     NoteOf(tv) + ": " + what + ": " + std::strerror(errno) + ".");
}

}  // namespace

std::string RecordingOf(const vtv::Tv& tv) {
    return vtv::IsThere(NoteOf(tv)) ? vtv::ReadTextFile(NoteOf(tv)) : "";
}

void StartRecording(const vtv::Tv& tv, const std::string& file) {
    const std::string path = RecordFile::PathOf(file);
    if (RecordingOf(tv).empty()) {
        unlink(NoteOf(tv).c_str());  // of a process that was killed before it had begun
    }
    // Whoever makes the note records; nobody else can.
    const int note =
        open(NoteOf(tv).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (note < 0 && errno == EEXIST) {
        throw vtv::Error(vtv::ErrorKind::kNo, "The TV is being recorded into " + RecordingOf(tv) +
                                                  ". End that: vtv record stop");
    }
    try {
        if (note < 0) {
            FailWith(tv, "cannot be written");
        }
        Recording::Begin(path, tv);
        if (write(note, path.data(), path.size()) != static_cast<ssize_t>(path.size())) {
            FailWith(tv, "cannot be written");
        }
    } catch (...) {
        if (note >= 0) {
            close(note);
            unlink(NoteOf(tv).c_str());
        }
        throw;
    }
    close(note);
}

std::string StopRecording(const vtv::Tv& tv) {
    std::string file = RecordingOf(tv);
    if (file.empty()) {
        throw vtv::Error(vtv::ErrorKind::kNo,
                         "The TV is not being recorded. Begin: vtv record start FILE");
    }
    if (unlink(NoteOf(tv).c_str()) != 0) {
        FailWith(tv, "cannot be removed");
    }
    return file;
}

}  // namespace host
