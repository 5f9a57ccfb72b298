#include "recorder.h"

#include <cstdlib>
#include <cstring>

namespace recording {

int platformDepth = 0;

namespace {

struct Fault {
    int skip = 0;  // calls that still succeed
    int left = 0;  // calls that fail then; FOREVER: all
    int code = -1;
};

struct Recorder {
    TV tv;
    bool recording = true;
    std::vector<std::string> calls;
    std::map<std::string, Fault, std::less<>> faults;
    std::optional<Fault> anyFault;
    int callCount = 0;
    int failedCallCount = 0;
    std::set<std::string_view> functionsCalled;
    int callsToInterruption = 0;  // 0: none is to come
    std::function<void()> interruption;
    std::vector<Launch> launches;
};

Recorder& recorder() {
    static Recorder instance;
    return instance;
}

bool Strikes(Fault& fault) {
    if (fault.skip > 0) {
        --fault.skip;
        return false;
    }
    if (fault.left == FOREVER) {
        return true;
    }
    if (fault.left == 0) {
        return false;
    }
    --fault.left;
    return true;
}

}  // namespace

TV& tv() {
    return recorder().tv;
}

void Reset() {
    PlatformCode inside;
    recorder() = Recorder();
    ResetDebts();
    ResetApplications();
    ResetServices();
    ResetTrace();
}

void SetRecording(bool on) {
    recorder().recording = on;
}

bool IsRecording() {
    return recorder().recording;
}

const std::vector<std::string>& Calls() {
    return recorder().calls;
}

void ClearCalls() {
    PlatformCode inside;
    recorder().calls.clear();
    recorder().launches.clear();
}

std::vector<std::string> CallsOf(std::string_view beginning) {
    std::vector<std::string> lines;
    for (const std::string& line : Calls()) {
        if (line.starts_with(beginning)) {
            lines.push_back(line);
        }
    }
    return lines;
}

void Fail(std::string_view function, int nth, int count, int code) {
    recorder().faults[std::string(function)] = {nth - 1, count, code};
}

void FailAny(int nth, int count, int code) {
    recorder().anyFault = Fault{nth - 1, count, code};
    recorder().callCount = 0;
    recorder().failedCallCount = 0;
    recorder().functionsCalled.clear();
}

void ClearFaults() {
    recorder().faults.clear();
    recorder().anyFault.reset();
}

void InterruptCall(int nth, std::function<void()> action) {
    PlatformCode inside;
    recorder().callsToInterruption = nth;
    recorder().interruption = std::move(action);
}

int CallCount() {
    return recorder().callCount;
}

int FailedCallCount() {
    return recorder().failedCallCount;
}

const std::set<std::string_view>& FunctionsCalled() {
    return recorder().functionsCalled;
}

const std::vector<Launch>& Launches() {
    return recorder().launches;
}

void AddLaunch(Launch launch) {
    recorder().launches.push_back(std::move(launch));
}

std::string Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

std::string_view View(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

std::string Printable(int number) {
    return std::to_string(number);
}

void RecordLine(std::string line) {
    if (recorder().recording) {
        recorder().calls.push_back(std::move(line));
    }
}

Call::Call(Unwritten, const char* function)
    : function_(function), recording_(recorder().recording) {
    Recorder& r = recorder();
    ++r.callCount;
    r.functionsCalled.insert(function);
    if (r.callsToInterruption > 0) {
        --r.callsToInterruption;
        if (r.callsToInterruption == 0) {
            r.interruption();
        }
    }
    if (r.anyFault && Strikes(*r.anyFault)) {
        fails_ = true;
        code_ = r.anyFault->code;
    }
    if (!r.faults.empty()) {
        const auto fault = r.faults.find(std::string_view(function));
        if (fault != r.faults.end() && Strikes(fault->second)) {
            fails_ = true;
            code_ = fault->second.code;
        }
    }
    r.failedCallCount += fails_ ? 1 : 0;
}

int Call::Code() const {
    return code_ ? *code_ : platform::FailureOf(function_);
}

platform::Object Call::Object() const {
    const platform::Object object = platform::ObjectOf(function_);
    if (object == platform::Object::NOTHING) {
        std::abort();  // the list of calls does not say what comes back
    }
    return object;
}

void Call::Record(const char* function, std::initializer_list<std::string> arguments) {
    std::string line = function;
    for (const std::string& argument : arguments) {
        line += ' ';
        line += argument;
    }
    RecordLine(std::move(line));
}

}  // namespace recording
