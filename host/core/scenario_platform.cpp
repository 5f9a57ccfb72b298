// What a step changes of the TV's platform: its applications, faults, trace, and the plug.
#include <algorithm>

#include "scenario_members.h"
#include "virtual-tv/model/limits.h"

namespace host {

namespace {

// Of a table, or of each table of a list.
template <typename T, typename Read>
std::vector<T> OneOrMore(const toml::node& node, const Read& read) {
    std::vector<T> all;
    if (const toml::array* list = node.as_array()) {
        for (const toml::node& one : *list) {
            all.push_back(read(one));
        }
    } else {
        all.push_back(read(node));
    }
    return all;
}

Play ReadApplicationMode(const Reading& reading, const toml::node& node) {
    vtv::ApplicationMode mode = vtv::ApplicationMode::kProcess;
    const std::string text = reading.reader.Text(node, reading.name);
    if (node.is_string()) {
        reading.reader.Noting(node.source(), [&] { mode = vtv::ParseApplicationMode(text); });
    }
    return [mode](const StepScene& scene) { scene.tv.SetApplications(mode); };
}

Play ReadTrace(const Reading& reading, const toml::node& node) {
    const bool isOn = reading.reader.Flag(node, reading.name);
    return [isOn](const StepScene& scene) { scene.tv.SetTraceEnabled(isOn); };
}

void CheckFunction(ScenarioReader& reader, const toml::node& node, const std::string& function) {
    const std::vector<std::string>& known = vtv::PlatformFunctions();
    if (std::find(known.begin(), known.end(), function) == known.end()) {
        reader.Problem(node, "there is no platform call \"" + function + "\" that could fail." +
                                 DidYouMean(function, known) +
                                 " vtv fault --functions lists them.");
    }
}

Play ReadClearFaults(const Reading& reading, const toml::node& node) {
    if (node.is_boolean()) {
        const bool isWanted = node.as_boolean()->get();
        return [isWanted](const StepScene& scene) {
            if (isWanted) {
                scene.tv.ClearFaults();
            }
        };
    }
    const std::vector<std::string> functions = reading.reader.Some(node, reading.name);
    for (const std::string& function : functions) {
        CheckFunction(reading.reader, node, function);
    }
    return [functions](const StepScene& scene) {
        for (const std::string& function : functions) {
            if (!scene.tv.ClearFault(function)) {
                throw vtv::Error(vtv::ErrorKind::kNoSuch,
                                 function + ": no such fault was asked for, or it has come about.");
            }
        }
    };
}

struct FaultMember {
    const char* name;
    void (*read)(ScenarioReader& reader, const toml::node& node, vtv::Fault* fault);
};
constexpr FaultMember kFaultMembers[] = {
    {"function",
     [](ScenarioReader& reader, const toml::node& node, vtv::Fault* fault) {
         fault->function = reader.Text(node, "function");
         if (node.is_string()) {
             CheckFunction(reader, node, fault->function);
         }
     }},
    {"always",
     [](ScenarioReader& reader, const toml::node& node, vtv::Fault* fault) {
         fault->kind = reader.Flag(node, "always") ? vtv::Fault::Kind::kAlways : fault->kind;
     }},
    {"result", [](ScenarioReader& reader, const toml::node& node,
                  vtv::Fault* fault) { fault->result = reader.Number(node, "result"); }},
    {"slow",
     [](ScenarioReader& reader, const toml::node& node, vtv::Fault* fault) {
         fault->kind = vtv::Fault::Kind::kSlow;
         fault->delayMs = reader.Number(node, "slow");
         const std::string problem = vtv::DelayProblem(fault->delayMs);
         if (node.is_integer() && !problem.empty()) {
             reader.Problem(node, "\"slow\": " + problem);
         }
     }},
};

vtv::Fault ReadFault(ScenarioReader& reader, const toml::node& node) {
    vtv::Fault fault;
    const toml::table& table = reader.Table(node, "fault");
    reader.Members(table, "a fault", kFaultMembers,
                   [&](const FaultMember& member, const toml::node& value) {
                       member.read(reader, value, &fault);
                   });
    if (!table.empty() && !table.contains("function")) {
        reader.Problem(node, "a fault needs \"function\": write which platform call fails.");
    }
    if (table.contains("slow") && (table.contains("always") || table.contains("result"))) {
        reader.Problem(node,
                       "a call that is \"slow\" works all the same: leave out \"always\" and "
                       "\"result\", or \"slow\".");
    }
    return fault;
}

Play ReadFaults(const Reading& reading, const toml::node& node) {
    const std::vector<vtv::Fault> faults = OneOrMore<vtv::Fault>(
        node, [&](const toml::node& one) { return ReadFault(reading.reader, one); });
    return [faults](const StepScene& scene) {
        for (const vtv::Fault& fault : faults) {
            scene.tv.SetFault(fault);
        }
    };
}

Play ReadPowerCycle(const Reading& reading, const toml::node& node) {
    const bool isWanted = reading.reader.Flag(node, reading.name);
    return [isWanted](const StepScene& scene) {
        if (isWanted) {
            scene.tv.PowerCycle();
        }
    };
}

struct LaunchRequest {
    std::string app;
    vtv::Extras extras;
};

struct LaunchMember {
    const char* name;
    void (*read)(ScenarioReader& reader, const toml::node& node, LaunchRequest* request);
};
constexpr LaunchMember kLaunchMembers[] = {
    {"app",
     [](ScenarioReader& reader, const toml::node& node, LaunchRequest* request) {
         if (node.is_string()) {
             request->app = reader.Applications(node, "app").front();
         } else {
             reader.Text(node, "app");
         }
     }},
    {"extras",
     [](ScenarioReader& reader, const toml::node& node, LaunchRequest* request) {
         for (const auto& [key, value] : reader.Table(node, "extras")) {
             const std::string name(key.str());
             request->extras.emplace_back(name, reader.Text(value, name));
         }
     }},
};

// As the TV's own launcher starts it.
Play ReadLaunches(const Reading& reading, const toml::node& node) {
    const std::vector<LaunchRequest> requests =
        OneOrMore<LaunchRequest>(node, [&](const toml::node& one) {
            LaunchRequest request;
            const toml::table& table = reading.reader.Table(one, reading.name);
            reading.reader.Members(table, "a launch", kLaunchMembers,
                                   [&](const LaunchMember& member, const toml::node& value) {
                                       member.read(reading.reader, value, &request);
                                   });
            if (!table.empty() && !table.contains("app")) {
                reading.reader.Problem(one, "a launch needs \"app\": write which application.");
            }
            return request;
        });
    return [requests](const StepScene& scene) {
        for (const LaunchRequest& request : requests) {
            const vtv::Launch launch = scene.tv.LaunchApplication(request.app, request.extras);
            if (launch.outcome.rfind("failed", 0) == 0) {
                throw vtv::Error(vtv::ErrorKind::kPlatform, request.app + ": " + launch.outcome);
            }
        }
    };
}

Play ReadFinish(const Reading& reading, const toml::node& node) {
    return [apps = reading.reader.Applications(node, reading.name)](const StepScene& scene) {
        for (const std::string& app : apps) {
            scene.tv.FinishApplication(app);
        }
    };
}

Play ReadCancel(const Reading& reading, const toml::node& node) {
    return [apps = reading.reader.Applications(node, reading.name)](const StepScene& scene) {
        for (const std::string& app : apps) {
            scene.tv.CancelApplication(app);
        }
    };
}

}  // namespace

const std::vector<StepMember>& PlatformMembers() {
    static const std::vector<StepMember> members = {
        {"applications", ReadApplicationMode},
        {"trace", ReadTrace},
        {"clear-faults", ReadClearFaults},
        {"fault", ReadFaults},
        {"power-cycle", ReadPowerCycle},
        {"launch", ReadLaunches},
        {"finish", ReadFinish},
        {"cancel", ReadCancel},
    };
    return members;
}

}  // namespace host
