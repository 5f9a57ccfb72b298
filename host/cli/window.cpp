// vtv window and vtv picture: run vtv-window, the program beside this one that has the toolkit.
#include <memory>

#include "host/window/window_options.h"
#include "other_program.h"
#include "verbs.h"

namespace cli {

namespace {

[[noreturn]] void BecomeWindow(const Common& common, const std::string& verb,
                               const std::vector<std::string>& options) {
    const std::string program = WindowProgram();
    std::vector<std::string> words = {verb, "--tv", TvDir(common), "--provider",
                                      ProviderFile(common)};
    words.insert(words.end(), options.begin(), options.end());
    Become(program, words);
}

void AddGallery(CLI::App& app, Common& common) {
    const auto options = std::make_shared<window::GalleryOptions>();
    CLI::App* gallery = AddVerb(
        app, common, "gallery",
        "Make pictures of every TV model in every language, to look through",
        "  vtv gallery pictures                                      then open "
        "pictures/index.html\n"
        "  vtv gallery pictures --models farfield-eu --languages de,fr\n"
        "  vtv gallery pictures --po fr.po                           a translation that is not "
        "built\n"
        "  vtv gallery new --compare pictures                        what differs; ends with 1\n\n"
        "The page with each item in focus, the list, what is asked, each reason, popup and\n"
        "notification. Marked is what does not fit its place, is not translated, or reads as in\n"
        "English.",
        kProvider);
    gallery->remove_option(gallery->get_option("--quiet"));  // the other program has its own
    window::AddGalleryOptions(*gallery, *options);
    gallery->callback([&common, options] {
        std::vector<std::string> words = {"gallery", "--provider", ProviderFile(common)};
        const std::vector<std::string> more = window::WordsOf(*options);
        words.insert(words.end(), more.begin(), more.end());
        Become(WindowProgram(), words);
    });
}

}  // namespace

void AddWindowVerbs(CLI::App& app, Common& common) {
    const auto opening = std::make_shared<window::WindowOptions>();
    CLI::App* verb = AddVerb(
        app, common, "window", "Open the Voice page in a window, as it stands on the TV",
        "  vtv window --tv kitchen\n"
        "  vtv window --text large --contrast high\n"
        "  vtv window --keys keys.txt --display none    the keys of a file, without a display\n\n"
        "Arrows, Enter (OK), Esc (Back) and Home are the remote control; F1 lists the keys. What\n"
        "anybody changes of the TV is seen at once. A file of keys has one a line: up, down,\n"
        "left, right, ok, back, home; and show (print what is seen), wait SECONDS, until TEXT,\n"
        "gone TEXT, picture FILE.",
        kTv | kProvider);
    window::AddWindowOptions(*verb, *opening);
    verb->callback(
        [&common, opening] { BecomeWindow(common, "window", window::WordsOf(*opening)); });

    const auto drawing = std::make_shared<window::PictureOptions>();
    CLI::App* picture = AddVerb(
        app, common, "picture", "Make a picture of the Voice page, without a display",
        "  vtv picture -o page.png\n"
        "  vtv picture --press voice-assistant -o list.png          its list of choices\n"
        "  vtv picture --press voice-assistant=2 -o box.png         and what is asked then\n"
        "  vtv picture --language ko_KR --size 1280x720 -o korean.png\n"
        "  vtv picture --with network=disconnected -o offline.png   what would be if\n\n"
        "What is pressed is pressed on a copy: no picture changes a TV. The same TV gives the\n"
        "same bytes, on one machine with the same packages.",
        kTv | kProvider);
    window::AddPictureOptions(*picture, *drawing);
    picture->callback(
        [&common, drawing] { BecomeWindow(common, "picture", window::WordsOf(*drawing)); });
    AddGallery(app, common);
}

}  // namespace cli
