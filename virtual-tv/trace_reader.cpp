// Reading a trace back, decoded, and exporting it.
#include <json/json.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <tuple>

#include "trace_format.h"
#include "tv_impl.h"
#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/json_text.h"

namespace vtv {

namespace {

struct Location {
    std::string file;
    int line = 0;
    std::string function;
    std::string format;
    std::vector<std::string> types;
};

// Takes values off the front of some bytes; Good() turns false for good when they run out.
class Bytes {
  public:
    explicit Bytes(std::string_view bytes) : rest_(bytes) {}

    bool Good() const { return good_; }
    std::string_view Rest() const { return rest_; }
    std::string_view Take(size_t size) {
        if (size > rest_.size()) {
            good_ = false;
            size = 0;
        }
        const std::string_view taken = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return taken;
    }
    template <typename T>
    T Number() {
        T number{};
        Take(sizeof number).copy(reinterpret_cast<char*>(&number), sizeof number);
        return number;
    }
    std::string Text() { return std::string(Take(Number<uint32_t>())); }

  private:
    std::string_view rest_;
    bool good_ = true;
};

// For what does not begin as a record of this program does. Behind other records it may be what a
// crash has left; nothing else that is unknown is passed over.
void RequireKnownVersion(const std::string& path, std::string_view record, bool isFirst) {
    const bool isTrace = record.substr(0, 3) == "VTR" && record[3] >= '0' && record[3] <= '9';
    const std::string problem = VersionProblem(
        "a trace", isTrace ? std::optional<int64_t>(record[3] - '0') : std::nullopt, kTraceVersion);
    if (!problem.empty() && (isTrace || isFirst)) {
        throw Error(ErrorKind::kPlatform, path + ": " + problem);
    }
}

// Calls back for each whole record; a tail that was cut off by a crash is passed over.
template <typename Callback>
void ForEachRecord(const std::string& path, const std::string& content, Callback callback) {
    Bytes bytes(content);
    while (!bytes.Rest().empty()) {
        const std::string_view begin = bytes.Rest();
        const auto header = bytes.Number<TraceRecordHeader>();
        if (!bytes.Good()) {
            return;
        }
        if (header.magic != kTraceMagic) {
            RequireKnownVersion(path, begin, begin.size() == content.size());
            return;
        }
        const std::string_view body = bytes.Take(header.size);
        if (!bytes.Good()) {
            return;
        }
        callback(header, body, begin.substr(0, sizeof header + body.size()));
    }
}

Location DecodeLocation(std::string_view body) {
    Bytes bytes(body);
    Location location;
    location.line = static_cast<int>(bytes.Number<uint32_t>());
    location.file = bytes.Text();
    location.function = bytes.Text();
    location.format = bytes.Text();
    for (uint32_t count = bytes.Number<uint32_t>(); bytes.Good() && count > 0; --count) {
        location.types.push_back(bytes.Text());
    }
    return location;
}

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// Length in 7-bit groups, least significant first, then the characters. The two bytes FF 7F stand
// for a null string.
std::string DecodeString(Bytes* bytes) {
    const std::string_view rest = bytes->Rest();
    size_t length = 0;
    for (int shift = 0; bytes->Good() && shift < 35; shift += 7) {
        const auto group = bytes->Number<uint8_t>();
        length |= static_cast<size_t>(group & 0x7f) << shift;
        if ((group & 0x80) == 0) {
            break;
        }
    }
    const bool null = rest.substr(0, 2) == "\xff\x7f" && bytes->Rest().size() < length;
    return null ? "(null)" : std::string(bytes->Take(length));
}

std::string DecodeArgument(const std::string& type, Bytes* bytes) {
    if (Contains(type, "char") || Contains(type, "string")) {
        return DecodeString(bytes);
    }
    if (type == "bool") {
        return bytes->Number<uint8_t>() != 0 ? "true" : "false";
    }
    if (type == "double") {
        return std::to_string(bytes->Number<double>());
    }
    if (type == "unsigned int" || type == "unsigned") {
        return std::to_string(bytes->Number<uint32_t>());
    }
    if (type == "long long" || type == "unsigned long long") {
        return std::to_string(bytes->Number<int64_t>());
    }
    return std::to_string(bytes->Number<int32_t>());
}

// Puts the arguments where the format wants them. Each is a text by now, whatever its conversion.
std::string PutIn(const std::string& format, const std::vector<TraceArgument>& arguments) {
    std::string text;
    size_t next = 0;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            text += format[i];
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == '%') {
            text += '%';
            ++i;
            continue;
        }
        const size_t conversion = format.find_first_of("diouxXeEfgGcsp", i + 1);
        if (conversion == std::string::npos || next == arguments.size()) {
            text += format.substr(i);
            return text;
        }
        const TraceArgument& argument = arguments[next++];
        const bool number = format[conversion] != 's' && argument.type == "bool";
        text += number ? (argument.value == "true" ? "1" : "0") : argument.value;
        i = conversion;
    }
    return text;
}

}  // namespace

