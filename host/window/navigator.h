// Where the viewer is on the page, and where a key of the remote control leads. It knows neither a
// toolkit nor a TV: keys and looks at the page go in, what is to be done with the TV comes out.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/page/press.h"

namespace window {

enum class Key { kUp, kDown, kLeft, kRight, kOk, kBack, kHome };
// By the name that people type: "up", "ok", "back", ... Absent for what is no key.
std::optional<Key> KeyNamed(const std::string& name);

// A screen that covers the page: an application that the TV has started, or (without an id) the
// settings that an assistant's own application would show.
struct Application {
    std::string id;
    int pid = 0;
    std::string title;                 // what the viewer sees there, for people
    std::vector<std::string> details;  // what it was started with
    std::string problem;               // why it could not be finished
    bool operator==(const Application&) const = default;
};

class Navigator {
  public:
    // What a key asks of the TV.
    enum class Deed {
        kNothing,
        kSent,    // something has gone to the provider
        kFinish,  // FrontApplication() is to do its work and end
        kCancel,  // ... to end without
        kLeave,   // the viewer leaves the page
    };
    // An opened list, or an opened box.
    struct List {
        std::string title;
        std::vector<host::Choice> choices;
        std::optional<int> current;  // the value that the item has
        size_t focus = 0;
    };
    struct Question {
        host::Box box;
        size_t focus = 0;
    };

    // A press at its end: by a button, by what it sends, or because the viewer has left it.
    struct End {
        host::Press press;
        const host::ItemView& view;  // of the item, as it was pressed
        const host::PressSession& session;
    };

    // The provider must outlive this.
    Navigator(const host::AskableProvider& provider, host::Page page);

    Deed Press(Key key);
    // What the mouse does: the item, the line of the list or the button is pressed.
    Deed PressItem(const std::string& name);
    Deed PressLine(size_t line);
    Deed PressButton(size_t button);

    // Told of each end, before what the press has come to goes to the provider; with a no of it
    // nothing does.
    std::function<bool(const End&)> onEnd = [](const End&) { return true; };
    bool IsPressing() const { return press_ != nullptr; }

    // The page has become this one. Focus stays on its item, or goes to the next one.
    void Show(host::Page page);
    // An application comes to the front, also one that was there before.
    void Open(Application application);
    void CloseProcess(int pid);
    void TellProblem(const std::string& problem);  // of the application in front

    const host::Page& CurrentPage() const { return page_; }
    // What can be focused, from the top: names of items.
    std::vector<const host::Item*> Lines() const;
    const host::Item* Focused() const { return focus_; }
    const Application* FrontApplication() const;
    size_t ApplicationButton() const { return applicationButton_; }
    const std::optional<List>& OpenedList() const { return list_; }
    const std::optional<Question>& OpenedBox() const { return question_; }
    // Why the dimmed item that was pressed cannot be used; taken once.
    std::optional<std::string> TakeReason();

  private:
    struct OpenPress;

    Deed PressOnPage(Key key);
    Deed PressOnList(Key key);
    Deed PressOnBox(Key key);
    Deed PressOnApplication(Key key);
    void MoveFocus(int by);
    Deed Begin(const host::Item& item);
    Deed Follow();
    bool EndPress();
    void KeepList();

    const host::AskableProvider& provider_;
    host::Page page_;
    const host::Item* focus_ = nullptr;
    std::shared_ptr<OpenPress> press_;
    std::optional<List> list_;
    std::optional<Question> question_;
    std::vector<Application> applications_;  // the last one is in front
    bool applicationsAreBehind_ = false;
    size_t applicationButton_ = 0;
    std::optional<std::string> reason_;
};

// The buttons of the application's screen.
inline constexpr size_t kFinishButton = 0;
inline constexpr size_t kCancelButton = 1;

}  // namespace window
