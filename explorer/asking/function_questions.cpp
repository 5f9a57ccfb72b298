// Functions that only other code of the TV calls, found by their mangled names.
#include <string>

#include "answers.h"

namespace explorer {

namespace {

template <typename Result, typename... Arguments>
Result CallOf(const Subject& subject, const Question& question, Arguments... arguments) {
    auto* function = reinterpret_cast<Result (*)(Arguments...)>(subject.Symbol(question.symbol));
    return function(arguments...);
}

void AskNothing(const Subject& subject, const Question& question) {
    CallOf<void>(subject, question);
}

void AskBool(const Subject& subject, const Question& question) {
    Answer(answers::TRUTH, CallOf<bool>(subject, question));
}

void AskString(const Subject& subject, const Question& question) {
    AnswerText(answers::TEXT, CallOf<std::string>(subject, question).c_str());
}

void AskSwitch(const Subject& subject, const Question& question) {
    CallOf<void, bool>(subject, question, question.value != 0);
}

void AskSwitchResult(const Subject& subject, const Question& question) {
    Answer(answers::TRUTH, CallOf<bool, bool>(subject, question, question.value != 0));
}

void AskOnboarding(const Subject& subject, const Question& question) {
    CallOf<void, const char*>(subject, question, "exploration");
}

void AskDeviceText(const Subject& subject, const Question& question) {
    AnswerText(answers::TEXT, CallOf<std::string, const char*, const char*, const char*>(
                                  subject, question, "TEXT_TV", "TEXT_SCREEN", "TEXT_OTHER <<A>>")
                                  .c_str());
}

void AskWakeUpChoices(const Subject& subject, const Question& question) {
    int count = 0;
    ListItem** items = CallOf<ListItem**, const char*, int*>(subject, question, nullptr, &count);
    AnswerList(subject, items, count);
}

void AskShowPopup(const Subject& subject, const Question& question) {
    CallOf<void, std::string>(subject, question, "Hello");
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

}  // namespace

void AddFunctionQuestions(std::vector<Question>& questions) {
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
}

}  // namespace explorer
