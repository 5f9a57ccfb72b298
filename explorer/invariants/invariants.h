// What must hold in every state of every TV.
#pragma once

#include <string>
#include <vector>

#include "explorer/asking/question.h"
#include "explorer/tv/policy.h"
#include "explorer/tv/record.h"

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
    // The record of asking, answers and effects: as bytes, and as what they mean. AskFor() asks
    // once, however often it is called.
    std::string RecordOf(const Question& question) const;
    std::vector<RecordEntry> AskFor(const Question& question) const;

    const PolicyState& Policy() const { return policy_; }
    const host::AskableProvider& Provider() const { return subject_.Provider(); }
    // What the TV's input is now, as a number; -1 for what fails or was never read. Reads nothing.
    int Now(Input::Kind kind, const char* key) const;
    // The text that the input has now; empty for what fails.
    std::string TextNow(Input::Kind kind, const char* key) const;

  private:
    const Subject& subject_;
    const PolicyState& policy_;
    // What AskFor() asked for last, and what came of it.
    mutable const Question* askedFor_ = nullptr;
    mutable std::string record_;
};

struct Invariant {
    const char* name;
    const char* sentence;
    // Empty when it holds, else what is wrong.
    std::string (*check)(const Look& look, const Question* question);
    // Asked of each of these questions in turn; null: asked once, of the page.
    bool (*isAbout)(const Question& question);
    // kOnce: it asks for the question's record and does nothing else with the provider, so that it
    // can look at the record that another one asked for.
    enum class Asks { kAnything, kOnce };
    Asks asks = Asks::kAnything;
};

const std::vector<Invariant>& Invariants();

}  // namespace explorer
