// What the platform hands out and is to be given back: bundles, requests, information on
// applications, the speech engine. A handle that is used when it is not out, or is still out when
// the question has been answered, becomes part of the record.
#pragma once

#include <string>

#include "virtual-tv/model/launch.h"

namespace explorer {

struct Handle {
    const char* what = "";  // "a bundle"
    bool isOut = false;
    // What was put into it.
    std::string appId;
    vtv::Extras extras;
};

// Never null. Lives as long as the process.
Handle* HandOutHandle(const char* what);
// Null for what was never handed out, which is noted as wrong; so is one that is not out.
Handle* UseHandle(const char* what, void* handle);
void TakeHandleBack(const char* what, void* handle);
// The next handle is the first one again, as it is at the begin of the process.
void RestartHandles();
// What is still out is lost from now on: noted as wrong, and forgotten.
void NoteLostHandles();

}  // namespace explorer
