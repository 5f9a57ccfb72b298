// The page of one TV, alive: what the viewer presses reaches the provider, and what anybody changes
// of the TV reaches the page. Without a toolkit: whoever shows it watches one descriptor.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "diary.h"
#include "host/page/provider.h"
#include "scene.h"
#include "virtual-tv/virtual_tv.h"

namespace window {

class TvScreen {
  public:
    // The TV must be on, and both must outlive this.
    TvScreen(vtv::Tv& tv, const host::Provider& provider);
    ~TvScreen();
    TvScreen(const TvScreen&) = delete;
    TvScreen& operator=(const TvScreen&) = delete;

    // False when the viewer leaves the page.
    bool Press(Key key);
    void PressItem(const std::string& name);
    void PressLine(size_t line);
    void PressButton(size_t button);

    // Readable when Dispatch() has something to do: the TV has changed, or an application has
    // ended. It never waits.
    int EventFd() const { return events_; }
    void Dispatch();
    // As on coming back to the page.
    void AskAnew() { Catch(true); }

    Scene CurrentScene() const;
    // The toast that is shown, for how long from when it came; told anew by number.
    struct Toast {
        int number = 0;
        std::string text;
        std::chrono::seconds stays{0};
    };
    const Toast& CurrentToast() const { return toast_; }
    void EndToast() { toast_.text.clear(); }
    // The light of what has changed goes out.
    void ForgetChanges() { changed_.clear(); }

    // What somebody does to the TV beside its page, by a verb of vtv: recorded, and seen at once.
    // What cannot be done is told by a toast.
    void Do(const std::vector<std::string>& words, const host::Recording::Step& step,
            const std::function<void()>& act, bool takesProvider = false);
    const Diary& GetDiary() const { return diary_; }
    // What has the focus, and as what page it was shown; another number when that may have changed.
    const Navigator& GetNavigator() const { return navigator_; }
    int Changes() const { return changeCount_; }
    // A short text over the page.
    void Tell(const std::string& text);

    // Absent: the provider can switch the voice guide; else why not, for people.
    std::optional<std::string> WhyNoVoiceGuide() const;
    // Switches it through the provider, as the TV does; where it cannot, a toast tells why.
    void SwitchVoiceGuide(bool on);

    Look look;

  private:
    void Listen();
    bool CarryOut(Navigator::Deed deed);
    void EndFrontApplication(bool finish);
    // Looks at what was launched, and at the whole page when `anew`.
    void Catch(bool anew);
    void ShowLaunch(const vtv::Launch& launch);
    void OpenRunning(const vtv::RunningApplication& running);
    void Watch(int pid);
    void ShowToast(const std::string& text, std::chrono::seconds stays);
    void ShowPage(host::Page page);
    void Speak();

    vtv::Tv& tv_;
    const host::Provider& provider_;
    Navigator navigator_;
    Diary diary_;
    std::vector<vtv::Change> changes_;
    int changeCount_ = 0;
    std::set<std::string> changed_;
    std::vector<vtv::Tv::WatchId> watches_;
    vtv::LaunchMark launchMark_;
    std::map<int, int> processes_;  // descriptor of a process, by its number
    int events_ = -1;
    Toast toast_;
    std::string spoken_;
};

}  // namespace window
