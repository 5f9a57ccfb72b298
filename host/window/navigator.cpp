#include "navigator.h"

#include <algorithm>
#include <utility>

namespace window {

using host::Item;
using host::ItemKind;
using host::PressSession;

// A press under way. It goes on as it began, whatever becomes of the page meanwhile.
struct Navigator::OpenPress {
    OpenPress(const host::AskableProvider& provider, const host::ItemView& look)
        : view(look), session(provider, view), press{view.item, {}, host::Answer::kNone} {}

    void Choose(int value) {
        press.choose = value;
        session.Choose(value);
    }
    void Reply(host::Answer answer) {
        press.answer = answer;
        session.Reply(answer);
    }

    host::ItemView view;
    PressSession session;
    host::Press press;  // as far as it has come
};

namespace {

constexpr struct {
    const char* name;
    Key key;
} kKeys[] = {
    {"up", Key::kUp}, {"down", Key::kDown}, {"left", Key::kLeft}, {"right", Key::kRight},
    {"ok", Key::kOk}, {"back", Key::kBack}, {"home", Key::kHome},
};

// Back and forth among some things, without going round.
size_t Moved(size_t from, int by, size_t count) {
    const auto to = static_cast<long>(from) + by;
    const auto last = static_cast<long>(count) - 1;
    return static_cast<size_t>(std::clamp(to, 0L, std::max(last, 0L)));
}

int Step(Key key, Key back, Key forth) {
    return key == back ? -1 : key == forth ? 1 : 0;
}

size_t LineOf(const std::vector<host::Choice>& choices, std::optional<int> value) {
    for (size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].value == value) {
            return i;
        }
    }
    return 0;
}

}  // namespace

std::optional<Key> KeyNamed(const std::string& name) {
    for (const auto& known : kKeys) {
        if (name == known.name) {
            return known.key;
        }
    }
    return std::nullopt;
}

Navigator::Navigator(const host::AskableProvider& provider, host::Page page) : provider_(provider) {
    Show(std::move(page));
}

std::vector<const Item*> Navigator::Lines() const {
    std::vector<const Item*> lines;
    for (const host::ItemView& view : page_.items) {
        const Item& item = *view.item;
        // The page is itself a line only where it cannot be opened: there its reason is told.
        const bool isLine =
            item.kind == ItemKind::kPage ? view.visible && !view.enabled : page_.IsReachable(item);
        if (isLine) {
            lines.push_back(&item);
        }
    }
    return lines;
}

const Application* Navigator::FrontApplication() const {
    return applications_.empty() || applicationsAreBehind_ ? nullptr : &applications_.back();
}

std::optional<std::string> Navigator::TakeReason() {
    return std::exchange(reason_, std::nullopt);
}

void Navigator::Show(host::Page page) {
    const Item* before = focus_;
    page_ = std::move(page);
    const std::vector<const Item*> lines = Lines();
    focus_ = nullptr;
    // The items stand in the page's order: the first that does not lie before the old one.
    const std::vector<Item>& order = host::PageItems();
    const Item* from = before != nullptr ? before : order.data();
    for (const Item* line : lines) {
        if (focus_ == nullptr && line >= from) {
            focus_ = line;
        }
    }
    if (focus_ == nullptr && !lines.empty()) {
        focus_ = lines.back();
    }
    KeepList();
}

// The list shows what can be chosen now; without choices there is nothing to wait for.
void Navigator::KeepList() {
    if (!list_ || press_ == nullptr) {
        return;
    }
    const Item& item = *press_->view.item;
    const host::ItemView& now = page_[item.name];
    if (!page_.IsReachable(item) || !now.enabled || now.choices.empty()) {
        EndPress();
        return;
    }
    std::optional<int> focused;
    if (list_->focus < list_->choices.size()) {
        focused = list_->choices[list_->focus].value;
    }
    list_ = List{now.Label(), now.choices, now.value, LineOf(now.choices, focused)};
}

Navigator::Deed Navigator::Press(Key key) {
    if (key == Key::kHome) {
        EndPress();
        applicationsAreBehind_ = true;
        std::erase_if(applications_, [](const Application& one) { return one.id.empty(); });
        const std::vector<const Item*> lines = Lines();
        focus_ = lines.empty() ? nullptr : lines.front();
        return Deed::kNothing;
    }
    if (FrontApplication() != nullptr) {
        return PressOnApplication(key);
    }
    return question_ ? PressOnBox(key) : list_ ? PressOnList(key) : PressOnPage(key);
}

Navigator::Deed Navigator::PressOnPage(Key key) {
    if (key == Key::kBack) {
        return Deed::kLeave;
    }
    if (key == Key::kOk && focus_ != nullptr) {
        return Begin(*focus_);
    }
    MoveFocus(Step(key, Key::kUp, Key::kDown));
    return Deed::kNothing;
}

