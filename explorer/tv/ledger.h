// What the platform hands out and is to be given back: bundles, requests, information on
// applications, the speech engine. A handle that is used when it is not out, or is still out when
// the question has been answered, becomes part of the record.
#pragma once

#include <string>
#include <string_view>

#include "platform/call_table.h"
#include "virtual-tv/model/launch.h"

namespace explorer {

struct Handle {
    platform::Object object = platform::Object::NOTHING;
    bool isOut = false;
    // What was put into it.
    std::string appId;
    vtv::Extras extras;
};

// Of the object that the platform's call is about. Never null. Lives as long as the process.
Handle* HandOutHandle(std::string_view call);
// Null for what was never handed out, which is noted as wrong; so is one that is not out.
Handle* UseHandle(std::string_view call, void* handle);
// False for what was never handed out.
bool TakeHandleBack(std::string_view call, void* handle);
// The next handle is the first one again, as it is at the begin of the process.
void RestartHandles();
// What is still out is lost from now on: noted as wrong, and forgotten.
void NoteLostHandles();

}  // namespace explorer
