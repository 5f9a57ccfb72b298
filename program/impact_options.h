// The options of `vtv impact`, which vtv reads and vtv-explore carries out.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "findings.h"
#include "options.h"

namespace program {

inline constexpr char kImpactDoes[] = "Show what a new assistant policy changes, and for whom";
inline constexpr char kImpactExamples[] =
    "  vtv policy show --json > old.json\n"
    "  vtv impact old.json new.json\n"
    "  vtv impact old.json new.json --tv farfield-eu --tv farfield-cn\n"
    "  vtv impact old.json new.json --html > impact.html\n\n"
    "Looks at every model and every user: signed in or not, set up or not, with each current\n"
    "assistant. Ends with 0 when nothing changes, with 1 when something does, and with 2 when\n"
    "a policy is malformed; what a TV would do with it is told. It is the program vtv-explore\n"
    "that does the work; it must be installed beside vtv.";

struct ImpactOptions {
    std::string before;
    std::string after;
    std::vector<std::string> models;
    std::string format = "text";
    bool json = false;
    bool html = false;
    bool quiet = false;
    int jobs = 0;
};

inline void AddJobsAndQuiet(CLI::App& verb, int& jobs, bool& quiet) {
    AddJobs(verb, jobs);
    verb.add_flag("--quiet,-q", quiet, "No progress and no rate");
}

inline void AddModels(CLI::App& verb, std::vector<std::string>& models) {
    verb.add_option("--tv", models, "A TV model, by name or file; again for more")
        ->type_name("MODEL")
        ->take_all()
        ->expected(1);
}

inline void AddImpactOptions(CLI::App& verb, ImpactOptions& options) {
    verb.add_option("OLD", options.before, "The policy that TVs have, a JSON file")->required();
    verb.add_option("NEW", options.after, "The policy that is to be published")->required();
    AddModels(verb, options.models);
    CLI::Option* json = verb.add_flag("--json", options.json, "Print JSON for programs");
    CLI::Option* html = verb.add_flag("--html", options.html, "Print an HTML page")->excludes(json);
    AddFindingsFormat(verb, options.format)->excludes(json)->excludes(html);
    AddJobsAndQuiet(verb, options.jobs, options.quiet);
}

}  // namespace program
