// The options of `vtv window` and `vtv picture`, which vtv reads and vtv-window carries out.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "program/options.h"

namespace window {

struct PageOptions {
    std::string text = "normal";
    std::string contrast = "normal";
};

struct WindowOptions : PageOptions {
    std::string keys;
    std::string display = "auto";
};

struct GalleryOptions {
    std::string folder;
    std::vector<std::string> models;
    std::vector<std::string> languages;
    std::string po;
    std::string compare;
    int jobs = 0;
    bool pseudo = false;
    bool quiet = false;
};

struct PictureOptions : PageOptions {
    std::vector<std::string> with;
    std::vector<std::string> presses;
    std::string language;
    std::string po;
    std::string size = "1920x1080";
    std::string file;
};

inline void AddPageOptions(CLI::App& verb, PageOptions& options) {
    verb.add_option("--text", options.text, "large: larger texts")
        ->check(CLI::IsMember({"normal", "large"}))
        ->type_name("SIZE");
    verb.add_option("--contrast", options.contrast, "high: stronger colours")
        ->check(CLI::IsMember({"normal", "high"}))
        ->type_name("HOW");
}

inline void AddWindowOptions(CLI::App& verb, WindowOptions& options) {
    verb.add_option("--keys", options.keys,
                    "Press the keys that stand in this file, one a line, and print what is seen; "
                    "\"-\" is the standard input")
        ->type_name("FILE");
    verb.add_option("--display", options.display, "none: without a display; needs --keys")
        ->check(CLI::IsMember({"auto", "none"}))
        ->type_name("WHERE");
    AddPageOptions(verb, options);
}

inline void AddPictureOptions(CLI::App& verb, PictureOptions& options) {
    program::AddWith(verb, options.with);
    verb.add_option("--press", options.presses,
                    "Press this item first, as a viewer does; ITEM=N also takes choice N of its "
                    "list; again for more")
        ->type_name("ITEM")
        ->take_all()
        ->expected(1);
    verb.add_option("--language", options.language, "The menu language, such as ko_KR")
        ->type_name("LANGUAGE");
    verb.add_option("--po", options.po,
                    "With the texts of a .po file, which need not be built; see vtv texts")
        ->type_name("FILE");
    verb.add_option("--size", options.size, "WIDTHxHEIGHT in pixels")->type_name("SIZE");
    verb.add_option("-o,--output", options.file, "The PNG file [default: page.png]")
        ->type_name("FILE");
    AddPageOptions(verb, options);
}

inline void AddGalleryOptions(CLI::App& verb, GalleryOptions& options) {
    verb.add_option("FOLDER", options.folder, "Where the pictures go; made, or made anew")
        ->required();
    verb.add_option("--models", options.models, "These models, by name or file [default: all]")
        ->type_name("MODEL")
        ->delimiter(',');
    verb.add_option("--languages", options.languages, "These languages [default: all]")
        ->type_name("LANGUAGE")
        ->delimiter(',');
    verb.add_flag("--pseudo", options.pseudo,
                  "Also English with longer texts (en-long), and mirrored (en-mirrored)");
    verb.add_option("--po", options.po,
                    "Also the texts of a .po file, which need not be built (po)")
        ->type_name("FILE");
    verb.add_option("--compare", options.compare,
                    "Show what differs from a gallery that was made before; ends with 1 if "
                    "anything does")
        ->type_name("OLD");
    program::AddJobs(verb, options.jobs);
    verb.add_flag("--quiet,-q", options.quiet, "No progress");
}

// The same options as words for another command line.
inline std::vector<std::string> WordsOf(const GalleryOptions& options) {
    std::vector<std::string> words = {options.folder, "--jobs", std::to_string(options.jobs)};
    for (const std::string& model : options.models) {
        words.insert(words.end(), {"--models", model});
    }
    for (const std::string& language : options.languages) {
        words.insert(words.end(), {"--languages", language});
    }
    if (!options.po.empty()) {
        words.insert(words.end(), {"--po", options.po});
    }
    if (!options.compare.empty()) {
        words.insert(words.end(), {"--compare", options.compare});
    }
    if (options.pseudo) {
        words.emplace_back("--pseudo");
    }
    if (options.quiet) {
        words.emplace_back("--quiet");
    }
    return words;
}

inline std::vector<std::string> WordsOf(const PageOptions& options) {
    return {"--text", options.text, "--contrast", options.contrast};
}

inline std::vector<std::string> WordsOf(const WindowOptions& options) {
    std::vector<std::string> words = WordsOf(static_cast<const PageOptions&>(options));
    words.insert(words.end(), {"--display", options.display});
    if (!options.keys.empty()) {
        words.insert(words.end(), {"--keys", options.keys});
    }
    return words;
}

inline std::vector<std::string> WordsOf(const PictureOptions& options) {
    std::vector<std::string> words = WordsOf(static_cast<const PageOptions&>(options));
    words.insert(words.end(), {"--size", options.size});
    for (const std::string& one : options.with) {
        words.insert(words.end(), {"--with", one});
    }
    for (const std::string& press : options.presses) {
        words.insert(words.end(), {"--press", press});
    }
    if (!options.language.empty()) {
        words.insert(words.end(), {"--language", options.language});
    }
    if (!options.po.empty()) {
        words.insert(words.end(), {"--po", options.po});
    }
    if (!options.file.empty()) {
        words.insert(words.end(), {"--output", options.file});
    }
    return words;
}

}  // namespace window
