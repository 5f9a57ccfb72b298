#include "scenario.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "scenario_steps.h"
#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/text_file.h"
#include "virtual-tv/model/toml_reader.h"

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
        if (error.kind() == vtv::ErrorKind::kPlatform) {
            throw;  // nothing is known to be wrong with the scenario
        }
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
    {"version", [](ScenarioReader&, const toml::node&, Scenario*) {}},  // read before all others
    {"title", [](ScenarioReader& reader, const toml::node& node,
                 Scenario* scenario) { scenario->title = reader.Text(node, "title"); }},
    {"model", ReadModel},
    {"step", ReadSteps},
};

// False for a newer one, which another program has to read: what is wrong here may be right there.
bool ReadVersion(ScenarioReader& reader, const toml::table& root) {
    const toml::node* node = root.get("version");
    if (node == nullptr) {
        return true;
    }
    const std::optional<int64_t> version = node->value_exact<int64_t>();
    const std::string problem = vtv::VersionProblem("a scenario", version, vtv::kScenarioVersion);
    if (!problem.empty()) {
        reader.Problem(*node, problem);
    }
    return !version || *version <= vtv::kScenarioVersion;
}

void ReadDocument(ScenarioReader& reader, toml::table& root, Scenario* scenario) {
    if (!ReadVersion(reader, root)) {
        return;
    }
    std::string tooMany;
    if (const toml::node* node = vtv::FindTooMany(root, &tooMany)) {
        reader.Problem(*node, tooMany);
        return;
    }
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

}  // namespace

Scenario ReadScenario(const std::string& file) {
    if (!vtv::IsThere(file)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, file + ": there is no such scenario.");
    }
    return ParseScenario(vtv::ReadTextFile(file), file);
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

bool ScenarioResult::Failed() const {
    return error.empty() && std::any_of(steps.begin(), steps.end(), [](const StepResult& step) {
               return !step.failures.empty();
           });
}

bool ScenarioResult::Passed() const {
    return problems.empty() && error.empty() &&
           std::all_of(steps.begin(), steps.end(),
                       [](const StepResult& step) { return step.played && step.failures.empty(); });
}

ScenarioResult Unplayed(const Scenario& scenario) {
    ScenarioResult result;
    result.file = scenario.file;
    result.title = scenario.title;
    result.problems = scenario.problems;
    if (scenario.problems.empty()) {
        for (const ScenarioStep& step : *scenario.steps) {
            result.steps.push_back({step.name, step.line, {}, {}, false, 0});
        }
    }
    return result;
}

}  // namespace host
