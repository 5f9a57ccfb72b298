// vtv __complete: what may come next on the command line, for the shells' glue scripts in
// packaging/.
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "help.h"
#include "host/core/known_settings.h"
#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

using Words = std::vector<std::string>;

Words Items() {
    Words words;
    for (const host::Item& item : host::PageItems()) {
        words.emplace_back(item.name);
    }
    return words;
}

Words Tvs() {
    Words words;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(vtv::HomeDir(), error)) {
        words.push_back(entry.path().filename().string());
    }
    return words;
}

Words Models() {
    Words words;
    for (const std::string& file : vtv::ModelFiles()) {
        words.push_back(fs::path(file).stem().string());
    }
    return words;
}

// The settings that the named TV has, and those that the page knows. Never makes a TV.
Words Settings(const Words& line) {
    Words words;
    for (const host::KnownSetting& known : host::KnownSettings()) {
        words.emplace_back(known.key);
    }
    std::string tv = "default";
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        tv = line[i] == "--tv" ? line[i + 1] : tv;
    }
    if (vtv::Tv::IsTv(TvPath(tv))) {
        for (const vtv::Setting& setting : vtv::Tv(TvPath(tv)).Settings()) {
            words.push_back(setting.key);
        }
    }
    return words;
}

Words Features() {
    Words words;
    for (const vtv::FeatureKey& feature : vtv::KnownFeatures()) {
        words.push_back(feature.key.substr(feature.key.rfind('/') + 1));
    }
    return words;
}

const CLI::App* Find(const CLI::App& app, const std::string& name) {
    const auto found =
        app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

// What an option or a positional argument takes; empty where only the user knows, or a file is
// meant.
Words Values(const std::string& what, const Words& line) {
    if (what == "EXPLORATION") {
        return {"table", "check", "sequences", "diff", "depends", "impact"};
    }
    if (what == "--tv" && line.front() == "impact") {
        return Models();
    }
    if (what == "--tv" || what == "TV" || what == "OTHER") {
        return Tvs();
    }
    if (what == "--model") {
        return Models();
    }
    if (what == "ITEM") {
        return Items();
    }
    if (what == "KEY") {
        return Settings(line);
    }
    if (what == "TYPE") {
        return {"bool", "int", "string"};
    }
    if (what == "FEATURE") {
        return Features();
    }
    if (what == "FUNCTION") {
        return vtv::PlatformFunctions();
    }
    if (what == "--priority") {
        return {"debug", "info", "warning", "error"};
    }
    return {};
}

Words Candidates(const CLI::App& app, const Words& line) {
    const CLI::App* verb = &app;
    size_t begin = 0;
    while (begin + 1 < line.size()) {
        if (line[begin].rfind("--", 0) == 0 && verb->get_require_subcommand_min() > 0) {
            begin += 2;  // an option before the verb, and its value
        } else if (const CLI::App* next = Find(*verb, line[begin])) {
            verb = next;
            ++begin;
        } else {
            break;
        }
    }
    const std::string& last = line.back();
    if (last.rfind("-", 0) == 0) {
        return OptionNames(*verb);
    }
    if (verb->get_require_subcommand_min() > 0) {
        return VerbNames(*verb);
    }
    if (line.size() >= 2 && line[line.size() - 2].rfind("--", 0) == 0) {
        const Words values = Values(line[line.size() - 2], line);
        if (!values.empty()) {
            return values;
        }
    }
    size_t positional = 0;
    for (size_t i = begin; i + 1 < line.size(); ++i) {
        const bool option = line[i].rfind("-", 0) == 0;
        const bool value =
            i > begin && line[i - 1].rfind("--", 0) == 0 && !Values(line[i - 1], line).empty();
        positional += option || value ? 0 : 1;
    }
    size_t at = 0;
    for (const CLI::Option* option : verb->get_options()) {
        if (option->get_positional() && at++ == positional) {
            return Values(option->get_name(true, false), line);
        }
    }
    const bool isOfItems =
        begin < line.size() && (line[begin] == "table" || line[begin] == "depends");
    return verb->get_name() == "explore" && isOfItems ? Items() : Words();
}

}  // namespace

void Complete(const CLI::App& app, Words line) {
    if (line.empty()) {
        line.emplace_back();
    }
    Words candidates = Candidates(app, line);
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    for (const std::string& candidate : candidates) {
        if (candidate.rfind(line.back(), 0) == 0) {
            std::cout << candidate << '\n';
        }
    }
}

}  // namespace cli
