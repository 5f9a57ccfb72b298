#include "surroundings.h"

namespace program {

const std::vector<Surrounding>& EnvironmentVariables() {
    static const std::vector<Surrounding> variables = {
        {"VTV_TV",
         "The TV where no --tv names one: its name as vtv list shows it, or its folder. It is set "
         "for "
         "the applications that a TV starts. vtv explore and vtv impact look at models and not at "
         "TVs: it is nothing to them."},
        {"VTV_HOME", "The folder in which TVs lie."},
        {"VTV_PROVIDER", "The provider library where no --provider names one."},
        {"VTV_DATA", "The folder with the models and the catalogues of texts."},
        {"VTV_APP", "The program that plays the applications of a TV, in place of vtv-app."},
        {"VTV_APP_ID", "Set for an application that a TV starts: which one it is."},
        {"VTV_EXPLORER_DATA", "The folder with the values that vtv explore tries."},
        {"HOME, XDG_DATA_HOME, XDG_CONFIG_HOME",
         "Where TVs, allowed commands and notes of recordings lie; see FILES."},
        {"TMPDIR, XDG_RUNTIME_DIR", "Where TVs lie that are thrown away, as those of vtv run."},
        {"COLUMNS", "How wide the page is drawn, from 30 to 100, whatever the terminal's width."},
        {"NO_COLOR", "Where it is set, nothing is coloured, unless --color asks for it."},
        {"LC_ALL, LC_CTYPE, LANG",
         "The characters that the terminal has: without UTF-8 boxes, arrows and quotes are drawn "
         "with others, and letters that it lacks are replaced. JSON is always UTF-8."},
        {"LC_MESSAGES, LANGUAGE",
         "The language in which the machine says what went wrong; the page is in the TV's."},
    };
    return variables;
}

const std::vector<Surrounding>& Files() {
    static const std::vector<Surrounding> files = {
        {"~/.local/share/vtv/NAME/",
         "A TV, in $VTV_HOME, else in $XDG_DATA_HOME/vtv, else here: tv.toml is its model, "
         "settings/ and memory/ hold its settings, owner/ the files of /home/owner, log/ and "
         "trace/ "
         "what happened."},
        {"~/.config/vtv/allowed-commands.json",
         "The commands that models may run (vtv app allow), in $XDG_CONFIG_HOME/vtv, else here."},
        {"~/.config/vtv/recordings/",
         "Which files TVs are being recorded into (vtv record), in $XDG_CONFIG_HOME/vtv, else "
         "here."},
        {"PREFIX/share/vtv/tvs/", "The models that come along, in $VTV_DATA, else here."},
        {"PREFIX/share/vtv/locale/",
         "The catalogues of the page's texts, in $VTV_DATA, else here."},
        {"PREFIX/share/vtv/schemas/", "The JSON schemas of what the verbs print with --json."},
    };
    return files;
}

}  // namespace program
