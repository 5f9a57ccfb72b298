// The command line: `vtv explore ...` and `vtv impact ...`.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "explorer/asking/command.h"
#include "explorer/diff/diff.h"
#include "explorer/engine/workers.h"
#include "explorer/impact/impact.h"
#include "explorer/invariants/check.h"
#include "explorer/sequences/sequences.h"
#include "explorer/tables/depends.h"
#include "explorer/tables/table.h"
#include "program/options.h"

namespace explorer {

namespace {

// $VTV_PROVIDER, else the one that was built with this program or is installed beside it.
std::string DefaultProvider() {
    namespace fs = std::filesystem;
    if (const char* named = std::getenv("VTV_PROVIDER")) {
        return named;
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    for (const char* place : {"../lib/libsi-ready.so", "../lib/vtv/libsi-ready.so"}) {
        const fs::path file = program.parent_path() / place;
        if (fs::exists(file, error)) {
            return fs::weakly_canonical(file, error);
        }
    }
    return "libsi-ready.so";
}

// "2/8": the second of eight parts.
Shard ParseShard(const std::string& text) {
    Shard shard;
    char rest = 0;
    if (text.empty()) {
        return shard;
    }
    if (std::sscanf(text.c_str(), "%d/%d%c", &shard.index, &shard.count, &rest) != 2 ||
        shard.count < 1 || shard.index < 1 || shard.index > shard.count) {
        throw CommandError(kExitUsage,
                           "--shard " + text + ": write I/N with I from 1 to N, as in 2/8");
    }
    --shard.index;
    return shard;
}

struct Common {
    std::string provider = DefaultProvider();
    std::string shard;
    int workers = 0;
    bool quiet = false;
    bool json = false;
    bool html = false;
    bool markdown = false;

    const char* Format() const {
        return json ? "json" : html ? "html" : markdown ? "markdown" : "text";
    }
};

void AddCommon(CLI::App& verb, Common& common, bool withProvider = true) {
    if (withProvider) {
        verb.add_option("--provider", common.provider, "The provider library")
            ->capture_default_str();
    }
    verb.add_option("--jobs,-j", common.workers, "Worker processes; 0: one a processor")
        ->check(CLI::NonNegativeNumber);
    verb.add_option_function<double>(
            "--patience", SetPatience,
            "Seconds after which a question without an answer is stopped and reported (20)")
        ->check(CLI::PositiveNumber);
    verb.add_flag("--quiet,-q", common.quiet, "No progress and no rate");
}

void AddTable(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<TableOptions>();
    CLI::App* verb = app.add_subcommand(
        "table", "Show the complete decision table of items, functions or questions");
    verb->add_option("NAME", options->names,
                     "An item (voice-wake-up), a function, a question (visible:voice) or a kind of "
                     "question (visible); all when none is named");
    CLI::Option* json = verb->add_flag("--json", common.json, "As JSON");
    CLI::Option* html =
        verb->add_flag("--html", common.html, "As one HTML page with a diagram for each rule")
            ->excludes(json);
    CLI::Option* markdown = verb->add_flag("--markdown", common.markdown, "As Markdown")
                                ->excludes(json)
                                ->excludes(html);
    CLI::Option* output = verb->add_option("--output,-o", options->output, "Write to a file");
    verb->add_option("--docs", options->docs, "Write a page for each item into a folder")
        ->excludes(json)
        ->excludes(html)
        ->excludes(markdown)
        ->excludes(output);
    verb->add_option("--shard", common.shard, "Only part I of N of the questions: I/N");
    AddCommon(*verb, common);
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->provider = common.provider;
            options->workers = common.workers;
            options->progress = !common.quiet;
            options->shard = ParseShard(common.shard);
            options->format = common.Format();
            return TableMain(*options);
        };
    });
}

void AddCheck(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* verb = app.add_subcommand("check", "Check what must hold in every state");
    verb->add_option("NAME", options->names, "Invariants; all when none is named");
    CLI::Option* list = verb->add_flag("--list", options->list, "Only list the invariants");
    verb->add_flag("--json", common.json, "As JSON");
    verb->add_option("--scenarios", options->scenarios,
                     "Folder for the scenario files of what is violated")
        ->capture_default_str();
    verb->add_option("--shard", common.shard, "Only part I of N of the work: I/N");
    AddCommon(*verb, common);
    for (const char* name :
         {"--json", "--scenarios", "--shard", "--provider", "--jobs", "--patience", "--quiet"}) {
        list->excludes(verb->get_option(name));
    }
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->provider = common.provider;
            options->json = common.json;
            options->workers = common.workers;
            options->progress = !common.quiet;
            options->shard = ParseShard(common.shard);
            return CheckMain(*options);
        };
    });
}

void AddDiff(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App* verb = app.add_subcommand(
        "diff", "Prove that two providers behave alike, or show where they differ");
    verb->footer("Exit codes: 0 alike, 1 different, 4 it could not be found out.");
    verb->add_option("A", options->a, "A provider library")->required();
    verb->add_option("B", options->b, "Another one")->required();
    verb->add_option("--only", options->names, "Only these items, functions or questions");
    CLI::Option* noLogs = verb->add_flag("--no-logs{false}", options->logs,
                                         "Do not compare log messages and trace events");
    verb->add_flag("--lines", options->lines, "Compare the files and lines of log records as well")
        ->excludes(noLogs);
    verb->add_flag("--reads", options->reads, "Compare which inputs are read as well");
    CLI::Option* brief = verb->add_flag("--brief", options->brief, "Only say whether they differ");
    verb->add_flag("--json", common.json, "As JSON")->excludes(brief);
    verb->add_option("--scenarios", options->scenarios,
                     "Write a scenario file for each difference into a folder");
    verb->add_option("--shard", common.shard, "Only part I of N of the work: I/N");
    AddCommon(*verb, common, false);
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->json = common.json;
            options->workers = common.workers;
            options->progress = !common.quiet;
            options->shard = ParseShard(common.shard);
            return DiffMain(*options);
        };
    });
}

