// The exports that no other question calls by their own names, each with what it is usually told.
#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "answers.h"
#include "filled.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

using Text = std::string;

template <typename Result, typename... Arguments>
auto* FunctionOf(const Subject& subject, const Question& question) {
    return reinterpret_cast<Result (*)(Arguments...)>(subject.Symbol(question.symbol));
}

// The checks pass the host's key and value on to them: of those, every other value is asked there.
void AskRule(const Subject& subject, const Question& question) {
    auto* rule = FunctionOf<bool, const char*, int>(subject, question);
    Answer(answers::TRUTH, rule(nullptr, -1));
    Answer(answers::TRUTH, rule("", 1));
}

void AskInt(const Subject& subject, const Question& question) {
    Answer(answers::VALUE, FunctionOf<int>(subject, question)());
}

void AskWriter(const Subject& subject, const Question& question) {
    FunctionOf<void, int>(subject, question)(1);
}

void AskChoicesOf(const Subject& subject, const Question& question) {
    int count = FILLED;
    ListItem** items = FunctionOf<ListItem**, const char*, int*>(subject, question)("", &count);
    Answer("count", count);
    AnswerList(subject, items, count);
}

void AskTruth(const Subject& subject, const Question& question) {
    Answer(answers::TRUTH, FunctionOf<bool>(subject, question)());
}

void AskText(const Subject& subject, const Question& question) {
    AnswerText(answers::TEXT, FunctionOf<Text>(subject, question)().c_str());
}

void AskSize(const Subject& subject, const Question& question) {
    Answer(answers::VALUE, static_cast<int>(FunctionOf<std::size_t>(subject, question)()));
}

// Of each kind of assistant, and of those beside them.
void AskTruthOfKinds(const Subject& subject, const Question& question) {
    for (int kind = -1; kind <= 7; ++kind) {
        Answer(answers::TRUTH, FunctionOf<bool, int>(subject, question)(kind));
    }
}

void AskTextOfKinds(const Subject& subject, const Question& question) {
    for (int kind = -1; kind <= 7; ++kind) {
        AnswerText(answers::TEXT, FunctionOf<Text, int>(subject, question)(kind).c_str());
    }
}

// question.key is the key.
void AskIntOfKey(const Subject& subject, const Question& question) {
    Answer(answers::VALUE, FunctionOf<int, const char*>(subject, question)(question.key.c_str()));
}

void AskTruthOfKey(const Subject& subject, const Question& question) {
    Answer(answers::TRUTH, FunctionOf<bool, const char*>(subject, question)(question.key.c_str()));
}

void AskTextOfKey(const Subject& subject, const Question& question) {
    AnswerText(answers::TEXT,
               FunctionOf<Text, const char*>(subject, question)(question.key.c_str()).c_str());
}

void AskIntOfText(const Subject& subject, const Question& question) {
    Answer(answers::VALUE, FunctionOf<int, Text>(subject, question)(question.key));
}

void AskTruthOfText(const Subject& subject, const Question& question) {
    Answer(answers::TRUTH, FunctionOf<bool, Text>(subject, question)(question.key));
}

void AskMember(const Subject& subject, const Question& question) {
    for (const char* member : {"voice_wakeup", "none", ""}) {
        AnswerText(answers::TEXT,
                   FunctionOf<Text, Text, Text>(subject, question)(question.key, member).c_str());
    }
}

void AskWriteMember(const Subject& subject, const Question& question) {
    for (const char* member : {"voice_wakeup", "none"}) {
        Answer(answers::TRUTH, FunctionOf<bool, Text, Text, Text>(subject, question)(
                                   question.key, member, "value"));
    }
}

void AskSetBool(const Subject& subject, const Question& question) {
    for (const bool value : {true, false}) {
        FunctionOf<void, const char*, bool>(subject, question)(question.key.c_str(), value);
    }
}

void AskSetString(const Subject& subject, const Question& question) {
    FunctionOf<void, const char*, const char*>(subject, question)(question.key.c_str(), "text");
}

