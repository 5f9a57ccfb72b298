// The command line: `vtv explore ...` and `vtv impact ...`.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "explorer/asking/command.h"
#include "explorer/diff/calls_file.h"
#include "explorer/diff/diff.h"
#include "explorer/engine/workers.h"
#include "explorer/impact/impact.h"
#include "explorer/invariants/check.h"
#include "explorer/invariants/invariants.h"
#include "explorer/sequences/sequences.h"
#include "explorer/tables/depends.h"
#include "explorer/tables/table.h"
#include "merge.h"
#include "program/complete.h"
#include "program/findings.h"
#include "program/help.h"
#include "program/impact_options.h"
#include "program/visible_text.h"
#include "virtual-tv/model/items.h"
#include "virtual-tv/model/tv_model.h"

namespace explorer {

namespace {

struct CommandLine {
    CLI::App app{"Ask a provider everything in every state, and prove that it was", "vtv explore"};
    std::function<int()> command;
};

// A verb whose options live as long as the command that it becomes.
template <typename Options>
std::pair<CLI::App&, Options&> AddVerb(CommandLine& line, const char* name, const char* does,
                                       const char* examples, int (*run)(const Options&)) {
    auto options = std::make_shared<Options>();
    options->provider = host::DefaultProvider();
    CLI::App* verb = line.app.add_subcommand(name, does);
    verb->footer(std::string("Examples:\n") + examples);
    verb->callback([&line, options, run] { line.command = [=] { return run(*options); }; });
    return {*verb, *options};
}

// Of the ways to show what was found, only one is asked for.
CLI::Option* AddFormat(CLI::App& verb, Format format, const char* flag, const char* help,
                       CommonOptions& options) {
    return verb.add_flag_function(
        flag, [&options, format](std::int64_t) { options.format = format; }, help);
}

CLI::Option* AddJson(CLI::App& verb, CommonOptions& options) {
    return AddFormat(verb, Format::kJson, "--json", "Print JSON for programs", options);
}

// Of a check, whose findings others show as well.
CLI::Option* AddFindingsFormats(CLI::App& verb, CommonOptions& options) {
    CLI::Option* json = AddJson(verb, options);
    program::AddFindingsFormat(verb, [&options](const std::string& name) {
        options.format = FindingsFormat(name);
    })->excludes(json);
    return json;
}

void AddScenarios(CLI::App& verb, std::string& folder) {
    verb.add_option("--scenarios", folder, "Folder for the scenario files of what is violated")
        ->type_name("FOLDER")
        ->capture_default_str();
}

void AddShard(CLI::App& verb, const char* of, CommonOptions& options) {
    verb.add_option_function<std::string>(
            "--shard", [&options](const std::string& text) { options.shard = ParseShard(text); },
            std::string("Only part I of N of the ") + of)
        ->type_name("I/N");
}

// How much of what a TV may be is tried.
void AddExtent(CLI::App& verb, CommonOptions& options) {
    verb.add_flag("--full", options.full,
                  "Also the values and policies that cost more than they tell");
    verb.add_option(
            "--beyond", options.beyond,
            "Also draw N values for each number and text that is read: one that is answered "
            "unlike every named value is told, and nothing is proven then")
        ->type_name("N")
        ->check(program::WholeNumber(1));
}

void AddPatience(CLI::App& verb) {
    verb.add_option_function<double>(
            "--patience", SetPatience,
            "Seconds after which a question without an answer is stopped and reported (20)")
        ->type_name("SECONDS")
        ->group(program::kCommonOptions)
        ->check(CLI::PositiveNumber);
}

void AddProvider(CLI::App& verb, CommonOptions& options) {
    verb.add_option(
            "--provider", options.provider,
            "The provider library [default: $VTV_PROVIDER, else the one that comes with vtv]")
        ->type_name("FILE")
        ->group(program::kCommonOptions);
}

void AddWork(CLI::App& verb, CommonOptions& options) {
    program::AddJobsAndQuiet(verb, options.workers, options.quiet);
    for (const char* shared : {"--jobs", "--quiet"}) {
        verb.get_option(shared)->group(program::kCommonOptions);
    }
    AddPatience(verb);
}

void AddProviderAndWork(CLI::App& verb, CommonOptions& options) {
    AddProvider(verb, options);
    AddWork(verb, options);
}

void AddBounds(CLI::App& verb, WalkBounds& bounds) {
    verb.add_option("--most-states", bounds.states,
                    "At most so many states that the providers remember; what goes on is unproven")
        ->type_name("N")
        ->check(program::WholeNumber(1))
        ->capture_default_str();
    verb.add_option("--most-seconds", bounds.seconds,
                    "At most so long; what is not done then is unproven")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
}

void AddTable(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "table", "Show the complete decision table of items, functions or questions",
                "  vtv explore table voice-wake-up           the complete rules of an item\n"
                "  vtv explore table --html -o rules.html    all of them, with a diagram each",
                TableMain);
    verb.add_option("NAME", options.names,
                    "An item (voice-wake-up), a function, a question (visible:voice) or a kind of "
                    "question (visible); all when none is named");
    CLI::Option* json = AddJson(verb, options);
    CLI::Option* html = AddFormat(verb, Format::kHtml, "--html",
                                  "Print one HTML page with a diagram for each rule", options)
                            ->excludes(json);
    CLI::Option* markdown =
        AddFormat(verb, Format::kMarkdown, "--markdown", "Print Markdown", options)
            ->excludes(json)
            ->excludes(html);
    CLI::Option* output =
        verb.add_option("--output,-o", options.output, "Write to a file")->type_name("FILE");
    CLI::Option* docs =
        verb.add_option("--docs", options.docs, "Write a page for each item into a folder")
            ->type_name("FOLDER");
    for (CLI::Option* other : {json, html, markdown, output}) {
        docs->excludes(other);
    }
    AddExtent(verb, options);
    AddShard(verb, "questions", options);
    AddProviderAndWork(verb, options);
}

void AddCheck(CommandLine& line) {
    auto [verb, options] = AddVerb(line, "check", "Check what must hold in every state",
                                   "  vtv explore check\n"
                                   "  vtv explore check --list                  the invariants",
                                   CheckMain);
    verb.add_option("NAME", options.names, "Invariants; all when none is named");
    CLI::Option* list = verb.add_flag("--list", options.list, "Only list the invariants");
    AddFindingsFormats(verb, options);
    AddScenarios(verb, options.scenarios);
    AddExtent(verb, options);
    AddBounds(verb, options.bounds);
    AddShard(verb, "work", options);
    AddProviderAndWork(verb, options);
    for (const char* name :
         {"--json", "--format", "--scenarios", "--most-states", "--most-seconds", "--shard",
          "--full", "--beyond", "--provider", "--jobs", "--patience", "--quiet"}) {
        list->excludes(verb.get_option(name));
    }
}

void AddDiff(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "diff", "Prove that two providers behave alike, or show where they differ",
                "  vtv explore diff old.so new.so            may I ship this change?\n\n"
                "Exit codes: 0 alike, 1 different, 4 it could not be found out.",
                DiffMain);
    verb.add_option("A", options.provider, "A provider library")->required();
    verb.add_option("B", options.other, "Another one")->required();
    verb.add_option("--only", options.names, "Only these items, functions or questions")
        ->type_name("NAME");
    CLI::Option* noLogs = verb.add_flag("--no-logs{false}", options.records.logs,
                                        "Do not compare log messages and trace events");
    verb.add_flag("--lines", options.records.lines,
                  "Compare the files and lines of log records as well")
        ->excludes(noLogs);
    verb.add_flag("--no-reads{false},--reads", options.records.reads,
                  "Do not compare which inputs are read, and in which order");
    CLI::Option* brief = verb.add_flag("--brief", options.brief, "Only say whether they differ");
    verb.add_flag("--all", options.all, "Show every difference, and not only the nearest one")
        ->excludes(brief);
    CLI::Option* coverage = verb.add_flag(
        "--coverage", options.coverage,
        "Also tell on how many paths of each provider each question was asked, and for how many "
        "states they stand");
    AddExtent(verb, options);
    AddBounds(verb, options.bounds);
    AddFindingsFormats(verb, options)->excludes(brief)->excludes(coverage);
    verb.get_option("--format")->excludes(brief)->excludes(coverage);
    verb.add_option("--scenarios", options.scenarios,
                    "Write a scenario and a file of calls for each difference into a folder")
        ->type_name("FOLDER");
    AddShard(verb, "work", options);
    AddWork(verb, options);
}

