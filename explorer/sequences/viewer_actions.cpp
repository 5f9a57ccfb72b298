#include "viewer_actions.h"

#include "explorer/tv/app_effects.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/lazy_tv_events.h"
#include "host/page/viewer.h"

namespace explorer {

namespace {

// A run on the loaded state.
class LoadedRun {
  public:
    LoadedRun() { tv().Begin(choices_); }

  private:
    Choices choices_;
};

// As host::LookAt(), but only what a press needs: asking for all texts in every state takes a third
// of the whole search.
host::ItemView LookToPress(const host::AskableProvider& provider, const host::Item& item) {
    host::ItemView view;
    view.item = &item;
    view.visible = provider.IsVisible(item.key);
    view.enabled = provider.IsEnabled(item.key);
    if (HasValue(item)) {
        view.value = provider.GetInt(item.key);
    }
    if (view.visible && item.kind == host::ItemKind::kList) {
        view.choices = provider.Choices(item.key);
    }
    if (view.visible && !view.enabled) {
        view.disablePopup = provider.DisablePopup(item.key);
    }
    return view;
}

std::string ToText(const host::Press& press) {
    const std::string text = std::string("press ") + press.item->name;
    const std::string answer = press.answer == host::Answer::kCancel ? ", Cancel" : ", OK";
    if (!press.choose) {
        return text + (press.answer == host::Answer::kNone ? "" : " (dimmed)" + answer);
    }
    return press.item->kind == host::ItemKind::kSwitch
               ? text + (*press.choose == 1 ? " (on)" : " (off)")
               : text + ", choose " + std::to_string(*press.choose) + answer;
}

// Of the run so far.
Consequences WhatCame() {
    Consequences consequences;
    for (vtv::Launch& launch : LazyTvEvents().LaunchesSince({})) {
        if (host::SightOf(launch).kind == host::Sight::Kind::kToast) {
            consequences.notified = true;
        } else {
            consequences.launched.push_back({std::move(launch.appId), std::move(launch.extras)});
        }
    }
    for (const RecordEntry& entry : ReadRecord(tv().Record())) {
        if (entry.kind == Entry::kTerminate) {
            consequences.terminated.push_back(entry.subject);
        }
    }
    return consequences;
}

}  // namespace

std::string ToText(const Action& action) {
    switch (action.kind) {
        case Action::Kind::kPress:
            return ToText(action.press);
        case Action::Kind::kFinish:
            return "finish " + action.application.application;
        case Action::Kind::kCancel:
            return "cancel " + action.application.application;
        case Action::Kind::kPublish:
            return "the policy is published again";
        case Action::Kind::kPowerCycle:
            break;
    }
    return "power cycle";
}

host::Page LookAtPage(const Subject& subject) {
    const LoadedRun run;
    host::Page page;
    for (const host::Item& item : host::PageItems()) {
        page.items.push_back(LookToPress(subject.Provider(), item));
    }
    return page;
}

std::vector<Action> ActionsIn(const Subject& subject, const ConcreteTv& tv, const TvState& state,
                              const host::Page& page) {
    std::vector<Action> actions;
    for (const host::ItemView& view : page.items) {
        if (page.IsReachable(*view.item)) {
            const LoadedRun run;
            for (const host::Press& press : host::PossiblePresses(subject.Provider(), view)) {
                actions.push_back({Action::Kind::kPress, press, {}});
            }
        }
    }
    for (const Started& started : tv.RunningIn(state)) {
        if (CanFinish(tv, state, started)) {
            actions.push_back({Action::Kind::kFinish, {}, started});
        }
        actions.push_back({Action::Kind::kCancel, {}, started});
    }
    if (tv.Model().policy) {
        actions.push_back({Action::Kind::kPublish, {}, {}});
    }
    actions.push_back({Action::Kind::kPowerCycle, {}, {}});
    return actions;
}

Consequences CarryOut(const Subject& subject, ConcreteTv& tv, const host::Page& page,
                      const Action& action, TvState& state) {
    Consequences consequences;
    switch (action.kind) {
        case Action::Kind::kFinish:
            tv.Finish(state, action.application);
            return consequences;
        case Action::Kind::kCancel:
            tv.Cancel(state, action.application.application);
            return consequences;
        case Action::Kind::kPublish:
            tv.Set(state, tv.Published(), NumberValue(1, "bool"));
            return consequences;
        case Action::Kind::kPowerCycle:
            tv.PowerCycle(state);
            return consequences;
        case Action::Kind::kPress:
            break;
    }
    std::string wrong;
    const LoadedRun run;
    try {
        host::PressSession session(subject.Provider(), page[action.press.item->name]);
        session.Play(action.press);
        session.Send();
    } catch (const std::exception& exception) {
        wrong = std::string("an exception leaves the provider: ") + exception.what();
    }
    tv.TakeOver(state);
    consequences = WhatCame();
    consequences.wrong = wrong;
    return consequences;
}

}  // namespace explorer
