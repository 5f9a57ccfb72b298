// What a viewer does with the remote control, and what the viewer sees next.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "press.h"
#include "tv_events.h"

namespace host {

// A choice or an answer that means nothing for the item. what() is for people.
class MeaninglessPress : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Something that the viewer sees after a press, in the order in which it comes.
struct Sight {
    enum class Kind {
        kChoices,      // the list of choices opens
        kBox,          // a confirmation box
        kReason,       // a short text: why the dimmed item cannot be used
        kPopup,        // the popup of a dimmed item
        kApplication,  // an application comes to the front
        kToast,        // a notification that goes away by itself
        kChange,       // something on the page looks different
        kElsewhere,    // the item's own settings open, in an application that is not the page's
        kNothing,
    };
    Kind kind;
    std::string text;                   // for people, one line
    std::vector<Choice> choices;        // kChoices
    std::optional<Box> box;             // kBox, kPopup
    std::optional<vtv::Launch> launch;  // kApplication, kToast
    std::optional<PageChange> change;   // kChange
};
const char* ToText(Sight::Kind kind);  // "choices", "box", ...
inline constexpr Sight::Kind kSightKinds[] = {
    Sight::Kind::kChoices,     Sight::Kind::kBox,       Sight::Kind::kReason,
    Sight::Kind::kPopup,       Sight::Kind::kToast,     Sight::Kind::kChange,
    Sight::Kind::kApplication, Sight::Kind::kElsewhere, Sight::Kind::kNothing,
};

// What came of a press.
struct PressResult {
    // False when the item is not there to be pressed, or its dimming kept it shut.
    bool done = false;
    std::string refusal;  // why it was not, for people
    std::vector<Sight> sights;
    // What the TV could not do although it was asked to: the value was not written, the application
    // did not start. For people.
    std::vector<std::string> failures;
    Page after;
};

// What is seen of a press that has come as far as it goes, before anything came of it: without the
// page after it.
PressResult SeenOf(const Press& press, const ItemView& view, const PressSession& session);
// What came of it then.
void AddConsequences(const Page& before, const std::vector<vtv::Launch>& launches,
                     std::vector<std::string> failures, Page after, PressResult* result);
// Why the item cannot be pressed, of one that is not reachable.
std::string WhyUnreachable(const Page& page, const ItemView& view);

class Viewer {
  public:
    // Both must outlive the viewer, and the TV must be the one that the provider runs on.
    Viewer(const AskableProvider& provider, TvEvents& tv) : provider_(provider), tv_(tv) {}

    // Throws MeaninglessPress for a choice that the item does not offer.
    PressResult PressItem(const Press& press);
    // Stores a value without any box, as another program would. A hidden or dimmed item refuses.
    PressResult SetValue(const Item& item, int value);

  private:
    PressResult After(const Page& before, const vtv::LaunchMark& launchMark, PressResult result);

    const AskableProvider& provider_;
    TvEvents& tv_;
};

// The value that a viewer means with "2", "on", "Google Assistant" (a choice's text, in any case).
// Throws MeaninglessPress naming what can be chosen.
int ParseChoice(const ItemView& view, const std::string& text);

// Throws MeaninglessPress for a choice or an answer that means nothing for the item as it looks
// now: an answer where nothing is asked, a choice that there is not. PressItem() lets them pass, so
// that the same press can be played on TVs where it asks and where it does not.
void RequireMeaning(const AskableProvider& provider, const Press& press);

// A launch as a viewer sees it: a toast, or an application coming to the front.
Sight SightOf(const vtv::Launch& launch);

}  // namespace host