void AddReplay(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "replay", "Play a file of calls that diff wrote on a provider",
                "  vtv explore diff old.so new.so --scenarios found\n"
                "  vtv explore replay found/difference-1.calls.toml --provider new.so\n\n"
                "Exit codes: 0 it does what the file expects, 1 it does not, 2 the file is "
                "malformed.",
                ReplayMain);
    verb.add_option("FILE", options.file, "A file of calls")->required();
    AddProvider(verb, options);
    AddPatience(verb);
}

void AddDepends(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "depends", "Show which keys, features and files an item depends on",
                "  vtv explore depends voice-wake-up         what makes an item change\n"
                "  vtv explore depends --reverse db/menu/voice/passthru",
                DependsMain);
    CLI::Option* names = verb.add_option("NAME", options.names,
                                         "Items, functions or questions; with --reverse keys");
    CLI::Option* reverse =
        verb.add_flag("--reverse", options.reverse, "Show which items depend on a key");
    CLI::Option* json = AddJson(verb, options);
    CLI::Option* source =
        verb.add_flag("--source", options.source,
                      "Write host/core/page_dependencies.cpp: what can change how an item looks");
    for (CLI::Option* other : {names, reverse, json}) {
        source->excludes(other);
    }
    AddProviderAndWork(verb, options);
}

