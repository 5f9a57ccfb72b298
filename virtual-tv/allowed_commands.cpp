// The commands of models that the user has allowed to run: kept with the user's own settings, where
// no TV, model, dump or scenario that somebody sent can reach.
#include <algorithm>

#include "applications.h"
#include "own_files.h"
#include "program/visible_text.h"
#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/json_text.h"

namespace vtv {

namespace {

constexpr char kFormat[] = "vtv-allowed-commands";

[[noreturn]] void Fail(const std::string& path, const std::string& text) {
    throw Error(ErrorKind::kPlatform, path + ": " + text);
}

std::vector<std::string> Parse(const std::string& text, const std::string& file) {
    const JsonText document(file, text);
    const Json::Value& json = document.Root();
    if (!document.Problem().empty() || !json.isObject() || json["format"] != kFormat) {
        Fail(file, "is damaged. No command is allowed until it is mended or removed.");
    }
    const std::string problem = VersionProblem("the list of allowed commands",
                                               VersionOf(json["version"]), kAllowedCommandsVersion);
    if (!problem.empty()) {
        Fail(file, problem + " No command is allowed until then.");
    }
    if (!json["commands"].isArray()) {
        Fail(file, "is damaged. No command is allowed until it is mended or removed.");
    }
    std::vector<std::string> commands;
    for (const Json::Value& command : json["commands"]) {
        if (!command.isString()) {
            Fail(file, "each of \"commands\" must be a text in quotes.");
        }
        commands.push_back(command.asString());
    }
    return commands;
}

void Write(const std::string& file, const std::vector<std::string>& commands) {
    Json::Value json;
    json["format"] = kFormat;
    json["version"] = kAllowedCommandsVersion;
    json["commands"] = Json::Value(Json::arrayValue);
    for (const std::string& command : commands) {
        json["commands"].append(command);
    }
    WriteOwnFile(file, json.toStyledString());
}

// Reads, changes and writes the list; no other process does so meanwhile.
template <typename Change>
bool ChangeList(Change change) {
    const std::string file = AllowedCommandsFile();
    const std::string dir = OwnFolder();
    MakeOwnFolder(dir);
    const FileLock lock(dir, ".lock");
    std::vector<std::string> commands = AllowedCommands();
    if (!change(commands)) {
        return false;
    }
    Write(file, commands);
    return true;
}

// Why the command cannot be allowed: somebody would read another one in the list than runs.
std::string Unseen(const std::string& command) {
    const std::string unseen = program::FirstUnseen(command);
    return unseen.empty() ? "" : "its " + unseen + ", is not seen as what it is";
}

std::string ForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

}  // namespace

std::string AllowedCommandsFile() {
    const std::string dir = OwnFolder();
    if (dir.empty()) {
        throw Error(ErrorKind::kPlatform,
                    "There is no place for what you allow: set HOME or XDG_CONFIG_HOME to a folder "
                    "of yours, as a whole path.");
    }
    return dir + "/allowed-commands.json";
}

std::vector<std::string> AllowedCommands() {
    const std::string file = AllowedCommandsFile();
    const std::optional<std::string> text =
        ReadOwnFile(file, "No command is allowed until it is removed.");
    return text ? Parse(*text, file) : std::vector<std::string>();
}

void AllowCommand(const std::string& command) {
    if (command.empty()) {
        throw Error(ErrorKind::kUsage, "An empty command cannot be allowed.");
    }
    if (const std::string unseen = Unseen(command); !unseen.empty()) {
        throw Error(ErrorKind::kUsage, "The command " + Json::valueToQuotedString(command.c_str()) +
                                           " cannot be allowed: " + unseen +
                                           ". Write the command without it.");
    }
    ChangeList([&](std::vector<std::string>& commands) {
        const bool isNew = std::find(commands.begin(), commands.end(), command) == commands.end();
        if (isNew) {
            commands.push_back(command);
        }
        return isNew;
    });
}

bool ForbidCommand(const std::string& command) {
    return ChangeList([&](std::vector<std::string>& commands) {
        const auto gone = std::remove(commands.begin(), commands.end(), command);
        const bool wasAllowed = gone != commands.end();
        commands.erase(gone, commands.end());
        return wasAllowed;
    });
}

std::string WhyNotAllowed(const std::string& command) {
    try {
        const std::vector<std::string> allowed = AllowedCommands();
        if (std::find(allowed.begin(), allowed.end(), command) != allowed.end()) {
            return "";
        }
    } catch (const Error& error) {
        return error.what();
    }
    const std::string shown = Json::valueToQuotedString(command.c_str());
    const std::string unseen = Unseen(command);
    return unseen.empty()
               ? "its command is not allowed: " + shown +
                     ". If you know and trust it: vtv app allow --command " + ForShell(command)
               : "its command is not allowed, and cannot be, for " + unseen + ": " + shown;
}

}  // namespace vtv
