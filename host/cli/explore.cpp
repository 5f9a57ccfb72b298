// vtv explore and vtv impact: run vtv-explore, the program that is beside this one.
#include <cstdlib>
#include <memory>

#include "other_program.h"
#include "program/impact_options.h"
#include "verbs.h"

namespace cli {

namespace {

using Words = std::vector<std::string>;

constexpr char kExplorations[] = "table, check, sequences, diff, replay, merge, depends or impact";

[[noreturn]] void BecomeExplorer(const Common& common, const Words& arguments) {
    const std::string program =
        ProgramBeside("vtv-explore",
                      "Install it there, or build it: cmake --build BUILD-FOLDER --target "
                      "vtv-explore");
    if (!common.provider.empty()) {
        setenv("VTV_PROVIDER", common.provider.c_str(), 1);
    }
    Become(program, arguments);
}

void Explore(const Common& common, const CLI::App& verb, const std::string& exploration) {
    Words words = verb.remaining();
    if (exploration.empty() && words.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage, std::string("Say which exploration: ") +
                                                     kExplorations + ". See: vtv explore --help");
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
    if (!common.provider.empty() && words.front() == "merge") {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "vtv explore merge: --provider has no effect here: no provider is asked.");
    }
    BecomeExplorer(common, words);
}

void Impact(const Common& common, const program::ImpactOptions& options) {
    Words words = {"impact", options.before, options.after};
    for (const std::string& model : options.models) {
        words.insert(words.end(), {"--tv", model});
    }
    if (options.json) {
        words.emplace_back("--json");
    } else if (options.html) {
        words.emplace_back("--html");
    } else {
        words.insert(words.end(), {"--format", options.format});
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

bool CompleteExploration(std::vector<std::string> words) {
    words.insert(words.begin(), "__complete");
    try {
        BecomeExplorer({}, words);
    } catch (const vtv::Error&) {
        return false;
    }
}

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

    const auto comparing = std::make_shared<program::ImpactOptions>();
    CLI::App* impact =
        AddVerb(app, common, "impact", program::kImpactDoes, program::kImpactExamples, kProvider);
    impact->remove_option(impact->get_option("--quiet"));  // the other program has its own
    program::AddImpactOptions(*impact, *comparing);
    impact->callback([&common, comparing] { Impact(common, *comparing); });
}

}  // namespace cli
