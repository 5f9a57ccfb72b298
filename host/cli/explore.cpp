// vtv explore and vtv impact: run vtv-explore, the program that is beside this one.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>

#include "verbs.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

using Words = std::vector<std::string>;

constexpr char kExplorations[] = "table, check, sequences, diff, depends or impact";

struct ImpactOptions {
    std::string before;
    std::string after;
    Words models;
    bool json = false;
    bool html = false;
    bool quiet = false;
    int jobs = 0;
};

std::string Explorer() {
    std::error_code ignored;
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const fs::path program = folder / "vtv-explore";
    if (!fs::exists(program, ignored)) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         "This needs the program vtv-explore, which is not in " + folder.string() +
                             ". Install it there, or build it: cmake --build BUILD-FOLDER "
                             "--target vtv-explore");
    }
    return program.string();
}

// Goes on as that program, so that its exit code, signals and terminal are this one's.
[[noreturn]] void BecomeExplorer(const Common& common, const Words& arguments) {
    const std::string program = Explorer();
    if (!common.provider.empty()) {
        setenv("VTV_PROVIDER", common.provider.c_str(), 1);
    }
    Words words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::cout.flush();
    execv(program.c_str(), argv.data());
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     program + ": cannot be started: " + std::strerror(errno) + ".");
}

void Explore(const Common& common, const CLI::App& verb, const std::string& exploration) {
    Words words = verb.remaining();
    if (exploration.empty() && words.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage, std::string("Say which exploration: ") +
                                                     kExplorations + ".\nSee: vtv explore --help");
    }
    if (exploration.empty() && (words.front() == "--help" || words.front() == "-h")) {
        throw CLI::CallForHelp();
    }
    if (!exploration.empty()) {
        words.insert(words.begin(), exploration);
    }
    if (!common.provider.empty() && words.front() == "diff") {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "vtv explore diff: --provider has no effect here: name both providers.");
    }
    BecomeExplorer(common, words);
}

void Impact(const Common& common, const ImpactOptions& options) {
    Words words = {"impact", options.before, options.after};
    for (const std::string& model : options.models) {
        words.insert(words.end(), {"--tv", model});
    }
    if (options.json) {
        words.emplace_back("--json");
    }
    if (options.html) {
        words.emplace_back("--html");
    }
    if (options.quiet) {
        words.emplace_back("--quiet");
    }
    if (options.jobs != 0) {
        words.insert(words.end(), {"--jobs", std::to_string(options.jobs)});
    }
    BecomeExplorer(common, words);
}

}  // namespace

void AddExplore(CLI::App& app, Common& common) {
    const auto exploration = std::make_shared<std::string>();
    CLI::App* explore = AddVerb(
        app, common, "explore", "Ask a provider everything in every state, and prove that it was",
        "  vtv explore table voice-wake-up           the complete rules of an item\n"
        "  vtv explore table --html -o rules.html    all of them, with a diagram each\n"
        "  vtv explore check                         what must hold in every state\n"
        "  vtv explore sequences                     and after whatever a viewer does\n"
        "  vtv explore diff old.so new.so            may I ship this change?\n"
        "  vtv explore depends voice-wake-up         what makes an item change\n\n"
        "Each exploration has a help of its own: vtv explore check --help. It is the program\n"
        "vtv-explore that does the work; it must be installed beside vtv.",
        kProvider);
    // What follows the first words belongs to the other program, its --help included.
    explore->prefix_command();
    explore->set_help_flag();
    explore->add_option("EXPLORATION", *exploration, kExplorations);
    explore->callback([&common, explore, exploration] { Explore(common, *explore, *exploration); });

    const auto comparing = std::make_shared<ImpactOptions>();
    CLI::App* impact = AddVerb(
        app, common, "impact", "Show what a new assistant policy changes, and for whom",
        "  vtv policy show --json > old.json\n"
        "  vtv impact old.json new.json\n"
        "  vtv impact old.json new.json --tv farfield-eu --tv farfield-cn\n"
        "  vtv impact old.json new.json --html > impact.html\n\n"
        "Looks at every model and every user: signed in or not, set up or not, with each current\n"
        "assistant. Ends with 0 when nothing changes, with 1 when something does, and with 2 when\n"
        "a policy is malformed; what a TV would do with it is told. It is the program vtv-explore\n"
        "that does the work; it must be installed beside vtv.",
        kProvider);
    impact->add_option("OLD", comparing->before, "The policy that TVs have, a JSON file")
        ->required();
    impact->add_option("NEW", comparing->after, "The policy that is to be published")->required();
    impact->add_option("--tv", comparing->models, "A TV model, by name or file; again for more")
        ->type_name("MODEL")
        ->take_all()
        ->expected(1);
    CLI::Option* json = impact->add_flag("--json", comparing->json, "Print JSON for programs");
    impact->add_flag("--html", comparing->html, "Print an HTML page")->excludes(json);
    impact->add_flag("--quiet,-q", comparing->quiet, "No progress and no rate");
    impact->add_option("--jobs,-j", comparing->jobs, "Worker processes; 0: one a processor")
        ->type_name("N")
        ->check(WholeNumber(0));
    impact->callback([&common, comparing] { Impact(common, *comparing); });
}

}  // namespace cli
