// What holds for the options of every program.
#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <climits>
#include <string>
#include <vector>

namespace program {

// A value that is a whole number, from atLeast up.
inline CLI::Validator WholeNumber(int atLeast) {
    const auto problem = [atLeast](const std::string& text) -> std::string {
        int number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error == std::errc() && end == text.data() + text.size() && number >= atLeast) {
            return "";
        }
        return "\"" + text + "\" is no whole number" +
               (atLeast == INT_MIN ? "" : " from " + std::to_string(atLeast) + " up") + ".";
    };
    return {problem, ""};
}

inline CLI::Option* AddJobs(CLI::App& verb, int& jobs) {
    return verb.add_option("--jobs,-j", jobs, "Worker processes; 0: one a processor")
        ->type_name("N")
        ->check(WholeNumber(0));
}

// What is tried on a copy of the TV.
inline CLI::Option* AddWith(CLI::App& verb, std::vector<std::string>& with) {
    return verb
        .add_option("--with", with,
                    "Try it on a copy of the TV: a setting, a feature, account, network, language, "
                    "voice-guide, tnc or pp; as often as wanted. Nothing is written")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
}

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
