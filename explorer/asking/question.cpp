#include "question.h"

#include <cstdlib>

#include "answers.h"
#include "explorer/engine/memory.h"
#include "explorer/tv/ledger.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// The table's slots and the check functions
// ---------------------------------------------------------------------------------------------

void AskVisible(const Subject& subject, const Question& question) {
    AnswerYesNo(answers::VISIBLE, subject.Entry().checkVisible(question.key.c_str(), 0));
}

void AskEnabled(const Subject& subject, const Question& question) {
    AnswerYesNo(answers::ENABLED, subject.Entry().checkEnabled(question.key.c_str(), 0));
}

// The forms for other types of items, which ask no rule.
void AskOtherTypes(const Subject& subject, const Question& question) {
    const char* key = question.key.c_str();
    const auto call = [&](const char* name, auto value) {
        using Form = int (*)(const char*, decltype(value));
        auto* form = reinterpret_cast<Form>(subject.Symbol(name));
        Answer(name, form != nullptr ? form(key, value) : -1);
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

void AnswerResult(int result) {
    if (result != 0) {
        Answer(answers::RESULT, result);
    }
}

void AskValue(const Subject& subject, const Question& question) {
    int value = UNTOUCHED;
    const int result = subject.Table().get_int(question.key.c_str(), &value);
    Answer(answers::VALUE, value == UNTOUCHED ? Said() : Said(value));
    AnswerResult(result);
}

void AskWrite(const Subject& subject, const Question& question) {
    AnswerResult(subject.Table().set_int(question.Key(), question.value));
}

using TextSlot = int (*)(const char* key, char** text);

void AskText(TextSlot slot, const char* what, const Question& question) {
    char* text = nullptr;
    slot(question.key.c_str(), &text);
    AnswerText(what, text);
    std::free(text);
}

void AskTitle(const Subject& subject, const Question& question) {
    AskText(subject.Table().get_display_name, answers::TITLE, question);
}

void AskHelp(const Subject& subject, const Question& question) {
    AskText(subject.Table().get_help_text, answers::HELP, question);
}

void AskReason(const Subject& subject, const Question& question) {
    char* text = nullptr;
    bool flag = false;
    subject.Table().get_disable_text(question.key.c_str(), &text, &flag);
    Answer(answers::SHOWN, flag);
    AnswerText(answers::REASON, text);
    std::free(text);
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
    Answer(answers::BUTTONS, buttons);
    AnswerBuffer(answers::TITLE, title);
    AnswerBuffer(answers::TEXT, text);
    AnswerBuffer(answers::FIRST, first);
    AnswerBuffer(answers::SECOND, second);
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
    Answer(answers::BUTTONS, buttons);
    AnswerBuffer(answers::TITLE, title);
    AnswerBuffer(answers::MESSAGE, message);
    AnswerBuffer(answers::FIRST, first);
    AnswerBuffer(answers::SECOND, second);
    AnswerBuffer(answers::ACTION, action);
}

// ---------------------------------------------------------------------------------------------
// The list of questions
// ---------------------------------------------------------------------------------------------

struct KindOfQuestion {
    const char* name;
    void (*ask)(const Subject&, const Question&);
};
constexpr KindOfQuestion KINDS[] = {
    // By Asks; functions have a way each.
    {"visible", AskVisible},
    {"enabled", AskEnabled},
    {"title", AskTitle},
    {"help", AskHelp},
    {"value", AskValue},
    {"choices", AskChoices},
    {"confirmation", AskConfirmation},
    {"reason", AskReason},
    {"popup", AskPopup},
    {"set", AskWrite},
    {"press", AskWrite},
    {"other-types", AskOtherTypes},
    {"properties", AskProperties},
};

Question OfKey(Asks kind, const char* key) {
    const KindOfQuestion& how = KINDS[static_cast<std::size_t>(kind)];
    Question question;
    question.kind = kind;
    question.name = std::string(how.name) + ':' + key;
    question.ask = how.ask;
    question.key = key;
    return question;
}

Question OfItem(Asks kind, const Item& item, const char* function = nullptr) {
    Question question = OfKey(kind, item.key);
    question.name = std::string(KINDS[static_cast<std::size_t>(kind)].name) + ':' + item.name;
    question.item = &item;
    question.function = function != nullptr ? function : "";
    return question;
}

void AddItem(std::vector<Question>& questions, const Item& item) {
    questions.push_back(OfItem(Asks::kVisible, item, item.visibilityRule));
    questions.push_back(OfItem(Asks::kEnabled, item, item.enableRule));
    questions.push_back(OfItem(Asks::kTitle, item));
    questions.push_back(OfItem(Asks::kHelp, item));
    questions.push_back(OfItem(Asks::kValue, item, item.reader));
    questions.push_back(OfItem(Asks::kChoices, item, item.listBuilder));
    questions.push_back(OfItem(Asks::kConfirmation, item));
    questions.push_back(OfItem(Asks::kReason, item));
    questions.push_back(OfItem(Asks::kPopup, item));
    const bool isList = item.kind == vtv::ItemKind::kList;
    const std::vector<int> values =
        isList ? std::vector<int>{1, 2, 3, 7, 0, -1} : std::vector<int>{1, 0, 2};
    for (const int value : values) {
        Question& write = questions.emplace_back(OfItem(Asks::kWrite, item, item.writer));
        write.name += '=' + std::to_string(value);
        write.value = value;
        write.writes = true;
    }
}

std::vector<Question> AllQuestions() {
    std::vector<Question> questions;
    for (const Item& item : PageItems()) {
        AddItem(questions, item);
    }
    // The action of a popup does not look at the key.
    Question& press = questions.emplace_back(
        OfKey(Asks::kPress, "menu/system/general-voice-voice-settings-orvik"));
    press.name = "press:popup";
    press.value = SI_ACTION_VALUE;
    press.writes = true;
    for (const char* key : {"menu/system/general-voice-voice-settings-orvik-terms",
                            "menu/system/general-voice-voice-settings-tencent-more"}) {
        questions.push_back(OfKey(Asks::kPopup, key));
    }
    for (const Asks kind : {Asks::kVisible, Asks::kEnabled, Asks::kTitle, Asks::kHelp, Asks::kValue,
                            Asks::kReason, Asks::kPopup}) {
        questions.push_back(OfKey(kind, "menu/system/no-such-item"));
    }
    questions.push_back(OfKey(Asks::kOtherTypes, PageItems().front().key));
    questions.push_back(OfKey(Asks::kProperties, "provider"));
    AddFunctionQuestions(questions);
    return questions;
}

}  // namespace

const std::vector<Question>& Questions() {
    static const std::vector<Question> questions = AllQuestions();
    return questions;
}

const Question* FindQuestion(const std::string& name) {
    for (const Question& question : ThoroughQuestions()) {
        if (question.name == name) {
            return &question;
        }
    }
    return nullptr;
}

std::vector<const Question*> SelectQuestions(const std::string& argument,
                                             const std::vector<Question>& questions) {
    std::vector<const Question*> selected;
    const Item* item = FindItem(argument);
    for (const Question& question : questions) {
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

std::vector<std::string> QuestionNames() {
    std::vector<std::string> names;
    for (const Item& item : PageItems()) {
        names.emplace_back(item.name);
    }
    for (const Question& question : Questions()) {
        if (!question.function.empty()) {
            names.push_back(question.function);
        }
    }
    return names;
}

void AskAsItIs(const Subject& subject, const Question& question) {
    if (question.symbol != nullptr && subject.Symbol(question.symbol) == nullptr) {
        tv().Append(Entry::kWrong, "is not exported");
        return;
    }
    try {
        const ProviderMemory counted;
        question.ask(subject, question);
    } catch (const std::exception& exception) {
        tv().Append(Entry::kWrong, std::string("throws ") + exception.what());
    } catch (...) {
        tv().Append(Entry::kWrong, "throws something");
    }
    NoteLostHandles();
    if (tv().HasThrown()) {
        Answer(answers::CAUGHT, true);
    }
}

void Ask(const Subject& subject, const Question& question, Languages languages) {
    if (memoryBooks.arena != nullptr) {
        AskAsItIs(subject, question);
        return;
    }
    if (languages == Languages::kForgotten) {
        subject.ForgetLanguages();
    }
    const long before = memoryBooks.balance;
    AskAsItIs(subject, question);
    if (memoryBooks.balance != before && languages == Languages::kKept) {
        memoryBooks.balance = before;  // perhaps it is the languages, which the library may keep
    }
    if (memoryBooks.balance != before) {
        // What the library may keep is not lost.
        const ProviderMemory counted;
        subject.ForgetLanguages();
    }
    if (memoryBooks.balance != before) {
        tv().Append(Entry::kWrong, "leaks blocks", static_cast<int>(memoryBooks.balance - before));
        memoryBooks.balance = before;
    }
}

}  // namespace explorer
