// vtv new, list, copy, rename, remove: the TVs, and the models that they are made from.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

#include "program/text_width.h"
#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/whole_tvs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

// The folder of a TV that is yet to be.
std::string PlaceForTv(const std::string& name) {
    std::string dir = TvPath(name);
    if (vtv::Tv::IsTv(dir)) {
        throw Refusal(dir + ": there is a TV already.");
    }
    return dir;
}

struct NewOptions {
    std::string name;
    std::string model = "farfield-eu";
};

void AddNew(CLI::App& app, Common& common) {
    const auto options = std::make_shared<NewOptions>();
    CLI::App* verb =
        AddVerb(app, common, "new", "Make a TV from a model",
                "  vtv new kitchen --model ptt-passthrough-us\n"
                "  vtv new ./tv-under-test --model my-model.toml\n"
                "  vtv list --models                the models that come with vtv\n\n"
                "A name makes the TV among those that vtv list shows; a path makes it there.",
                kJson);
    verb->add_option("NAME", options->name, "A name, or the path of a folder")->required();
    verb->add_option("--model", options->model, "The name of a model, or a TOML file")
        ->type_name("MODEL")
        ->capture_default_str();
    verb->callback([&common, options] {
        const std::string dir = PlaceForTv(options->name);
        vtv::Tv::Create(dir, vtv::FindModel(options->model));
        if (common.json) {
            Json::Value json;
            json["dir"] = dir;
            json["model"] = options->model;
            PrintJson(json);
        } else {
            TellOfNewTv(dir, options->name);
        }
    });
}

Json::Value ListTvs() {
    Json::Value list(Json::arrayValue);
    for (const std::string& dir : vtv::TvsIn(vtv::HomeDir())) {
        Json::Value entry;
        entry["name"] = fs::path(dir).filename().string();
        entry["dir"] = dir;
        try {
            const vtv::Tv tv(dir);
            entry["model"] = tv.GetModel().name;
            entry["title"] = tv.GetModel().title;
            entry["language"] = tv.Language();
        } catch (const vtv::Error& problem) {
            entry["problem"] = problem.what();
        }
        list.append(entry);
    }
    return list;
}

Json::Value ListModels() {
    Json::Value list(Json::arrayValue);
    for (const std::string& file : vtv::ModelFiles()) {
        Json::Value entry;
        entry["name"] = fs::path(file).stem().string();
        entry["file"] = file;
        try {
            const vtv::Model model = vtv::LoadModel(file);
            entry["title"] = model.title;
            entry["description"] = model.description;
        } catch (const vtv::Error& problem) {
            entry["problem"] = problem.what();
        }
        list.append(entry);
    }
    return list;
}

void PrintList(const Json::Value& list) {
    size_t width = 0;
    for (const Json::Value& entry : list) {
        width = std::max(width, program::Width(entry["name"].asString()));
    }
    for (const Json::Value& entry : list) {
        std::cout << Paint(Look::kBold, program::Pad(entry["name"].asString(), width)) << "  "
                  << program::OneLine(
                         entry[entry.isMember("problem") ? "problem" : "title"].asString());
        if (entry.isMember("model")) {
            std::cout << Paint(
                Look::kDim, "  " + entry["model"].asString() + ", " + entry["language"].asString());
        }
        std::cout << '\n';
    }
}

void AddList(CLI::App& app, Common& common) {
    const auto models = std::make_shared<bool>(false);
    CLI::App* verb = AddVerb(app, common, "list", "List the TVs, or the models to make TVs from",
                             "  vtv list\n"
                             "  vtv list --models",
                             kJson);
    verb->add_flag("--models", *models, "The models that come with vtv");
    verb->callback([&common, models] {
        const Json::Value list = *models ? ListModels() : ListTvs();
        if (common.json) {
            PrintJson(list);
        } else if (list.empty()) {
            std::cout << "There are no TVs in " << program::OneLine(vtv::HomeDir())
                      << " yet. vtv show makes the first.\n";
        } else {
            PrintList(list);
        }
    });
}

struct FromTo {
    std::string from;
    std::string to;
};

