// How a platform call is served: by the TV that is on, unless a fault was asked for, and without
// letting an exception out.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include "tv_impl.h"

namespace vtv {

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

// What came of a call: whether it did its work, and what it returns when it is one that returns 0
// or an int error.
struct Served {
    bool isDone;
    int result;
};

// The body tells whether the TV could do it; no is what the platform says when it could not, where
// that is another result than the call's failure.
template <typename Body>
Served Try(const char* function, Body body, std::optional<int> no) {
    Tv::Impl& tv = Require(function);
    if (IsSilenced(function)) {
        return {true, 0};
    }
    const int failure = platform::FailureOf(function);
    int result = failure;
    try {
        if (Faulted(tv, function, &result)) {
            return {false, result};
        }
        return body(tv) ? Served{true, 0} : Served{false, no.value_or(failure)};
    } catch (const std::exception& error) {
        ReportException(tv, function, error);
        return {false, failure};
    }
}

// For calls that return 0 or an int error.
template <typename Body>
int Serve(const char* function, Body body) {
    return Try(function, body, std::nullopt).result;
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

// For calls that read one thing of the TV. The body stores what it found and tells whether there is
// such a thing; no as above.
template <typename T, typename Body>
Served TryRead(const char* function, const char* subject, T* found, Body body,
               std::optional<int> no = std::nullopt) {
    Served served{false, no.value_or(platform::FailureOf(function))};
    if (const Read* substitute = SubstituteFor(function, subject)) {
        if (substitute->value && std::holds_alternative<T>(*substitute->value)) {
            *found = std::get<T>(*substitute->value);
            served = {true, 0};
        }
    } else {
        served = Try(function, body, no);
    }
    if (RecordingReads()) {
        NoteRead(function, subject, served.isDone ? std::optional<Value>(*found) : std::nullopt);
    }
    return served;
}

template <typename T, typename Body>
int ServeRead(const char* function, const char* subject, T* found, Body body,
              std::optional<int> no = std::nullopt) {
    return TryRead(function, subject, found, body, no).result;
}

}  // namespace vtv
