// What else can be asked of a provider than a host's page needs: so that two builds that differ
// anywhere differ in an answer.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "answers.h"
#include "explorer/engine/memory.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// The table's slots, their out-parameters holding something already
// ---------------------------------------------------------------------------------------------

// Of out-parameters that usually are 0, null or false.
constexpr int FILLED = 77;
char filledText[] = "filled before";

void AnswerSlotText(const char* about, char* text) {
    AnswerText(about, text);
    if (text != filledText) {
        std::free(text);
    }
}

void AskFilledSlots(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    const char* key = question.key.c_str();
    int value = FILLED;
    Answer(answers::RESULT, table.get_int(key, &value));
    Answer(answers::VALUE, value);
    for (const auto& [about, slot] : {std::pair(answers::TITLE, table.get_display_name),
                                      std::pair(answers::HELP, table.get_help_text)}) {
        char* text = filledText;
        Answer(answers::RESULT, slot(key, &text));
        AnswerSlotText(about, text);
    }
    char* reason = filledText;
    bool flag = true;
    Answer(answers::RESULT, table.get_disable_text(key, &reason, &flag));
    AnswerSlotText(answers::REASON, reason);
    Answer(answers::SHOWN, flag);
}

struct FilledBuffer {
    char text[1024];
    explicit FilledBuffer(const char* before) { std::snprintf(text, sizeof text, "%s", before); }
};

void AskFilledBoxes(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    const char* key = question.key.c_str();
    for (const char* before : {"", "filled before"}) {
        FilledBuffer a(before);
        FilledBuffer b(before);
        FilledBuffer c(before);
        FilledBuffer d(before);
        FilledBuffer e(before);
        int buttons = *before == '\0' ? 0 : FILLED;
        Answer(answers::RESULT, table.get_messagebox_info(key, a.text, b.text, c.text, &buttons));
        Answer(answers::RESULT, table.get_messagebox_title(key, d.text));
        Answer(answers::BUTTONS, buttons);
        for (const FilledBuffer* buffer : {&a, &b, &c, &d}) {
            AnswerText(answers::TEXT, buffer->text);
        }
        buttons = *before == '\0' ? 0 : FILLED;
        Answer(answers::RESULT,
               table.get_disablepopup_info(key, a.text, b.text, c.text, d.text, &buttons, e.text));
        Answer(answers::BUTTONS, buttons);
        for (const FilledBuffer* buffer : {&a, &b, &c, &d, &e}) {
            AnswerText(answers::MESSAGE, buffer->text);
        }
    }
}

void AskFilledList(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    int count = FILLED;
    ListItem** items = table.get_list_items(question.key.c_str(), &count);
    if (items == nullptr) {
        Answer(answers::CHOICE);
        return;
    }
    Answer(answers::BUTTONS, count);
    for (int i = 0; i < count; ++i) {
        int kind = FILLED;
        int value = FILLED;
        char* text = filledText;
        Answer(answers::RESULT, table.list_item_kind(items[i], &kind));
        Answer("kind", kind);
        Answer(answers::RESULT, table.list_item_value(items[i], &value));
        Answer(answers::RESULT, table.list_item_text(items[i], &text));
        const PlatformMemory own;
        Answer(answers::CHOICE, Numbered{value, text != nullptr ? text : "(null)"});
    }
    Answer(answers::RESULT, table.free_list_items(items, count));
}

// ---------------------------------------------------------------------------------------------
// Null pointers
// ---------------------------------------------------------------------------------------------

