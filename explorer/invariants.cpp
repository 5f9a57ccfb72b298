#include "invariants.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

#include "memory.h"
#include "platform/trace_storage.h"
#include "tv/lazy_tv.h"

namespace explorer {

namespace {

constexpr char VOICE[] = "voice";
constexpr char ONBOARDING[] = "onboarding";
constexpr char ASSISTANT[] = "voice-assistant";
constexpr char WAKE_UP[] = "voice-wake-up";
constexpr char ALWAYS[] = "voice-always-wake-up";
constexpr char SCREEN_ON[] = "voice-screen-on-wake-up";
constexpr char HINT[] = "situational-hint";
constexpr char ORVIK[] = "voice-settings-orvik";
constexpr char ORVIK_CN[] = "voice-settings-orvik-cn";
constexpr const char* OUTSIDERS[] = {"voice-settings-tencent", "voice-settings-alexa",
                                     "voice-settings-google", "voice-settings-salute"};

constexpr char CURRENT_KEY[] = "db/multi-assistant/default_assistant_appid";
constexpr char LEGACY_KEY[] = "db/menu/voice/is_k_voice";
constexpr char VOICE_FEATURE[] = "com.vantelo/featureconf/voice.voice_recognition_support";
constexpr char ORVIK_FEATURE[] = "com.vantelo/featureconf/voice.voice_recognition_orvik_support";

// Every application that the page may start, with its extra.
constexpr const char* LAUNCHES[] = {
    "org.nemra.wizard type=\"PIVORA_SETUP\"",
    "org.nemra.voice-onboarding type=\"ONBOARDING_SETUP\"",
    "com.vantelo.tv.voice-instant-app show_onboarding=\"ONBOARDING\"",
    "com.vantelo.tv.google-assistant Login=\"1\"",
    "com.vantelo.tv.salute-assistant PAGETYPE=\"ONBOARDING\"",
    "com.vantelo.tv.tencent-voice-chrome show_onboarding=\"ONBOARDING\"",
    "com.vantelo.account-ui",
};
// Every setting that the page may write.
constexpr const char* WRITES[] = {"db/multi-assistant/default_assistant_appid",
                                  "db/menu/voice/assistant_farfield",
                                  "db/multi-assistant/situational_hint_supported"};

// ---------------------------------------------------------------------------------------------
// Visibility
// ---------------------------------------------------------------------------------------------

std::string NeverBoth(const Look& look, const Question*) {
    return look.Visible(VOICE) && look.Visible(ONBOARDING) ? "both are visible" : "";
}

// Worked out from the TV, not from the provider's answers.
bool IsVoiceAvailable(const Look& look) {
    const bool recognises = look.Now(Input::Kind::kFeature, VOICE_FEATURE) == 1;
    const bool isBlocked = look.Now(Input::Kind::kSetting, "db/comss/cisblock") == 2;
    const int orvik = look.Now(Input::Kind::kFeature, ORVIK_FEATURE);
    return recognises && !isBlocked && (orvik == 1 || orvik == -22 || !look.Policy().list.empty());
}

std::string ExactlyOne(const Look& look, const Question*) {
    const bool root = look.Visible(VOICE);
    const bool onboarding = look.Visible(ONBOARDING);
    return IsVoiceAvailable(look) && root == onboarding ? "neither or both are visible" : "";
}

std::string NothingWithoutVoice(const Look& look, const Question*) {
    const bool shown = look.Visible(VOICE) || look.Visible(ONBOARDING);
    const bool recognises = look.Now(Input::Kind::kFeature, VOICE_FEATURE) == 1;
    const bool isBlocked = look.Now(Input::Kind::kSetting, "db/comss/cisblock") == 2;
    return shown && (!recognises || isBlocked) ? "an entry is visible" : "";
}

std::string RootNeedsConsent(const Look& look, const Question*) {
    if (!look.Visible(VOICE)) {
        return "";
    }
    if (look.Now(Input::Kind::kConsent, "tnc") <= 0 || look.Now(Input::Kind::kConsent, "pp") <= 0) {
        return "the page is visible without both consents";
    }
    return look.TextNow(Input::Kind::kSetting, CURRENT_KEY).empty()
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
        if (look.Visible(item) && look.Now(Input::Kind::kSetting, LEGACY_KEY) == 1) {
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
    int count = 0;
    const SIProviderTable& table = look.Provider().Table();
    ListItem** items = table.get_list_items(FindItem(ASSISTANT)->key, &count);
    if (items == nullptr) {
        return "there is no list";
    }
    table.free_list_items(items, count);
    std::set<int> orders;
    for (const Assistant& assistant : look.Policy().list) {
        orders.insert(assistant.order);
    }
    return count != static_cast<int>(orders.size()) ? "an assistant is missing" : "";
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
    return value != 1 && value != 0 && !(isHint && value == -1) ? "reads " + std::to_string(value)
                                                                : "";
}

std::string AssistantReadsItsNumber(const Look& look, const Question*) {
    const int value = look.Value(ASSISTANT);
    const Assistant* current = look.Policy().Find(look.TextNow(Input::Kind::kSetting, CURRENT_KEY));
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
    std::string chosen;
    for (const Assistant& assistant : look.Policy().list) {
        if (assistant.order == question->value) {
            chosen = assistant.appId;
            break;
        }
    }
    look.Write(ASSISTANT, question->value);
    const bool isOffered =
        std::any_of(look.Policy().list.begin(), look.Policy().list.end(),
                    [&](const Assistant& assistant) { return assistant.order == question->value; });
    if (!isOffered || !WasTaken(CURRENT_KEY)) {
        return "";
    }
    const std::string current = look.TextNow(Input::Kind::kSetting, CURRENT_KEY);
    return current != chosen ? "the current assistant is " + current + ", not " + chosen : "";
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
    const Assistant* current = look.Policy().Find(look.TextNow(Input::Kind::kSetting, CURRENT_KEY));
    if (current == nullptr || current->id != "ORVIK2" || !tv().IsEveryWriteTaken()) {
        return "";
    }
    return look.Now(Input::Kind::kCall, "AOVSystemDataGetAOVMode") != 0 ? "the mode is not 0" : "";
}

// ---------------------------------------------------------------------------------------------
// Popups and launches
// ---------------------------------------------------------------------------------------------

std::vector<std::string> Launched(std::string_view record) {
    std::vector<std::string> launches;
    for (const RecordEntry& entry : ReadRecord(record)) {
        if (entry.kind == Entry::kLaunch) {
            launches.push_back(entry.text);
        }
    }
    return launches;
}

std::string PopupLeadsToLaunch(const Look& look, const Question* question) {
    const char* item = question->item->name;
    if (!look.Visible(item) || look.Enabled(item) || !look.OffersPopup(item)) {
        return "";
    }
    look.PressPopup(item);
    // A TV without an account application has no sign-in to open.
    const Input* account =
        tv().GetInputs().Find(Input::Kind::kCall, "sso_get_account_ui_application_package_id");
    const Value* id = tv().Current(tv().GetInputs().IndexOf(*account));
    if (id != nullptr && id->kind != Value::Kind::kText) {
        return "";
    }
    // The assistant listed as SVA has no onboarding.
    if (look.Policy().KindOf(look.TextNow(Input::Kind::kSetting, CURRENT_KEY)) == "SVA") {
        return "";
    }
    return Launched(tv().Record()).empty() ? "the button does nothing" : "";
}

std::string LaunchesAreKnown(const Look& look, const Question* question) {
    for (const std::string& launch : Launched(look.AskFor(*question))) {
        if (std::find(std::begin(LAUNCHES), std::end(LAUNCHES), launch) == std::end(LAUNCHES)) {
            return "starts " + launch;
        }
    }
    return "";
}

std::string OneLaunchAtMost(const Look& look, const Question* question) {
    return Launched(look.AskFor(*question)).size() > 1 ? "starts several applications" : "";
}

std::string WritesAreKnown(const Look& look, const Question* question) {
    for (const RecordEntry& entry : ReadRecord(look.AskFor(*question))) {
        const std::string key = entry.text.substr(0, entry.text.find(' '));
        if (entry.kind == Entry::kWrite &&
            std::find(std::begin(WRITES), std::end(WRITES), key) == std::end(WRITES)) {
            return "writes " + key;
        }
    }
    return "";
}

std::string ModeNamesTheCurrent(const Look& look, const Question* question) {
    const std::string record = look.AskFor(*question);
    const std::string current = look.TextNow(Input::Kind::kSetting, CURRENT_KEY);
    for (const RecordEntry& entry : ReadRecord(record)) {
        if (entry.kind == Entry::kMode && entry.text.rfind(current + " to ", 0) != 0) {
            return "sets the mode of " + entry.text;
        }
    }
    return "";
}

std::string PopupIsWhole(const Look& look, const Question* question) {
    const std::string record = look.AskFor(*question);
    if (record.find("buttons: 0") != std::string::npos) {
        return record.find("title") != std::string::npos ? "texts without a button" : "";
    }
    for (const char* part : {"title: \"", "message: \"", "first: \"", "action: \"9999\""}) {
        if (record.find(part) == std::string::npos) {
            return std::string("without ") + part;
        }
    }
    const bool hasSecond = record.find("second: \"") != std::string::npos;
    return hasSecond != (record.find("buttons: 2") != std::string::npos)
               ? "the number of buttons is not that of their texts"
               : "";
}

std::string ReasonIsShown(const Look& look, const Question* question) {
    const std::string record = look.AskFor(*question);
    const bool hasText = record.find("reason: \"") != std::string::npos;
    return hasText && question->item != nullptr &&
                   std::strcmp(question->item->name, WAKE_UP) == 0 &&
                   record.find("shown: no") != std::string::npos
               ? "a text that is not to be shown"
               : "";
}

std::string EveryItemHasATitle(const Look& look, const Question* question) {
    const std::string record = look.AskFor(*question);
    return record.find("title: none") != std::string::npos ||
                   record.find("title: \"\"") != std::string::npos
               ? "has no title"
               : "";
}

// ---------------------------------------------------------------------------------------------
// Good manners
// ---------------------------------------------------------------------------------------------

std::string ReadsDoNotWrite(const Look& look, const Question* question) {
    look.AskFor(*question);
    return tv().HasEffects() ? "something was changed" : "";
}

std::string AnswersRepeat(const Look& look, const Question* question) {
    const std::string first = look.AskFor(*question);
    return first != look.AskFor(*question) ? "the second answer is another one" : "";
}

std::string TracingChangesNothing(const Look& look, const Question* question) {
    const std::string without = look.AskFor(*question);
    tv().Again();
    TIStorageManagerState::enabled = true;
    const std::string with = look.AskFor(*question);
    TIStorageManagerState::enabled = false;
    return without != with ? "the answer is another one while tracing is on" : "";
}

std::string NothingGoesWrong(const Look& look, const Question* question) {
    for (const RecordEntry& entry : ReadRecord(look.AskFor(*question))) {
        if (entry.kind == Entry::kWrong) {
            return entry.text;
        }
    }
    return "";
}

std::string NoException(const Look& look, const Question* question) {
    look.AskFor(*question);
    if (!tv().HasThrown()) {
        return "";
    }
    // A TV without an account application is the one thing that is told this way.
    const Input* account =
        tv().GetInputs().Find(Input::Kind::kCall, "sso_get_account_ui_application_package_id");
    const Value* id = tv().Current(tv().GetInputs().IndexOf(*account));
    return id != nullptr && id->kind != Value::Kind::kText ? "" : "an exception is caught";
}

// Inputs that the product reads more than once on a path, by kind of question; "" is any.
struct Reread {
    const char* question;
    const char* input;
};
constexpr Reread REREADS[] = {
    {"", "db/multi-assistant/default_assistant_appid"},  // for each assistant that is looked at
    // Consents: once for the policy, once for the entry; once for the popup, once for the launch.
    {"visible:voice", "tnc"},
    {"visible:voice", "pp"},
    {"visible:onboarding", "tnc"},
    {"visible:onboarding", "pp"},
    {"press:", "tnc"},
    {"press:", "pp"},
    {"press:", "sso_get_login_state"},
    {"press:", "db/voice-app/activate_first_time"},
    // A setup is asked for before the onboarding and by the onboarding itself.
    {"set:voice-assistant", "/home/owner/share/.voice/alexa_login_success"},
    {"set:voice-assistant", "/home/owner/share/.voice/ga_login_success"},
    {"set:voice-assistant", "/home/owner/share/.voice/salute_login_success"},
    {"set:voice-assistant", "db/voice-app/activate_first_time"},
    {"set:voice-assistant", "db/tencent-voice-assistant/voice-setting"},
    // Read for the value before, and to change one member.
    {"set:situational-hint", "db/multi-assistant/situational_hint_supported"},
    {"function:CSIMenuUtil::GetDeviceSID", "com.vantelo/featureconf/the_skeld_version"},
    {"function:CSIMenuUtil::GetTextTVScreenOrPJT", "com.vantelo/featureconf/"},
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
    const std::string record = look.AskFor(*question);
    for (const char* word :
         {"avisible", "aenabled", "avalue", "title: \"", "help: \"", "reason: \""}) {
        if (record.find(word) != std::string::npos) {
            return "is answered";
        }
    }
    return tv().HasEffects() ? "has effects" : "";
}

// ---------------------------------------------------------------------------------------------
// The list
// ---------------------------------------------------------------------------------------------

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
