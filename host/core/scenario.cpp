#include "scenario.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "scenario_steps.h"

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr char kDefaultModel[] = "farfield-eu";

struct TopMember {
    const char* name;
    void (*read)(ScenarioReader& reader, const toml::node& node, Scenario* scenario);
};

// A model that comes with the virtual TV, by its name; any other by its path, seen from the
// scenario. "" for one that is not there.
std::string FindModelFile(const std::string& model, const std::string& scenario) {
    for (const std::string& file : vtv::ModelFiles()) {
        if (fs::path(file).stem() == model) {
            return file;
        }
    }
    std::error_code error;
    const fs::path path = fs::path(scenario).parent_path() / model;
    return fs::is_regular_file(path, error) ? path.string() : "";
}

void ReadModel(ScenarioReader& reader, const toml::node& node, Scenario* scenario) {
    const std::string model = reader.Text(node, "model");
    if (!node.is_string()) {
        return;
    }
    scenario->model = FindModelFile(model, scenario->file);
    if (scenario->model.empty()) {
        std::vector<std::string> names;
        std::string known;
        for (const std::string& file : vtv::ModelFiles()) {
            names.push_back(fs::path(file).stem().string());
            known += (known.empty() ? "" : ", ") + names.back();
        }
        reader.Problem(node, "there is no TV model \"" + model + "\"." + DidYouMean(model, names) +
                                 " Known: " + known +
                                 "; a model of your own is named by its path, seen from the "
                                 "scenario's folder.");
        return;
    }
    try {
        reader.model = vtv::LoadModel(scenario->model);
    } catch (const vtv::Error& error) {
        reader.ForeignProblem(node, error.what());
    }
}

void ReadSteps(ScenarioReader& reader, const toml::node& node, Scenario* scenario) {
    const toml::array* list = node.as_array();
    if (list == nullptr || list->empty()) {
        reader.Problem(node, "a scenario needs steps: begin each with [[step]].");
        return;
    }
    auto steps = std::make_shared<std::vector<ScenarioStep>>();
    for (const toml::node& step : *list) {
        if (step.is_table()) {
            steps->push_back(ReadStep(reader, *step.as_table(), steps->size() + 1));
        } else {
            reader.Problem(step, "a step must be a table: begin each with [[step]].");
        }
    }
    scenario->steps = steps;
}

// The model before the steps, which depend on it.
constexpr TopMember kTopMembers[] = {
    {"title", [](ScenarioReader& reader, const toml::node& node,
                 Scenario* scenario) { scenario->title = reader.Text(node, "title"); }},
    {"model", ReadModel},
    {"step", ReadSteps},
};

void ReadDocument(ScenarioReader& reader, toml::table& root, Scenario* scenario) {
    if (!root.contains("model")) {
        root.insert("model", kDefaultModel);
    }
    reader.Members(root, "a scenario", kTopMembers,
                   [&](const TopMember& member, const toml::node& node) {
                       member.read(reader, node, scenario);
                   });
    if (!root.contains("step")) {
        reader.Problem(root, "a scenario needs steps: begin each with [[step]].");
    }
}

std::string ReadScenarioText(const std::string& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, file + ": there is no such scenario.");
    }
    if (fs::exists(status) && status.type() != fs::file_type::regular) {
        throw vtv::Error(vtv::ErrorKind::kUsage, file + ": this is no file; name a scenario.");
    }
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream.is_open() || stream.bad()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         file + ": cannot be read: " + std::strerror(errno) + ".");
    }
    return text.str();
}

}  // namespace

Scenario ReadScenario(const std::string& file) {
    return ParseScenario(ReadScenarioText(file), file);
}

Scenario ParseScenario(const std::string& text, const std::string& file) {
    Scenario scenario;
    scenario.file = file;
    ScenarioReader reader(file);
    try {
        toml::table root = toml::parse(text);
        ReadDocument(reader, root, &scenario);
    } catch (const toml::parse_error& problem) {
        reader.Problem(problem.source(),
                       "this is no TOML: " + std::string(problem.description()) + ".");
    }
    if (scenario.title.empty()) {
        scenario.title = fs::path(file).stem().string();
    }
    scenario.problems = reader.Problems();
    return scenario;
}

namespace {

std::set<std::string> TomlFiles(const std::string& folder) {
    std::set<std::string> files;
    for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
        if (entry->is_directory() && vtv::Tv::IsTv(entry->path().string())) {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file() && entry->path().extension() == ".toml") {
            files.insert(entry->path().string());
        }
    }
    return files;
}

}  // namespace

std::vector<Scenario> ReadScenarios(const std::string& folder) {
    std::vector<Scenario> scenarios;
    std::set<fs::path> models;
    for (const std::string& file : TomlFiles(folder)) {
        Scenario scenario;
        try {
            scenario = ReadScenario(file);
        } catch (const vtv::Error& error) {
            scenario.file = scenario.title = file;
            scenario.problems = {error.what()};
        }
        models.insert(fs::weakly_canonical(scenario.model));
        scenarios.push_back(std::move(scenario));
    }
    const auto isModel = [&](const Scenario& scenario) {
        return models.count(fs::weakly_canonical(scenario.file)) != 0;
    };
    scenarios.erase(std::remove_if(scenarios.begin(), scenarios.end(), isModel), scenarios.end());
    if (scenarios.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         folder + ": there is no scenario (*.toml) in this folder.");
    }
    return scenarios;
}

bool ScenarioResult::Passed() const {
    return problems.empty() && std::all_of(steps.begin(), steps.end(), [](const StepResult& step) {
               return step.played && step.failures.empty();
           });
}

}  // namespace host
