// The options of `vtv impact`, which vtv reads and vtv-explore carries out.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "findings.h"
#include "options.h"

namespace program {

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