void AskSend(const Subject& subject, const Question& question) {
    FunctionOf<void, const char*>(subject, question)(question.key.c_str());
}

void AskLaunchWithExtra(const Subject& subject, const Question& question) {
    auto* launch = FunctionOf<void, const char*, const char*, const char*>(subject, question);
    launch(question.key.c_str(), "name", "value");
}

void AskMetadata(const Subject& subject, const Question& question) {
    Text value = "before";
    Answer(answers::RESULT, FunctionOf<int, const char*, const char*, Text&>(subject, question)(
                                question.key.c_str(), vtv::kEngineLanguages, value));
    AnswerText(answers::VALUE, value.c_str());
}

// As MVAList::GetVAList() gives it.
struct ListedAssistant {
    int order = 0;
    Text id;
    Text appId;
    Text name;
    bool isFarField = false;
};

void AskAssistants(const Subject& subject, const Question& question) {
    for (const ListedAssistant& one :
         FunctionOf<std::vector<ListedAssistant>>(subject, question)()) {
        for (const Text& text : {one.id, one.appId, one.name}) {
            Answer(answers::CHOICE, Numbered{one.order, text});
        }
        Answer(answers::TRUTH, one.isFarField);
    }
}

void AskConstant(const Subject& subject, const Question& question) {
    AnswerText(answers::TEXT, *static_cast<const char* const*>(subject.Symbol(question.symbol)));
}

// What a call adds to the cache is taken out again: it would grow without end.
template <typename Call>
void AskCache(const Subject& subject, const Call& call) {
    std::list<Text>* languages = subject.Languages();
    if (languages == nullptr) {
        tv().Append(Entry::kWrong, "exports no languages");
        return;
    }
    const std::size_t before = languages->size();
    call();
    for (const Text& language : *languages) {
        AnswerText(answers::TEXT, language.c_str());
    }
    while (languages->size() > before) {
        languages->pop_back();
    }
}

void AskLanguages(const Subject& subject, const Question& question) {
    AskCache(subject, [&] { FunctionOf<void>(subject, question)(); });
}

void AskVoice(const Subject& subject, const Question& question) {
    auto* take = FunctionOf<bool, void*, const char*, int, void*>(subject, question);
    AskCache(subject, [&] {
        for (const char* language : {"en_US", "", static_cast<const char*>(nullptr)}) {
            for (const int type : {0, 1}) {
                Answer(answers::TRUTH, take(nullptr, language, type, nullptr));
            }
        }
    });
}

constexpr const char* WITH_PLACEHOLDERS[] = {
    "", "none", "<<A>>", "a <<A>> b <<A>> <<B>>", "<<<<A>>A>> <<A", "<<B>><<A>>"};

void AskReplace(const Subject& subject, const Question& question) {
    auto* replace = FunctionOf<Text, Text, const Text&>(subject, question);
    for (const char* text : WITH_PLACEHOLDERS) {
        for (const Text with : {"", "x", "<<B>>", "A", "<<A>>x"}) {
            AnswerText(answers::TEXT, replace(text, with).c_str());
        }
    }
    // At the limits that its header names, and one beyond.
    for (const int placeholders : {1000, 1001}) {
        Text text;
        for (int i = 0; i < placeholders; ++i) {
            text += "<<A>>";
        }
        AnswerText(answers::TEXT, replace(text, "").c_str());
    }
    for (const int size : {65536, 65537}) {
        const Text grown = replace("<<A>>", Text(static_cast<std::size_t>(size), 'x'));
        Answer(answers::VALUE, static_cast<int>(grown.size()));
    }
}

void AskReplaceBoth(const Subject& subject, const Question& question) {
    auto* replace = FunctionOf<Text, Text, const Text&, const Text&>(subject, question);
    for (const char* text : WITH_PLACEHOLDERS) {
        for (const Text with : {"", "x", "<<B>>"}) {
            AnswerText(answers::TEXT, replace(text, with, "<y>").c_str());
        }
    }
}

