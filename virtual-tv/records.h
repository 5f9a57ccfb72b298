// What a TV tells: its settings, what runs on it, its log and its trace.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtual-tv/model/launch.h"
#include "virtual-tv/model/values.h"

namespace vtv {

struct Setting {
    std::string key;
    std::optional<Value> value;  // absent when the stored value is damaged
    std::string problem;         // why it is absent
};

struct Writing {
    TimePoint time;
    // Both as the writer has left them with the value; 0 and empty where the file system keeps no
    // such notes, and for a file that another hand has put there.
    int pid = 0;
    std::string program;
};

struct RunningApplication {
    std::string appId;
    int pid = 0;
    TimePoint since;
    Extras extras;
};

struct LogRecord {
    TimePoint time;
    int pid = 0;
    int priority = 0;  // 4 is info, 6 is error
    std::string tag;   // "SI-MENU" for the provider, "VTV" for the virtual TV itself
    // From the message's prefix "file: function(line) > "; empty and 0 without one.
    std::string file;
    std::string function;
    int line = 0;
    std::string message;  // without that prefix; may hold newlines
};

struct LogFilter {
    std::string function;  // exact; empty takes all
    std::string tag;       // exact; empty takes all
    int minPriority = 0;
};

struct TraceArgument {
    std::string type;
    std::string value;
};

struct TraceEvent {
    TimePoint time;
    int pid = 0;
    int thread = 0;
    std::string file;
    int line = 0;
    std::string function;
    std::string format;
    std::vector<TraceArgument> arguments;
    std::string message;  // the format with the arguments put in
};

}  // namespace vtv
