#include "question.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"

namespace explorer {

namespace {

void Answer(std::string_view text) {
    tv().Append(Entry::kAnswer, text);
}

void AnswerText(const char* what, const char* text) {
    const PlatformMemory own;
    Answer(text == nullptr ? std::string(what) + ": none"
                           : std::string(what) + ": \"" + text + '"');
}

// Only what is yes or no is this frequent.
void AnswerYesNo(const char* yes, const char* no, int answer) {
    if (answer == 1 || answer == 0) {
        Answer(answer == 1 ? yes : no);
    } else {
        tv().AppendNumber(Entry::kAnswer, yes, answer);
    }
}

// ---------------------------------------------------------------------------------------------
// The table's slots and the check functions
// ---------------------------------------------------------------------------------------------

void AskVisible(const Subject& subject, const Question& question) {
    AnswerYesNo("visible", "hidden", subject.checkVisible(question.key.c_str(), 0));
}

void AskEnabled(const Subject& subject, const Question& question) {
    AnswerYesNo("enabled", "dimmed", subject.checkEnabled(question.key.c_str(), 0));
}

// The forms for other types of items, which ask no rule.
void AskOtherTypes(const Subject& subject, const Question& question) {
    const char* key = question.key.c_str();
    const auto call = [&](const char* name, auto value) {
        using Form = int (*)(const char*, decltype(value));
        auto* form = reinterpret_cast<Form>(subject.Symbol(name));
        tv().AppendNumber(Entry::kAnswer, name, form != nullptr ? form(key, value) : -1);
    };
    call("check_visibility_bool", true);
    call("check_visibility_double", 0.5);
    call("check_visibility_string", key);
    call("check_enable_bool", true);
    call("check_enable_double", 0.5);
    call("check_enable_string", key);
}

void AskProperties(const Subject& subject, const Question&) {
    for (const char* key :
         {"provider/owner", "provider/main-component", "provider/sub-component", "provider/none"}) {
        char* text = nullptr;
        subject.Table().provider_property(key, &text);
        AnswerText(key, text);
        std::free(text);
    }
}

constexpr int UNTOUCHED = -77;

void AskValue(const Subject& subject, const Question& question) {
    int value = UNTOUCHED;
    const int result = subject.Table().get_int(question.key.c_str(), &value);
    if (value == UNTOUCHED) {
        Answer("no value");
    } else {
        tv().AppendNumber(Entry::kAnswer, "value", value);
    }
    if (result != 0) {
        tv().AppendNumber(Entry::kAnswer, "result", result);
    }
}

void AskWrite(const Subject& subject, const Question& question) {
    const int result = subject.Table().set_int(question.key.c_str(), question.value);
    if (result != 0) {
        tv().AppendNumber(Entry::kAnswer, "result", result);
    }
}

using TextSlot = int (*)(const char* key, char** text);

void AskText(TextSlot slot, const char* what, const Question& question) {
    char* text = nullptr;
    slot(question.key.c_str(), &text);
    AnswerText(what, text);
    std::free(text);
}

void AskTitle(const Subject& subject, const Question& question) {
    AskText(subject.Table().get_display_name, "title", question);
}

void AskHelp(const Subject& subject, const Question& question) {
    AskText(subject.Table().get_help_text, "help", question);
}

void AskReason(const Subject& subject, const Question& question) {
    char* text = nullptr;
    bool flag = false;
    subject.Table().get_disable_text(question.key.c_str(), &text, &flag);
    Answer(flag ? "shown: yes" : "shown: no");
    AnswerText("reason", text);
    std::free(text);
}

void AnswerList(const Subject& subject, ListItem** items, int count) {
    if (items == nullptr) {
        Answer("no choices");
        return;
    }
    for (int i = 0; i < count; ++i) {
        char* text = nullptr;
        int value = UNTOUCHED;
        subject.Table().list_item_text(items[i], &text);
        subject.Table().list_item_value(items[i], &value);
        const PlatformMemory own;
        Answer("choice " + std::to_string(value) + ": \"" + (text != nullptr ? text : "(null)") +
               '"');
    }
    subject.Table().free_list_items(items, count);
}

void AskChoices(const Subject& subject, const Question& question) {
    int count = 0;
    ListItem** items = subject.Table().get_list_items(question.key.c_str(), &count);
    AnswerList(subject, items, count);
}

constexpr std::size_t HOST_BUFFER = 1024;

struct HostBuffer {
    char text[HOST_BUFFER] = "\x7f";
    bool IsWritten() const { return text[0] != '\x7f'; }
};

void AnswerBuffer(const char* what, const HostBuffer& buffer) {
    if (buffer.IsWritten()) {
        AnswerText(what, buffer.text);
    }
}

void AskConfirmation(const Subject& subject, const Question& question) {
    HostBuffer text;
    HostBuffer first;
    HostBuffer second;
    HostBuffer title;
    int buttons = 0;
    subject.Table().get_messagebox_info(question.key.c_str(), text.text, first.text, second.text,
                                        &buttons);
    subject.Table().get_messagebox_title(question.key.c_str(), title.text);
    tv().AppendNumber(Entry::kAnswer, "buttons", buttons);
    AnswerBuffer("title", title);
    AnswerBuffer("text", text);
    AnswerBuffer("first", first);
    AnswerBuffer("second", second);
}

void AskPopup(const Subject& subject, const Question& question) {
    HostBuffer message;
    HostBuffer title;
    HostBuffer first;
    HostBuffer second;
    HostBuffer action;
    int buttons = 0;
    subject.Table().get_disablepopup_info(question.key.c_str(), message.text, title.text,
                                          first.text, second.text, &buttons, action.text);
    tv().AppendNumber(Entry::kAnswer, "buttons", buttons);
    AnswerBuffer("title", title);
    AnswerBuffer("message", message);
    AnswerBuffer("first", first);
    AnswerBuffer("second", second);
    AnswerBuffer("action", action);
}

// ---------------------------------------------------------------------------------------------
// Functions that only other code of the TV calls
// ---------------------------------------------------------------------------------------------

template <typename Result, typename... Arguments>
Result Call(const Subject& subject, const Question& question, Arguments... arguments) {
    auto* function = reinterpret_cast<Result (*)(Arguments...)>(subject.Symbol(question.symbol));
    return function(arguments...);
}

void AskNothing(const Subject& subject, const Question& question) {
    Call<void>(subject, question);
}

void AskBool(const Subject& subject, const Question& question) {
    AnswerYesNo("true", "false", Call<bool>(subject, question) ? 1 : 0);
}

void AskString(const Subject& subject, const Question& question) {
    AnswerText("text", Call<std::string>(subject, question).c_str());
}

void AskSwitch(const Subject& subject, const Question& question) {
    Call<void, bool>(subject, question, question.value != 0);
}

void AskSwitchResult(const Subject& subject, const Question& question) {
    AnswerYesNo("true", "false", Call<bool, bool>(subject, question, question.value != 0) ? 1 : 0);
}

void AskOnboarding(const Subject& subject, const Question& question) {
    Call<void, const char*>(subject, question, "exploration");
}

void AskDeviceText(const Subject& subject, const Question& question) {
    AnswerText("text", Call<std::string, const char*, const char*, const char*>(
                           subject, question, "TEXT_TV", "TEXT_SCREEN", "TEXT_OTHER <<A>>")
                           .c_str());
}

void AskWakeUpChoices(const Subject& subject, const Question& question) {
    int count = 0;
    ListItem** items = Call<ListItem**, const char*, int*>(subject, question, nullptr, &count);
    AnswerList(subject, items, count);
}

void AskShowPopup(const Subject& subject, const Question& question) {
    Call<void, std::string>(subject, question, "Hello");
}

struct FunctionQuestion {
    const char* name;
    const char* symbol;
    void (*ask)(const Subject&, const Question&);
    int value;
    bool writes;
};

constexpr FunctionQuestion FUNCTIONS[] = {
    {"LaunchOnboarding", "_Z16LaunchOnboardingPKc", AskOnboarding, 0, true},
    {"showVAChangingNoticePopup", "_Z25showVAChangingNoticePopupv", AskNothing, 0, true},
    {"get_list_items_voice_wake_up", "_Z28get_list_items_voice_wake_upPKcPi", AskWakeUpChoices, 0,
     false},
    {"MVAList::IsVoiceDisabledByVAPolicy", "_ZN7MVAList25IsVoiceDisabledByVAPolicyEv", AskBool, 0,
     false},
    {"MVAList::IsCurrentVASetupComplete", "_ZN7MVAList24IsCurrentVASetupCompleteEv", AskBool, 0,
     false},
    {"MVAList::IsCurrentVASupportFF", "_ZN7MVAList20IsCurrentVASupportFFEv", AskBool, 0, false},
    {"MVAList::IsCurrentVAOrvik", "_ZN7MVAList16IsCurrentVAOrvikEv", AskBool, 0, false},
    {"CSIMenuUtil::FlagLFDProductModel", "_ZN11CSIMenuUtil19FlagLFDProductModelEv", AskBool, 0,
     false},
    {"CSIMenuUtil::IsPassthruDimmed", "_ZN11CSIMenuUtil16IsPassthruDimmedEv", AskBool, 0, false},
    {"CSIMenuUtil::IsTncPPAgreed", "_ZN11CSIMenuUtil13IsTncPPAgreedEv", AskBool, 0, false},
    {"CSIMenuUtil::IsMenuLanguageSupportTTS", "_ZN11CSIMenuUtil24IsMenuLanguageSupportTTSEv",
     AskBool, 0, false},
    {"CSIMenuUtil::GetPassthruDimmedToastPopUpString",
     "_ZN11CSIMenuUtil33GetPassthruDimmedToastPopUpStringB5cxx11Ev", AskString, 0, false},
    {"CSIMenuUtil::GetDeviceSID", "_ZN11CSIMenuUtil12GetDeviceSIDB5cxx11Ev", AskString, 0, false},
    {"CSIMenuUtil::GetTextTVScreenOrPJT", "_ZN11CSIMenuUtil20GetTextTVScreenOrPJTB5cxx11EPKcS1_S1_",
     AskDeviceText, 0, false},
    {"CSIMenuUtil::GetCountryCode", "_ZN11CSIMenuUtil14GetCountryCodeB5cxx11Ev", AskString, 0,
     false},
    {"CSIMenuUtil::setPassthruEnabled=1", "_ZN11CSIMenuUtil18setPassthruEnabledEb", AskSwitchResult,
     1, true},
    {"CSIMenuUtil::setPassthruEnabled=0", "_ZN11CSIMenuUtil18setPassthruEnabledEb", AskSwitchResult,
     0, true},
    {"CSIMenuUtil::SetVoiceGuideOnOff=1", "_ZN11CSIMenuUtil18SetVoiceGuideOnOffEb", AskSwitch, 1,
     true},
    {"CSIMenuUtil::SetVoiceGuideOnOff=0", "_ZN11CSIMenuUtil18SetVoiceGuideOnOffEb", AskSwitch, 0,
     true},
    {"CSIMenuUtil::RefreshMenu", "_ZN11CSIMenuUtil11RefreshMenuEv", AskNothing, 0, true},
    {"CSIMenuUtil::ShowPopup",
     "_ZN11CSIMenuUtil9ShowPopupENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE",
     AskShowPopup, 0, true},
};

// ---------------------------------------------------------------------------------------------
// The list of questions
// ---------------------------------------------------------------------------------------------

Question OfItem(const char* kind, void (*ask)(const Subject&, const Question&), const Item& item,
                const char* function) {
    Question question;
    question.name = std::string(kind) + ':' + item.name;
    question.ask = ask;
    question.key = item.key;
    question.item = &item;
    question.function = function != nullptr ? function : "";
    return question;
}

Question Write(const Item& item, int value) {
    Question question = OfItem("set", AskWrite, item, item.writer);
    question.name += '=' + std::to_string(value);
    question.value = value;
    question.writes = true;
    return question;
}

Question OfKey(const char* kind, void (*ask)(const Subject&, const Question&), const char* key) {
    Question question;
    question.name = std::string(kind) + ':' + key;
    question.ask = ask;
    question.key = key;
    return question;
}

void AddItem(std::vector<Question>& questions, const Item& item) {
    questions.push_back(OfItem("visible", AskVisible, item, item.visibilityRule));
    questions.push_back(OfItem("enabled", AskEnabled, item, item.enableRule));
    questions.push_back(OfItem("title", AskTitle, item, nullptr));
    questions.push_back(OfItem("help", AskHelp, item, nullptr));
    questions.push_back(OfItem("value", AskValue, item, item.reader));
    questions.push_back(OfItem("choices", AskChoices, item, item.listBuilder));
    questions.push_back(OfItem("confirmation", AskConfirmation, item, nullptr));
    questions.push_back(OfItem("reason", AskReason, item, nullptr));
    questions.push_back(OfItem("popup", AskPopup, item, nullptr));
    const bool isList = item.listBuilder != nullptr;
    const std::vector<int> values =
        isList ? std::vector<int>{1, 2, 3, 7, 0, -1} : std::vector<int>{1, 0, 2};
    for (const int value : values) {
        questions.push_back(Write(item, value));
    }
}

std::vector<Question> AllQuestions() {
    std::vector<Question> questions;
    for (const Item& item : Items()) {
        AddItem(questions, item);
    }
    // The action of a popup does not look at the key.
    Question press = OfKey("press", AskWrite, "menu/system/general-voice-voice-settings-orvik");
    press.name = "press:popup";
    press.value = SI_ACTION_VALUE;
    press.writes = true;
    questions.push_back(press);
    questions.push_back(
        OfKey("popup", AskPopup, "menu/system/general-voice-voice-settings-orvik-terms"));
    questions.push_back(
        OfKey("popup", AskPopup, "menu/system/general-voice-voice-settings-tencent-more"));
    struct OddKey {
        const char* kind;
        void (*ask)(const Subject&, const Question&);
    };
    constexpr OddKey ODD_KEYS[] = {
        {"visible", AskVisible}, {"enabled", AskEnabled}, {"title", AskTitle}, {"help", AskHelp},
        {"value", AskValue},     {"reason", AskReason},   {"popup", AskPopup}};
    for (const OddKey& odd : ODD_KEYS) {
        questions.push_back(OfKey(odd.kind, odd.ask, "menu/system/no-such-item"));
    }
    questions.push_back(OfKey("other-types", AskOtherTypes, Items().front().key));
    questions.push_back(OfKey("properties", AskProperties, "provider"));
    for (const FunctionQuestion& function : FUNCTIONS) {
        Question question;
        question.name = std::string("function:") + function.name;
        question.ask = function.ask;
        question.value = function.value;
        question.symbol = function.symbol;
        question.function = function.name;
        question.writes = function.writes;
        questions.push_back(question);
    }
    return questions;
}

}  // namespace

const std::vector<Question>& Questions() {
    static const std::vector<Question> questions = AllQuestions();
    return questions;
}

const Question* FindQuestion(const std::string& name) {
    for (const Question& question : Questions()) {
        if (question.name == name) {
            return &question;
        }
    }
    return nullptr;
}

std::vector<const Question*> SelectQuestions(const std::string& argument) {
    std::vector<const Question*> selected;
    const Item* item = FindItem(argument);
    for (const Question& question : Questions()) {
        const bool isMeant = question.name == argument || question.key == argument ||
                             (item != nullptr && question.item == item) ||
                             (!argument.empty() && question.function == argument) ||
                             question.function.rfind(argument + '=', 0) == 0 ||
                             question.name.rfind(argument + ':', 0) == 0;
        if (isMeant) {
            selected.push_back(&question);
        }
    }
    return selected;
}

std::vector<std::string> SimilarNames(const std::string& argument) {
    std::vector<std::string> names;
    for (const Item& item : Items()) {
        names.push_back(item.name);
    }
    for (const Question& question : Questions()) {
        if (!question.function.empty()) {
            names.push_back(question.function);
        }
    }
    const auto common = [&argument](const std::string& name) {
        std::size_t best = 0;
        for (std::size_t i = 0; i < name.size(); ++i) {
            for (std::size_t j = 0; j < argument.size(); ++j) {
                std::size_t length = 0;
                while (i + length < name.size() && j + length < argument.size() &&
                       name[i + length] == argument[j + length]) {
                    ++length;
                }
                best = std::max(best, length);
            }
        }
        return best;
    };
    std::stable_sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return common(a) > common(b);
    });
    names.erase(std::unique(names.begin(), names.end()), names.end());
    names.resize(std::min<std::size_t>(names.size(), 3));
    return names;
}

void Ask(const Subject& subject, const Question& question) {
    if (subject.speechLanguages != nullptr && !subject.speechLanguages->empty()) {
        subject.speechLanguages->clear();
    }
    if (question.symbol != nullptr && subject.Symbol(question.symbol) == nullptr) {
        tv().Append(Entry::kWrong, "is not exported");
        return;
    }
    const long before = memoryBooks.balance;
    try {
        const ProviderMemory counted;
        question.ask(subject, question);
    } catch (const std::exception& exception) {
        tv().Append(Entry::kWrong, std::string("throws ") + exception.what());
    } catch (...) {
        tv().Append(Entry::kWrong, "throws something");
    }
    if (memoryBooks.balance != before && subject.speechLanguages != nullptr) {
        // What the library may keep is not lost.
        const ProviderMemory counted;
        subject.speechLanguages->clear();
    }
    if (memoryBooks.balance != before) {
        tv().AppendNumber(Entry::kWrong, "leaks blocks",
                          static_cast<int>(memoryBooks.balance - before));
        memoryBooks.balance = before;
    }
    if (tv().HasThrown()) {
        tv().Append(Entry::kAnswer, "an exception is caught and logged");
    }
}

}  // namespace explorer
