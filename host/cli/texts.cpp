// vtv texts: every text of the page, with where it is to be seen and what is still to be
// translated.
#include "virtual-tv/texts.h"

#include <iostream>
#include <memory>

#include "host/core/po_file.h"
#include "program/counted.h"
#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/model/page_texts.h"

namespace cli {

namespace {

constexpr char kEnglish[] = "en";

struct TextsOptions {
    std::string language;
    std::string po;
    bool toDo = false;
    bool check = false;
};

enum class State { kTranslated, kAsEnglish, kMissing, kPlaceholders };

struct Translation {
    const vtv::PageText* text;
    std::string english;
    std::optional<std::string> shown;
    State state;
};

const char* ToText(State state) {
    switch (state) {
        case State::kMissing:
            return "missing";
        case State::kPlaceholders:
            return "placeholders";
        case State::kAsEnglish:
            return "as-english";
        case State::kTranslated:
            break;
    }
    return "translated";
}

State StateOf(const std::string& english, const std::optional<std::string>& shown, bool isEnglish) {
    if (!shown || shown->empty()) {
        return State::kMissing;
    }
    if (vtv::PlaceholdersOf(*shown) != vtv::PlaceholdersOf(english)) {
        return State::kPlaceholders;
    }
    return *shown == english && !isEnglish ? State::kAsEnglish : State::kTranslated;
}

std::vector<Translation> Translations(const std::string& language, const std::string& po) {
    std::vector<Translation> translations;
    for (const vtv::PageText& text : vtv::PageTexts()) {
        translations.push_back({&text, vtv::TextIn(kEnglish, text.id).value_or(text.id), {}, {}});
    }
    std::optional<host::TriedPoFile> tried;
    if (!po.empty()) {
        tried.emplace(po);
    }
    const bool isEnglish = po.empty() && language.substr(0, language.find('_')) == kEnglish;
    for (Translation& translation : translations) {
        // What English stands in for is not translated.
        if (!po.empty() || vtv::HasTexts(language)) {
            translation.shown = vtv::TextIn(language, translation.text->id);
        }
        translation.state = StateOf(translation.english, translation.shown, isEnglish);
    }
    return translations;
}

std::string PlacesOf(const vtv::PageText& text) {
    std::string places;
    for (const vtv::TextPlace& place : text.places) {
        const bool isItem = host::FindItem(place.where) != nullptr;
        places += (places.empty() ? "" : ", ") + std::string(place.where) +
                  (isItem ? std::string(" (") + place.part + ")" : " (no item shows it)");
    }
    return places;
}

Json::Value TranslationAsJson(const Translation& translation) {
    Json::Value json;
    json["id"] = translation.text->id;
    json["places"] = Json::Value(Json::arrayValue);
    for (const vtv::TextPlace& place : translation.text->places) {
        const bool isItem = host::FindItem(place.where) != nullptr;
        Json::Value entry;
        entry[isItem ? "item" : "function"] = place.where;
        entry["part"] = place.part;
        json["places"].append(entry);
    }
    json["english"] = translation.english;
    json["text"] = translation.shown ? Json::Value(*translation.shown) : Json::Value();
    json["state"] = ToText(translation.state);
    return json;
}

std::string MarkOf(State state) {
    switch (state) {
        case State::kMissing:
            return Paint(Look::kBad, "  ! missing");
        case State::kPlaceholders:
            return Paint(Look::kBad, "  ! other placeholders than in English");
        case State::kAsEnglish:
            return Paint(Look::kNote, "  = as in English");
        case State::kTranslated:
            break;
    }
    return "";
}

void Print(const Translation& translation) {
    std::cout << Paint(Look::kBold, translation.text->id) << MarkOf(translation.state) << '\n'
              << Paint(Look::kDim, "  in       " + PlacesOf(*translation.text)) << '\n';
    const bool isTranslated = translation.state == State::kTranslated;
    if (!isTranslated && translation.state != State::kAsEnglish) {
        std::cout << Paint(Look::kDim, "  English  " + translation.english) << '\n';
    }
    if (translation.shown) {
        std::cout << "  text     " << program::OneLine(*translation.shown) << '\n';
    }
}

std::string Sum(const std::vector<Translation>& translations) {
    size_t count[4] = {};
    for (const Translation& translation : translations) {
        ++count[static_cast<size_t>(translation.state)];
    }
    const auto of = [&](State state) { return std::to_string(count[static_cast<size_t>(state)]); };
    return program::Counted(translations.size(), "text") + ": " + of(State::kTranslated) +
           " translated, " + of(State::kAsEnglish) + " as in English, " + of(State::kMissing) +
           " missing, " + of(State::kPlaceholders) + " with other placeholders.";
}

// The language that is looked at: the one that is named, else the TV's.
std::string LanguageOf(const Common& common, const TextsOptions& options) {
    if (options.language.empty()) {
        return options.po.empty() ? vtv::Tv(TvDir(common)).Language() : "";
    }
    if (!vtv::HasTexts(options.language)) {
        std::string offered;
        for (const std::string& one : vtv::Tv::Languages()) {
            offered += " " + one;
        }
        throw vtv::Error(
            vtv::ErrorKind::kNoSuch,
            "There is no catalogue for \"" + options.language + "\"; there are:" + offered + ".");
    }
    return options.language;
}

void Texts(Common& common, const TextsOptions& options) {
    const std::string language = LanguageOf(common, options);
    const std::vector<Translation> translations = Translations(language, options.po);
    Json::Value json;
    json["language"] = options.po.empty() ? Json::Value(language) : Json::Value();
    json["po"] = options.po.empty() ? Json::Value() : Json::Value(options.po);
    json["texts"] = Json::Value(Json::arrayValue);
    bool isWhole = true;
    for (const Translation& translation : translations) {
        isWhole = isWhole && (translation.state == State::kTranslated ||
                              translation.state == State::kAsEnglish);
        if (options.toDo && translation.state == State::kTranslated) {
            continue;
        }
        if (common.json) {
            json["texts"].append(TranslationAsJson(translation));
        } else {
            Print(translation);
        }
    }
    if (common.json) {
        PrintJson(json);
    } else {
        std::cout << Sum(translations) << '\n';
    }
    for (const std::string& problem : vtv::ProblemsOfTexts(language)) {
        Warn(problem);
    }
    common.exitCode = options.check && !isWhole ? kNo : kOk;
}

}  // namespace

void AddTexts(CLI::App& app, Common& common) {
    const auto options = std::make_shared<TextsOptions>();
    CLI::App* verb = AddVerb(
        app, common, "texts", "List the page's texts, where each appears, and their translation",
        "  vtv texts                            in the TV's language\n"
        "  vtv texts --language fr --todo       what is left to translate\n"
        "  vtv texts --po fr.po --check         a translation that is not built yet\n\n"
        "A text is marked that is missing, reads as in English, or has other placeholders than\n"
        "the English one. A .po file needs gettext's program msgfmt; how the page looks with it\n"
        "shows vtv show --po FILE.",
        kTv | kJson);
    CLI::Option* tv = verb->get_option("--tv");
    CLI::Option* language = verb->add_option("--language", options->language,
                                             "A language that has a catalogue, such as fr or "
                                             "pt_BR [default: the TV's]")
                                ->type_name("LANGUAGE")
                                ->excludes(tv);
    verb->add_option("--po", options->po, "The translation in a .po file, not built yet")
        ->type_name("FILE")
        ->excludes(tv)
        ->excludes(language);
    verb->add_flag("--todo", options->toDo, "Only those that are marked");
    verb->add_flag("--check", options->check,
                   "End with 1 when a text is missing or has other placeholders");
    verb->callback([&common, options] { Texts(common, *options); });
}

}  // namespace cli
