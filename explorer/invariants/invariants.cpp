#include "invariants.h"

#include "explorer/tv/lazy_tv.h"
#include "invariant_rules.h"

namespace explorer {

using namespace rules;

namespace {

bool Any(const Question&) {
    return true;
}

bool Reads(const Question& question) {
    return !question.writes;
}

bool Writes(const Question& question) {
    return question.writes && question.symbol == nullptr;
}

bool IsSwitch(const Question& question) {
    return question.item != nullptr && question.item->reader != nullptr &&
           question.item->listBuilder == nullptr;
}

bool IsSwitchValue(const Question& question) {
    return IsSwitch(question) && question.name.rfind("value:", 0) == 0;
}

bool IsSwitchWrite(const Question& question) {
    return IsSwitch(question) && question.writes;
}

bool IsValue(const Question& question) {
    return question.item != nullptr && question.item->reader != nullptr &&
           question.name.rfind("value:", 0) == 0;
}

bool IsChoice(const Question& question) {
    return question.item != nullptr && question.item->listBuilder != nullptr && question.writes;
}

bool IsPopup(const Question& question) {
    return question.name.rfind("popup:", 0) == 0;
}

bool IsItemPopup(const Question& question) {
    return IsPopup(question) && question.item != nullptr;
}

bool IsReason(const Question& question) {
    return question.name.rfind("reason:", 0) == 0;
}

bool IsTitle(const Question& question) {
    return question.name.rfind("title:", 0) == 0 && question.item != nullptr;
}

bool IsUnknownKey(const Question& question) {
    return question.key == "menu/system/no-such-item";
}

}  // namespace

const std::vector<Invariant>& Invariants() {
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
        {"popup-leads-to-launch",
         "The popup of a visible dimmed item starts an application when its button is pressed (SVA "
         "has no onboarding).",
         PopupLeadsToLaunch, IsItemPopup},
        {"launches-are-known",
         "Every application that is started, and its extra, is in the product's table.",
         LaunchesAreKnown, Writes},
        {"one-launch-at-most", "One press starts at most one application.", OneLaunchAtMost,
         Writes},
        {"writes-are-known", "The page writes only the settings that are its own.", WritesAreKnown,
         Writes},
        {"mode-names-the-current", "The always-on-voice mode is set for the current assistant.",
         ModeNamesTheCurrent, Writes},
        {"popups-are-whole",
         "A popup has a title, a message, as many buttons as it says and the action 9999.",
         PopupIsWhole, IsPopup},
        {"reasons-are-shown",
         "A reason for a dimmed wake-up switch comes with the flag that shows it.", ReasonIsShown,
         IsReason},
        {"every-item-has-a-title", "Every item has a title.", EveryItemHasATitle, IsTitle},
        {"unknown-keys-are-nothing", "A key that is no item is hidden, dimmed and has no texts.",
         UnknownKeysAreNothing, IsUnknownKey},
        {"reads-do-not-write", "Asking changes nothing on the TV.", ReadsDoNotWrite, Reads},
        {"answers-repeat", "Asked twice, the page answers the same.", AnswersRepeat, Reads},
        {"tracing-changes-nothing", "Answers and effects are the same while tracing is on.",
         TracingChangesNothing, Any},
        {"no-second-read", "No input is read twice on a path, unless the product reads it so.",
         NoReread, Any},
        {"no-exception",
         "No path comes to an exception, except for a TV without an account application.",
         NoException, Any},
        {"nothing-goes-wrong",
         "No path crashes, lets an exception out, leaks or touches freed memory.", NothingGoesWrong,
         Any},
    };
    return invariants;
}

// ---------------------------------------------------------------------------------------------
// Looking
// ---------------------------------------------------------------------------------------------

namespace {
const char* KeyOf(const char* item) {
    return FindItem(item)->key;
}
}  // namespace

bool Look::Visible(const char* item) const {
    return subject_.checkVisible(KeyOf(item), 0) == 1;
}

bool Look::Enabled(const char* item) const {
    return subject_.checkEnabled(KeyOf(item), 0) == 1;
}

int Look::Value(const char* item) const {
    int value = -99;
    subject_.Table().get_int(KeyOf(item), &value);
    return value;
}

void Look::Write(const char* item, int value) const {
    subject_.Table().set_int(KeyOf(item), value);
}

void Look::PressPopup(const char* item) const {
    subject_.Table().set_int(KeyOf(item), SI_ACTION_VALUE);
}

bool Look::OffersPopup(const char* item) const {
    char texts[4][1024] = {};
    char action[64] = "";
    int buttons = 0;
    subject_.Table().get_disablepopup_info(KeyOf(item), texts[0], texts[1], texts[2], texts[3],
                                           &buttons, action);
    return buttons > 0;
}

std::string Look::AskFor(const Question& question) const {
    const std::size_t before = tv().Record().size();
    Ask(subject_, question);
    return std::string(tv().Record().substr(before));
}

int Look::Now(Input::Kind kind, const char* key) const {
    const Input* input = tv().GetInputs().Find(kind, key);
    const explorer::Value* value =
        input != nullptr ? tv().Current(tv().GetInputs().IndexOf(*input)) : nullptr;
    return value == nullptr ? -1 : value->number;
}

std::string Look::TextNow(Input::Kind kind, const char* key) const {
    const Input* input = tv().GetInputs().Find(kind, key);
    const explorer::Value* value =
        input != nullptr ? tv().Current(tv().GetInputs().IndexOf(*input)) : nullptr;
    return value == nullptr || value->kind != explorer::Value::Kind::kText ? "" : value->text;
}

}  // namespace explorer
