#include "scenario.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "page.h"
#include "scenario_steps.h"
#include "similar_items.h"

namespace host {

namespace {

using Names = std::vector<std::string>;

const Names kScenarioKeys = {"title", "model", "step"};
const Names kStepKeys = {
    "say",         "set",          "unset",   "policy",   "feature",      "feature-missing",
    "account",     "consent",      "network", "language", "file-add",     "file-remove",
    "state",       "applications", "trace",   "fault",    "clear-faults", "power-cycle",
    "finish",      "cancel",       "press",   "choose",   "answer",       "expect",
    "voice-guide", "hand"};
const Names kExpectKeys = {"page",     "sees",  "box",     "popup",   "reason", "refused",
                           "launched", "toast", "setting", "running", "log",    "no-log",
                           "trace",    "file",  "answer",  "state",   "log-run"};
const Names kItemKeys = {"visible", "enabled", "value", "title",
                         "help",    "reason",  "popup", "choices"};
const Names kAnswerKeys = {"visible", "enabled", "value", "title", "help",
                           "reason",  "choices", "box",   "popup"};
const Names kBoxKeys = {"title", "message", "buttons"};

[[noreturn]] void Fail(const std::string& file, const toml::source_region& where,
                       const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kUsage,
                     file + ":" + std::to_string(where.begin.line) + ": " + text);
}

void CheckKeys(const std::string& file, const toml::table& table, const char* where,
               const Names& known) {
    for (const auto& [key, node] : table) {
        const std::string name(key.str());
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            std::string names;
            for (const std::string& one : known) {
                names += (names.empty() ? "" : ", ") + one;
            }
            Fail(file, key.source(),
                 "\"" + name + "\" is unknown in " + where + ". Known: " + names + ".");
        }
    }
}

const toml::table& RequireTable(const std::string& file, const toml::node& node,
                                const std::string& name) {
    if (!node.is_table()) {
        Fail(file, node.source(), "\"" + name + "\" must be a table: " + name + " = { ... }.");
    }
    return *node.as_table();
}

std::string RequireText(const std::string& file, const toml::table& table, const char* name,
                        const std::string& otherwise) {
    const toml::node* node = table.get(name);
    if (node != nullptr && !node->is_string()) {
        Fail(file, node->source(), std::string("\"") + name + "\" must be a text in quotes.");
    }
    return node != nullptr ? node->as_string()->get() : otherwise;
}

void RequireItemName(const std::string& file, const toml::source_region& where,
                     const std::string& name) {
    if (FindItem(name) != nullptr) {
        return;
    }
    const Names similar = SimilarItems(name);
    Fail(file, where,
         "there is no item \"" + name + "\"." +
             (similar.empty() ? "" : " Did you mean " + similar.front() + "?"));
}

void CheckExpect(const std::string& file, const toml::node& node) {
    const toml::table& expect = RequireTable(file, node, "expect");
    CheckKeys(file, expect, "expect", kExpectKeys);
    for (const char* box : {"box", "popup"}) {
        if (const toml::node* one = expect.get(box)) {
            CheckKeys(file, RequireTable(file, *one, box), box, kBoxKeys);
        }
    }
    if (const toml::node* state = expect.get("state")) {
        RequireTable(file, *state, "state");
    }
    if (const toml::node* answer = expect.get("answer")) {
        for (const auto& [key, item] : RequireTable(file, *answer, "answer")) {
            RequireItemName(file, key.source(), std::string(key.str()));
            CheckKeys(file, RequireTable(file, item, std::string(key.str())), "an answer",
                      kAnswerKeys);
        }
    }
    const toml::node* page = expect.get("page");
    if (page == nullptr) {
        return;
    }
    for (const auto& [key, item] : RequireTable(file, *page, "page")) {
        RequireItemName(file, key.source(), std::string(key.str()));
        if (item.is_table()) {
            CheckKeys(file, *item.as_table(), "an item", kItemKeys);
            continue;
        }
        static const std::set<std::string> kStates = {"hidden", "dimmed", "enabled"};
        if (!item.is_string() || kStates.count(item.as_string()->get()) == 0) {
            Fail(file, item.source(),
                 "an item is \"hidden\", \"dimmed\", \"enabled\", or a table.");
        }
    }
}

void CheckStep(const std::string& file, const toml::node& node) {
    const toml::table& step = RequireTable(file, node, "step");
    CheckKeys(file, step, "a step", kStepKeys);
    const std::string press = RequireText(file, step, "press", "");
    if (!press.empty()) {
        RequireItemName(file, step.get("press")->source(), press);
    }
    if (const toml::node* hand = step.get("hand")) {
        for (const auto& [key, value] : RequireTable(file, *hand, "hand")) {
            RequireItemName(file, key.source(), std::string(key.str()));
        }
    }
    for (const char* name : {"choose", "answer"}) {
        if (step.contains(name) && press.empty()) {
            Fail(file, step.get(name)->source(),
                 std::string("\"") + name + "\" needs a \"press\" in the same step.");
        }
    }
    const std::string answer = RequireText(file, step, "answer", "ok");
    if (answer != "ok" && answer != "cancel") {
        Fail(file, step.get("answer")->source(), "\"answer\" is \"ok\" or \"cancel\".");
    }
    if (const toml::node* expect = step.get("expect")) {
        CheckExpect(file, *expect);
    }
}

}  // namespace

Scenario LoadScenario(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, file + ": there is no such scenario.");
    }
    toml::table root;
    try {
        root = toml::parse_file(file);
    } catch (const toml::parse_error& problem) {
        Fail(file, problem.source(), "this is no TOML: " + std::string(problem.description()));
    }
    CheckKeys(file, root, "a scenario", kScenarioKeys);
    Scenario scenario;
    scenario.file = file;
    scenario.title = RequireText(file, root, "title", std::filesystem::path(file).stem().string());
    scenario.model = RequireText(file, root, "model", "farfield-eu");
    const toml::node* steps = root.get("step");
    if (steps == nullptr || !steps->is_array() || steps->as_array()->empty()) {
        Fail(file, root.source(), "a scenario needs steps: begin each with [[step]].");
    }
    for (const toml::node& step : *steps->as_array()) {
        CheckStep(file, step);
    }
    scenario.steps = std::make_shared<Scenario::Steps>(std::move(root));
    return scenario;
}

bool ScenarioResult::Passed() const {
    return std::all_of(steps.begin(), steps.end(),
                       [](const StepResult& step) { return step.played && step.failures.empty(); });
}

}  // namespace host
