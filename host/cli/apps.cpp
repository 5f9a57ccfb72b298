// vtv app: the applications that the TV has started, and the commands that may be some.
#include <iostream>
#include <memory>

#include "json_views.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace cli {

namespace {

void List(const Common& common, bool launches) {
    const vtv::Tv tv(TvDir(common));
    WarnOfProblems(tv);
    Json::Value json(Json::arrayValue);
    if (launches) {
        for (const vtv::Launch& launch : tv.Launches()) {
            json.append(ToJson(launch));
        }
    } else {
        for (const vtv::RunningApplication& running : tv.RunningApplications()) {
            json.append(ToJson(running));
        }
    }
    if (common.json) {
        PrintJson(json);
        return;
    }
    if (json.empty()) {
        std::cout << (launches ? "Nothing has been started yet.\n"
                               : "No application is running.\n");
    }
    for (const Json::Value& entry : json) {
        std::cout << Paint(Look::kDim,
                           TimeOfDay(entry[launches ? "time" : "since"].asString(), 8) + " ")
                  << Paint(Look::kBold, entry["app"].asString());
        for (const std::string& name : entry["extras"].getMemberNames()) {
            std::cout << "  " << program::OneLine(name + '=' + entry["extras"][name].asString());
        }
        if (launches) {
            std::cout << Paint(Look::kNote, "  " + entry["outcome"].asString());
        }
        std::cout << '\n';
    }
}

void AddList(CLI::App& verb, Common& common) {
    const auto launches = std::make_shared<bool>(false);
    CLI::App* list =
        AddVerb(verb, common, "list", "List the applications that run",
                "  vtv app list\n  vtv app list --launches        everything that was ever started",
                kTv | kJson);
    list->add_flag("--launches", *launches,
                   "Every start since the TV was made, also of what has ended");
    list->callback([&common, launches] { List(common, *launches); });
}

void AddEnding(CLI::App& verb, Common& common, const char* name, const char* does,
               const char* example, void (vtv::Tv::*end)(const std::string&)) {
    const auto app = std::make_shared<std::string>();
    CLI::App* ending = AddVerb(verb, common, name, does, example, kTv | kRecord);
    ending->add_option("APP", *app, "Application id; may be left out when only one runs");
    ending->callback([&common, app, end, name] {
        vtv::Tv tv(TvDir(common));
        std::string id = *app;
        if (id.empty()) {
            const std::vector<vtv::RunningApplication> running = tv.RunningApplications();
            if (running.size() != 1) {
                throw vtv::Error(running.empty() ? vtv::ErrorKind::kNoSuch : vtv::ErrorKind::kUsage,
                                 running.empty()
                                     ? "No application is running."
                                     : "Several applications are running; name one: vtv app list");
            }
            id = running.front().appId;
        }
        Recorder recorder(common, tv, {{name, id}});
        (tv.*end)(id);
        recorder.Done();
    });
}

void AddMode(CLI::App& verb, Common& common) {
    const auto mode = std::make_shared<std::string>();
    CLI::App* app = AddVerb(
        verb, common, "mode", "Look at what starting an application does, or change it",
        "  vtv app mode auto              applications finish by themselves", kTv | kRecord);
    CLI::Option* given = app->add_option(
        "MODE", *mode,
        "process (they wait to be finished), auto (they finish by themselves), record (only note "
        "it)");
    PrintsWithout(*app, {given});
    app->callback([&common, mode] {
        vtv::Tv tv(TvDir(common));
        if (mode->empty()) {
            std::cout << vtv::ToText(tv.Applications()) << '\n';
        } else {
            const vtv::ApplicationMode wanted = vtv::ParseApplicationMode(*mode);
            Recorder recorder(common, tv, {{"applications", *mode}});
            tv.SetApplications(wanted);
            recorder.Done();
        }
    });
}

struct CommandOptions {
    std::string app;
    std::string command;
};

// The command that is named by itself or by the application that it is on the TV.
std::string CommandOf(const Common& common, const CommandOptions& options) {
    if (options.app.empty() == options.command.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "Name an application of the TV, or a command: --command TEXT.");
    }
    if (!options.command.empty()) {
        return options.command;
    }
    const vtv::Tv tv(TvDir(common));
    for (const vtv::Package& package : tv.GetModel().packages) {
        if (package.appId == options.app) {
            if (package.command.empty()) {
                throw vtv::Error(vtv::ErrorKind::kUsage,
                                 options.app +
                                     " has no command of its own: nothing has to be "
                                     "allowed.");
            }
            return package.command;
        }
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch,
                     "The TV's model has no package \"" + options.app + "\".");
}

