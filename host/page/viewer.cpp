#include "viewer.h"

#include <strings.h>

#include <algorithm>
#include <charconv>

#include "virtual-tv/model/applications.h"

namespace host {

namespace {

std::string Offered(const ItemView& view) {
    if (view.item->kind == ItemKind::kSwitch) {
        return "on or off";
    }
    std::string text;
    for (const Choice& choice : view.choices) {
        text +=
            (text.empty() ? "" : ", ") + std::to_string(choice.value) + " (" + choice.text + ")";
    }
    return text.empty() ? "nothing, for it has no choices now" : text;
}

std::string Extra(const vtv::Launch& launch, const std::string& name) {
    for (const auto& [key, value] : launch.extras) {
        if (key == name) {
            return value;
        }
    }
    return "";
}

Sight Plain(Sight::Kind kind, std::string text) {
    Sight sight;
    sight.kind = kind;
    sight.text = std::move(text);
    return sight;
}

Sight WithBox(Sight::Kind kind, const Box& box) {
    Sight sight = Plain(kind, ToText(box));
    sight.box = box;
    return sight;
}

bool IsChoice(const ItemView& view, int value) {
    return std::any_of(view.choices.begin(), view.choices.end(),
                       [&](const Choice& choice) { return choice.value == value; });
}

void RequireChoice(const ItemView& view, int value) {
    if (view.item->kind == ItemKind::kList && !IsChoice(view, value)) {
        throw MeaninglessPress(std::to_string(value) + " is no choice of " + view.item->name +
                               ": it offers " + Offered(view) + ".");
    }
}

bool CanBeAnswered(const AskableProvider& provider, const Page& page, const Press& press) {
    const Item& item = *press.item;
    const bool confirms = HasValue(item) && provider.Confirmation(item.key).has_value();
    if (!page.IsReachable(item)) {
        return confirms || provider.DisablePopup(item.key);  // on another TV it may ask
    }
    const ItemView& view = page[item.name];
    return view.enabled ? confirms && press.choose : view.disablePopup.has_value();
}

void Play(const AskableProvider& provider, const Press& press, const ItemView& view,
          PressResult* result) {
    PressSession session(provider, view);
    if (session.WaitsFor() == PressSession::Waits::kForChoice && press.choose) {
        RequireChoice(view, *press.choose);
    }
    session.Play(press);
    *result = SeenOf(press, view, session);
    if (result->done) {
        session.Send();
    }
}

}  // namespace

const char* ToText(Sight::Kind kind) {
    switch (kind) {
        case Sight::Kind::kChoices:
            return "choices";
        case Sight::Kind::kBox:
            return "box";
        case Sight::Kind::kReason:
            return "reason";
        case Sight::Kind::kPopup:
            return "popup";
        case Sight::Kind::kApplication:
            return "application";
        case Sight::Kind::kToast:
            return "toast";
        case Sight::Kind::kChange:
            return "change";
        case Sight::Kind::kElsewhere:
            return "elsewhere";
        case Sight::Kind::kNothing:
            break;
    }
    return "nothing";
}

Sight SightOf(const vtv::Launch& launch) {
    const bool toast = launch.appId == vtv::kNotification;
    std::string text = toast ? Extra(launch, "text") : launch.appId;
    if (!toast) {
        for (const auto& [key, value] : launch.extras) {
            text.append(" ").append(key).append("=").append(value);
        }
    }
    if (launch.outcome.rfind("failed", 0) == 0) {
        text += " (" + launch.outcome + ")";
    }
    Sight sight = Plain(toast ? Sight::Kind::kToast : Sight::Kind::kApplication, std::move(text));
    sight.launch = launch;
    return sight;
}

std::string WhyUnreachable(const Page& page, const ItemView& view) {
    const std::string name = view.Label() + " (" + view.item->name + ")";
    const ItemView& root = page.items.front();
    if (view.visible && root.visible) {
        return name + " cannot be reached: the page is dimmed" +
               (root.disableText ? ": " + *root.disableText : std::string("."));
    }
    return name + " is not on the page now.";
}

PressResult SeenOf(const Press& press, const ItemView& view, const PressSession& session) {
    PressResult result;
    const auto see = [&](Sight sight) { result.sights.push_back(std::move(sight)); };
    if (!view.enabled && view.disableText) {
        see(Plain(Sight::Kind::kReason, *view.disableText));
    }
    if (view.enabled && view.item->kind == ItemKind::kList && !press.choose) {
        see(Plain(Sight::Kind::kChoices, Offered(view)));
        result.sights.back().choices = view.choices;
    }
    if (const std::optional<Box>& box = session.OpenedBox()) {
        see(WithBox(view.enabled ? Sight::Kind::kBox : Sight::Kind::kPopup, *box));
    } else if (!view.enabled) {
        result.refusal = view.Label() + " (" + view.item->name + ") is dimmed.";
        return result;
    } else if (view.item->kind == ItemKind::kApplication) {
        see(Plain(Sight::Kind::kElsewhere, "the settings of the assistant's own application"));
    }
    result.done = true;
    return result;
}

void AddConsequences(const Page& before, const std::vector<vtv::Launch>& launches,
                     std::vector<std::string> failures, Page after, PressResult* result) {
    for (const vtv::Launch& launch : launches) {
        result->sights.push_back(SightOf(launch));
    }
    result->failures = std::move(failures);
    result->after = std::move(after);
    for (const PageChange& change : ComparePages(before, result->after)) {
        Sight sight = Plain(Sight::Kind::kChange, ToText(change, result->after));
        sight.change = change;
        result->sights.push_back(std::move(sight));
    }
    if (result->done && result->sights.empty()) {
        result->sights.push_back(Plain(Sight::Kind::kNothing, "nothing changes"));
    }
}

int ParseChoice(const ItemView& view, const std::string& text) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end) {
        return number;
    }
    if (view.item->kind == ItemKind::kSwitch) {
        if (strcasecmp(text.c_str(), "on") == 0) {
            return 1;
        }
        if (strcasecmp(text.c_str(), "off") == 0) {
            return 0;
        }
    }
    for (const Choice& choice : view.choices) {
        if (strcasecmp(choice.text.c_str(), text.c_str()) == 0) {
            return choice.value;
        }
    }
    throw MeaninglessPress("\"" + text + "\" is no value of " + view.item->name + ": it takes " +
                           Offered(view) + ".");
}

