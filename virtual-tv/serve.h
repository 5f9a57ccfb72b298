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
void ReportException(Tv::Impl& tv, const char* function, const char* message);

// Tells a host that records reads what a call has read; absent when the read failed. The subject is
// the key, the consent item, the path, ...; may be null.
void NoteRead(const char* function, const char* subject, std::optional<Value> value);
bool RecordingReads();

// For calls that return an int error.
template <typename Body>
int Serve(const char* function, Body body) {
    Tv::Impl& tv = Require(function);
    int result = kFailed;
    try {
        return Faulted(tv, function, &result) ? result : body(tv);
    } catch (const std::exception& error) {
        ReportException(tv, function, error.what());
        return kFailed;
    }
}

// For the others: what they return when they fail.
template <typename T, typename Body>
T ServeOr(T failed, const char* function, Body body) {
    Tv::Impl& tv = Require(function);
    int ignored = 0;
    try {
        return Faulted(tv, function, &ignored) ? failed : body(tv);
    } catch (const std::exception& error) {
        ReportException(tv, function, error.what());
        return failed;
    }
}

// An int result of a read that stores what it found; passes the result on.
template <typename T>
int NotedRead(const char* function, const char* subject, int result, const T* found) {
    if (RecordingReads()) {
        const bool read = result == 0 && found != nullptr;
        NoteRead(function, subject, read ? std::optional<Value>(*found) : std::nullopt);
    }
    return result;
}

}  // namespace vtv
