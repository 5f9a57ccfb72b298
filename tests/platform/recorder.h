// How the platform's services write down their calls. For the platform's own sources.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

#include "platform/call_table.h"
#include "recording_platform.h"

namespace recording {

// Greater than 0 while the process is inside the platform: memory that is allocated then is the
// platform's own and never fails.
extern int platformDepth;

class PlatformCode {
  public:
    PlatformCode() { ++platformDepth; }
    ~PlatformCode() { --platformDepth; }
    PlatformCode(const PlatformCode&) = delete;
    PlatformCode& operator=(const PlatformCode&) = delete;
};

std::string Printable(const char* text);
// Empty, without data, for a null text. In a source of its own: the C library declares some of the
// functions served here as never given a null, and a compiler that sees both drops the test.
std::string_view View(const char* text);
std::string Printable(int number);

// One call of the platform: stands first in every service function.
class Call {
  public:
    struct Unwritten {};
    // A call that writes its own line.
    Call(Unwritten, const char* function);
    template <typename... Arguments>
    explicit Call(const char* function, const Arguments&... arguments)
        : Call(Unwritten(), function) {
        if (recording_) {
            Record(function, {Printable(arguments)...});
        }
    }
    bool Fails() const { return fails_; }
    // The code of the failure that the test asked for; else the one that the list of calls tells.
    int Code() const;
    const char* Function() const { return function_; }
    // What it hands out, works on or gives back. One that the list of calls gives none has none.
    platform::Object Object() const;

  private:
    void Record(const char* function, std::initializer_list<std::string> arguments);

    PlatformCode inside_;
    const char* function_;
    bool recording_ = false;
    bool fails_ = false;
    std::optional<int> code_;
};

bool IsRecording();
void RecordLine(std::string line);

// A heap string that the caller is to free; its debt is counted.
char* HandOut(const Call& call, std::string_view text);
// Called by the process's free(). True when the block stays with the platform for now, to see
// whether it is freed again.
bool KeepFreed(void* block);

// A handle of the call's object, which the caller is to give back once.
void* NewHandle(const Call& call);
bool IsHandle(const Call& call, const void* handle);
// False for what is no live handle.
bool EndHandle(const Call& call, void* handle);

void ResetDebts();
void ResetApplications();
void ResetServices();
void ResetTrace();
void AddLaunch(Launch launch);

}  // namespace recording