void RequireMeaning(const AskableProvider& provider, const Press& press) {
    const Page page = LookAtPage(provider);
    const Item& item = *press.item;
    const ItemView& view = page[item.name];
    if (press.choose && item.kind != ItemKind::kList) {
        throw MeaninglessPress(
            std::string(item.name) + " has no choices: leave out --choose." +
            (item.kind == ItemKind::kSwitch
                 ? " A press turns the switch over; \"vtv choose\" gives it a value."
                 : ""));
    }
    if (press.choose && !view.choices.empty()) {
        RequireChoice(view, *press.choose);
    }
    if (press.answer != Answer::kNone && !CanBeAnswered(provider, page, press)) {
        const char* option = press.answer == Answer::kOk ? "--ok" : "--cancel";
        const bool asksAboutChoice = item.kind == ItemKind::kList && !press.choose;
        throw MeaninglessPress(
            std::string(item.name) + " asks nothing" +
            (asksAboutChoice ? " before something is chosen: add --choose, or " : " now: ") +
            "leave out " + option + ".");
    }
}

PressResult Viewer::PressItem(const Press& press) {
    const Page before = LookAtPage(provider_);
    const vtv::LaunchMark mark = tv_.LaunchMark();
    const ItemView& view = before[press.item->name];
    PressResult result;
    if (before.IsReachable(*press.item)) {
        Play(provider_, press, view, &result);
    } else {
        result.refusal = WhyUnreachable(before, view);
    }
    return After(before, mark, std::move(result));
}

PressResult Viewer::SetValue(const Item& item, int value) {
    const Page before = LookAtPage(provider_);
    const vtv::LaunchMark mark = tv_.LaunchMark();
    const ItemView& view = before[item.name];
    PressResult result;
    if (!HasValue(item)) {
        result.refusal = view.Label() + " (" + item.name + ") has no value to set.";
    } else if (!before.IsReachable(item)) {
        result.refusal = WhyUnreachable(before, view);
    } else if (!view.enabled) {
        result.refusal = view.Label() + " (" + item.name + ") is dimmed" +
                         (view.disableText ? ": " + *view.disableText : std::string("."));
    } else {
        RequireChoice(view, value);
        provider_.SetInt(item.key, value);
        result.done = true;
    }
    return After(before, mark, std::move(result));
}

PressResult Viewer::After(const Page& before, const vtv::LaunchMark& launchMark,
                          PressResult result) {
    tv_.Settle();
    AddConsequences(before, tv_.LaunchesSince(launchMark), tv_.TakeFailures(),
                    LookAtPage(provider_), &result);
    return result;
}

}  // namespace host