struct MoreFunction {
    const char* symbol;
    void (*ask)(const Subject&, const Question&);
    const char* key = "";
};

#define MENU(mangled) "_ZN11CSIMenuUtil" mangled
#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

constexpr MoreFunction MORE_FUNCTIONS[] = {
    {"_Z17check_return_truePKci", AskRule},
    {"_Z18check_return_falsePKci", AskRule},
    {"_Z26check_general_voice_enablePKci", AskRule},
    {"_Z29check_general_voice_supportedPKci", AskRule},
    {"_Z33check_general_voice_voice_wake_upPKci", AskRule},
    {"_Z35check_general_voice_voice_assistantPKci", AskRule},
    {"_Z36check_general_voice_situational_hintPKci", AskRule},
    {"_Z37check_general_voice_onboarding_enablePKci", AskRule},
    {"_Z40check_general_voice_onboarding_supportedPKci", AskRule},
    {"_Z40check_general_voice_voice_always_wake_upPKci", AskRule},
    {"_Z40check_general_voice_voice_settings_alexaPKci", AskRule},
    {"_Z40check_general_voice_voice_settings_orvikPKci", AskRule},
    {"_Z40check_general_voice_voice_wake_up_enablePKci", AskRule},
    {"_Z41check_general_voice_voice_settings_googlePKci", AskRule},
    {"_Z41check_general_voice_voice_settings_salutePKci", AskRule},
    {"_Z42check_general_voice_voice_settings_tencentPKci", AskRule},
    {"_Z43check_general_voice_voice_screen_on_wake_upPKci", AskRule},
    {"_Z43check_general_voice_voice_settings_orvik_cnPKci", AskRule},
    {"_Z47check_general_voice_voice_always_wake_up_enablePKci", AskRule},
    {"_Z47check_general_voice_voice_settings_alexa_enablePKci", AskRule},
    {"_Z47check_general_voice_voice_settings_orvik_enablePKci", AskRule},
    {"_Z48check_general_voice_voice_settings_google_enablePKci", AskRule},
    {"_Z48check_general_voice_voice_settings_salute_enablePKci", AskRule},
    {"_Z49check_general_voice_voice_settings_tencent_enablePKci", AskRule},
    {"_Z49check_general_voice_voice_situational_hint_enablePKci", AskRule},
    {"_Z50check_general_voice_voice_screen_on_wake_up_enablePKci", AskRule},
    {"_Z50check_general_voice_voice_settings_orvik_cn_enablePKci", AskRule},
    {"_Z33check_general_voice_voice_wake_upv", AskTruth},
    {"_Z40check_general_voice_voice_wake_up_enablev", AskTruth},
    {"_Z27checknode_int_voice_wake_upv", AskInt},
    {"_Z29checknode_int_voice_assistantv", AskInt},
    {"_Z34checknode_int_voice_always_wake_upv", AskInt},
    {"_Z36checknode_int_voice_situational_hintv", AskInt},
    {"_Z37checknode_int_voice_screen_on_wake_upv", AskInt},
    {"_Z25setnode_int_voice_wake_upi", AskWriter},
    {"_Z27setnode_int_voice_assistanti", AskWriter},
    {"_Z32setnode_int_voice_always_wake_upi", AskWriter},
    {"_Z34setnode_int_voice_situational_hinti", AskWriter},
    {"_Z35setnode_int_voice_screen_on_wake_upi", AskWriter},
    {"_Z30get_list_items_voice_assistantPKcPi", AskChoicesOf},
    {MENU("10IsSignedInEv"), AskTruth},
    {MENU("18IsNetworkConnectedEv"), AskTruth},
    {MENU("7isChinaEv"), AskTruth},
    {MENU("21isBuiltInMicActivatedEv"), AskTruth},
    {MENU("21isBuiltInMicSupportedEv"), AskTruth},
    {MENU("22IsFarFieldFMSSupportedEv"), AskTruth},
    {MENU("22IsPassthruSupportModelEv"), AskTruth},
    {MENU("24checkSetUpComplete_AlexaEv"), AskTruth},
    {MENU("25checkSetUpComplete_GoogleEv"), AskTruth},
    {MENU("25checkSetUpComplete_SaluteEv"), AskTruth},
    {MENU("26checkSetUpComplete_TencentEv"), AskTruth},
    {MENU("17IsVASetupCompleteE14ASSISTANT_TYPE"), AskTruthOfKinds},
    {MENU("14GetOsdLanguageB5cxx11Ev"), AskText},
    {MENU("17GetCurrentVAAppIDB5cxx11Ev"), AskText},
    {MENU("11VconfGetIntEPKc"), AskIntOfKey, vtv::kWakeUpKey},
    {MENU("12VconfGetBoolEPKc"), AskTruthOfKey, vtv::kPassThroughKey},
    {MENU("11VconfGetStrB5cxx11EPKc"), AskTextOfKey, vtv::kCountryKey},
    {MENU("14GetVconfStirngB5cxx11EPKc"), AskTextOfKey, vtv::kCountryKey},
    {MENU("9GetFMSIntEPKc"), AskIntOfKey, vtv::kFarFieldFeature},
    {MENU("10GetFMSBoolEPKc"), AskTruthOfKey, vtv::kVoiceFeature},
    {MENU("12GetFMSStringB5cxx11EPKc"), AskTextOfKey, vtv::kDeviceNameFeature},
    {MENU("11isExistFileE" STRING), AskTruthOfText, vtv::kGoogleMarkerFile},
    {MENU("19getValueOfJsonVconfE" STRING "S5_"), AskMember, vtv::kTencentKey},
    {MENU("22setVAsValueOfJsonVconfE" STRING "S5_S5_"), AskWriteMember, vtv::kTencentKey},
    {MENU("7SetBoolEPKcb"), AskSetBool, vtv::kFirstTimeKey},
    {MENU("9SetStringEPKcS1_"), AskSetString, vtv::kTencentKey},
    {MENU("17SetVoiceAssistantEPKc"), AskSend, vtv::kOrvikApp},
    {MENU("9LaunchAppEPKc"), AskSend, vtv::kOrvikApp},
    {MENU("9LaunchAppEPKcS1_S1_"), AskLaunchWithExtra, vtv::kOrvikApp},
    {MENU("11GetMetaDataEPKcS1_RNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"), AskMetadata,
     vtv::kNeuralEngine},
    {MENU("7ReplaceE" STRING "RKS5_"), AskReplace},
    {MENU("7ReplaceE" STRING "RKS5_S7_"), AskReplaceBoth},
    {MENU("23m_GetTTSSupportLanguageEv"), AskLanguages},
    {MENU("19m_TTSSupportVoiceCbEP5tts_sPKciPv"), AskVoice},
    {"_ZN7MVAList8ID_ORVIKE", AskConstant},
    {"_ZN7MVAList14MVA_LIST_VCONFE", AskConstant},
    {"_ZN7MVAList9GetVAListEv", AskAssistants},
    {"_ZN7MVAList13GetVAListSizeEv", AskSize},
    {"_ZN7MVAList16GetCurrentVATypeEv", AskInt},
    {"_ZN7MVAList15GetVANameByTypeB5cxx11E14ASSISTANT_TYPE", AskTextOfKinds},
    {"_ZN7MVAList16GetVATypeByAppIDE" STRING, AskIntOfText, vtv::kOrvikApp},
};

}  // namespace

void AddMoreFunctionQuestions(std::vector<Question>& questions) {
    for (const MoreFunction& function : MORE_FUNCTIONS) {
        Question question;
        question.name = std::string("export:") + function.symbol;
        question.ask = function.ask;
        question.key = function.key;
        question.symbol = function.symbol;
        questions.push_back(question);
    }
}

}  // namespace explorer
