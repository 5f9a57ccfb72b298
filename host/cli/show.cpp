// vtv show: the Voice page, once or as it changes.
#include <iostream>
#include <memory>
#include <utility>

#include <unistd.h>

#include "host/core/refresh.h"
#include "json_views.h"
#include "page_text.h"
#include "verbs.h"

namespace cli {

namespace {

struct ShowOptions {
    bool watch = false;
    bool all = false;
    std::string item;
};

void PrintItem(const host::Page& page, const host::Item& item) {
    const host::ItemView& view = page[item.name];
    const auto field = [](const char* name, const std::string& text) {
        if (!text.empty()) {
            std::cout << name << text << '\n';
        }
    };
    std::cout << Paint(Look::kBold, view.Label()) << "  (" << item.name << ")\n";
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
}

void Print(const Session& session, const host::Page& page, const ShowOptions& options, bool json) {
    if (options.item.empty()) {
        if (json) {
            PrintJson(ToJson(page, session.provider, session.tv));
        } else {
            std::cout << DrawPage(page, session.tv, {options.all, PictureColumns()});
        }
        return;
    }
    const host::Item& item = RequireItem(options.item);
    if (json) {
        PrintJson(ToJson(page[item.name], page.IsReachable(item)));
    } else {
        PrintItem(page, item);
    }
}

// On a terminal the picture is drawn anew; in a pipe each difference is a line.
void PrintChanges(const Session& session, const host::Page& before, const host::Page& page,
                  const ShowOptions& options, bool json) {
    std::vector<host::PageChange> changes = host::ComparePages(before, page);
    if (!options.item.empty()) {
        const host::Item& item = RequireItem(options.item);
        std::erase_if(changes,
                      [&](const host::PageChange& change) { return change.item != &item; });
    }
    if (changes.empty()) {
        return;
    }
    if (!json && isatty(STDOUT_FILENO) == 1) {
        std::cout << "\033[H\033[J";
        Print(session, page, options, false);
    }
    for (const host::PageChange& change : changes) {
        if (json) {
            PrintJsonLine(ToJson(change));
        } else {
            std::cout << host::ToText(change, page) << '\n';
        }
    }
    std::cout.flush();
}

void Watch(Session& session, host::Page page, const ShowOptions& options, bool json) {
    std::vector<vtv::Change> changes;
    session.tv.WatchAll([&](const vtv::Change& change) { changes.push_back(change); });
    // What changed between the first look and the watch is caught by looking again.
    session.tv.Dispatch();
    host::Page now = host::LookAtPage(session.provider);
    PrintChanges(session, page, now, options, json);
    while (WaitForTv(session.tv)) {
        page = std::exchange(now, {});
        session.tv.Dispatch();
        now = host::Refresh(session.provider, page, std::exchange(changes, {}));
        PrintChanges(session, page, now, options, json);
    }
}

void Show(Common& common, const ShowOptions& options) {
    const host::Item* item = options.item.empty() ? nullptr : &RequireItem(options.item);
    Session session(common);
    const host::Page page = host::LookAtPage(session.provider);
    if (options.watch && common.json) {
        PrintJsonLine(item == nullptr ? ToJson(page, session.provider, session.tv)
                                      : ToJson(page[item->name], page.IsReachable(*item)));
    } else {
        Print(session, page, options, common.json);
    }
    std::cout.flush();
    if (options.watch) {
        Watch(session, page, options, common.json);
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
                "  vtv show --json | jq '.items[] | select(.visible) | .title'",
                kTv | kProvider | kJson);
    CLI::Option* item = verb->add_option("ITEM", options->item, "Only this item, with its details");
    verb->add_flag("--all", options->all, "Hidden items, too; JSON always has them")
        ->excludes(item)
        ->excludes(verb->get_option("--json"));
    verb->add_flag("--watch", options->watch,
                   "Stay, and show each change as it happens; ends with Ctrl-C");
    verb->callback([&common, options] { Show(common, *options); });
}

}  // namespace cli
