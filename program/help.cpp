#include "help.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

#include "surroundings.h"
#include "text_width.h"
#include "write_file.h"

namespace program {

namespace {

constexpr size_t kColumns = 80;
constexpr char kExitCodes[] = "Exit codes: ";  // begins the paragraph of a verb that has its own
constexpr size_t kIndent = 24;                 // of what is said of an option, at most

// One line of a list: an option, an argument or a verb, and what it is.
struct Entry {
    std::string name;
    std::string text;
};

struct Section {
    std::string heading;
    std::vector<Entry> entries;
    bool isGroup = false;  // of verbs
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
    Section section{"Arguments", {}, false};
    for (const CLI::Option* option : verb.get_options(IsShown)) {
        if (option->get_positional()) {
            section.entries.push_back(EntryOf(*option));
        }
    }
    return section;
}

Section Options(const CLI::App& verb, bool common) {
    Section section{common ? kCommonOptions : "Options", {}, false};
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
            known != sections.end() ? *known : sections.emplace_back(Section{group, {}, true});
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
    size_t longest = 0;
    for (const Entry& entry : section.entries) {
        longest = std::max(longest, Width(entry.name));
    }
    const size_t indent = std::min(kIndent, longest + 4);
    std::string text = section.heading + ":\n";
    for (const Entry& entry : section.entries) {
        std::string line = "  " + entry.name;
        if (Width(line) + 2 > indent) {
            text += line + "\n";
            line.clear();
        }
        for (const std::string& part : Wrap(entry.text, kColumns - indent)) {
            text += Pad(line, indent) + part + "\n";
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

std::string ManEntries(const Section& section) {
    std::string text;
    for (const Entry& entry : section.entries) {
        text += ".TP\n.B " + Roff(entry.name) + "\n" + Roff(entry.text) + "\n";
    }
    return text;
}

std::string ManEntries(const char* heading, const std::vector<Surrounding>& entries) {
    std::string text = std::string(".SH ") + heading + "\n";
    for (const Surrounding& entry : entries) {
        text += ".TP\n.B " + Roff(entry.name) + "\n" + Roff(entry.text) + "\n";
    }
    return text;
}

std::string ManPage(const CLI::App& verb) {
    const Notes notes = NotesOf(verb);
    std::string page = ".TH " + Upper(PageName(verb)) + " 1 \"\" \"vtv " VTV_VERSION "\" \"vtv\"\n";
    page += ".SH NAME\n" + PageName(verb) + " \\- " + Roff(verb.get_description()) + "\n";
    page += ".SH SYNOPSIS\n.B " + FullName(verb) + "\n" + Roff(Usage(verb)) + "\n";
    std::string description;
    std::string exitCodes = ExitCodes();
    for (const std::string& paragraph : notes.paragraphs) {
        if (paragraph.rfind(kExitCodes, 0) == 0) {
            exitCodes = paragraph.substr(sizeof kExitCodes - 1);
        } else {
            description += ".PP\n" + Roff(paragraph) + "\n";
        }
    }
    page += description.empty() ? "" : ".SH DESCRIPTION\n" + description;
    for (const Section& section : Sections(verb)) {
        page += ".SH " + Upper(section.heading) + "\n" + ManEntries(section);
    }
    if (!notes.examples.empty()) {
        page += ".SH EXAMPLES\n.nf\n";
        for (const std::string& line : notes.examples) {
            page += Roff(line) + "\n";
        }
        page += ".fi\n";
    }
    page += ".SH EXIT STATUS\n" + Roff(exitCodes) + "\n";
    page += ManEntries("ENVIRONMENT", EnvironmentVariables());
    page += ManEntries("FILES", Files());
    std::string others = verb.get_parent() != nullptr ? PageName(*verb.get_parent()) : "";
    for (const std::string& name : VerbNames(verb)) {
        others += (others.empty() ? "" : "(1), ") + PageName(verb) + "-" + name;
    }
    return page + (others.empty() ? "" : ".SH SEE ALSO\n" + Roff(others) + "(1)\n");
}

}  // namespace

void AddVersion(CLI::App& app, const std::string& program) {
    app.set_version_flag("--version", program + " " VTV_VERSION);
}

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
    bool wasGroup = false;
    for (const Section& section : Sections(*verb)) {
        // Groups of verbs follow each other closely: a screen has few lines.
        text += (wasGroup && section.isGroup ? "" : "\n") + Draw(section);
        wasGroup = section.isGroup;
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

std::string WriteManPages(const CLI::App& app, const std::string& folder) {
    std::string problem = WriteFile(folder + "/" + PageName(app) + ".1", ManPage(app));
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (problem.empty()) {
            problem = WriteManPages(*verb, folder);
        }
    }
    return problem;
}

std::string AppendToManPage(const CLI::App& app, const std::string& file) {
    std::ostringstream page;
    page << std::ifstream(file).rdbuf();
    page << ".SH THE PROGRAM " << Upper(app.get_name()) << "\n"
         << Roff(app.get_description()) << "\n.PP\n.B " << app.get_name() << "\n"
         << Roff(Usage(app)) << "\n";
    for (const Section& section : Sections(app)) {
        page << ManEntries(section);
    }
    return WriteFile(file, page.str());
}

}  // namespace program
