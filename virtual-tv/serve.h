// How a platform call is served: by the TV that is on, unless a fault was asked for, and without
// letting an exception out.
#pragma once

#include <exception>
#include <string>

#include "tv_impl.h"

namespace vtv {

inline constexpr int kFailed = -1;

// Stops the program with the call's name when no TV is on.
Tv::Impl& Require(const char* function);
// Whether the call is to fail; *result is what an int call then returns. Sleeps for a slow one.
bool Faulted(Tv::Impl& tv, const char* function, int* result);
void ReportException(Tv::Impl& tv, const char* function, const char* message);

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

}  // namespace vtv
