// What runs on a TV: one file a process in "apps/", so that every process of the TV knows.
#include <dirent.h>
#include <fcntl.h>
#include <json/json.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sstream>

#include "applications.h"

namespace vtv {

namespace {

std::string FileOf(const std::string& tvDir, int pid) {
    return tvDir + "/apps/" + std::to_string(pid) + ".json";
}
std::string FailureFileOf(const std::string& tvDir, int pid) {
    return tvDir + "/apps/" + std::to_string(pid) + ".failed";
}

// When the process started, in clock ticks; -1 when it is gone or only waits to be reaped. Together
// with the number it names a process for good, as numbers are used again.
long long StartOf(int pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    if (!std::getline(file, text)) {
        return -1;
    }
    // "PID (NAME) STATE ...": the name may hold anything.
    const size_t bracket = text.rfind(')');
    if (bracket == std::string::npos) {
        return -1;
    }
    std::istringstream fields(text.substr(bracket + 1));
    std::string state, skipped;
    fields >> state;
    for (int field = 4; field < 22; ++field) {
        fields >> skipped;
    }
    long long start = -1;
    fields >> start;
    return state == "Z" || state == "X" ? -1 : start;
}

bool ReadJson(const std::string& file, Json::Value* json) {
    std::ifstream stream(file);
    Json::CharReaderBuilder builder;
    std::string errors;
    return stream && Json::parseFromStream(builder, stream, json, &errors) && json->isObject();
}

}  // namespace

void Register(const std::string& tvDir, const RunningApplication& application) {
    Json::Value json;
    json["app"] = application.appId;
    json["pid"] = application.pid;
    json["start"] = static_cast<Json::Int64>(StartOf(application.pid));
    json["since"] = static_cast<Json::Int64>(application.since.time_since_epoch().count());
    json["extras"] = Json::Value(Json::arrayValue);
    for (const auto& [key, value] : application.extras) {
        Json::Value pair;
        pair.append(key);
        pair.append(value);
        json["extras"].append(pair);
    }
    // Under another name first: a reader sees the whole file or none.
    const std::string file = FileOf(tvDir, application.pid);
    int error = 0;
    if (WriteNewFile(file + ".new", json.toStyledString(), &error)) {
        rename((file + ".new").c_str(), file.c_str());
    }
}

void Unregister(const std::string& tvDir, int pid) {
    unlink(FileOf(tvDir, pid).c_str());
}

std::vector<RunningApplication> ListRunning(const std::string& tvDir) {
    std::vector<RunningApplication> running;
    const std::string folder = tvDir + "/apps";
    DIR* dir = opendir(folder.c_str());
    if (dir == nullptr) {
        return running;
    }
    while (const dirent* entry = readdir(dir)) {
        const std::string file = folder + "/" + entry->d_name;
        if (file.size() < 5 || file.compare(file.size() - 5, 5, ".json") != 0) {
            continue;
        }
        Json::Value json;
        if (!ReadJson(file, &json)) {
            continue;
        }
        RunningApplication application;
        application.appId = json["app"].asString();
        application.pid = json["pid"].asInt();
        application.since = TimePoint(std::chrono::microseconds(json["since"].asInt64()));
        for (const Json::Value& pair : json["extras"]) {
            application.extras.emplace_back(pair[0].asString(), pair[1].asString());
        }
        if (StartOf(application.pid) != json["start"].asInt64()) {
            unlink(file.c_str());  // it has ended without saying so
            continue;
        }
        running.push_back(std::move(application));
    }
    closedir(dir);
    std::sort(running.begin(), running.end(),
              [](const auto& a, const auto& b) { return a.since < b.since; });
    return running;
}

bool SignalApplication(const RunningApplication& application, AppSignal signal) {
    return kill(application.pid, NumberOf(signal)) == 0;
}

void LeaveFailure(const std::string& tvDir, int pid, const std::string& text) {
    int error = 0;
    WriteNewFile(FailureFileOf(tvDir, pid), text, &error);
}

std::string TakeFailure(const std::string& tvDir, int pid) {
    const std::string file = FailureFileOf(tvDir, pid);
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    unlink(file.c_str());
    return text.str();
}

}  // namespace vtv
