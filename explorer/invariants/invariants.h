// What must hold in every state of every TV.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/question.h"
#include "explorer/tv/policy.h"

namespace explorer {

// What an invariant looks at: a provider on the TV's current run.
class Look {
  public:
    Look(const Subject& subject, const PolicyState& policy) : subject_(subject), policy_(policy) {}

    bool Visible(const char* item) const;
    bool Enabled(const char* item) const;
    int Value(const char* item) const;
    void Write(const char* item, int value) const;
    // Presses the action button of a disable popup.
    void PressPopup(const char* item) const;
    bool OffersPopup(const char* item) const;
    // The record of asking: answers and effects.
    std::string AskFor(const Question& question) const;

    const PolicyState& Policy() const { return policy_; }
    const Subject& Provider() const { return subject_; }
    // What the TV's input is now, as a number; -1 for what fails or was never read. Reads nothing.
    int Now(Input::Kind kind, const char* key) const;
    // The text that the input has now; empty for what fails.
    std::string TextNow(Input::Kind kind, const char* key) const;

  private:
    const Subject& subject_;
    const PolicyState& policy_;
};

struct Invariant {
    const char* name;
    const char* sentence;
    // Empty when it holds, else what is wrong.
    std::string (*check)(const Look& look, const Question* question);
    // Asked of each of these questions in turn; null: asked once, of the page.
    bool (*isAbout)(const Question& question);
};

const std::vector<Invariant>& Invariants();

}  // namespace explorer
