// Runs vtv-explore as a user does.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include "tests/json_document.h"

struct ProcessResult {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

// Arguments are passed as they are; the program is the one that was built with the tests.
ProcessResult RunExplorer(const std::vector<std::string>& arguments);
// The same, with that signal after that time; without one Ctrl-C.
ProcessResult InterruptExplorer(const std::vector<std::string>& arguments, int milliseconds,
                                int signal = SIGINT);
// The same of the command vtv.
ProcessResult RunVtv(const std::vector<std::string>& arguments);
// A file's whole content.
std::string ReadAll(const std::string& file);
// What was printed with --json; the test fails when it is none.
JsonDocument Parse(const std::string& text);
// The provider that was built with the tests.
std::string ProviderFile();
// A folder of this test's own, removed at the end of the process.
std::string TemporaryFolder();
