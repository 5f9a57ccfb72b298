// Every request to start an application, one JSON object a line.
#include <fcntl.h>
#include <json/json.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "applications.h"

namespace vtv {

namespace {

std::string FileOf(const std::string& tvDir) {
    return tvDir + "/launches.jsonl";
}

// Throws Json::Exception for a line that is no record.
Launch ParseLaunch(const std::string& line) {
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value json;
    std::string errors;
    if (!reader->parse(line.data(), line.data() + line.size(), &json, &errors) ||
        !json.isObject()) {
        Json::throwRuntimeError(errors);
    }
    Launch launch;
    launch.time = TimePoint(std::chrono::microseconds(json["time"].asInt64()));
    launch.appId = json["app"].asString();
    launch.via = json["via"].asString();
    launch.operation = json["operation"].asString();
    launch.outcome = json["outcome"].asString();
    launch.pid = json["pid"].asInt();
    for (const Json::Value& pair : json["extras"]) {
        launch.extras.emplace_back(pair[0].asString(), pair[1].asString());
    }
    return launch;
}

}  // namespace

void RecordLaunch(Tv::Impl& tv, const Launch& launch) {
    Json::Value json;
    json["time"] = static_cast<Json::Int64>(launch.time.time_since_epoch().count());
    json["app"] = launch.appId;
    json["via"] = launch.via;
    json["operation"] = launch.operation;
    json["outcome"] = launch.outcome;
    json["pid"] = launch.pid;
    json["extras"] = Json::Value(Json::arrayValue);
    for (const auto& [key, value] : launch.extras) {
        Json::Value pair;
        pair.append(key);
        pair.append(value);
        json["extras"].append(pair);
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    const std::string line = Json::writeString(builder, json) + "\n";
    const int fd = open(FileOf(tv.dir).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const bool written =
        fd >= 0 && write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    if (fd >= 0) {
        close(fd);
    }
    std::string text = "launch of " + launch.appId;
    for (const auto& [key, value] : launch.extras) {
        text += " " + key + "=" + value;
    }
    tv.LogLine(Succeeded(launch) ? kInfo : kError,
               text + ": " + launch.outcome + (written ? "" : " (and could not be recorded)"));
}

std::vector<Launch> Tv::Launches() const {
    std::vector<Launch> launches;
    std::ifstream file(FileOf(impl_->dir));
    for (std::string line; std::getline(file, line);) {
        try {
            launches.push_back(ParseLaunch(line));
        } catch (const Json::Exception&) {
            continue;  // cut off by a full disk or a power failure, or written by another hand
        }
    }
    return launches;
}

void Tv::ClearLaunches() {
    if (truncate(FileOf(impl_->dir).c_str(), 0) != 0 && errno != ENOENT) {
        throw Error(ErrorKind::kPlatform,
                    FileOf(impl_->dir) + ": cannot be cleared: " + std::strerror(errno) + ".");
    }
}

}  // namespace vtv
