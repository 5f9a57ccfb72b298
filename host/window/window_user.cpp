#include "window_user.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "environment.h"
#include "host/core/scenario_processes.h"
#include "host/core/virtual_tv_events.h"
#include "live.h"

namespace window {

namespace {

using host::PressResult;
using host::Sight;

WindowOptions WithoutDisplay() {
    WindowOptions options;
    options.display = "none";
    return options;
}

[[noreturn]] void Disagree(const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kNo, "The window " + text);
}

Sight SightOf(Sight::Kind kind, const std::string& text) {
    Sight sight;
    sight.kind = kind;
    sight.text = text;
    return sight;
}

Sight SightOf(const BoxScene& box, bool dimmed) {
    Sight sight;
    sight.kind = dimmed ? Sight::Kind::kPopup : Sight::Kind::kBox;
    sight.box = host::Box{box.title, box.message, box.buttons, std::nullopt};
    sight.text = ToText(*sight.box);
    return sight;
}

const RowScene* FocusedRow(const Scene& scene) {
    for (const RowScene& row : scene.rows) {
        if (row.focused) {
            return &row;
        }
    }
    return nullptr;
}

bool IsCovered(const Scene& scene) {
    return scene.list || scene.box || scene.application;
}

// What came, in order, but for changes, which may go on coming.
std::string KindsOf(const PressResult& result) {
    std::string kinds;
    for (const Sight& sight : result.sights) {
        if (sight.kind == Sight::Kind::kChange || sight.kind == Sight::Kind::kNothing) {
            continue;
        }
        kinds += (kinds.empty() ? "" : ", ") + std::string(ToText(sight.kind));
    }
    return kinds;
}

class WindowUser : public host::PageUser {
  public:
    WindowUser(vtv::Tv& tv, const host::Provider& provider)
        : tv_(tv), provider_(provider), live_(tv, provider, WithoutDisplay()) {}

    PressResult Press(const host::Press& press) override;
    void Hand(const host::Item& item, int value) override;
    host::Page Look() override;
    std::vector<std::string> TakeBeside() override { return std::exchange(beside_, {}); }

  private:
    void Settle();
    bool FocusOn(const std::string& item);
    void PressKeys(const host::Press& press, PressResult* result);
    void TakeLine(int value);
    void AnswerBox(host::Answer answer);
    PressResult PressBeside(const host::Press& press);
    const host::Page& ShownPage() const { return live_.Screen().GetNavigator().CurrentPage(); }

