// The recording platform: every call that the provider makes of the TV, served, scripted and
// written down, for tests.
//
// tv() is what the TV answers; a test changes it freely. Calls() tells what was asked, one line a
// call in order: the function's name and its arguments, separated by blanks; a null argument reads
// "(null)". A log record reads
//     log E general_voice_dataprovider.cpp get_int 123 key:..., value:1
// and a trace event is three lines, see trace_storage.cpp. No argument crashes the platform.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace recording {

// A typed value of the settings store. A bool keeps the number that was stored: every number but 0
// is true.
struct StoredBool {
    int number;
    bool operator==(const StoredBool& other) const = default;
};
using SettingValue = std::variant<int, StoredBool, std::string>;

// A feature of the model, or the error that reading it gives.
struct FeatureError {
    int code;
};
// A text that is read with success and is null.
struct NullText {};
using FeatureValue = std::variant<bool, int, std::string, NullText, FeatureError>;

// What the TV is like. A setting, feature or package that is not named does not exist.
struct TV {
    std::map<std::string, SettingValue, std::less<>> settings;
    std::map<std::string, FeatureValue, std::less<>> features;
    std::map<std::string, int, std::less<>> consents;  // what the call answers; unnamed: 0
    int loginState = 0;
    std::optional<std::string> accountApp = "account.app";  // none: success with a null id
    bool online = false;
    int aovMode = 0;                      // of an application that none was set for
    std::map<std::string, int> aovModes;  // by application: what was set
    std::set<std::string, std::less<>> runningApps;
    // Metadata by package; an item without a value is one that is read as null.
    std::map<std::string, std::map<std::string, std::optional<std::string>>, std::less<>> packages;
    std::vector<const char*> voices;  // languages of the speech engine's voices
    std::set<std::string, std::less<>> files;
    std::map<std::string, std::string, std::less<>> translations;  // else "tr(ID)"
    // Whether every write of a watched key calls back, as a TV's does.
    bool notifies = true;
};

TV& tv();

// Of the assistant that is current.
int AlwaysOnMode();

// A TV as it was never set up, no record, no fault, nothing watched, tracing off. The trace
// storage keeps the call sites that it has given ids to: a library keeps its ids as well.
void Reset();

// Writing down costs time; a test of many thousand calls turns it off. Reset() turns it on.
void SetRecording(bool on);

const std::vector<std::string>& Calls();
void ClearCalls();
// The lines that begin with the text.
std::vector<std::string> CallsOf(std::string_view beginning);

// --- Faults ---

inline constexpr int FOREVER = -1;

// Makes the nth coming call of the function fail (1 is the next), and the count - 1 calls after it.
// A function that returns an int returns the code; one that returns a pointer returns null; out
// parameters stay as they were; dgettext and Demangle return a null or empty text.
void Fail(std::string_view function, int nth = 1, int count = FOREVER, int code = -1);
// The same over all functions: the nth coming call of the platform fails, whichever it is.
void FailAny(int nth, int count = FOREVER, int code = -1);
void ClearFaults();
// Platform calls since Reset() or the last FailAny(), failed ones included; those of them that a
// fault made fail; and the names of the functions.
int CallCount();
int FailedCallCount();
const std::set<std::string_view>& FunctionsCalled();

// --- Watches ---

int WatchCount(std::string_view key);
// Writes the text and calls back whoever watches the key, as another process's write does.
void Publish(const std::string& key, const std::string& text);
// Calls back whoever watches the key.
void Notify(std::string_view key);
// Runs the action, once, inside the nth coming call of the platform (1 is the next) and before that
// is served or written down: a TV may deliver a watch there.
void InterruptCall(int nth, std::function<void()> action);

// --- What the provider must give back ---

// Everything that was handed out on the heap and not returned, or returned twice: one line each, in
// words; empty when all is well. An application context is the platform's own and is not counted.
std::vector<std::string> Debts();

// --- Launches ---

struct Launch {
    std::string appId;
    std::map<std::string, std::string> extras;
    bool operator==(const Launch& other) const = default;
};
// Through aul_launch_app and through app control, in order.
const std::vector<Launch>& Launches();

// --- Trace storage ---

struct CallSite {
    std::string file;
    int line;
    int id;
    std::string function;
    std::string format;
    std::vector<std::string> argumentTypes;
};
struct TraceEvent {
    int siteId;
    int reserved;
    std::string payload;
};
void SetTracing(bool on);
const std::map<int, CallSite>& CallSites();
const std::vector<TraceEvent>& TraceEvents();

}  // namespace recording
