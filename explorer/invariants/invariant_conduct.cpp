// Invariants of how the page behaves: popups, launches, writes, and good manners.
#include <algorithm>
#include <cstring>

#include "explorer/tv/lazy_tv.h"
#include "invariant_rules.h"
#include "platform/trace_storage.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace explorer::rules {

namespace {

bool IsKnown(const RecordEntry& launch) {
    const std::vector<vtv::PageLaunch>& launches = vtv::PageLaunches();
    return std::any_of(launches.begin(), launches.end(), [&](const vtv::PageLaunch& known) {
        return launch.subject == known.application && launch.extras == known.extras;
    });
}

// Every setting that the page may write.
constexpr const char* WRITES[] = {vtv::kCurrentAssistantKey, vtv::kWakeUpKey, vtv::kHintKey};

// ---------------------------------------------------------------------------------------------
// Popups and launches
// ---------------------------------------------------------------------------------------------

std::vector<RecordEntry> Launched(const std::vector<RecordEntry>& record) {
    std::vector<RecordEntry> launches;
    std::copy_if(record.begin(), record.end(), std::back_inserter(launches),
                 [](const RecordEntry& entry) { return entry.kind == Entry::kLaunch; });
    return launches;
}

// A TV without an account application has no sign-in to open, which is told by an exception.
bool HasNoAccountApplication() {
    const Input* account =
        tv().GetInputs().Find(Input::Kind::kCall, "sso_get_account_ui_application_package_id");
    const Value* id = tv().Current(tv().GetInputs().IndexOf(*account));
    return id != nullptr && id->kind != Value::Kind::kText;
}

std::string PopupLeadsToLaunch(const Look& look, const Question* question) {
    const char* item = question->item->name;
    if (!look.Visible(item) || look.Enabled(item) || !look.OffersPopup(item)) {
        return "";
    }
    look.PressPopup(item);
    if (HasNoAccountApplication()) {
        return "";
    }
    // The assistant listed as SVA has no onboarding.
    if (look.Policy().KindOf(look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey)) ==
        "SVA") {
        return "";
    }
    return Launched(ReadRecord(tv().Record())).empty() ? "the button does nothing" : "";
}

std::string LaunchesAreKnown(const Look& look, const Question* question) {
    for (const RecordEntry& launch : Launched(look.AskFor(*question))) {
        if (!IsKnown(launch)) {
            return ToText(launch);
        }
    }
    return "";
}

std::string OneLaunchAtMost(const Look& look, const Question* question) {
    return Launched(look.AskFor(*question)).size() > 1 ? "starts several applications" : "";
}

std::string WritesAreKnown(const Look& look, const Question* question) {
    for (const RecordEntry& entry : look.AskFor(*question)) {
        if (entry.kind == Entry::kWrite &&
            std::find(std::begin(WRITES), std::end(WRITES), entry.subject) == std::end(WRITES)) {
            return "writes " + entry.subject;
        }
    }
    return "";
}

std::string ModeNamesTheCurrent(const Look& look, const Question* question) {
    const std::vector<RecordEntry> record = look.AskFor(*question);
    const std::string current = look.TextNow(Input::Kind::kSetting, vtv::kCurrentAssistantKey);
    for (const RecordEntry& entry : record) {
        if (entry.kind == Entry::kMode && entry.subject != current) {
            return "sets the mode of " + WhatIsSaid(entry);
        }
    }
    return "";
}

bool HasText(const std::vector<RecordEntry>& record, const char* about) {
    const RecordEntry* answer = FindAnswer(record, about);
    return answer != nullptr && std::holds_alternative<std::string>(answer->value);
}

std::string PopupIsWhole(const Look& look, const Question* question) {
    const std::vector<RecordEntry> record = look.AskFor(*question);
    const RecordEntry* buttons = FindAnswer(record, answers::BUTTONS);
    if (buttons == nullptr || buttons->value == Said(0)) {
        return FindAnswer(record, answers::TITLE) != nullptr ? "texts without a button" : "";
    }
    for (const char* part : {answers::TITLE, answers::MESSAGE, answers::FIRST}) {
        if (!HasText(record, part)) {
            return std::string("without ") + part + ": \"";
        }
    }
    const RecordEntry* action = FindAnswer(record, answers::ACTION);
    if (action == nullptr || action->Text() != "9999") {
        return "without action: \"9999\"";
    }
    return HasText(record, answers::SECOND) != (buttons->value == Said(2))
               ? "the number of buttons is not that of their texts"
               : "";
}