void CompactTrace(const std::string& tvDir) {
    const std::string path = tvDir + "/" + kTraceFile;
    const std::string content = ReadTvFile(tvDir, kTraceFile).value_or("");
    std::string kept;
    ForEachRecord(path, content,
                  [&](const TraceRecordHeader& header, std::string_view, std::string_view whole) {
                      if (header.kind == TraceRecordKind::kLocation) {
                          kept += whole;
                      }
                  });
    int error = 0;
    if (content.empty()) {
        return;
    }
    bool good = WriteTvFile(tvDir, kTraceFile + std::string(".new"), kept, &error);
    if (good && !RenameInTv(tvDir, kTraceFile + std::string(".new"), kTraceFile)) {
        error = errno;
        good = false;
    }
    if (!good) {
        throw Error(ErrorKind::kPlatform,
                    path + ": cannot be cleared: " + std::strerror(error) + ".");
    }
}

std::vector<TraceEvent> Tv::ReadTrace() const {
    std::map<std::tuple<uint32_t, uint32_t, uint32_t>, Location> locations;
    std::vector<TraceEvent> events;
    const std::string content = ReadTvFile(impl_->dir, kTraceFile).value_or("");
    ForEachRecord(TraceFile(), content,
                  [&](const TraceRecordHeader& header, std::string_view body, std::string_view) {
                      const auto site = std::make_tuple(header.pid, header.session, header.siteId);
                      if (header.kind == TraceRecordKind::kLocation) {
                          locations[site] = DecodeLocation(body);
                          return;
                      }
                      if (header.kind != TraceRecordKind::kEvent) {
                          return;
                      }
                      const Location& location = locations[site];
                      TraceEvent event;
                      event.time = TimePoint(std::chrono::microseconds(header.time));
                      event.pid = static_cast<int>(header.pid);
                      event.thread = static_cast<int>(header.thread);
                      event.file = location.file;
                      event.line = location.line;
                      event.function = location.function;
                      event.format = location.format;
                      Bytes payload(body);
                      for (const std::string& type : location.types) {
                          event.arguments.push_back({type, DecodeArgument(type, &payload)});
                      }
                      event.message = PutIn(event.format, event.arguments);
                      events.push_back(std::move(event));
                  });
    return events;
}

std::string Tv::ExportTrace() const {
    Json::Value root;
    root["displayTimeUnit"] = "ms";
    Json::Value& list = root["traceEvents"] = Json::Value(Json::arrayValue);
    for (const TraceEvent& event : ReadTrace()) {
        Json::Value json;
        json["name"] = event.message;
        json["cat"] = "si-ready";
        json["ph"] = "i";  // an instant
        json["s"] = "t";   // of its thread
        json["ts"] = static_cast<Json::Int64>(event.time.time_since_epoch().count());
        json["pid"] = event.pid;
        json["tid"] = event.thread;
        Json::Value& arguments = json["args"];
        arguments["function"] = event.function;
        arguments["site"] = event.file + ":" + std::to_string(event.line);
        for (size_t i = 0; i < event.arguments.size(); ++i) {
            arguments["argument " + std::to_string(i + 1) + " (" + event.arguments[i].type + ")"] =
                event.arguments[i].value;
        }
        list.append(json);
    }
    return PrettyJson(root) + "\n";
}

}  // namespace vtv
