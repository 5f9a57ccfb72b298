// What a check found, for the places that show it beside the files that it is about: code scanners
// and the pages of a change.
#pragma once

#include <json/json.h>
#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace program {

enum class Severity { kError, kWarning };

struct Finding {
    std::string rule;      // "lists-are-whole"
    std::string sentence;  // what the rule asks; may be empty
    std::string message;   // may have several lines
    std::string file;      // as it was named, or from the current folder
    int line = 0;          // from 1; 0: the file as a whole
    Severity severity = Severity::kError;
};

struct Findings {
    std::string command;  // "vtv validate"
    std::vector<Finding> list;
    std::vector<std::string> troubles;  // why it could not be found out, or not to its end
};

// SARIF 2.1.0. Files below the current folder are named from there, all others by their whole path.
Json::Value Sarif(const Findings& findings);
// A line for each, as GitHub's workflows and those that follow them read it: "::error file=...".
std::string Annotations(const Findings& findings);

// The ways in which a check tells what it found. --json is short for one of them.
inline const std::vector<std::string> kFindingsFormats = {"text", "json", "sarif", "github"};
CLI::Option* AddFindingsFormat(CLI::App& verb, const std::function<void(const std::string&)>& take);
CLI::Option* AddFindingsFormat(CLI::App& verb, std::string& format);

}  // namespace program
