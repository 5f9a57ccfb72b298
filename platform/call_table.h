// The calls of calls.h as a table, for those who serve them or keep books of what is handed out.
#pragma once

#include <cstdlib>
#include <string_view>

#include "calls.h"

namespace platform {

enum class Does { ASKS, CHANGES, ENDS, RECORDS };
enum class Object { NOTHING, TEXT, REQUEST, BUNDLE, PACKAGE, SPEECH, CONTEXT };

struct DescribedCall {
    std::string_view name;
    Does does;
    Object object;
    int failure;  // 0 is also the null of a pointer, and of a call that returns nothing
};

// What the calls for features return of one that the TV does not have, or has of another type; for
// a null, too.
inline constexpr int NO_SUCH_FEATURE = -22;

inline constexpr DescribedCall CALLS[] = {
#define CALL(result, name, parameters, failure, does, object) \
    {#name, Does::does, Object::object, int{failure}},
    SI_PLATFORM_CALLS(CALL)
#undef CALL
};

// Null for what is no call of the list.
constexpr const DescribedCall* Find(std::string_view name) {
    for (const DescribedCall& call : CALLS) {
        if (call.name == name) {
            return &call;
        }
    }
    return nullptr;
}

// What the call returns when it fails; only of a call of the list.
constexpr int FailureOf(std::string_view name) {
    const DescribedCall* call = Find(name);
    if (call == nullptr) {
        std::abort();  // it fails in a way of its own
    }
    return call->failure;
}

// NOTHING for what is no call of the list, too.
constexpr Object ObjectOf(std::string_view name) {
    const DescribedCall* call = Find(name);
    return call != nullptr ? call->object : Object::NOTHING;
}

// As people call it.
constexpr const char* InWords(Object object) {
    switch (object) {
        case Object::TEXT:
            return "a text";
        case Object::REQUEST:
            return "a request to an application";
        case Object::BUNDLE:
            return "a bundle";
        case Object::PACKAGE:
            return "the information on an application";
        case Object::SPEECH:
            return "the speech engine";
        case Object::CONTEXT:
            return "an application's context";
        case Object::NOTHING:
            break;
    }
    return "nothing";
}

}  // namespace platform
