#include "complete.h"

#include <algorithm>
#include <iostream>

#include "help.h"
#include "visible_text.h"

namespace program {

namespace {

const CLI::App* Find(const CLI::App& app, const std::string& name) {
    const auto found =
        app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

bool IsOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-';
}

// Whether the word behind an option belongs to it.
bool TakesValue(const CLI::App& verb, const std::string& option) {
    const CLI::Option* known = verb.get_option_no_throw(option);
    return known != nullptr && known->get_items_expected_max() > 0;
}

// The argument that stands in place of the last word; null where there is none left.
const CLI::Option* ArgumentAt(const CLI::App& verb, const Words& line, size_t begin) {
    size_t place = 0;
    for (size_t i = begin; i + 1 < line.size(); ++i) {
        if (!IsOption(line[i])) {
            ++place;
        } else if (TakesValue(verb, line[i])) {
            ++i;
        }
    }
    const CLI::Option* last = nullptr;
    for (const CLI::Option* option : verb.get_options()) {
        if (option->get_positional()) {
            last = option;
            if (place-- == 0) {
                return option;
            }
        }
    }
    // The last one may stand there any number of times.
    return last != nullptr && last->get_items_expected_max() > 1 ? last : nullptr;
}

Words Candidates(const CLI::App& app, const Words& line, const ValuesOf& valuesOf) {
    const auto [verb, begin] = VerbOf(app, line);
    const std::string& before = line.size() - begin >= 2 ? line[line.size() - 2] : "";
    if (IsOption(before) && TakesValue(*verb, before)) {
        return valuesOf(*verb, before, line);
    }
    if (line.back().starts_with('-')) {
        return OptionNames(*verb);
    }
    if (verb->get_require_subcommand_min() > 0) {
        return VerbNames(*verb);
    }
    const CLI::Option* argument = ArgumentAt(*verb, line, begin);
    return argument != nullptr ? valuesOf(*verb, argument->get_name(true, false), line) : Words();
}

}  // namespace

NamedVerb VerbOf(const CLI::App& app, const Words& line) {
    NamedVerb named = {&app, 0};
    while (named.begin + 1 < line.size() && named.verb->get_require_subcommand_min() > 0) {
        const std::string& word = line[named.begin];
        if (IsOption(word)) {  // before the verb
            if (TakesValue(*named.verb, word) && named.begin + 2 >= line.size()) {
                break;  // its value is what is being written
            }
            named.begin += TakesValue(*named.verb, word) ? 2 : 1;
        } else if (const CLI::App* next = Find(*named.verb, word)) {
            named = {next, named.begin + 1};
        } else {
            break;
        }
    }
    return named;
}

void Complete(const CLI::App& app, Words line, const ValuesOf& valuesOf) {
    if (line.empty()) {
        line.emplace_back();
    }
    Words candidates = Candidates(app, line, valuesOf);
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    for (const std::string& candidate : candidates) {
        // Nobody could type a name that does not show as it is.
        if (candidate.rfind(line.back(), 0) == 0 && OneLine(candidate) == candidate) {
            std::cout << candidate << '\n';
        }
    }
}

}  // namespace program
