// What holds for the options of every program.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace program {

// Nothing that is named is named "": such a word stands for a variable that somebody forgot to set.
// A value that is stored, VALUE, may well be empty.
inline void RefuseEmptyWords(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (option->get_items_expected_max() > 0 && option->get_name() != "VALUE") {
            option->check(CLI::Validator(
                [](const std::string& text) { return std::string(text.empty() ? "is empty" : ""); },
                ""));
        }
    }
    for (CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        RefuseEmptyWords(*verb);
    }
}

}  // namespace program
