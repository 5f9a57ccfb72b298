// How a platform call is served: by the TV that is on, unless a fault was asked for, and without
// letting an exception out.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include "tv_impl.h"

namespace vtv {

inline constexpr int kFailed = -1;

// Stops the program with the call's name when no TV is on.
Tv::Impl& Require(const char* function);
// Whether the call is to fail; *result is what an int call then returns. Sleeps for a slow one.
bool Faulted(Tv::Impl& tv, const char* function, int* result);
void ReportException(Tv::Impl& tv, const char* function, const std::exception& exception);

// Tells a host that records reads what a call has read; absent when the read failed. The subject is
// the key, the consent item, the path, ...; may be null.
void NoteRead(const char* function, const char* subject, std::optional<Value> value);
bool RecordingReads();

// While an Experiment lives: whether a call works that was told to fail, and what a call finds in
// place of the TV's own; null where it is not substituted. Whoever acts on the TV, or records
// something, does nothing then.
bool Experimenting();
bool IsMended(const std::string& function);
const Read* SubstituteFor(const char* function, const char* subject);
bool IsSilenced(const char* function);

// A failure that whoever pressed wants to hear of; see Tv::TakeFailures().
void NoteFailure(Tv::Impl& tv, const std::string& text);
// The first stands in Tv::MachineFailure().
void NoteMachineFailure(const std::string& why);

// For calls that return an int error.
template <typename Body>
int Serve(const char* function, Body body) {
    Tv::Impl& tv = Require(function);
    if (IsSilenced(function)) {
        return 0;
    }
    int result = kFailed;
    try {
        return Faulted(tv, function, &result) ? result : body(tv);
    } catch (const std::exception& error) {
        ReportException(tv, function, error);
        return kFailed;
    }
}

// For the others: what they return when they fail.
template <typename T, typename Body>
T ServeOr(T failed, const char* function, Body body) {
    Tv::Impl& tv = Require(function);
    if (IsSilenced(function)) {
        return failed;
    }
    int ignored = 0;
    try {
        return Faulted(tv, function, &ignored) ? failed : body(tv);
    } catch (const std::exception& error) {
        ReportException(tv, function, error);
        return failed;
    }
}

// For calls that read one thing of the TV. The body returns an int error and stores what it found;
// failed is what the platform says when there is no such thing.
template <typename T, typename Body>
int ServeRead(const char* function, const char* subject, int failed, T* found, Body body) {
    int result = failed;
    if (const Read* substitute = SubstituteFor(function, subject)) {
        if (substitute->value && std::holds_alternative<T>(*substitute->value)) {
            *found = std::get<T>(*substitute->value);
            result = 0;
        }
    } else {
        result = Serve(function, body);
    }
    if (RecordingReads()) {
        NoteRead(function, subject, result == 0 ? std::optional<Value>(*found) : std::nullopt);
    }
    return result;
}

}  // namespace vtv
