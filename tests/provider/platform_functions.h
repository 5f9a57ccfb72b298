// What the provider calls of the TV, as a linker names it to people.
#pragma once

#include <set>
#include <string>

#include "platform/calls.h"

// And PrepareCallBuffer of the trace storage, whose arguments are as wide as the machine.
inline const std::set<std::string> PLATFORM_FUNCTIONS = {
    "dgettext",
    "access",
    "TIStorageManagerState::enabled",  // the one variable
    "TIStorageManager::Instance()",
    "TIStorageManager::NewLocationId()",
    "TIStorageManager::CurrentStorage()",
    "ht::TSDemangler::Demangle(const char*)",
    "ht::TCStorage::SaveLocation(ht::TCStorage*, ht::TCCallLocation const&)",
    "ht::TCStorage::ThreadHandle(ht::TCStorage*)",
    "ht::TCStorage::Commit(ht::TCStorage*, ht::TCThread*)",
#define CALL(result, name, parameters, failure, does, object) #name,
    SI_PLATFORM_CALLS(CALL)
#undef CALL
};
