#include "ledger.h"

#include <algorithm>
#include <array>

#include "explorer/engine/memory.h"
#include "lazy_tv.h"

namespace explorer {

namespace {

// Each is handed out as late again as possible, so that one that was given back is told from
// others.
std::array<Handle, 64> handles;
std::size_t next = 0;

void NoteWrong(const std::string& text) {
    tv().Append(Entry::kWrong, text);
}

}  // namespace

Handle* HandOutHandle(std::string_view call) {
    const PlatformMemory own;
    Handle& handle = handles[next++ % handles.size()];
    if (handle.isOut) {
        tv().NoteTooMuch(std::to_string(handles.size()) + " handles while one is out");
    }
    handle = {platform::ObjectOf(call), true, "", {}};
    return &handle;
}

Handle* UseHandle(std::string_view call, void* handle) {
    const PlatformMemory own;
    const platform::Object object = platform::ObjectOf(call);
    const auto known = std::find_if(handles.begin(), handles.end(),
                                    [handle](const Handle& one) { return &one == handle; });
    if (known == handles.end() || known->object != object) {
        NoteWrong(std::string("uses what is not ") + platform::InWords(object));
        return nullptr;
    }
    if (!known->isOut) {
        NoteWrong(std::string("uses ") + platform::InWords(object) + " that was given back");
    }
    return &*known;
}

bool TakeHandleBack(std::string_view call, void* handle) {
    Handle* known = UseHandle(call, handle);
    if (known != nullptr) {
        known->isOut = false;
    }
    return known != nullptr;
}

void RestartHandles() {
    next = 0;
}

void NoteLostHandles() {
    for (Handle& handle : handles) {
        if (handle.isOut) {
            const PlatformMemory own;
            NoteWrong(std::string("never gives back ") + platform::InWords(handle.object));
            handle.isOut = false;
        }
    }
}

}  // namespace explorer
