// Every request to start an application, one JSON object a line.
#include <fcntl.h>
#include <json/json.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <sstream>

#include "applications.h"
#include "serve.h"
#include "virtual-tv/model/json_text.h"

namespace vtv {

namespace {

// As a full disk leaves it.
bool EndsWithinALine(int fd) {
    struct stat info{};
    char last = '\n';
    return fstat(fd, &info) == 0 && info.st_size > 0 &&
           pread(fd, &last, 1, info.st_size - 1) == 1 && last != '\n';
}

// What kept it from being written whole; empty when nothing did.
std::string AppendLine(const std::string& tvDir, std::string line) {
    const int fd = kLaunchesFile.OpenToAdd(tvDir);
    if (fd >= 0 && EndsWithinALine(fd)) {
        line.insert(0, "\n");
    }
    const ssize_t written = fd < 0 ? -1 : write(fd, line.data(), line.size());
    const bool isWhole = written == static_cast<ssize_t>(line.size());
    int error = isWhole ? 0 : written < 0 ? errno : ENOSPC;
    // Some file systems tell only now.
    if (fd >= 0 && close(fd) != 0 && error == 0) {
        error = errno;
    }
    return error == 0 ? ""
                      : tvDir + "/" + kLaunchesFile.name +
                            ": the launch cannot be recorded: " + std::strerror(error) + ".";
}

// Throws Json::Exception for a line that is no record.
Launch ParseLaunch(const std::string& line) {
    Json::Value json;
    if (!ParseJson(line, &json) || !json.isObject()) {
        Json::throwRuntimeError("no JSON object");
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

// Returns the number of the first line that is no launch: a full disk or a power failure has cut it
// off, or another hand wrote it. 0 when there is none.
int AddLaunches(const std::string& tvDir, const std::string& name, off_t from,
                std::vector<Launch>* launches) {
    std::istringstream lines(ReadTvFile(tvDir, name, from).value_or(""));
    int firstBad = 0;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            launches->push_back(ParseLaunch(line));
        } catch (const Json::Exception&) {
            firstBad = firstBad == 0 ? number : firstBad;
        }
    }
    return firstBad;
}

// Absent where there is no such file.
std::optional<LaunchMark> EndOf(const std::string& file) {
    struct stat info{};
    if (lstat(file.c_str(), &info) != 0) {
        Unreadable::ThrowIf(errno, file);
        return std::nullopt;
    }
    return LaunchMark{info.st_ino, info.st_size};
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
    const std::string problem = AppendLine(tv.dir, CompactJson(json) + "\n");
    if (!problem.empty()) {
        NoteFailure(tv, problem);
        NoteMachineFailure(problem);
    }
    std::string text = "launch of " + launch.appId;
    for (const auto& [key, value] : launch.extras) {
        text += " " + key + "=" + value;
    }
    tv.LogLine(Succeeded(launch) ? kInfo : kError,
               text + ": " + launch.outcome + (problem.empty() ? "" : " (" + problem + ")"));
}

std::vector<std::string> ProblemsOfLaunches(const std::string& tvDir) {
    std::vector<std::string> problems;
    for (const std::string& name : kLaunchesFile.Names()) {
        try {
            std::vector<Launch> ignored;
            if (const int line = AddLaunches(tvDir, name, 0, &ignored); line != 0) {
                problems.push_back(tvDir + "/" + name + ":" + std::to_string(line) +
                                   ": this line tells of no launch and is passed over. Remove it.");
            }
        } catch (const Error& error) {
            problems.emplace_back(error.what());
        }
    }
    return problems;
}

vtv::LaunchMark Tv::LaunchMark() const {
    const FileLock noneSetAside(impl_->dir, GrowingFile::kLock);
    vtv::LaunchMark mark;
    for (const std::string& name : kLaunchesFile.Names()) {
        mark = EndOf(impl_->dir + "/" + name).value_or(mark);
    }
    return mark;
}

std::vector<Launch> Tv::LaunchesSince(const vtv::LaunchMark& mark) const {
    const FileLock noneSetAside(impl_->dir, GrowingFile::kLock);
    const std::vector<std::string> names = kLaunchesFile.Names();
    // One that is shorter than it was has only come to have the number of one that is gone.
    const auto marked = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        const std::optional<vtv::LaunchMark> end = EndOf(impl_->dir + "/" + name);
        return end && end->file == mark.file && end->size >= mark.size;
    });
    std::vector<Launch> launches;
    for (auto name = marked != names.end() ? marked : names.begin(); name != names.end(); ++name) {
        AddLaunches(impl_->dir, *name, name == marked ? mark.size : 0, &launches);
    }
    return launches;
}

std::vector<Launch> Tv::Launches() const {
    return LaunchesSince({});
}

}  // namespace vtv
