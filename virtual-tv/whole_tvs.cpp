#include "whole_tvs.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>

#include "applications.h"
#include "folder_names.h"
#include "recording_note.h"
#include "running_apps.h"
#include "tv_impl.h"
#include "virtual-tv/model/text_file.h"
#include "whole_folder.h"

namespace vtv {

namespace fs = std::filesystem;

namespace {

// All that a TV's folder holds; what else lies there is somebody's own.
constexpr std::array kParts = {
    "tv.toml", "settings", "memory", "state",    "faults", "owner",          "apps",
    "log",     "trace",    "speech", "switches", ".lock",  "launches.jsonl", "launches.jsonl.1",
    ".changes"};

// The folder of a TV that is to go from where it is.
std::string RequireOwnFolder(const std::string& dir) {
    std::string path = Absolute(dir);
    if (!Tv::IsTv(path)) {
        throw Error(ErrorKind::kNoSuch, path +
                                            ": there is no TV here. vtv list shows those that "
                                            "there are.");
    }
    if (KindOf(path) != fs::file_type::directory) {
        std::error_code error;
        throw Error(ErrorKind::kUsage, path +
                                           ": this is a link. Name the folder that it leads to: " +
                                           fs::canonical(path, error).string() + ".");
    }
    return path;
}

// What runs on a TV of whoever made it: a folder "apps" that leads elsewhere tells nothing.
bool HasApps(const std::string& path) {
    return KindOf(path + "/apps") == fs::file_type::directory;
}

std::vector<RunningApplication> RunningOn(const std::string& path) {
    return HasApps(path) ? ListRunning(path) : std::vector<RunningApplication>();
}

// Keeps what changes many things at once, and what starts applications, from a TV.
class Standstill {
  public:
    explicit Standstill(const std::string& path) : changes_(path, kLock) {
        if (HasApps(path)) {
            starts_.emplace(path, kAppsLock);
        }
    }

  private:
    FileLock changes_;
    std::optional<FileLock> starts_;
};

void RequireNothingForeign(const std::string& path) {
    for (const std::string& name : NamesIn(path)) {
        if (std::find(kParts.begin(), kParts.end(), name) == kParts.end()) {
            throw Error(ErrorKind::kNo, path + "/" + name +
                                            ": this is no part of the TV and would be removed "
                                            "with it. Put it elsewhere, or add --force.");
        }
    }
}

[[noreturn]] void RefuseFor(const std::string& path, const std::vector<RunningApplication>& running,
                            bool asked) {
    std::string list;
    for (const RunningApplication& application : running) {
        list += (list.empty() ? "" : ", ") + application.appId + " (process " +
                std::to_string(application.pid) + ")";
    }
    throw asked ? Error(ErrorKind::kPlatform,
                        path + ": applications do not end: " + list + ". End them with kill.")
                : Error(ErrorKind::kNo, path + ": applications run on this TV: " + list +
                                            ". End them with vtv app cancel, or add --force.");
}

// What cannot be looked at is said to be one, or to be none.
bool IsTvOr(bool otherwise, const std::string& dir) {
    try {
        return Tv::IsTv(dir);
    } catch (const Unreadable&) {
        return otherwise;
    }
}

}  // namespace

std::string TvPath(const std::string& nameOrDir) {
    if (nameOrDir.find('/') != std::string::npos || nameOrDir == "." || nameOrDir == ".." ||
        IsTvOr(false, nameOrDir)) {
        return fs::absolute(nameOrDir).lexically_normal().string();
    }
    return HomeDir() + "/" + nameOrDir;
}

std::vector<std::string> TvsIn(const std::string& folder) {
    RemoveLeftFolders(folder);
    std::vector<std::string> dirs;
    for (const std::string& name : NamesIn(folder)) {
        const std::string dir = (fs::path(folder) / name).string();
        if (!IsAsideName(name) && IsTvOr(true, dir)) {
            dirs.push_back(dir);
        }
    }
    std::sort(dirs.begin(), dirs.end());
    return dirs;
}

std::vector<RunningApplication> RenameTv(const std::string& from, const std::string& to) {
    const std::string path = RequireOwnFolder(from);
    const std::string place = Absolute(to);
    if (place.rfind(path + "/", 0) == 0) {
        throw Error(ErrorKind::kUsage,
                    place +
                        ": this is inside of the TV that is to be renamed. Name another "
                        "place.");
    }
    // A recording may name the TV's own model, which would no longer be found there.
    if (const std::string recording = RecordingNote(path).Read(); !recording.empty()) {
        throw Error(ErrorKind::kNo, path + ": this TV is being recorded into " + recording +
                                        ". End that first: vtv record stop --tv " + path);
    }
    const Standstill standstill(path);
    std::vector<RunningApplication> running = RunningOn(path);
    MoveFolder(path, place);
    return running;
}

std::vector<RunningApplication> RemoveTv(const std::string& dir, bool byForce) {
    const std::string path = RequireOwnFolder(dir);
    if (!byForce) {
        RequireNothingForeign(path);
    }
    std::vector<RunningApplication> ended = RunningOn(path);
    if (!ended.empty() && byForce) {
        EndRunningApplications(path);
    }
    {
        const Standstill standstill(path);
        if (const std::vector<RunningApplication> running = RunningOn(path); !running.empty()) {
            RefuseFor(path, running, byForce);
        }
        const RecordingNote recording(path);
        RemoveFolder(path);
        recording.Remove();
    }
    return ended;
}

}  // namespace vtv
