// Invariants of how the page behaves: popups, launches, writes, and good manners.
#include <algorithm>
#include <cstring>

#include "explorer/tv/lazy_tv.h"
#include "invariant_rules.h"
#include "platform/trace_storage.h"

namespace explorer::rules {

namespace {

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

}  // namespace

// ---------------------------------------------------------------------------------------------
// Popups and launches
// ---------------------------------------------------------------------------------------------

static std::vector<std::string> Launched(std::string_view record) {
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

namespace {

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

}  // namespace

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

}  // namespace explorer::rules