Navigator::Deed Navigator::PressOnList(Key key) {
    if (key == Key::kBack || key == Key::kLeft) {
        EndPress();
    } else if (key == Key::kOk) {
        return PressLine(list_->focus);
    } else {
        list_->focus = Moved(list_->focus, Step(key, Key::kUp, Key::kDown), list_->choices.size());
    }
    return Deed::kNothing;
}

Navigator::Deed Navigator::PressOnBox(Key key) {
    if (key == Key::kBack) {
        press_->Reply(host::Answer::kCancel);
        return Follow();
    }
    if (key == Key::kOk) {
        return PressButton(question_->focus);
    }
    question_->focus =
        Moved(question_->focus, Step(key, Key::kLeft, Key::kRight), question_->box.buttons.size());
    return Deed::kNothing;
}

Navigator::Deed Navigator::PressOnApplication(Key key) {
    if (key == Key::kBack) {
        return PressButton(kCancelButton);
    }
    if (key == Key::kOk) {
        return PressButton(applicationButton_);
    }
    const size_t buttons = FrontApplication()->id.empty() ? 1 : 2;
    applicationButton_ = Moved(applicationButton_, Step(key, Key::kLeft, Key::kRight), buttons);
    return Deed::kNothing;
}

Navigator::Deed Navigator::PressItem(const std::string& name) {
    for (const Item* line : Lines()) {
        if (name == line->name && FrontApplication() == nullptr && !question_ && !list_) {
            focus_ = line;
            return Begin(*line);
        }
    }
    return Deed::kNothing;
}

Navigator::Deed Navigator::PressLine(size_t line) {
    if (!list_ || line >= list_->choices.size() || FrontApplication() != nullptr) {
        return Deed::kNothing;
    }
    const int value = list_->choices[line].value;
    list_.reset();
    press_->Choose(value);
    return Follow();
}

Navigator::Deed Navigator::PressButton(size_t button) {
    if (const Application* front = FrontApplication()) {
        if (front->id.empty()) {
            applications_.pop_back();
            return Deed::kNothing;
        }
        return button == kFinishButton ? Deed::kFinish : Deed::kCancel;
    }
    if (!question_) {
        return Deed::kNothing;
    }
    press_->Reply(button == 0 ? host::Answer::kOk : host::Answer::kCancel);
    return Follow();
}

void Navigator::MoveFocus(int by) {
    const std::vector<const Item*> lines = Lines();
    const auto at = std::find(lines.begin(), lines.end(), focus_);
    if (at != lines.end()) {
        focus_ = lines[Moved(static_cast<size_t>(at - lines.begin()), by, lines.size())];
    }
}

Navigator::Deed Navigator::Begin(const Item& item) {
    const host::ItemView& view = page_[item.name];
    if (!view.enabled) {
        reason_ = view.disableText;
    }
    press_ = std::make_shared<OpenPress>(provider_, view);
    const Deed deed = Follow();
    if (view.enabled && item.kind == ItemKind::kApplication) {
        Open({"", 0, view.Label(), {}, ""});
    }
    return deed;
}

// Shows what the press waits for; sends what it has come to.
Navigator::Deed Navigator::Follow() {
    PressSession& session = press_->session;
    list_.reset();
    question_.reset();
    if (session.WaitsFor() == PressSession::Waits::kForChoice && !press_->view.choices.empty()) {
        const host::ItemView& view = press_->view;
        list_ = List{view.Label(), view.choices, view.value, LineOf(view.choices, view.value)};
        return Deed::kNothing;
    }
    if (session.WaitsFor() == PressSession::Waits::kForAnswer) {
        question_ = Question{*session.OpenedBox(), 0};
        return Deed::kNothing;
    }
    const std::shared_ptr<OpenPress> ended = press_;
    if (!EndPress() || !ended->session.Sends()) {
        return Deed::kNothing;
    }
    ended->session.Send();
    return Deed::kSent;
}

// Whether what it has come to may be sent.
bool Navigator::EndPress() {
    list_.reset();
    question_.reset();
    const std::shared_ptr<OpenPress> ended = std::exchange(press_, nullptr);
    return ended != nullptr && onEnd({ended->press, ended->view, ended->session});
}

void Navigator::Open(Application application) {
    std::erase_if(applications_, [&](const Application& one) {
        return one.id == application.id && one.pid == application.pid;
    });
    applications_.push_back(std::move(application));
    applicationsAreBehind_ = false;
    applicationButton_ = kFinishButton;
}

void Navigator::CloseProcess(int pid) {
    std::erase_if(applications_,
                  [&](const Application& one) { return !one.id.empty() && one.pid == pid; });
    applicationButton_ = kFinishButton;
}

void Navigator::TellProblem(const std::string& problem) {
    if (!applications_.empty()) {
        applications_.back().problem = problem;
    }
}

}  // namespace window
