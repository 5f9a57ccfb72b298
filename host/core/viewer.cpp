#include "viewer.h"

#include <strings.h>

#include <algorithm>
#include <charconv>

namespace host {

namespace {

constexpr char kToastApplication[] = "org.nemra.alert-syspopup";

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

std::string BoxText(const Box& box) {
    std::string text = box.title.empty() ? box.message : box.title + ": " + box.message;
    for (const std::string& button : box.buttons) {
        text += " [" + button + "]";
    }
    return text;
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
    Sight sight = Plain(kind, BoxText(box));
    sight.box = box;
    return sight;
}

bool IsChoice(const ItemView& view, int value) {
    return std::any_of(view.choices.begin(), view.choices.end(),
                       [&](const Choice& choice) { return choice.value == value; });
}

void RequireChoice(const ItemView& view, int value) {
    if (view.item->kind == ItemKind::kList && !IsChoice(view, value)) {
        throw vtv::Error(vtv::ErrorKind::kUsage, std::to_string(value) + " is no choice of " +
                                                     view.item->name + ": it offers " +
                                                     Offered(view) + ".");
    }
}

bool CanBeAnswered(const Provider& provider, const Page& page, const Press& press) {
    const Item& item = *press.item;
    const bool confirms = HasValue(item) && provider.Confirmation(item.key).has_value();
    if (!page.IsReachable(item)) {
        return confirms || provider.DisablePopup(item.key);  // on another TV it may ask
    }
    const ItemView& view = page[item.name];
    return view.enabled ? confirms && press.choose : view.disablePopup.has_value();
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
    const bool toast = launch.appId == kToastApplication;
    std::string text = toast ? Extra(launch, "text") : launch.appId;
    if (!toast) {
        for (const auto& [key, value] : launch.extras) {
            text += " " + key + "=" + value;
        }
    }
    if (launch.outcome.rfind("failed", 0) == 0) {
        text += " (" + launch.outcome + ")";
    }
    Sight sight = Plain(toast ? Sight::Kind::kToast : Sight::Kind::kApplication, std::move(text));
    sight.launch = launch;
    return sight;
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
    throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + text + "\" is no value of " + view.item->name +
                                                 ": it takes " + Offered(view) + ".");
}

void RequireMeaning(const Provider& provider, const Press& press) {
    const Page page = LookAtPage(provider);
    const Item& item = *press.item;
    const ItemView& view = page[item.name];
    if (press.choose && item.kind != ItemKind::kList) {
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
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
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
            std::string(item.name) + " asks nothing" +
                (asksAboutChoice ? " before something is chosen: add --choose, or " : " now: ") +
                "leave out " + option + ".");
    }
}

PressResult Viewer::PressItem(const Press& press) {
    PressResult result;
    const Page before = LookAtPage(provider_);
    const size_t launches = tv_.Launches().size();
    const ItemView& view = before[press.item->name];
    if (!before.IsReachable(*press.item)) {
        result.refusal = WhyUnreachable(before, view);
    } else if (!view.enabled) {
        PressDimmed(press, view, &result);
    } else {
        PressEnabled(press, view, &result);
    }
    Finish(before, launches, &result);
    return result;
}

PressResult Viewer::SetValue(const Item& item, int value) {
    PressResult result;
    const Page before = LookAtPage(provider_);
    const size_t launches = tv_.Launches().size();
    const ItemView& view = before[item.name];
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
    Finish(before, launches, &result);
    return result;
}

void Viewer::PressDimmed(const Press& press, const ItemView& view, PressResult* result) {
    if (view.disableText) {
        result->sights.push_back(Plain(Sight::Kind::kReason, *view.disableText));
    }
    if (view.disablePopup) {
        result->sights.push_back(WithBox(Sight::Kind::kPopup, *view.disablePopup));
        if (press.answer == Answer::kOk && view.disablePopup->action) {
            provider_.SetInt(view.item->key, *view.disablePopup->action);
        }
        result->done = true;
        return;
    }
    result->refusal = view.Label() + " (" + view.item->name + ") is dimmed.";
}

void Viewer::PressEnabled(const Press& press, const ItemView& view, PressResult* result) {
    result->done = true;
    switch (view.item->kind) {
        case ItemKind::kPage:
            return;
        case ItemKind::kSetup:
            provider_.SetInt(view.item->key, SI_ACTION_VALUE);
            return;
        case ItemKind::kApplication:
            result->sights.push_back(
                Plain(Sight::Kind::kElsewhere, "the settings of the assistant's own application"));
            return;
        case ItemKind::kSwitch: {
            const int opposite = view.value.value_or(0) == 1 ? 0 : 1;
            provider_.SetInt(view.item->key, press.choose.value_or(opposite));
            return;
        }
        case ItemKind::kList:
            PressList(press, view, result);
            return;
    }
}

void Viewer::PressList(const Press& press, const ItemView& view, PressResult* result) {
    if (press.choose) {
        RequireChoice(view, *press.choose);
    } else {
        Sight sight = Plain(Sight::Kind::kChoices, Offered(view));
        sight.choices = view.choices;
        result->sights.push_back(std::move(sight));
        return;
    }
    const std::optional<Box> box = provider_.Confirmation(view.item->key);
    if (box) {
        result->sights.push_back(WithBox(Sight::Kind::kBox, *box));
        if (press.answer != Answer::kOk) {
            return;
        }
    }
    provider_.SetInt(view.item->key, *press.choose);
}

void Viewer::Finish(const Page& before, size_t launchesBefore, PressResult* result) {
    tv_.Dispatch();
    const std::vector<vtv::Launch> launches = tv_.Launches();
    for (size_t i = launchesBefore; i < launches.size(); ++i) {
        result->sights.push_back(SightOf(launches[i]));
    }
    result->failures = tv_.TakeFailures();
    result->after = LookAtPage(provider_);
    for (const PageChange& change : ComparePages(before, result->after)) {
        Sight sight = Plain(Sight::Kind::kChange, ToText(change, result->after));
        sight.change = change;
        result->sights.push_back(std::move(sight));
    }
    if (result->done && result->sights.empty()) {
        result->sights.push_back(Plain(Sight::Kind::kNothing, "nothing changes"));
    }
}

}  // namespace host
