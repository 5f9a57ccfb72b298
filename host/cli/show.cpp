// vtv show: the Voice page, once or as it changes.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include "host/core/po_file.h"
#include "host/core/refresh.h"
#include "json_views.h"
#include "page_text.h"
#include "program/terminal.h"
#include "program/text_width.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace cli {

namespace {

struct ShowOptions {
    bool watch = false;
    bool all = false;
    std::string po;
    std::string item;
    With with;
};

std::string DrawItem(const host::Page& page, const host::Item& item) {
    const host::ItemView& view = page[item.name];
    std::string text = Paint(Look::kBold, view.Label()) + "  (" + item.name + ")\n";
    const auto field = [&](const char* name, const std::string& value) {
        if (!value.empty()) {
            text += name + program::OneLine(value) + "\n";
        }
    };
    field("  key      ", item.key);
    field("  help     ", view.help.value_or(""));
    field("  state    ", std::string(view.visible ? "shown" : "hidden") + ", " +
                             (view.enabled ? "enabled" : "dimmed"));
    field("  value    ", view.ValueText());
    for (const host::Choice& choice : view.choices) {
        field("  choice   ", std::to_string(choice.value) + " " + choice.text);
    }
    field("  reason   ", view.disableText.value_or(""));
    if (view.disablePopup) {
        field("  popup    ", view.disablePopup->title + ": " + view.disablePopup->message);
        for (const std::string& button : view.disablePopup->buttons) {
            field("  button   ", button);
        }
    }
    for (const std::string& missing : view.MissingTexts()) {
        field("  untranslated ", missing);
    }
    return text;
}

// What a viewer sees now, for people.
std::string Draw(const Session& session, const host::Page& page, const ShowOptions& options) {
    return options.item.empty()
               ? DrawPage(page, session.tv, {options.all, PictureColumns(), options.po})
               : DrawItem(page, RequireItem(options.item));
}

Json::Value Document(const Session& session, const host::Page& page, const ShowOptions& options) {
    if (options.item.empty()) {
        Json::Value json = ToJson(page, session.provider, session.tv);
        json["tv"]["dir"] = session.Dir();  // not that of a copy on which something is tried
        return json;
    }
    const host::Item& item = RequireItem(options.item);
    return ToJson(page[item.name], page.IsReachable(item));
}

// A picture that is drawn anew in its own place, where the standard output is a terminal.
class Screen {
  public:
    static bool IsThere() { return isatty(STDOUT_FILENO) == 1; }

    void Draw(const std::string& picture) {
        const size_t columns = program::Columns();
        // One that did not fit is not where it was drawn any more.
        const bool isInPlace = lines_ < program::Rows() && columns == columns_;
        if (lines_ > 0 && isInPlace) {
            std::cout << program::Control("[" + std::to_string(lines_) + "A");
        } else if (lines_ > 0) {
            std::cout << program::Control("[H");
        }
        std::cout << program::Control("[J") << picture;
        std::cout.flush();
        lines_ = static_cast<size_t>(std::count(picture.begin(), picture.end(), '\n'));
        columns_ = columns;
    }

    bool IsResized() const { return columns_ != program::Columns(); }

  private:
    size_t lines_ = 0;
    size_t columns_ = 0;
};

// On a terminal the picture is drawn anew, with what changed below it; in a pipe each difference is
// a line.
class Follower {
  public:
    Follower(const Session& session, const ShowOptions& options, bool json)
        : session_(session), options_(options), json_(json), isDrawn_(!json && Screen::IsThere()) {}

    void Begin(const host::Page& page) {
        if (json_) {
            PrintJsonLine(Document(session_, page, options_));
        } else if (isDrawn_) {
            screen_.Draw(Draw(session_, page, options_));
        } else {
            std::cout << Draw(session_, page, options_);
        }
        std::cout.flush();
    }

