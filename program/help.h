// The help of a verb, on the terminal and as a man page, from what CLI11 knows of it.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace program {

// The heading of the options that most verbs share.
inline constexpr char kCommonOptions[] = "Common options";

// The exit codes in words, one sentence.
std::string ExitCodes();

// --version: the program's name and the project's version.
void AddVersion(CLI::App& app, const std::string& program);

// A verb as it is typed: "vtv app list".
std::string FullName(const CLI::App& verb);
// Its verbs and options that are not hidden, without dashes in front of the verbs.
std::vector<std::string> VerbNames(const CLI::App& verb);
std::vector<std::string> OptionNames(const CLI::App& verb);

class HelpFormatter : public CLI::FormatterBase {
  public:
    std::string make_help(const CLI::App* verb, std::string name,
                          CLI::AppFormatMode mode) const override;
};

// Writes a page for the program and each verb, "vtv-app-list.1" and its like, into a folder.
// Returns what went wrong, in words.
std::string WriteManPages(const CLI::App& app, const std::string& folder);
// Tells of a program at the end of a page that exists: man knows "vtv app" and vtv-app by one name.
std::string AppendToManPage(const CLI::App& app, const std::string& file);

}  // namespace program
