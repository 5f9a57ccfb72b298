// Invariants of what the page shows: which items, dimmed or not, with which values.
#include <algorithm>
#include <cstring>
#include <set>

#include "explorer/tv/lazy_tv.h"
#include "invariant_rules.h"
#include "virtual-tv/model/keys.h"

namespace explorer::rules {

namespace {

// ---------------------------------------------------------------------------------------------
// Visibility
// ---------------------------------------------------------------------------------------------

std::string NeverBoth(const Look& look, const Question*) {
    return look.Visible(VOICE) && look.Visible(ONBOARDING) ? "both are visible" : "";
}

// Worked out from the TV, not from the provider's answers.
bool IsVoiceAvailable(const Look& look) {
    const bool recognises = look.Now(Input::Kind::kFeature, vtv::kVoiceFeature) == 1;
    const bool isBlocked = look.Now(Input::Kind::kSetting, vtv::kBlockKey) == 2;
    const int orvik = look.Now(Input::Kind::kFeature, vtv::kOrvikFeature);
    return recognises && !isBlocked && (orvik == 1 || orvik == -22 || !look.Policy().list.empty());
}

std::string ExactlyOne(const Look& look, const Question*) {
    const bool root = look.Visible(VOICE);
    const bool onboarding = look.Visible(ONBOARDING);
    return IsVoiceAvailable(look) && root == onboarding ? "neither or both are visible" : "";
}

std::string NothingWithoutVoice(const Look& look, const Question*) {
    const bool shown = look.Visible(VOICE) || look.Visible(ONBOARDING);
    const bool recognises = look.Now(Input::Kind::kFeature, vtv::kVoiceFeature) == 1;
    const bool isBlocked = look.Now(Input::Kind::kSetting, vtv::kBlockKey) == 2;
    return shown && (!recognises || isBlocked) ? "an entry is visible" : "";
}

std::string RootNeedsConsent(const Look& look, const Question*) {
    if (!look.Visible(VOICE)) {
        return "";
    }
    if (look.Now(Input::Kind::kConsent, vtv::kTermsConsent) <= 0 ||
        look.Now(Input::Kind::kConsent, vtv::kPrivacyConsent) <= 0) {
        return "the page is visible without both consents";
    }
    return look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey).empty()
               ? "the page is visible without an assistant"
               : "";
}

std::string SubItemsFollowWakeUp(const Look& look, const Question*) {
    const bool subItem = look.Visible(ALWAYS) || look.Visible(SCREEN_ON);
    return subItem && !look.Visible(WAKE_UP) ? "a sub-item is visible and wake-up is hidden" : "";
}

std::string SubItemsTogether(const Look& look, const Question*) {
    return look.Visible(ALWAYS) != look.Visible(SCREEN_ON) ? "only one of them is visible" : "";
}

std::string LegacyHides(const Look& look, const Question*) {
    for (const char* item : {WAKE_UP, ALWAYS, SCREEN_ON, HINT, ASSISTANT}) {
        if (look.Visible(item) && look.Now(Input::Kind::kSetting, vtv::kLegacyVoiceKey) == 1) {
            return std::string(item) + " is visible";
        }
    }
    return "";
}

std::string OneOrvikItem(const Look& look, const Question*) {
    return look.Visible(ORVIK) && look.Visible(ORVIK_CN) ? "both are visible" : "";
}

std::string OneOutsider(const Look& look, const Question*) {
    int visible = 0;
    for (const char* item : OUTSIDERS) {
        visible += look.Visible(item) ? 1 : 0;
    }
    return visible > 1 ? "several are visible" : "";
}

std::string AChoiceToMake(const Look& look, const Question*) {
    if (!look.Visible(ASSISTANT)) {
        return "";
    }
    const std::size_t count = look.CountChoices(ASSISTANT);
    if (count == 0) {
        return "there is no list";
    }
    std::set<int> orders;
    for (const Assistant& assistant : look.Policy().list) {
        orders.insert(assistant.order);
    }
    return count != orders.size() ? "an assistant is missing" : "";
}

// ---------------------------------------------------------------------------------------------
// Enabling
// ---------------------------------------------------------------------------------------------

std::string SubItemsEnabledWithWakeUp(const Look& look, const Question*) {
    const bool subItem = look.Enabled(ALWAYS) || look.Enabled(SCREEN_ON);
    return subItem && !look.Enabled(WAKE_UP) ? "a sub-item is enabled and wake-up is dimmed" : "";
}

std::string SubItemsEnabledWhileOn(const Look& look, const Question*) {
    const bool subItem = look.Enabled(ALWAYS) || look.Enabled(SCREEN_ON);
    return subItem && look.Value(WAKE_UP) != 1 ? "a sub-item is enabled and wake-up is off" : "";
}

std::string SubItemsEnabledTogether(const Look& look, const Question*) {
    return look.Enabled(ALWAYS) != look.Enabled(SCREEN_ON) ? "only one of them is enabled" : "";
}

std::string EntriesEnabledTogether(const Look& look, const Question*) {
    return look.Enabled(VOICE) != look.Enabled(ONBOARDING) ? "only one of them is enabled" : "";
}

// ---------------------------------------------------------------------------------------------
// Values
// ---------------------------------------------------------------------------------------------

std::string AtMostOneMode(const Look& look, const Question*) {
    return look.Value(ALWAYS) == 1 && look.Value(SCREEN_ON) == 1 ? "both read 1" : "";
}

std::string OneModeWhileOn(const Look& look, const Question*) {
    const int modes = look.Value(ALWAYS) + look.Value(SCREEN_ON);
    const int wakeUp = look.Value(WAKE_UP);
    return modes != wakeUp ? std::to_string(modes) + " of them read 1 while wake-up reads " +
                                 std::to_string(wakeUp)
                           : "";
}

std::string SwitchesReadTheirValues(const Look& look, const Question* question) {
    const int value = look.Value(question->item->name);
    const bool isHint = std::strcmp(question->item->name, HINT) == 0;
    return value != 1 && value != 0 && (!isHint || value != -1) ? "reads " + std::to_string(value)
                                                                : "";
}

std::string AssistantReadsItsNumber(const Look& look, const Question*) {
    const int value = look.Value(ASSISTANT);
    const Assistant* current =
        look.Policy().Find(look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey));
    const int expected = current != nullptr ? current->order : 0;
    return value != expected
               ? "reads " + std::to_string(value) + ", not " + std::to_string(expected)
               : "";
}

