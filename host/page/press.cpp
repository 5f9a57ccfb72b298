#include "press.h"

namespace host {

namespace {

void AddEnds(const PressSession& session, const ItemView& view, Press press,
             std::vector<Press>* ends) {
    switch (session.WaitsFor()) {
        case PressSession::Waits::kForChoice:
            for (const Choice& choice : view.choices) {
                PressSession chosen = session;
                chosen.Choose(choice.value);
                press.choose = choice.value;
                AddEnds(chosen, view, press, ends);
            }
            return;
        case PressSession::Waits::kForAnswer: {
            PressSession confirmed = session;
            confirmed.Reply(Answer::kOk);
            press.answer = Answer::kOk;
            AddEnds(confirmed, view, press, ends);
            press.answer = Answer::kCancel;
            ends->push_back(press);
            return;
        }
        case PressSession::Waits::kNothing:
            if (session.Sends()) {
                if (view.item->kind == ItemKind::kSwitch) {
                    press.choose = session.Sends();
                }
                ends->push_back(press);
            }
            return;
    }
}

}  // namespace

PressSession::PressSession(const AskableProvider& provider, const ItemView& view)
    : provider_(provider), view_(view) {
    if (!view.enabled) {
        box_ = view.disablePopup;
        acts_ = box_ ? box_->action : std::nullopt;
        waits_ = box_ ? Waits::kForAnswer : Waits::kNothing;
        return;
    }
    switch (view.item->kind) {
        case ItemKind::kPage:
        case ItemKind::kApplication:
            return;
        case ItemKind::kSetup:
            sends_ = SI_ACTION_VALUE;
            return;
        case ItemKind::kSwitch:
            sends_ = view.value.value_or(0) == 1 ? 0 : 1;
            return;
        case ItemKind::kList:
            waits_ = Waits::kForChoice;
            return;
    }
}

void PressSession::Choose(int value) {
    if (waits_ == Waits::kForChoice) {
        box_ = provider_.Confirmation(view_.item->key);
        acts_ = value;
        waits_ = Waits::kForAnswer;
        if (!box_) {
            Reply(Answer::kOk);
        }
    } else if (view_.enabled && view_.item->kind == ItemKind::kSwitch) {
        sends_ = value;
    }
}

void PressSession::Reply(Answer answer) {
    if (waits_ == Waits::kForAnswer && answer != Answer::kNone) {
        waits_ = Waits::kNothing;
        sends_ = answer == Answer::kOk ? acts_ : std::nullopt;
    }
}

void PressSession::Play(const Press& press) {
    if (press.choose) {
        Choose(*press.choose);
    }
    Reply(press.answer);
}

void PressSession::Send() const {
    if (sends_) {
        provider_.SetInt(view_.item->key, *sends_);
    }
}

std::vector<Press> PossiblePresses(const AskableProvider& provider, const ItemView& view) {
    std::vector<Press> ends;
    AddEnds({provider, view}, view, {view.item, {}, Answer::kNone}, &ends);
    return ends;
}

}  // namespace host
