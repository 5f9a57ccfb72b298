// What may stand next on a command line, for the shells, from what CLI11 knows of it.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace program {

using Words = std::vector<std::string>;

// The words that an option ("--tv") or an argument ("ITEM") of a verb may be; empty where only the
// user knows, or a file is meant.
using ValuesOf =
    std::function<Words(const CLI::App& verb, const std::string& what, const Words& line)>;

// The verb that a line names so far, and how many of its words led there.
struct NamedVerb {
    const CLI::App* verb;
    size_t begin;
};
NamedVerb VerbOf(const CLI::App& app, const Words& line);

// Prints what may stand in place of the last word, one a line.
void Complete(const CLI::App& app, Words line, const ValuesOf& valuesOf);

}  // namespace program