    vtv::Tv& tv_;
    const host::Provider& provider_;
    Live live_;
    bool hadFaults_ = false;
    std::vector<std::string> beside_;
};

// The window hears of all that has happened to the TV.
void WindowUser::Settle() {
    do {
        live_.Update();
    } while (tv_.Dispatch() > 0);
    // No event tells of a fault: the viewer comes back to the page.
    if (!tv_.Faults().empty() || hadFaults_) {
        live_.AskAnew();
    }
    hadFaults_ = !tv_.Faults().empty();
}

host::Page WindowUser::Look() {
    Settle();
    const host::Page now = host::LookAtPage(provider_);
    for (const host::PageChange& change : host::ComparePages(ShownPage(), now)) {
        Disagree("shows what is no more: " + ToText(change, now) + ".");
    }
    return ShownPage();
}

void WindowUser::Hand(const host::Item& item, int value) {
    provider_.SetInt(item.key, value);
    beside_.push_back("hand " + std::string(item.name) + " = " + std::to_string(value) +
                      ": no key hands over a value");
}

bool WindowUser::FocusOn(const std::string& item) {
    const Scene scene = live_.Seen();
    const auto named = [&](const RowScene& row) { return row.name == item; };
    if (std::none_of(scene.rows.begin(), scene.rows.end(), named)) {
        return false;
    }
    live_.Feed("Home");
    for (size_t i = 0; i < scene.rows.size(); ++i) {
        const Scene now = live_.Seen();
        const RowScene* row = FocusedRow(now);
        if (row != nullptr && row->name == item) {
            return true;
        }
        live_.Feed("Down");
    }
    Disagree("does not lead to " + item + " with its arrows.");
}

PressResult WindowUser::Press(const host::Press& press) {
    Settle();
    if (IsCovered(live_.Seen())) {
        live_.Feed("Home");
    }
    const host::Page before = ShownPage();
    PressResult result;
    if (!FocusOn(press.item->name)) {
        result.refusal = WhyUnreachable(before, before[press.item->name]);
        AddConsequences(before, {}, {}, before, &result);
        return result;
    }
    const Scene scene = live_.Seen();
    const RowScene& row = *FocusedRow(scene);
    if (press.choose && !row.dimmed && row.mark == RowScene::Mark::kSwitch &&
        row.on == (*press.choose == 1)) {
        return PressBeside(press);
    }
    PressKeys(press, &result);
    Settle();
    const TvScreen& screen = live_.Screen();
    if (screen.GetNavigator().IsPressing()) {  // what it has opened is left open
        AddConsequences(before, {}, {}, ShownPage(), &result);
        return result;
    }
    const Diary& diary = screen.GetDiary();
    AddConsequences(before, diary.Launches(), diary.Result()->failures, ShownPage(), &result);
    if (KindsOf(result) != KindsOf(*diary.Result())) {
        Disagree("has noted of this press: " + KindsOf(*diary.Result()) +
                 "; and has shown: " + KindsOf(result) + ".");
    }
    return result;
}

// OK, and whatever it asks for then.
void WindowUser::PressKeys(const host::Press& press, PressResult* result) {
    const auto see = [&](Sight sight) { result->sights.push_back(std::move(sight)); };
    const bool dimmed = FocusedRow(live_.Seen())->dimmed;
    const int toast = live_.Screen().CurrentToast().number;
    live_.Feed("Return");
    if (dimmed && live_.Screen().CurrentToast().number != toast) {
        see(SightOf(Sight::Kind::kReason, live_.Screen().CurrentToast().text));
    }
    if (live_.Seen().list) {
        if (!press.choose) {
            see(SightOf(Sight::Kind::kChoices, ""));
            result->sights.back().choices = live_.Screen().GetNavigator().OpenedList()->choices;
            result->done = true;
            return;
        }
        TakeLine(*press.choose);
    }
    const Scene scene = live_.Seen();
    if (scene.box) {
        see(SightOf(*scene.box, dimmed));
        AnswerBox(press.answer);
    } else if (dimmed) {
        result->refusal = scene.heading + " (" + press.item->name + ") is dimmed.";
        return;
    } else if (scene.application && scene.application->id.empty()) {
        see(SightOf(Sight::Kind::kElsewhere, scene.application->title));
    }
    result->done = true;
}

void WindowUser::TakeLine(int value) {
    const Navigator& navigator = live_.Screen().GetNavigator();
    const std::vector<host::Choice> choices = navigator.OpenedList()->choices;
    const auto wanted = std::find_if(choices.begin(), choices.end(),
                                     [&](const auto& choice) { return choice.value == value; });
    if (wanted == choices.end()) {
        throw host::MeaninglessPress(std::to_string(value) + " is no choice of the opened list.");
    }
    const auto line = static_cast<size_t>(wanted - choices.begin());
    for (size_t i = 0; i < choices.size() && navigator.OpenedList()->focus != line; ++i) {
        live_.Feed(navigator.OpenedList()->focus < line ? "Down" : "Up");
    }
    if (navigator.OpenedList()->focus != line) {
        Disagree("does not lead to " + wanted->text + " with its arrows.");
    }
    live_.Feed("Return");
}

void WindowUser::AnswerBox(host::Answer answer) {
    if (answer == host::Answer::kNone) {
        return;
    }
    const size_t buttons = live_.Seen().box->buttons.size();
    if (answer == host::Answer::kOk) {
        live_.Feed("Return");
    } else if (buttons > 1) {
        live_.Feed("Right");
        live_.Feed("Return");
    } else {
        live_.Feed("Escape");
    }
    if (live_.Seen().box) {
        Disagree("keeps the box that was answered.");
    }
}

// A switch that is to become what it is.
PressResult WindowUser::PressBeside(const host::Press& press) {
    beside_.push_back("press " + std::string(press.item->name) + " to " +
                      (*press.choose == 1 ? "on" : "off") +
                      ": it is so already, and the key would turn it over");
    host::VirtualTvEvents events(tv_);
    return host::Viewer(provider_, events).PressItem(press);
}

}  // namespace

void PlayInWindow(const std::string& tvDir, const std::string& provider,
                  const PlayOptions& options) {
    host::TellResult(options.answer, [&] {
        const Toolkit toolkit(Toolkit::For::kPictures);
        const auto hire = [](vtv::Tv& tv, const host::Provider& asked) {
            return std::make_unique<WindowUser>(tv, asked);
        };
        return host::PlayScenario(
            host::ReadScenario(options.scenario), provider, tvDir, [] { return true; }, hire);
    });
}

}  // namespace window