std::string ReasonIsShown(const Look& look, const Question* question) {
    const std::vector<RecordEntry> record = look.AskFor(*question);
    const RecordEntry* shown = FindAnswer(record, answers::SHOWN);
    const bool isHidden = shown != nullptr && shown->value == Said(false);
    return isHidden && HasText(record, answers::REASON) && question->item != nullptr &&
                   std::strcmp(question->item->name, WAKE_UP) == 0
               ? "a text that is not to be shown"
               : "";
}

std::string EveryItemHasATitle(const Look& look, const Question* question) {
    const std::vector<RecordEntry> record = look.AskFor(*question);
    const RecordEntry* title = FindAnswer(record, answers::TITLE);
    return title != nullptr && title->Text().empty() ? "has no title" : "";
}

// ---------------------------------------------------------------------------------------------
// Good manners
// ---------------------------------------------------------------------------------------------

std::string ReadsDoNotWrite(const Look& look, const Question* question) {
    look.AskFor(*question);
    return tv().HasEffects() ? "something was changed" : "";
}

std::string AnswersRepeat(const Look& look, const Question* question) {
    const std::string first = look.RecordOf(*question);
    return first != look.RecordOf(*question) ? "the second answer is another one" : "";
}

std::string TracingChangesNothing(const Look& look, const Question* question) {
    const std::string without = look.RecordOf(*question);
    tv().Again();
    TIStorageManagerState::enabled = true;
    const std::string with = look.RecordOf(*question);
    TIStorageManagerState::enabled = false;
    return without != with ? "the answer is another one while tracing is on" : "";
}

std::string NothingGoesWrong(const Look& look, const Question* question) {
    for (const RecordEntry& entry : look.AskFor(*question)) {
        if (entry.kind == Entry::kWrong) {
            return WhatIsSaid(entry);
        }
    }
    return "";
}

std::string NoException(const Look& look, const Question* question) {
    look.AskFor(*question);
    return tv().HasThrown() && !HasNoAccountApplication() ? "an exception is caught" : "";
}

// Inputs that the product reads more than once on a path, by kind of question; "" is any.
struct Reread {
    const char* question;
    const char* input;
};
constexpr Reread REREADS[] = {
    {"", vtv::kCurrentAssistantKey},  // for each assistant that is looked at
    // Consents: once for the policy, once for the entry; once for the popup, once for the launch.
    {"visible:voice", vtv::kTermsConsent},
    {"visible:voice", vtv::kPrivacyConsent},
    {"visible:onboarding", vtv::kTermsConsent},
    {"visible:onboarding", vtv::kPrivacyConsent},
    {"press:", vtv::kTermsConsent},
    {"press:", vtv::kPrivacyConsent},
    {"press:", "sso_get_login_state"},
    {"press:", vtv::kFirstTimeKey},
    // A setup is asked for before the onboarding and by the onboarding itself.
    {"set:voice-assistant", vtv::kOwnerFolder},
    {"set:voice-assistant", vtv::kFirstTimeKey},
    {"set:voice-assistant", vtv::kTencentKey},
    // Read for the value before, and to change one member.
    {"set:situational-hint", vtv::kHintKey},
    {"function:CSIMenuUtil::GetDeviceSID", vtv::kModularFeature},
    {"function:CSIMenuUtil::GetTextTVScreenOrPJT", vtv::kFeaturePrefix},
};

std::string NoReread(const Look& look, const Question* question) {
    look.AskFor(*question);
    for (std::size_t i = 0; i < tv().TouchedSize(); ++i) {
        const int index = tv().Touched()[i];
        if (tv().ReadCount(index) < 2) {
            continue;
        }
        const std::string& key = tv().GetInputs().inputs[static_cast<std::size_t>(index)].key;
        const bool isProduct =
            std::any_of(std::begin(REREADS), std::end(REREADS), [&](const Reread& reread) {
                return question->name.rfind(reread.question, 0) == 0 &&
                       key.rfind(reread.input, 0) == 0;
            });
        if (!isProduct) {
            return key + " is read " + std::to_string(tv().ReadCount(index)) + " times";
        }
    }
    return "";
}

