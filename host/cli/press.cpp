// vtv press and vtv choose: what a viewer does.
#include <iostream>
#include <memory>
#include <optional>

#include "host/core/virtual_tv_events.h"
#include "host/page/viewer.h"
#include "json_views.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace cli {

namespace {

using Values = std::map<std::string, vtv::Value>;

struct PressOptions {
    std::string item;
    std::optional<std::string> value;
    bool ok = false;
    bool cancel = false;
    With with;
};

const char* Heading(host::Sight::Kind kind) {
    switch (kind) {
        case host::Sight::Kind::kChoices:
            return "choose:  ";
        case host::Sight::Kind::kBox:
            return "box:     ";
        case host::Sight::Kind::kReason:
            return "reason:  ";
        case host::Sight::Kind::kPopup:
            return "popup:   ";
        case host::Sight::Kind::kApplication:
            return "opens:   ";
        case host::Sight::Kind::kToast:
            return "toast:   ";
        case host::Sight::Kind::kChange:
            return "changes: ";
        case host::Sight::Kind::kElsewhere:
            return "opens:   ";
        case host::Sight::Kind::kNothing:
            break;
    }
    return "         ";
}

void Print(const host::PressResult& result) {
    for (const host::Sight& sight : result.sights) {
        std::cout << Paint(Look::kNote, Heading(sight.kind)) << program::OneLine(sight.text);
        if (sight.kind == host::Sight::Kind::kNothing && !IsQuiet()) {
            std::cout << Paint(Look::kDim, " (what was done: vtv log)");
        }
        std::cout << '\n';
    }
}

// Waiting for an answer that was not given is no refusal, but the viewer has to be told of it.
void PrintNextStep(const host::PressResult& result, const PressOptions& options) {
    if (options.ok || options.cancel || result.sights.empty() || IsQuiet()) {
        return;
    }
    for (const host::Sight& sight : result.sights) {
        if (sight.box) {
            std::cout << Paint(Look::kDim, "(the box waits: add --ok or --cancel)") << '\n';
            return;
        }
        if (sight.kind == host::Sight::Kind::kChoices) {
            std::cout << Paint(Look::kDim, "(the list waits: add --choose N)") << '\n';
        }
    }
}

// A provider can only take it that a platform call fails; whoever pressed wants to know why.
void RequireNoFailure(const host::PressResult& result) {
    if (!result.failures.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, result.failures.front());
    }
}

// What the options mean for the item; nothing has happened when they mean nothing.
host::Press Meant(const host::Provider& provider, const host::Item& item,
                  const PressOptions& options) {
    host::Press press;
    press.item = &item;
    press.answer = options.ok       ? host::Answer::kOk
                   : options.cancel ? host::Answer::kCancel
                                    : host::Answer::kNone;
    if (options.value) {
        // Where there is no list, any choice is one too many.
        const bool list = item.kind == host::ItemKind::kList;
        press.choose = list ? host::ParseChoice(host::LookAt(provider, item), *options.value) : 0;
    }
    if (press.choose || press.answer != host::Answer::kNone) {
        host::RequireMeaning(provider, press);
    }
    return press;
}

void Press(Common& common, const PressOptions& options) {
    const host::Item& item = RequireItem(options.item);
    Session session(common, options.with);
    const host::Press press = Meant(session.provider, item, options);
    Recorder recorder(common, session.tv, host::StepOf(press));
    host::VirtualTvEvents events(session.tv);
    const host::PressResult result = host::Viewer(session.provider, events).PressItem(press);
    recorder.Done(result);
    if (common.json) {
        PrintJson(ToJson(result, item));
    } else {
        Print(result);
        PrintNextStep(result, options);
        PrintTried(options.with);
    }
    RequireNoFailure(result);
    if (!result.done) {
        throw Refusal(result.refusal);
    }
}

void Choose(Common& common, const PressOptions& options) {
    const host::Item& item = RequireItem(options.item);
    Session session(common);
    const host::ItemView view = host::LookAt(session.provider, item);
    if (!host::HasValue(item)) {
        throw Refusal(view.Label() + " (" + item.name + ") has no value to choose.");
    }
    const int value = host::ParseChoice(view, options.value.value_or(""));
    Recorder recorder(common, session.tv, {{"hand", Values{{item.name, value}}}});
    host::VirtualTvEvents events(session.tv);
    const host::PressResult result = host::Viewer(session.provider, events).SetValue(item, value);
    if (result.done) {
        recorder.Done(result);
    }
    if (common.json) {
        PrintJson(ToJson(result, item));
    } else {
        Print(result);
    }
    RequireNoFailure(result);
    if (!result.done) {
        throw Refusal(result.refusal);
    }
    // A switch takes exactly 1 as on.
    const int expected = item.kind == host::ItemKind::kSwitch && value != 1 ? 0 : value;
    if (result.after[item.name].value != expected) {
        throw Refusal(view.Label() + " did not take the value: it is still " +
                      result.after[item.name].ValueText() + ". The log tells why: vtv log");
    }
}

}  // namespace

void AddPressVerbs(CLI::App& app, Common& common) {
    const auto options = std::make_shared<PressOptions>();
    CLI::App* press = AddVerb(
        app, common, "press", "Press an item as a viewer does, and tell what the viewer sees next",
        "  vtv press voice-wake-up                        switch it over\n"
        "  vtv press voice-assistant                      what is there to choose?\n"
        "  vtv press voice-assistant --choose 2           the confirmation box\n"
        "  vtv press voice-assistant --choose 2 --ok      and its OK button\n"
        "  vtv press voice-settings-orvik --ok            the button of a dimmed item's popup\n"
        "  vtv press voice-wake-up --with network=disconnected     what if?\n\n"
        "What is tried with --with happens on a copy of the TV, where starting an application\n"
        "is only noted.",
        kTv | kProvider | kJson | kRecord);
    press->add_option("ITEM", options->item, "The item, by name or key")->required();
    press
        ->add_option("--choose", options->value,
                     "Take this choice of the item's list: its number or text")
        ->type_name("CHOICE");
    CLI::Option* ok =
        press->add_flag("--ok", options->ok, "Press the first button of the box or popup");
    press->add_flag("--cancel", options->cancel, "Press its second button")->excludes(ok);
    AddWith(*press, options->with)->excludes(press->get_option("--record"));
    press->callback([&common, options] { Press(common, *options); });

    const auto choice = std::make_shared<PressOptions>();
    CLI::App* choose =
        AddVerb(app, common, "choose", "Give an item a value, without any box in between",
                "  vtv choose voice-wake-up on\n"
                "  vtv choose voice-assistant 2\n"
                "  vtv choose voice-assistant \"Google Assistant\"",
                kTv | kProvider | kJson | kRecord);
    choose->add_option("ITEM", choice->item, "The item, by name or key")->required();
    choose->add_option("VALUE", choice->value, "on, off, a choice's text, or a number")->required();
    choose->callback([&common, choice] { Choose(common, *choice); });
}

}  // namespace cli