// Numbers that are 1 to n, each once: the number of an assistant then names it.
bool IsWellNumbered(const PolicyState& policy) {
    std::set<int> orders;
    for (const Assistant& assistant : policy.list) {
        orders.insert(assistant.order);
    }
    return orders.size() == policy.list.size() &&
           (orders.empty() ||
            (*orders.begin() == 1 && *orders.rbegin() == static_cast<int>(orders.size())));
}

std::string WriteBack(const Look& look, const Question* question) {
    const char* item = question->item->name;
    if (!look.Visible(item) || !IsWellNumbered(look.Policy())) {
        return "";
    }
    // The three wake-up items share what they show; the others stand for themselves.
    const bool isWakeUp = item != std::string_view(ASSISTANT) && item != std::string_view(HINT);
    const std::vector<const char*> shown =
        isWakeUp ? std::vector<const char*>{WAKE_UP, ALWAYS, SCREEN_ON}
                 : std::vector<const char*>{item};
    std::vector<int> before;
    before.reserve(shown.size());
    for (const char* one : shown) {
        before.push_back(look.Value(one));
    }
    look.Write(item, look.Value(item));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const int after = look.Value(shown[i]);
        if (after != before[i]) {
            return std::string(shown[i]) + " reads " + std::to_string(before[i]) + " and then " +
                   std::to_string(after);
        }
    }
    return "";
}

bool WasTaken(const char* key) {
    const Input* write = tv().GetInputs().Find(Input::Kind::kWrite, key);
    const Value* result =
        write != nullptr ? tv().Current(tv().GetInputs().IndexOf(*write)) : nullptr;
    return result != nullptr && result->kind != Value::Kind::kFails;
}

std::string ChosenBecomesCurrent(const Look& look, const Question* question) {
    const std::vector<Assistant>& offered = look.Policy().list;
    const auto chosen = std::find_if(
        offered.begin(), offered.end(),
        [&](const Assistant& assistant) { return assistant.order == question->value; });
    look.Write(ASSISTANT, question->value);
    if (chosen == offered.end() || !WasTaken(vtv::kCurrentAssistantKey)) {
        return "";
    }
    const std::string current = look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey);
    return current != chosen->appId
               ? "the current assistant is " + current + ", not " + chosen->appId
               : "";
}

std::string SwitchesKeepWhatIsWritten(const Look& look, const Question* question) {
    const char* item = question->item->name;
    const bool isOnlyTheMode =
        item == std::string_view(ALWAYS) || item == std::string_view(SCREEN_ON);
    // A hint that the assistant does not support stays so, a mode needs wake-up, and a store that
    // refuses keeps what it has.
    const int before = look.Value(item);
    const bool isOn = !isOnlyTheMode || look.Value(WAKE_UP) == 1;
    look.Write(item, question->value);
    if (before == -1 || !isOn) {
        return "";
    }
    if (!tv().HasEffects() || !tv().IsEveryWriteTaken()) {
        return "";
    }
    const int expected = question->value == 1 ? 1 : 0;
    const int value = look.Value(item);
    return value != expected ? "reads " + std::to_string(value) + " after " +
                                   std::to_string(question->value) + " was written"
                             : "";
}

