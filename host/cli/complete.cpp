// vtv __complete: what may come next on the command line, for the shells' glue scripts in
// packaging/.
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <span>

#include "host/core/tv_names.h"
#include "program/complete.h"
#include "program/findings.h"
#include "program/help.h"
#include "verbs.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/whole_tvs.h"

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
    for (const std::string& dir : vtv::TvsIn(vtv::HomeDir())) {
        words.push_back(fs::path(dir).filename().string());
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

// The folder of the TV that a line is about, whether there is one or not.
std::string NamedTv(const Words& line) {
    const char* environment = std::getenv("VTV_TV");
    std::string tv = environment != nullptr && *environment != '\0' ? environment : "default";
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        tv = line[i] == "--tv" ? line[i + 1] : tv;
    }
    return TvPath(tv);
}

// The settings that the named TV has, and those that the page knows. Never makes a TV.
Words Settings(const Words& line) {
    Words words;
    for (const vtv::KnownSetting& known : vtv::KnownSettings()) {
        words.emplace_back(known.key);
    }
    if (vtv::Tv::IsTv(NamedTv(line))) {
        for (const vtv::Setting& setting : vtv::Tv(NamedTv(line)).Settings()) {
            words.push_back(setting.key);
        }
    }
    return words;
}

Words Features(Words words = {}) {
    for (const vtv::KnownFeature& feature : vtv::KnownFeatures()) {
        words.push_back(feature.key.substr(feature.key.rfind('/') + 1));
    }
    return words;
}

// What --with can try.
Words TriedNames(const Words& line) {
    Words words = Features(Settings(line));
    for (const host::StateName& known : host::StateNames()) {
        words.emplace_back(known.name);
    }
    return words;
}

// The names that conditions begin with, and of items all that can be waited for.
Words Conditions(const Words& line) {
    Words words;
    for (const std::string& name : TriedNames(line)) {
        words.push_back(name + "=");
    }
    for (const host::Item& item : host::PageItems()) {
        for (const char* state : {"enabled", "disabled", "shown", "hidden"}) {
            words.push_back(std::string(item.name) + "=" + state);
        }
    }
    return words;
}

Words Languages() {
    Words words = vtv::Tv::Languages();
    for (const std::string& file : vtv::ModelFiles()) {
        try {
            const vtv::Model model = vtv::LoadModel(file);
            const auto language = model.settings.find(vtv::kLanguageKey);
            if (language != model.settings.end()) {
                words.push_back(vtv::ToText(language->second));
            }
        } catch (const vtv::Error&) {
            continue;  // a broken model has none
        }
    }
    return words;
}

// The applications that run on the named TV. Never makes a TV.
Words RunningApplications(const Words& line) {
    Words words;
    if (vtv::Tv::IsTv(NamedTv(line))) {
        for (const vtv::RunningApplication& running :
             vtv::Tv(NamedTv(line)).RunningApplications()) {
            words.push_back(running.appId);
        }
    }
    return words;
}

// Those of the named TV's model that have a command, which may be allowed.
Words Commands(const Words& line) {
    Words words;
    if (vtv::Tv::IsTv(NamedTv(line))) {
        const vtv::Tv tv(NamedTv(line));
        for (const vtv::Package& package : tv.GetModel().packages) {
            if (!package.command.empty()) {
                words.push_back(package.appId);
            }
        }
    }
    return words;
}

// What a verb that looks at one thing of the TV, or changes it, sets it to.
Words States(const std::string& verb, const Words& line) {
    if (verb == "vtv language") {
        return Languages();
    }
    if (verb == "vtv account") {
        return {"signed-in", "signed-out"};
    }
    if (verb == "vtv network") {
        return {"connected", "disconnected", "host"};
    }
    if (verb == "vtv voice-guide" || verb == "vtv consent") {
        return {"on", "off"};
    }
    for (const std::string& word : line) {
        const host::Item* item = verb == "vtv choose" ? host::FindItem(word) : nullptr;
        if (item != nullptr && item->kind == host::ItemKind::kSwitch) {
            return {"on", "off"};
        }
        for (const vtv::KnownFeature& known : vtv::KnownFeatures()) {
            if (verb == "vtv feature" && (word == known.key || word == known.Name())) {
                return {known.values.begin(), known.values.end()};
            }
        }
    }
    return {};
}

// What an option or a positional argument takes; empty where only the user knows, or a file is
// meant.
Words WordsFor(const CLI::App& app, const std::string& what, const Words& line) {
    const std::string verb = program::FullName(app);
    if (what == "EXPLORATION") {
        return {"table", "check", "sequences", "diff", "replay", "merge", "depends", "impact"};
    }
    if (what == "--tv" && verb == "vtv impact") {
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
        return verb == "vtv describe" ? Features(Settings(line)) : Settings(line);
    }
    if (what == "--with") {
        return TriedNames(line);
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
    if (what == "--language") {
        return vtv::Tv::Languages();
    }
    if (what == "--color") {
        return {"auto", "always", "never"};
    }
    if (what == "--format") {
        return program::kFindingsFormats;
    }
    if (what == "CONDITION") {
        return Conditions(line);
    }
    if (what == "CONSENT") {
        return {std::begin(vtv::kConsents), std::end(vtv::kConsents)};
    }
    if (what == "MODE") {
        return {"process", "auto", "record"};
    }
    if (what == "APP") {
        return verb == "vtv app finish" || verb == "vtv app cancel" ? RunningApplications(line)
                                                                    : Commands(line);
    }
    return what == "VALUE" ? States(verb, line) : Words();
}

}  // namespace

void Complete(const CLI::App& app, const std::vector<std::string>& line) {
    // "help app f" goes on as "app f", as far as verbs go.
    if (line.size() > 1 && line.front() == "help") {
        const Words rest(line.begin() + 1, line.end());
        if (program::VerbOf(app, rest).verb->get_require_subcommand_min() > 0) {
            Complete(app, rest);
        }
        return;
    }
    const auto [verb, begin] = program::VerbOf(app, line);
    const std::span behind = std::span(line).subspan(begin);
    if (verb->get_prefix_command() && CompleteExploration({behind.begin(), behind.end()})) {
        return;
    }
    program::Complete(app, line, WordsFor);
}

}  // namespace cli