void AddMerge(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "merge", "Show the parts of a check, diff or table as one run shows it",
                "  vtv explore check --json --shard 1/2 > 1.json\n"
                "  vtv explore check --json --shard 2/2 > 2.json     on another machine\n"
                "  vtv explore merge 1.json 2.json\n\n"
                "Exit codes: those of one run; 2 what is no part, or no part of the same work.",
                MergeMain);
    verb.add_option("FILE", options.files, "What each part printed with --json, in any order")
        ->required();
    verb.add_option("--scenarios", options.scenarios,
                    "Folder for the scenario files of what was found, as check and diff have it")
        ->type_name("FOLDER");
    AddJson(verb, options);
}

void AddImpact(CommandLine& line) {
    auto [verb, options] =
        AddVerb(line, "impact", program::kImpactDoes, program::kImpactExamples, ImpactMain);
    program::AddImpactOptions(verb, options.asked);
    AddProvider(verb, options);
    AddPatience(verb);
}

void AddSequences(CommandLine& line) {
    auto [verb, options] = AddVerb(
        line, "sequences", "Check what must hold after every sequence of a viewer's actions",
        "  vtv explore sequences\n"
        "  vtv explore sequences --tv no-voice --depth 3",
        SequencesMain);
    program::AddModels(verb, options.models);
    verb.add_option("--depth", options.depth,
                    "At most this many actions; left out: until no new state is found")
        ->type_name("N")
        ->check(program::WholeNumber(0));
    verb.add_option("--invariant", options.invariants, "Invariants; all when none is named")
        ->type_name("NAME");
    AddScenarios(verb, options.scenarios);
    verb.add_option("--tour", options.tour,
                    "Write scenarios that take every kind of step into a folder")
        ->type_name("FOLDER");
    AddJson(verb, options);
    AddProviderAndWork(verb, options);
}

