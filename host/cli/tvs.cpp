// vtv new and vtv list: the TVs and the models that they are made from.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

#include "text_width.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

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
        const std::string dir = TvPath(options->name);
        if (vtv::Tv::IsTv(dir)) {
            throw Refusal(dir + ": there is a TV already.");
        }
        vtv::Tv::Create(dir, vtv::FindModel(options->model));
        if (common.json) {
            Json::Value json;
            json["dir"] = dir;
            json["model"] = options->model;
            PrintJson(json);
        } else {
            std::cout << "Made " << dir << ". Look at it: vtv show --tv " << options->name << '\n';
        }
    });
}

Json::Value ListTvs() {
    Json::Value list(Json::arrayValue);
    std::error_code error;
    std::vector<std::string> dirs;
    for (const fs::directory_entry& entry : fs::directory_iterator(vtv::HomeDir(), error)) {
        if (vtv::Tv::IsTv(entry.path().string())) {
            dirs.push_back(entry.path().string());
        }
    }
    std::sort(dirs.begin(), dirs.end());
    for (const std::string& dir : dirs) {
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
        width = std::max(width, Width(entry["name"].asString()));
    }
    for (const Json::Value& entry : list) {
        std::cout << Paint(Look::kBold, Pad(entry["name"].asString(), width)) << "  "
                  << (entry.isMember("problem") ? entry["problem"].asString()
                                                : entry["title"].asString());
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
            std::cout << "There are no TVs in " << vtv::HomeDir()
                      << " yet. vtv show makes the first.\n";
        } else {
            PrintList(list);
        }
    });
}

}  // namespace

void AddTvVerbs(CLI::App& app, Common& common) {
    AddNew(app, common);
    AddList(app, common);
}

}  // namespace cli