std::string OffEndsAlways(const Look& look, const Question*) {
    look.Write(WAKE_UP, 0);
    const Assistant* current =
        look.Policy().Find(look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey));
    if (current == nullptr || current->id != "ORVIK2" || !tv().IsEveryWriteTaken()) {
        return "";
    }
    return look.Now(Input::Kind::kCall, MODE_CALL) != 0 ? "the mode is not 0" : "";
}

bool IsSwitch(const Question& question) {
    return question.item != nullptr && question.item->kind == vtv::ItemKind::kSwitch;
}

bool IsSwitchValue(const Question& question) {
    return IsSwitch(question) && question.kind == Asks::kValue;
}

bool IsSwitchWrite(const Question& question) {
    return IsSwitch(question) && question.writes;
}

bool IsValue(const Question& question) {
    return question.item != nullptr && HasValue(*question.item) && question.kind == Asks::kValue;
}

bool IsChoice(const Question& question) {
    return question.item != nullptr && question.item->kind == vtv::ItemKind::kList &&
           question.writes;
}

}  // namespace

const std::vector<Invariant>& OfStates() {
    static const std::vector<Invariant> invariants = {
        {"never-both-entries", "The page and the onboarding entry are never both visible.",
         NeverBoth, nullptr},
        {"exactly-one-entry",
         "With voice available, exactly one of the page and the onboarding entry is visible.",
         ExactlyOne, nullptr},
        {"nothing-without-voice",
         "Without voice recognition, or with the content hub blocked, neither entry is visible.",
         NothingWithoutVoice, nullptr},
        {"page-needs-consent",
         "The page is visible only with both consents and a chosen assistant.", RootNeedsConsent,
         nullptr},
        {"sub-items-need-wake-up", "A hidden wake-up switch hides its two sub-items.",
         SubItemsFollowWakeUp, nullptr},
        {"sub-items-visible-together", "The two sub-items of wake-up are visible together.",
         SubItemsTogether, nullptr},
        {"legacy-hides", "The legacy assistant hides the assistant, wake-up and hint items.",
         LegacyHides, nullptr},
        {"one-orvik-item", "The two Orvik items are never both visible.", OneOrvikItem, nullptr},
        {"one-assistant-item", "At most one of the other assistants' items is visible.",
         OneOutsider, nullptr},
        {"a-choice-to-make", "A visible assistant item offers every assistant's number once.",
         AChoiceToMake, nullptr},
        {"sub-items-enabled-under-wake-up", "A dimmed wake-up switch dims its two sub-items.",
         SubItemsEnabledWithWakeUp, nullptr},
        {"sub-items-enabled-while-on", "The sub-items are enabled only while wake-up is on.",
         SubItemsEnabledWhileOn, nullptr},
        {"sub-items-enabled-together", "The two sub-items of wake-up are enabled together.",
         SubItemsEnabledTogether, nullptr},
        {"entries-enabled-together", "The page and the onboarding entry are enabled together.",
         EntriesEnabledTogether, nullptr},
        {"at-most-one-mode", "At most one of always and screen-on reads 1.", AtMostOneMode,
         nullptr},
        {"one-mode-while-on",
         "Exactly one of always and screen-on reads 1 while wake-up is on, none while it is off.",
         OneModeWhileOn, nullptr},
        {"switches-read-their-values", "A switch reads 1 or 0; only the hint also reads -1.",
         SwitchesReadTheirValues, IsSwitchValue},
        {"assistant-reads-its-number",
         "The assistant item reads the current assistant's number, or 0.", AssistantReadsItsNumber,
         nullptr},
        {"write-back",
         "Writing what a visible item reads changes nothing that is shown (the policy numbered 1 "
         "to n).",
         WriteBack, IsValue},
        {"chosen-becomes-current", "The assistant that is chosen becomes the current one.",
         ChosenBecomesCurrent, IsChoice},
        {"switches-keep-what-is-written",
         "A switch reads what was written to it; what is not 1 is off.", SwitchesKeepWhatIsWritten,
         IsSwitchWrite},
        {"off-ends-always-on", "Turning off Orvik's wake-up ends the always-on-voice mode.",
         OffEndsAlways, nullptr},
    };
    return invariants;
}

}  // namespace explorer::rules