// What an option or an argument may be, for the shells.
std::vector<std::string> ValuesOf(const CLI::App& verb, const std::string& what,
                                  const program::Words& /*line*/) {
    std::vector<std::string> words;
    if (what == "--tv") {
        for (const std::string& file : vtv::ModelFiles()) {
            words.push_back(std::filesystem::path(file).stem().string());
        }
    } else if (what == "--invariant" || (what == "NAME" && verb.get_name() == "check")) {
        for (const Invariant& invariant : Invariants()) {
            words.emplace_back(invariant.name);
        }
    } else if (what == "--format") {
        words = program::kFindingsFormats;
    } else if (what == "NAME" || what == "--only") {
        for (const vtv::Item& item : vtv::PageItems()) {
            words.emplace_back(item.name);
        }
    }
    return words;
}

int WriteManPages(const CLI::App& app, const char* folder) {
    const std::string problem = program::WriteManPages(app, folder);
    if (!problem.empty()) {
        std::fprintf(stderr, "vtv explore: %s\n", program::OneLine(problem).c_str());
    }
    return problem.empty() ? 0 : kExitTrouble;
}

}  // namespace

int ExploreMain(int argc, char** argv) {
    CommandLine line;
    CLI::App& app = line.app;
    app.require_subcommand(1);
    app.formatter(std::make_shared<program::HelpFormatter>());
    program::AddVersion(app, "vtv-explore");
    app.footer(
        "Examples:\n"
        "  vtv explore check                         what must hold in every state\n"
        "  vtv explore table voice-wake-up           the complete rules of an item\n\n"
        "Each exploration has a help of its own: vtv help explore check. Exit codes: " +
        program::ExitCodes());
    for (auto* add :
         {AddTable, AddCheck, AddDiff, AddMerge, AddReplay, AddDepends, AddImpact, AddSequences}) {
        add(line);
    }
    program::RefuseEmptyWords(app);
    if (argc == 3 && std::string(argv[1]) == "__man") {
        return WriteManPages(app, argv[2]);
    }
    if (argc >= 2 && std::string(argv[1]) == "__complete") {
        program::Complete(app, {argv + 2, argv + argc}, ValuesOf);
        return 0;
    }
    const auto report = [&](const std::exception& error, int code) {
        std::fprintf(stderr, "%s: %s\n",
                     app.got_subcommand("impact") ? "vtv impact" : "vtv explore",
                     program::OneLine(error.what()).c_str());
        return code;
    };
    try {
        app.parse(argc, argv);
        const int code = line.command();
        return IsInterrupted() ? 128 + EndingSignal() : code;  // as shells say it
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0 && app.get_subcommands().empty() && argc > 1) {
            std::fprintf(stderr,
                         "vtv explore: there is no exploration \"%s\". vtv explore --help lists "
                         "them.\n",
                         program::OneLine(argv[1]).c_str());
            return kExitUsage;
        }
        if (error.get_exit_code() == 0) {
            return app.exit(error);  // the help
        }
        const std::vector<CLI::App*> verbs = app.get_subcommands();
        const std::string verb = verbs.empty() ? "" : " " + verbs.front()->get_name();
        std::fprintf(stderr, "vtv explore%s: %s\nSee: vtv explore%s --help\n", verb.c_str(),
                     program::OneLine(error.what()).c_str(), verb.c_str());
        return kExitUsage;
    } catch (const CommandError& error) {
        return report(error, error.Code());
    } catch (const host::ProviderError& error) {
        return report(error, error.kind() == host::ProviderError::Kind::kNoSuchFile ? kExitNoSuch
                                                                                    : kExitTrouble);
    } catch (const vtv::Error& error) {
        return report(error, static_cast<int>(error.kind()));
    } catch (const std::exception& error) {
        return report(error, kExitTrouble);
    }
}

}  // namespace explorer