std::string UnknownKeysAreNothing(const Look& look, const Question* question) {
    const std::vector<RecordEntry> record = look.AskFor(*question);
    for (const char* about : {answers::VISIBLE, answers::ENABLED, answers::VALUE, answers::TITLE,
                              answers::HELP, answers::REASON}) {
        const RecordEntry* answer = FindAnswer(record, about);
        if (answer != nullptr && answer->value != Said() && answer->value != Said(false)) {
            return "is answered";
        }
    }
    return tv().HasEffects() ? "has effects" : "";
}

bool Any(const Question&) {
    return true;
}

bool Reads(const Question& question) {
    return !question.writes;
}

bool Writes(const Question& question) {
    return question.writes && question.symbol == nullptr;
}

bool IsPopup(const Question& question) {
    return question.kind == Asks::kPopup;
}

bool IsItemPopup(const Question& question) {
    return IsPopup(question) && question.item != nullptr;
}

bool IsReason(const Question& question) {
    return question.kind == Asks::kReason;
}

bool IsTitle(const Question& question) {
    return question.kind == Asks::kTitle && question.item != nullptr;
}

bool IsUnknownKey(const Question& question) {
    return question.key == "menu/system/no-such-item";
}

}  // namespace

const std::vector<Invariant>& OfConduct() {
    static const std::vector<Invariant> invariants = {
        {"popup-leads-to-launch",
         "The popup of a visible dimmed item starts an application when its button is pressed (SVA "
         "has no onboarding).",
         PopupLeadsToLaunch, IsItemPopup},
        {"launches-are-known",
         "Every application that is started, and its extra, is in the product's table.",
         LaunchesAreKnown, Writes, Invariant::Asks::kOnce},
        {"one-launch-at-most", "One press starts at most one application.", OneLaunchAtMost, Writes,
         Invariant::Asks::kOnce},
        {"writes-are-known", "The page writes only the settings that are its own.", WritesAreKnown,
         Writes, Invariant::Asks::kOnce},
        {"mode-names-the-current", "The always-on-voice mode is set for the current assistant.",
         ModeNamesTheCurrent, Writes, Invariant::Asks::kOnce},
        {"popups-are-whole",
         "A popup has a title, a message, as many buttons as it says and the action 9999.",
         PopupIsWhole, IsPopup, Invariant::Asks::kOnce},
        {"reasons-are-shown",
         "A reason for a dimmed wake-up switch comes with the flag that shows it.", ReasonIsShown,
         IsReason, Invariant::Asks::kOnce},
        {"every-item-has-a-title", "Every item has a title.", EveryItemHasATitle, IsTitle,
         Invariant::Asks::kOnce},
        {"unknown-keys-are-nothing", "A key that is no item is hidden, dimmed and has no texts.",
         UnknownKeysAreNothing, IsUnknownKey, Invariant::Asks::kOnce},
        {"reads-do-not-write", "Asking changes nothing on the TV.", ReadsDoNotWrite, Reads,
         Invariant::Asks::kOnce},
        {"answers-repeat", "Asked twice, the page answers the same.", AnswersRepeat, Reads},
        {"tracing-changes-nothing", "Answers and effects are the same while tracing is on.",
         TracingChangesNothing, Any},
        {"no-second-read", "No input is read twice on a path, unless the product reads it so.",
         NoReread, Any, Invariant::Asks::kOnce},
        {"no-exception",
         "No path comes to an exception, except for a TV without an account application.",
         NoException, Any, Invariant::Asks::kOnce},
        {"nothing-goes-wrong",
         "No path crashes, lets an exception out, leaks, writes to freed memory or answers from "
         "it.",
         NothingGoesWrong, Any, Invariant::Asks::kOnce},
    };
    return invariants;
}

}  // namespace explorer::rules
