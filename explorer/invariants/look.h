// How an invariant looks at a provider, and what it has seen.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "explorer/asking/question.h"
#include "explorer/tv/policy.h"
#include "explorer/tv/record.h"
#include "virtual-tv/model/values.h"

namespace explorer {

inline constexpr int NO_VALUE = -99;

// What was asked and done on a path, for others who do it again.
struct Observed {
    struct Fact {
        const Item* item;
        const char* what;  // "visible", "enabled", "value", "choices"
        std::variant<vtv::Value, std::vector<std::string>> answer;  // "NUMBER: TEXT" of choices
    };
    std::vector<std::pair<const Item*, int>> handed;
    std::vector<Fact> facts;  // since the last that was handed
    // What the TV held then, of what was looked at.
    std::map<std::string, vtv::Value> settings;
    std::map<std::string, vtv::Value> state;  // modes of always-on voice
    const Question* question = nullptr;
    // Of the question, or of what was handed last; empty where neither came to an end.
    std::string record;
};

// What an invariant looks at: a provider on the TV's current run.
class Look {
  public:
    Look(const Subject& subject, const PolicyState& policy) : subject_(subject), policy_(policy) {}

    bool Visible(const char* item) const;
    bool Enabled(const char* item) const;
    int Value(const char* item) const;
    std::size_t CountChoices(const char* item) const;
    void Write(const char* item, int value) const;
    // Presses the action button of a disable popup.
    void PressPopup(const char* item) const;
    bool OffersPopup(const char* item) const;
    // The record of asking, answers and effects: as bytes, and as what they mean. AskFor() asks
    // once, however often it is called.
    std::string RecordOf(const Question& question) const;
    std::vector<RecordEntry> AskFor(const Question& question) const;

    const PolicyState& Policy() const { return policy_; }
    // What the TV's input is now, as a number; -1 for what fails or was never read. Reads nothing.
    int Now(Input::Kind kind, const char* key) const;
    // The text that the input has now; empty for what fails.
    std::string TextNow(Input::Kind kind, const char* key) const;

    // Since the last ForgetSeen(): another invariant looks.
    void ForgetSeen() const;
    Observed Seen() const;

  private:
    void Note(Observed::Fact fact) const;
    // The TV's input, as it is now; null for what was never read.
    const explorer::Value* CurrentOf(Input::Kind kind, const char* key) const;
    void NoteHeld(Input::Kind kind, const char* key, const explorer::Value* value) const;

    const Subject& subject_;
    const PolicyState& policy_;
    // What AskFor() asked for last, and what came of it.
    mutable const Question* askedFor_ = nullptr;
    mutable std::string record_;
    mutable Observed seen_;
    mutable std::size_t handedAt_ = 0;  // in the TV's record
};

}  // namespace explorer
