#include "tv_screen.h"

#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "host/core/refresh.h"
#include "host/core/voice_guide.h"
#include "virtual-tv/model/applications.h"

namespace window {

namespace {

constexpr std::chrono::seconds kReasonStays{5};
// The number of no process: the TV itself has something to tell.
constexpr int kTvItself = 0;

std::string Extra(const vtv::Extras& extras, const std::string& name) {
    for (const auto& [key, value] : extras) {
        if (key == name) {
            return value;
        }
    }
    return "";
}

void AddToPoll(int poll, int fd, int number) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = number;
    if (epoll_ctl(poll, EPOLL_CTL_ADD, fd, &event) != 0) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "The window cannot watch the TV.");
    }
}

}  // namespace

TvScreen::TvScreen(vtv::Tv& tv, const host::Provider& provider)
    : tv_(tv),
      provider_(provider),
      navigator_(provider, host::LookAtPage(provider)),
      diary_(tv, provider),
      launchMark_(tv.LaunchMark()),
      events_(epoll_create1(EPOLL_CLOEXEC)) {
    navigator_.onEnd = [this](const Navigator::End& end) {
        try {
            diary_.EndPress(end, navigator_.CurrentPage());
            return true;
        } catch (const vtv::Error& error) {
            Tell(error.what());
            return false;
        }
    };
    watches_.push_back(
        tv_.WatchAll([this](const vtv::Change& change) { changes_.push_back(change); }));
    watches_.push_back(tv_.WatchLog([] {}));  // a launch, by whomever, leaves a record
    AddToPoll(events_, tv_.EventFd(), kTvItself);
    for (const vtv::RunningApplication& running : tv_.RunningApplications()) {
        OpenRunning(running);
    }
    // What changed between the first look and the watch is caught by looking again.
    Catch(true);
    ForgetChanges();
}

TvScreen::~TvScreen() {
    for (const vtv::Tv::WatchId watch : watches_) {
        tv_.Unwatch(watch);
    }
    for (const auto& [pid, fd] : processes_) {
        close(fd);
    }
    close(events_);
}

void TvScreen::Listen() {
    if (!navigator_.IsPressing()) {
        diary_.Listen();
    }
}

bool TvScreen::Press(Key key) {
    if (key == Key::kOk) {
        Listen();
    }
    return CarryOut(navigator_.Press(key));
}

void TvScreen::PressItem(const std::string& name) {
    Listen();
    CarryOut(navigator_.PressItem(name));
}

void TvScreen::PressLine(size_t line) {
    CarryOut(navigator_.PressLine(line));
}

void TvScreen::PressButton(size_t button) {
    CarryOut(navigator_.PressButton(button));
}

bool TvScreen::CarryOut(Navigator::Deed deed) {
    switch (deed) {
        case Navigator::Deed::kLeave:
            return false;
        case Navigator::Deed::kFinish:
        case Navigator::Deed::kCancel:
            EndFrontApplication(deed == Navigator::Deed::kFinish);
            break;
        case Navigator::Deed::kSent:
        case Navigator::Deed::kNothing:
            break;
    }
    if (const std::optional<std::string> reason = navigator_.TakeReason()) {
        Tell(*reason);
    }
    if (deed != Navigator::Deed::kNothing) {
        tv_.Dispatch();
        diary_.HearLog();
        Catch(true);
    }
    try {
        diary_.ClosePress(navigator_.CurrentPage());
    } catch (const vtv::Error& error) {
        Tell(error.what());  // it was done, and could not be recorded
    }
    Speak();
    return true;
}

void TvScreen::EndFrontApplication(bool finish) {
    const Application application = *navigator_.FrontApplication();
    const std::string verb = finish ? "finish" : "cancel";
    try {
        diary_.Do({"app", verb, application.id}, {{verb, application.id}}, [&] {
            if (finish) {
                tv_.FinishApplication(application.id);
            } else {
                tv_.CancelApplication(application.id);
            }
        });
    } catch (const vtv::Error& error) {
        // It may have ended by itself just now; else the viewer can try again.
        if (error.kind() != vtv::ErrorKind::kNoSuch) {
            navigator_.TellProblem(error.what());
            return;
        }
    }
    navigator_.CloseProcess(application.pid);
}

void TvScreen::Dispatch() {
    epoll_event events[8];
    const int count = epoll_wait(events_, events, 8, 0);
    bool anew = false;
    for (int i = 0; i < count; ++i) {
        const int pid = events[i].data.fd;
        const auto process = processes_.find(pid);
        if (process == processes_.end()) {
            continue;
        }
        close(process->second);
        processes_.erase(process);
        navigator_.CloseProcess(pid);
        anew = true;
    }
    tv_.Dispatch();
    Catch(anew);
    Speak();
}