    void Tell(const host::Page& before, const host::Page& page) {
        std::vector<host::PageChange> changes = host::ComparePages(before, page);
        if (!options_.item.empty()) {
            const host::Item& item = RequireItem(options_.item);
            std::erase_if(changes,
                          [&](const host::PageChange& change) { return change.item != &item; });
        }
        if (isDrawn_ && (!changes.empty() || screen_.IsResized())) {
            screen_.Draw(Draw(session_, page, options_) + Lines(changes, page));
        } else if (json_) {
            for (const host::PageChange& change : changes) {
                PrintJsonLine(ToJson(change));
            }
        } else if (!isDrawn_) {
            std::cout << Lines(changes, page);
        }
        std::cout.flush();
    }

  private:
    std::string Lines(const std::vector<host::PageChange>& changes, const host::Page& page) const {
        std::string lines;
        for (const host::PageChange& change : changes) {
            const std::string text = host::ToText(change, page);
            for (const std::string& line :
                 isDrawn_ ? program::Wrap(text, PictureColumns()) : std::vector{text}) {
                lines += program::OneLine(line) + "\n";
            }
        }
        return lines;
    }

    const Session& session_;
    const ShowOptions& options_;
    const bool json_;
    const bool isDrawn_;
    Screen screen_;
};

// A terminal that changes its size ends the wait, and the picture is drawn for the new one.
void WakeUpWhenResized() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGWINCH, &action, nullptr);
}

void Watch(Session& session, host::Page page, const ShowOptions& options, bool json) {
    Follower follower(session, options, json);
    follower.Begin(page);
    WakeUpWhenResized();
    std::vector<vtv::Change> changes;
    session.tv.WatchAll([&](const vtv::Change& change) { changes.push_back(change); });
    // What changed between the first look and the watch is caught by looking again.
    session.tv.Dispatch();
    host::Page now = host::LookAtPage(session.provider);
    follower.Tell(page, now);
    while (WaitForTv(session.tv)) {
        page = std::exchange(now, {});
        session.tv.Dispatch();
        now = host::Refresh(session.provider, page, std::exchange(changes, {}));
        follower.Tell(page, now);
    }
}

void Show(Common& common, const ShowOptions& options) {
    if (!options.item.empty()) {
        RequireItem(options.item);  // before a TV is made
    }
    std::optional<host::TriedPoFile> tried;
    if (!options.po.empty()) {
        tried.emplace(options.po);
    }
    if (!options.watch) {
        vtv::WatchNothing();
    }
    Session session(common, options.with);
    const host::Page page = host::LookAtPage(session.provider);
    if (options.watch) {
        Watch(session, page, options, common.json);
    } else if (common.json) {
        PrintJson(Document(session, page, options));
    } else {
        std::cout << Draw(session, page, options);
        PrintTried(options.with);
    }
}

}  // namespace

void AddShow(CLI::App& app, Common& common) {
    const auto options = std::make_shared<ShowOptions>();
    CLI::App* verb =
        AddVerb(app, common, "show", "Show the Voice page as a viewer sees it",
                "  vtv show                       the page of the default TV\n"
                "  vtv show voice-wake-up         everything about one item\n"
                "  vtv show --tv kitchen --watch  follow it while something else changes it\n"
                "  vtv show --po fr.po            with a translation that is not built yet\n"
                "  vtv show --with network=disconnected --with tnc=off     what if?\n"
                "  vtv show --json | jq '.items[] | select(.visible) | .title'",
                kTv | kProvider | kJson);
    CLI::Option* item = verb->add_option("ITEM", options->item, "Only this item, with its details");
    verb->add_flag("--all", options->all, "Hidden items, too; JSON always has them")
        ->excludes(item)
        ->excludes(verb->get_option("--json"));
    verb->add_option("--po", options->po,
                     "With the texts of a .po file, which need not be built; see vtv texts")
        ->type_name("FILE");
    CLI::Option* watch = verb->add_flag(
        "--watch", options->watch, "Stay, and show each change as it happens; ends with Ctrl-C");
    AddWith(*verb, options->with)->excludes(watch);
    verb->callback([&common, options] { Show(common, *options); });
}

}  // namespace cli