std::shared_ptr<FromTo> AddFromTo(CLI::App& verb, const char* from, const char* to) {
    auto options = std::make_shared<FromTo>();
    verb.add_option("TV", options->from, from)->required();
    verb.add_option("NEW", options->to, to)->required();
    return options;
}

void AddCopy(CLI::App& app, Common& common) {
    CLI::App* verb = AddVerb(
        app, common, "copy", "Make a TV that is as another one is now",
        "  vtv copy kitchen kitchen-before\n\n"
        "Others may go on writing meanwhile. What happened stays with the other TV: its log,\n"
        "its trace, what was launched, and the applications that run on it.",
        kJson);
    const auto options =
        AddFromTo(*verb, "The TV that is copied", "Name or folder of the copy, as for vtv new");
    verb->callback([&common, options] {
        const std::string from = TvDir(options->from);
        const std::string dir = PlaceForTv(options->to);
        vtv::CopyTv(from, dir);
        if (common.json) {
            Json::Value json;
            json["from"] = from;
            json["dir"] = dir;
            PrintJson(json);
        } else {
            TellOfNewTv(dir, options->to);
        }
    });
}

// Which applications a TV went away from.
Json::Value Names(const std::vector<vtv::RunningApplication>& applications) {
    Json::Value names(Json::arrayValue);
    for (const vtv::RunningApplication& application : applications) {
        names.append(application.appId);
    }
    return names;
}

void TellOfApplications(const Json::Value& names, const char* what) {
    for (const Json::Value& name : names) {
        std::cout << program::OneLine(what + name.asString()) << '\n';
    }
}

void AddRename(CLI::App& app, Common& common) {
    CLI::App* verb = AddVerb(
        app, common, "rename", "Give a TV another name, or move it to another folder",
        "  vtv rename kitchen bedroom\n\n"
        "What watches the TV ends with 4, as when its folder is moved by hand, and so do the\n"
        "simulated applications that run on it.",
        kJson);
    const auto options = AddFromTo(*verb, "The TV", "Its new name or folder, as for vtv new");
    verb->callback([&common, options] {
        const std::string from = TvDir(options->from);
        const std::string dir = PlaceForTv(options->to);
        const Json::Value running = Names(vtv::RenameTv(from, dir));
        if (common.json) {
            Json::Value json;
            json["from"] = from;
            json["dir"] = dir;
            json["running"] = running;
            PrintJson(json);
        } else if (!IsQuiet()) {
            std::cout << program::OneLine("Moved " + from + " to " + dir + ".") << '\n';
            TellOfApplications(running, "It was running on it and is told that its TV is gone: ");
        }
    });
}

struct RemoveOptions {
    std::string name;
    bool force = false;
};

void AddRemove(CLI::App& app, Common& common) {
    const auto options = std::make_shared<RemoveOptions>();
    CLI::App* verb = AddVerb(
        app, common, "remove", "Remove a TV with all that it holds",
        "  vtv remove kitchen\n"
        "  vtv remove kitchen --force       end the applications that run on it first\n\n"
        "Ends with 1, and nothing is removed, while applications run on the TV, and when its\n"
        "folder holds files that are no part of a TV.",
        kJson);
    verb->add_option("TV", options->name, "The TV")->required();
    verb->add_flag("--force", options->force,
                   "End its applications, and remove files of others in its folder as well");
    verb->callback([&common, options] {
        const std::string dir = TvDir(options->name);
        const Json::Value ended = Names(vtv::RemoveTv(dir, options->force));
        if (common.json) {
            Json::Value json;
            json["dir"] = dir;
            json["ended"] = ended;
            PrintJson(json);
        } else if (!IsQuiet()) {
            TellOfApplications(ended, "Ended ");
            std::cout << program::OneLine("Removed " + dir + ".") << '\n';
        }
    });
}

}  // namespace

void AddTvVerbs(CLI::App& app, Common& common) {
    AddNew(app, common);
    AddList(app, common);
    AddCopy(app, common);
    AddRename(app, common);
    AddRemove(app, common);
}

}  // namespace cli