void AddDepends(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<DependsOptions>();
    CLI::App* verb =
        app.add_subcommand("depends", "Show which keys, features and files an item depends on");
    CLI::Option* names = verb->add_option("NAME", options->names,
                                          "Items, functions or questions; with --reverse keys");
    CLI::Option* reverse =
        verb->add_flag("--reverse", options->reverse, "Show which items depend on a key");
    CLI::Option* json = verb->add_flag("--json", common.json, "As JSON");
    verb->add_flag("--source", options->source,
                   "Write host/core/page_dependencies.cpp: what can change how an item looks")
        ->excludes(names)
        ->excludes(reverse)
        ->excludes(json);
    AddCommon(*verb, common);
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->provider = common.provider;
            options->json = common.json;
            options->workers = common.workers;
            options->progress = !common.quiet;
            return DependsMain(*options);
        };
    });
}

void AddImpact(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<ImpactOptions>();
    CLI::App* verb = app.add_subcommand(
        "impact", "Show what a new assistant policy changes on every TV model and for every user");
    verb->footer("Exit codes: 0 nothing changes, 1 something does, 2 a policy is malformed.");
    verb->add_option("OLD", options->oldFile, "The policy that TVs have, a JSON file")->required();
    verb->add_option("NEW", options->newFile, "The policy that is to be published")->required();
    verb->add_option("--tv", options->models, "TV models, by name or file; all when none is named");
    CLI::Option* json = verb->add_flag("--json", common.json, "As JSON");
    verb->add_flag("--html", common.html, "As an HTML page")->excludes(json);
    AddCommon(*verb, common);
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->provider = common.provider;
            options->format = common.Format();
            options->workers = common.workers;
            options->progress = !common.quiet;
            return ImpactMain(*options);
        };
    });
}

void AddSequences(CLI::App& app, Common& common, std::function<int()>& command) {
    auto options = std::make_shared<SequencesOptions>();
    CLI::App* verb = app.add_subcommand(
        "sequences", "Check what must hold after every sequence of a viewer's actions");
    verb->add_option("--tv", options->models, "TV models, by name or file; all when none is named");
    verb->add_option("--depth", options->depth,
                     "At most this many actions; left out: until no new state is found")
        ->check(CLI::NonNegativeNumber);
    verb->add_option("--invariant", options->invariants, "Invariants; all when none is named");
    verb->add_option("--scenarios", options->scenarios,
                     "Folder for the scenario files of what is violated")
        ->capture_default_str();
    verb->add_option("--tour", options->tour,
                     "Write scenarios that take every kind of step into a folder");
    verb->add_flag("--json", common.json, "As JSON");
    AddCommon(*verb, common);
    verb->callback([&common, &command, options] {
        command = [&common, options] {
            options->provider = common.provider;
            options->json = common.json;
            options->workers = common.workers;
            options->progress = !common.quiet;
            return SequencesMain(*options);
        };
    });
}

}  // namespace

int ExploreMain(int argc, char** argv) {
    CLI::App app("Explores a provider over every state that its TV can be in", "vtv explore");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 yes, 1 no, 2 usage, 3 no such item or file, 4 it could not be done.");
    Common common;
    std::function<int()> command;
    AddTable(app, common, command);
    AddCheck(app, common, command);
    AddDiff(app, common, command);
    AddDepends(app, common, command);
    AddImpact(app, common, command);
    AddSequences(app, common, command);
    program::RefuseEmptyWords(app);
    const auto report = [&](const std::exception& error, int code) {
        std::fprintf(stderr, "%s: %s\n",
                     app.got_subcommand("impact") ? "vtv impact" : "vtv explore", error.what());
        return code;
    };
    try {
        app.parse(argc, argv);
        return command();
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0 && app.get_subcommands().empty() && argc > 1) {
            std::fprintf(stderr,
                         "vtv explore: there is no exploration \"%s\". vtv explore --help lists "
                         "them.\n",
                         argv[1]);
            return kExitUsage;
        }
        if (error.get_exit_code() == 0) {
            return app.exit(error);  // the help
        }
        const std::vector<CLI::App*> verbs = app.get_subcommands();
        const std::string verb = verbs.empty() ? "" : " " + verbs.front()->get_name();
        std::fprintf(stderr, "vtv explore%s: %s\nSee: vtv explore%s --help\n", verb.c_str(),
                     error.what(), verb.c_str());
        return kExitUsage;
    } catch (const CommandError& error) {
        return report(error, error.Code());
    } catch (const NoSuchFile& error) {
        return report(error, kExitNoSuch);
    } catch (const Unreadable& error) {
        return report(error, kExitTrouble);
    } catch (const InputError& error) {
        return report(error, kExitUsage);
    } catch (const std::exception& error) {
        return report(error, kExitTrouble);
    }
}

}  // namespace explorer
