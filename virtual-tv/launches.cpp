// Every request to start an application, one JSON object a line.
#include <fcntl.h>
#include <json/json.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
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
    const int error = written < 0 ? errno : ENOSPC;
    if (fd >= 0) {
        close(fd);
    }
    return written == static_cast<ssize_t>(line.size())
               ? ""
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

void AddLaunches(const std::string& tvDir, const std::string& name, off_t from,
                 std::vector<Launch>* launches) {
    std::istringstream lines(ReadTvFile(tvDir, name, from).value_or(""));
    for (std::string line; std::getline(lines, line);) {
        try {
            launches->push_back(ParseLaunch(line));
        } catch (const Json::Exception&) {
            continue;  // cut off by a full disk or a power failure, or written by another hand
        }
    }
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

std::uint64_t Tv::LaunchMark() const {
    const std::string file = impl_->dir + "/" + kLaunchesFile.name;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        throw Error(ErrorKind::kPlatform, file + ": cannot be read: " + error.message() + ".");
    }
    return error ? 0 : size;
}

std::vector<Launch> Tv::Launches() const {
    const FileLock noneSetAside(impl_->dir, GrowingFile::kLock);
    std::vector<Launch> launches;
    for (const std::string& name : kLaunchesFile.Names()) {
        AddLaunches(impl_->dir, name, 0, &launches);
    }
    return launches;
}

std::vector<Launch> Tv::LaunchesSince(std::uint64_t mark) const {
    const FileLock noneSetAside(impl_->dir, GrowingFile::kLock);
    std::vector<Launch> launches;
    const auto from = static_cast<off_t>(mark);
    if (mark <= LaunchMark()) {
        AddLaunches(impl_->dir, kLaunchesFile.name, from, &launches);
        return launches;
    }
    // What the mark was set in has been set aside since, or cleared.
    for (const std::string& name : kLaunchesFile.Names()) {
        AddLaunches(impl_->dir, name, name == kLaunchesFile.name ? 0 : from, &launches);
    }
    return launches;
}

void Tv::ClearLaunches() {
    kLaunchesFile.Remove(impl_->dir);
}

}  // namespace vtv
