// A press of an item, from the press itself to what it sends to the provider: press, choose,
// answer.
#pragma once

#include <optional>
#include <vector>

#include "page.h"

namespace host {

// The answer to a box.
enum class Answer {
    kNone,    // leave the box open: only look at it
    kOk,      // its first button
    kCancel,  // its second button, or the back key
};

// All of it at once.
struct Press {
    const Item* item = nullptr;
    std::optional<int> choose;  // the value of the choice that is taken in a list, or of a switch
    Answer answer = Answer::kNone;
    bool operator==(const Press&) const = default;
};

class PressSession {
  public:
    enum class Waits {
        kNothing,
        kForChoice,  // the list of choices is open
        kForAnswer,  // OpenedBox() is open
    };

    // Presses an item that can be reached, as it looks now. Both must outlive the session.
    PressSession(const AskableProvider& provider, const ItemView& view);

    Waits WaitsFor() const { return waits_; }
    // The confirmation, or a dimmed item's popup; also after it was answered. Absent: there was
    // none.
    const std::optional<Box>& OpenedBox() const { return box_; }

    // Takes a choice of the list, which may open a box; of a switch, in place of turning it over.
    void Choose(int value);
    // Of the box, unless it is left open.
    void Reply(Answer answer);
    // All that the press says, as far as the item asks for it.
    void Play(const Press& press);

    // What goes to the provider; absent when nothing does, or while something waits.
    const std::optional<int>& Sends() const { return sends_; }
    void Send() const;

  private:
    const AskableProvider& provider_;
    const ItemView& view_;
    Waits waits_ = Waits::kNothing;
    std::optional<Box> box_;
    std::optional<int> acts_;  // what the box's first button sends
    std::optional<int> sends_;
};

// Everything that a viewer can do with an item that can be reached, to its end: each choice, each
// answer. What does nothing is left out, but not a Cancel. A switch's press names what it turns to.
std::vector<Press> PossiblePresses(const AskableProvider& provider, const ItemView& view);

}  // namespace host
