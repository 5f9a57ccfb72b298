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

Handle* HandOutHandle(const char* what) {
    const PlatformMemory own;
    Handle& handle = handles[next++ % handles.size()];
    handle = {what, true, "", {}};
    return &handle;
}

Handle* UseHandle(const char* what, void* handle) {
    const PlatformMemory own;
    const auto known = std::find_if(handles.begin(), handles.end(),
                                    [handle](const Handle& one) { return &one == handle; });
    if (known == handles.end() || std::string_view(known->what) != what) {
        NoteWrong(std::string("uses what is not ") + what);
        return nullptr;
    }
    if (!known->isOut) {
        NoteWrong(std::string("uses ") + what + " that was given back");
    }
    return &*known;
}

void TakeHandleBack(const char* what, void* handle) {
    if (Handle* known = UseHandle(what, handle)) {
        known->isOut = false;
    }
}

void RestartHandles() {
    next = 0;
}

void NoteLostHandles() {
    for (Handle& handle : handles) {
        if (handle.isOut) {
            const PlatformMemory own;
            NoteWrong(std::string("never gives back ") + handle.what);
            handle.isOut = false;
        }
    }
}

}  // namespace explorer
