#include "help.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "program/write_file.h"
#include "text_width.h"
#include "virtual-tv/virtual_tv.h"

namespace cli {

namespace {

constexpr size_t kColumns = 80;
constexpr size_t kIndent = 24;  // of what is said of an option

// One line of a list: an option, an argument or a verb, and what it is.
struct Entry {
    std::string name;
    std::string text;
};

struct Section {
    std::string heading;
    std::vector<Entry> entries;
};

// The footers' text: "Examples:" and the lines below it, then paragraphs.
struct Notes {
    std::vector<std::string> examples;
    std::vector<std::string> paragraphs;
};

bool IsShown(const CLI::Option* option) {
    return !option->get_group().empty();
}

// What an option takes, in one word: CLI11 adds what its checks expect.
std::string Takes(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0) {
        return "";
    }
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

Entry EntryOf(const CLI::Option& option) {
    if (option.get_positional()) {
        return {option.get_name(true, false), option.get_description()};
    }
    std::string name;
    for (const std::string& letter : option.get_snames()) {
        name += (name.empty() ? "-" : ", -") + letter;
    }
    for (const std::string& word : option.get_lnames()) {
        name += (name.empty() ? "--" : ", --") + word;
    }
    const std::string takes = Takes(option);
    std::string text = option.get_description();
    if (!option.get_default_str().empty()) {
        text += " [default: " + option.get_default_str() + "]";
    }
    return {name + (takes.empty() ? "" : " " + takes), text};
}

Section Arguments(const CLI::App& verb) {
    Section section{"Arguments", {}};
    for (const CLI::Option* option : verb.get_options(IsShown)) {
        if (option->get_positional()) {
            section.entries.push_back(EntryOf(*option));
        }
    }
    return section;
}

Section Options(const CLI::App& verb, bool common) {
    Section section{common ? kCommonOptions : "Options", {}};
    for (const CLI::Option* option : verb.get_options(IsShown)) {
        const bool help = option == verb.get_help_ptr() && verb.get_parent() != nullptr;
        const bool shared = help || option->get_group() == kCommonOptions;
        if (!option->get_positional() && shared == common) {
            section.entries.push_back(EntryOf(*option));
        }
    }
    return section;
}

// One section for each group of verbs, in the order in which the groups appear.
std::vector<Section> Verbs(const CLI::App& verb) {
    std::vector<Section> sections;
    for (const CLI::App* sub : verb.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string group = sub->get_group() == "Subcommands" ? "Verbs" : sub->get_group();
        const auto known =
            std::find_if(sections.begin(), sections.end(),
                         [&](const Section& section) { return section.heading == group; });
        Section& section =
            known != sections.end() ? *known : sections.emplace_back(Section{group, {}});
        section.entries.push_back({sub->get_name(), sub->get_description()});
    }
    return sections;
}

std::string Usage(const CLI::App& verb) {
    std::string usage = "[OPTIONS]";
    for (const CLI::Option* option : verb.get_options(IsShown)) {
        if (!option->get_positional()) {
            continue;
        }
        const std::string name =
            option->get_name(true, false) + (option->get_items_expected_max() > 1 ? "..." : "");
        usage += option->get_required() ? " " + name : " [" + name + "]";
    }
    return usage + (VerbNames(verb).empty() ? "" : " VERB ...");
}

Notes NotesOf(const CLI::App& verb) {
    Notes notes;
    std::istringstream lines(verb.get_footer());
    bool example = false;
    bool begin = true;
    for (std::string line; std::getline(lines, line);) {
        if (begin && line == "Examples:") {
            example = true;
        } else if (line.empty()) {
            example = false;
        } else if (example) {
            notes.examples.push_back(line.substr(std::min<size_t>(2, line.size())));
        } else if (begin) {
            notes.paragraphs.push_back(line);
        } else {
            notes.paragraphs.back() += " " + line;
        }
        begin = line.empty();
    }
    return notes;
}

std::vector<Section> Sections(const CLI::App& verb) {
    std::vector<Section> sections = {Arguments(verb)};
    for (Section& section : Verbs(verb)) {
        sections.push_back(std::move(section));
    }
    sections.push_back(Options(verb, false));
    sections.push_back(Options(verb, true));
    sections.erase(std::remove_if(sections.begin(), sections.end(),
                                  [](const Section& section) { return section.entries.empty(); }),
                   sections.end());
    return sections;
}

std::string Draw(const Section& section) {
    std::string text = "\n" + section.heading + ":\n";
    for (const Entry& entry : section.entries) {
        std::string line = "  " + entry.name;
        if (Width(line) + 2 > kIndent) {
            text += line + "\n";
            line.clear();
        }
        for (const std::string& part : Wrap(entry.text, kColumns - kIndent)) {
            text += Pad(line, kIndent) + part + "\n";
            line.clear();
        }
    }
    return text;
}

// --- Man pages ---

// A leading dot or quote would be a request; a plain dash would become a hyphen.
std::string Roff(const std::string& text) {
    std::string roff = text.find_first_of(".'") == 0 ? "\\&" : "";
    for (const char c : text) {
        roff += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return roff;
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// "vtv-app-list".
std::string PageName(const CLI::App& verb) {
    std::string name = FullName(verb);
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string ManPage(const CLI::App& verb) {
    const Notes notes = NotesOf(verb);
    std::string page = ".TH " + Upper(PageName(verb)) + " 1 \"\" \"vtv " VTV_VERSION "\" \"vtv\"\n";
    page += ".SH NAME\n" + PageName(verb) + " \\- " + Roff(verb.get_description()) + "\n";
    page += ".SH SYNOPSIS\n.B " + FullName(verb) + "\n" + Roff(Usage(verb)) + "\n";
    if (!notes.paragraphs.empty()) {
        page += ".SH DESCRIPTION\n";
    }
    for (const std::string& paragraph : notes.paragraphs) {
        page += ".PP\n" + Roff(paragraph) + "\n";
    }
    for (const Section& section : Sections(verb)) {
        page += ".SH " + Upper(section.heading) + "\n";
        for (const Entry& entry : section.entries) {
            page += ".TP\n.B " + Roff(entry.name) + "\n" + Roff(entry.text) + "\n";
        }
    }
    if (!notes.examples.empty()) {
        page += ".SH EXAMPLES\n.nf\n";
        for (const std::string& line : notes.examples) {
            page += Roff(line) + "\n";
        }
        page += ".fi\n";
    }
    page += ".SH EXIT STATUS\n" + Roff(ExitCodes()) + "\n";
    std::string others = verb.get_parent() != nullptr ? PageName(*verb.get_parent()) : "";
    for (const std::string& name : VerbNames(verb)) {
        others += (others.empty() ? "" : "(1), ") + PageName(verb) + "-" + name;
    }
    return page + (others.empty() ? "" : ".SH SEE ALSO\n" + Roff(others) + "(1)\n");
}

}  // namespace

std::string ExitCodes() {
    return "0 done, 1 the answer is no, 2 wrong usage or a wrong file, 3 no such thing, "
           "4 it could not be done, or its output not be written.";
}

std::string FullName(const CLI::App& verb) {
    return (verb.get_parent() != nullptr ? FullName(*verb.get_parent()) + " " : "") +
           verb.get_name();
}

std::vector<std::string> VerbNames(const CLI::App& verb) {
    std::vector<std::string> names;
    for (const CLI::App* sub : verb.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(sub->get_name());
    }
    return names;
}

std::vector<std::string> OptionNames(const CLI::App& verb) {
    std::vector<std::string> names;
    for (const CLI::Option* option : verb.get_options(IsShown)) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::string HelpFormatter::make_help(const CLI::App* verb, std::string /*name*/,
                                     CLI::AppFormatMode /*mode*/) const {
    std::string text =
        verb->get_description() + ".\n\nUsage: " + FullName(*verb) + " " + Usage(*verb) + "\n";
    for (const Section& section : Sections(*verb)) {
        text += Draw(section);
    }
    const Notes notes = NotesOf(*verb);
    if (!notes.examples.empty()) {
        text += "\nExamples:\n";
        for (const std::string& line : notes.examples) {
            text += "  " + line + "\n";
        }
    }
    for (const std::string& paragraph : notes.paragraphs) {
        text += "\n";
        for (const std::string& line : Wrap(paragraph, kColumns)) {
            text += line + "\n";
        }
    }
    return text;
}

void WriteManPages(const CLI::App& app, const std::string& folder) {
    const std::string file = folder + "/" + PageName(app) + ".1";
    const std::string problem = program::WriteFile(file, ManPage(app));
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        WriteManPages(*verb, folder);
    }
}

}  // namespace cli