void AskNothingOf(const Subject& subject, const char* key) {
    const SIProviderTable& table = subject.Table();
    bool flag = true;
    char* text = filledText;
    Answer("get_int", table.get_int(key, nullptr));
    Answer("get_display_name", table.get_display_name(key, nullptr));
    Answer("get_help_text", table.get_help_text(key, nullptr));
    Answer("get_disable_text", table.get_disable_text(key, nullptr, &flag));
    Answer(answers::SHOWN, flag);
    Answer("get_disable_text", table.get_disable_text(key, &text, nullptr));
    AnswerSlotText(answers::REASON, text);
    Answer("get_messagebox_info",
           table.get_messagebox_info(key, nullptr, nullptr, nullptr, nullptr));
    Answer("get_messagebox_title", table.get_messagebox_title(key, nullptr));
    Answer("get_disablepopup_info",
           table.get_disablepopup_info(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    Answer("provider_property", table.provider_property(key, nullptr));
    int count = 0;
    if (ListItem** items = table.get_list_items(key, &count)) {
        table.free_list_items(items, count);
    }
    if (ListItem** items = table.get_list_items(key, nullptr)) {
        table.free_list_items(items, count);
        Answer("get_list_items", true);
    }
}

void AskNulls(const Subject& subject, const Question& question) {
    AskNothingOf(subject, question.key.c_str());
}

void AskNullKey(const Subject& subject, const Question&) {
    const SIProviderTable& table = subject.Table();
    AskNothingOf(subject, nullptr);
    AnswerYesNo(answers::VISIBLE, subject.Entry().checkVisible(nullptr, 0));
    AnswerYesNo(answers::ENABLED, subject.Entry().checkEnabled(nullptr, 0));
    Answer("set_int", table.set_int(nullptr, 1));
    int value = FILLED;
    Answer("get_int", table.get_int(nullptr, &value));
    Answer(answers::VALUE, value);
    int kind = FILLED;
    Answer("list_item_kind", table.list_item_kind(nullptr, &kind));
    Answer("kind", kind);
    auto** empty = static_cast<ListItem**>(std::calloc(2, sizeof(ListItem*)));
    Answer("free_list_items", table.free_list_items(empty, 2));
    empty = static_cast<ListItem**>(std::calloc(1, sizeof(ListItem*)));
    Answer("free_list_items", table.free_list_items(empty, -1));
}

void AskTableItself(const Subject& subject, const Question&) {
    void* const* slots = reinterpret_cast<void* const*>(&subject.Table());
    const PlatformMemory own;
    std::string filled;
    for (std::size_t i = 0; i < SI_SLOT_COUNT; ++i) {
        filled += slots[i] != nullptr ? 'x' : '-';
    }
    AnswerText("slots", filled.c_str());
}

void AskFilledProperties(const Subject& subject, const Question&) {
    for (const char* key :
         {"provider/owner", "provider/main-component", "provider/sub-component", "provider/none"}) {
        char* text = filledText;
        Answer(answers::RESULT, subject.Table().provider_property(key, &text));
        AnswerSlotText(key, text);
    }
}

// ---------------------------------------------------------------------------------------------
// The check functions with other values
// ---------------------------------------------------------------------------------------------

// One call a question: what two rules read together would be a product.
void AskVisibleOfOtherValue(const Subject& subject, const Question& question) {
    AnswerYesNo(answers::VISIBLE, subject.Entry().checkVisible(question.key.c_str(), INT_MIN));
}

void AskEnabledOfOtherValue(const Subject& subject, const Question& question) {
    AnswerYesNo(answers::ENABLED, subject.Entry().checkEnabled(question.key.c_str(), 1));
}

void AskOtherForms(const Subject& subject, const Question& question) {
    const char* key = question.key.c_str();
    const auto call = [&](const char* name, auto first, auto second) {
        for (const auto value : {first, second}) {
            using Form = int (*)(const char*, decltype(first));
            auto* form = reinterpret_cast<Form>(subject.Symbol(name));
            Answer(name, form != nullptr ? form(key, value) : -1);
            Answer(name, form != nullptr ? form(nullptr, value) : -1);
        }
    };
    const char* text = "text";
    const char* none = nullptr;
    call("check_visibility_bool", true, false);
    call("check_visibility_double", 0.0, -1.5);
    call("check_visibility_string", text, none);
    call("check_enable_bool", true, false);
    call("check_enable_double", 0.0, -1.5);
    call("check_enable_string", text, none);
}

// ---------------------------------------------------------------------------------------------
// The list
// ---------------------------------------------------------------------------------------------

struct Kind {
    const char* name;
    void (*ask)(const Subject&, const Question&);
};
constexpr Kind OF_EACH_ITEM[] = {
    {"slots-filled", AskFilledSlots},
    {"boxes-filled", AskFilledBoxes},
    {"choices-filled", AskFilledList},
    {"nulls", AskNulls},
    {"visible-of-other-value", AskVisibleOfOtherValue},
    {"enabled-of-other-value", AskEnabledOfOtherValue},
    {"other-forms", AskOtherForms},
};
constexpr Kind OF_THE_TABLE[] = {
    {"table:null-key", AskNullKey},
    {"table:slots", AskTableItself},
    {"table:properties-filled", AskFilledProperties},
};

Question OfKey(const Kind& kind, const std::string& name, const char* key) {
    Question question;
    question.name = std::string(kind.name) + ':' + name;
    question.ask = kind.ask;
    question.key = key;
    return question;
}

const Question* FindIn(const std::vector<Question>& questions, const std::string& name) {
    for (const Question& question : questions) {
        if (question.name == name) {
            return &question;
        }
    }
    return nullptr;
}

// Every value that can mean something to some item, and those beside it.
void AddWrites(std::vector<Question>& questions, const Item& item) {
    for (const int value : {0, 1, 2, 3, 4, 5, 6, 7, 8, 17, -1, INT_MAX, INT_MIN,
                            SI_ACTION_VALUE - 1, SI_ACTION_VALUE, SI_ACTION_VALUE + 1}) {
        const std::string name = std::string("set:") + item.name + '=' + std::to_string(value);
        if (FindIn(questions, name) != nullptr) {
            continue;
        }
        Question question = *FindIn(questions, std::string("set:") + item.name + "=1");
        question.name = name;
        question.value = value;
        questions.push_back(std::move(question));
    }
}

std::vector<Question> AllThoroughQuestions() {
    std::vector<Question> questions = Questions();
    for (const Item& item : PageItems()) {
        for (const Kind& kind : OF_EACH_ITEM) {
            questions.push_back(OfKey(kind, item.name, item.key));
            questions.back().item = &item;
        }
        AddWrites(questions, item);
    }
    for (const Kind& kind : OF_EACH_ITEM) {
        questions.push_back(OfKey(kind, "no-such-item", "menu/system/no-such-item"));
        questions.push_back(OfKey(kind, "part-of-a-key", "menu/system/general-voic"));
    }
    for (const Kind& kind : OF_THE_TABLE) {
        questions.push_back(OfKey(kind, "", ""));
        questions.back().name = kind.name;
    }
    AddMoreFunctionQuestions(questions);
    return questions;
}

}  // namespace

const std::vector<Question>& ThoroughQuestions() {
    static const std::vector<Question> questions = AllThoroughQuestions();
    return questions;
}

}  // namespace explorer
