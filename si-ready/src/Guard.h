// The exception guard of an entry point.
#pragma once

#include <exception>

#include "Log.h"

// It follows a function-try-block and returns its arguments:
//     int get_int(...) try { ... } NEUTRAL_ON_EXCEPTION(0)
#define NEUTRAL_ON_EXCEPTION(...)                     \
    catch (const std::exception& exception) {         \
        LOG_ERROR("[EXCEPTION]%s", exception.what()); \
        return __VA_ARGS__;                           \
    }