void TvScreen::Catch(bool anew) {
    const std::vector<vtv::Launch> launches =
        tv_.LaunchesSince(std::exchange(launchMark_, tv_.LaunchMark()));
    const std::vector<std::string> failures = tv_.TakeFailures();
    diary_.Add(launches, failures);
    for (const vtv::Launch& launch : launches) {
        ShowLaunch(launch);
    }
    for (const std::string& failure : failures) {
        Tell(failure);
    }
    const std::vector<vtv::Change> changes = std::exchange(changes_, {});
    changeCount_ += anew || !changes.empty() ? 1 : 0;
    if (anew) {
        ShowPage(host::LookAtPage(provider_));
    } else if (!changes.empty()) {
        ShowPage(host::Refresh(provider_, navigator_.CurrentPage(), changes));
    }
}

void TvScreen::ShowPage(host::Page page) {
    for (const host::PageChange& change : host::ComparePages(navigator_.CurrentPage(), page)) {
        changed_.insert(change.item->name);
    }
    navigator_.Show(std::move(page));
}

void TvScreen::ShowLaunch(const vtv::Launch& launch) {
    if (launch.appId == vtv::kNotification) {
        const int seconds = std::atoi(Extra(launch.extras, "timeout").c_str());
        ShowToast(Extra(launch.extras, "text"), std::chrono::seconds(std::max(1, seconds)));
        return;
    }
    if (launch.pid == 0) {
        // Nothing comes to the front: it failed, or the TV only takes notes of launches.
        Tell(launch.appId + ": " + launch.outcome);
        return;
    }
    OpenRunning({launch.appId, launch.pid, launch.time, launch.extras});
}

void TvScreen::OpenRunning(const vtv::RunningApplication& running) {
    if (running.appId == vtv::kNotification) {
        return;
    }
    Application application;
    application.id = running.appId;
    application.pid = running.pid;
    application.title =
        vtv::ScreenOf(running.appId, !running.extras.empty(), tv_.GetModel().accountUi);
    for (const auto& [key, value] : running.extras) {
        application.details.push_back(key + " = " + value);
    }
    navigator_.Open(std::move(application));
    Watch(running.pid);
}

void TvScreen::Watch(int pid) {
    if (processes_.count(pid) == 1) {
        return;
    }
    const auto fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (fd < 0) {
        navigator_.CloseProcess(pid);  // it has ended already
        return;
    }
    processes_[pid] = fd;
    AddToPoll(events_, fd, pid);
}

void TvScreen::Tell(const std::string& text) {
    ShowToast(text, kReasonStays);
}

void TvScreen::ShowToast(const std::string& text, std::chrono::seconds stays) {
    toast_ = {toast_.number + 1, text, stays};
}

Scene TvScreen::CurrentScene() const {
    Scene scene = SceneOf(navigator_, tv_.Language(), changed_);
    scene.look.large = look.large;
    scene.look.contrast = look.contrast;
    scene.look.mirrored = scene.look.mirrored || look.mirrored;
    scene.toast = toast_.text;
    return scene;
}

// Whatever has come to have the focus, or has become different under it, is spoken once.
void TvScreen::Speak() {
    if (!tv_.VoiceGuide()) {
        spoken_.clear();
        return;
    }
    const std::string text = SpokenText(CurrentScene(), tv_.Language());
    if (text != spoken_) {
        spoken_ = text;
        tv_.Speak(text);
    }
}

std::optional<std::string> TvScreen::WhyNoVoiceGuide() const {
    return host::WhyNoVoiceGuide(provider_);
}

void TvScreen::SwitchVoiceGuide(bool on) {
    if (const std::optional<std::string> why = WhyNoVoiceGuide()) {
        Tell(*why);
        return;
    }
    const std::string value = on ? "on" : "off";
    Do(
        {"voice-guide", value}, {{"voice-guide", value}},
        [&] { host::SwitchVoiceGuide(provider_, on); }, true);
}

void TvScreen::Do(const std::vector<std::string>& words, const host::Recording::Step& step,
                  const std::function<void()>& act, bool takesProvider) {
    try {
        diary_.Do(words, step, act, takesProvider);
    } catch (const vtv::Error& error) {
        Tell(error.what());
    }
    tv_.Dispatch();
    Catch(false);
    Speak();
}

}  // namespace window