void TellAllowed(const Common& common, const std::string& command, bool allowed) {
    if (common.json) {
        Json::Value json;
        json["command"] = command;
        json["allowed"] = allowed;
        PrintJson(json);
    } else {
        std::cout << (allowed ? "Allowed on every TV: " : "No longer allowed: ")
                  << program::OneLine(command) << '\n';
    }
}

void AddPermission(CLI::App& verb, Common& common, const char* name, const char* does,
                   const char* examples, void (*carryOut)(const std::string& command),
                   bool allowed) {
    const auto options = std::make_shared<CommandOptions>();
    CLI::App* permission = AddVerb(verb, common, name, does, examples, kTv | kJson);
    permission->add_option("APP", options->app, "The application whose command is meant");
    permission->add_option("--command", options->command, "The command itself, letter by letter")
        ->type_name("TEXT");
    permission->callback([&common, options, carryOut, allowed] {
        const std::string command = CommandOf(common, *options);
        carryOut(command);
        TellAllowed(common, command, allowed);
    });
}

void Forbid(const std::string& command) {
    if (!vtv::ForbidCommand(command)) {
        throw Refusal("This command was not allowed: " +
                      Json::valueToQuotedString(command.c_str()));
    }
}

void AddAllowed(CLI::App& verb, Common& common) {
    CLI::App* allowed = AddVerb(verb, common, "allowed", "List the commands that you have allowed",
                                "  vtv app allowed --json", kJson);
    allowed->callback([&common] {
        const std::vector<std::string> commands = vtv::AllowedCommands();
        if (common.json) {
            Json::Value json(Json::arrayValue);
            for (const std::string& command : commands) {
                json.append(command);
            }
            PrintJson(json);
            return;
        }
        if (commands.empty()) {
            std::cout << "No command is allowed.\n";
        }
        for (const std::string& command : commands) {
            std::cout << program::OneLine(command) << '\n';
        }
    });
}

}  // namespace

void AddApp(CLI::App& app, Common& common) {
    CLI::App* verb = AddVerb(app, common, "app",
                             "List, finish or cancel the applications that the TV has started",
                             "  vtv app list\n  vtv app finish org.nemra.wizard", kTv);
    verb->require_subcommand(1);
    AddList(*verb, common);
    AddEnding(*verb, common, "finish",
              "Let an application do its work and end: sign in, agree, set up",
              "  vtv app finish\n  vtv app finish com.vantelo.tv.google-assistant",
              &vtv::Tv::FinishApplication);
    AddEnding(*verb, common, "cancel", "Let it end without having done anything",
              "  vtv app cancel org.nemra.wizard", &vtv::Tv::CancelApplication);
    AddMode(*verb, common);
    AddPermission(
        *verb, common, "allow", "Let the command of an application run, on every TV",
        "  vtv app allow org.example.tool\n"
        "  vtv app allow --command /opt/tools/assistant\n\n"
        "A model may name a command to run as an application. It comes from whoever wrote\n"
        "the model, and runs only when you have allowed it.",
        &vtv::AllowCommand, true);
    AddPermission(*verb, common, "forbid", "Take back that a command may run",
                  "  vtv app forbid --command /opt/tools/assistant", &Forbid, false);
    AddAllowed(*verb, common);
}

}  // namespace cli
