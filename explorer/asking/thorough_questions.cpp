// What else can be asked of a provider than a host's page needs: so that two builds that differ
// anywhere differ in an answer.
#include <climits>
#include <cstring>
#include <string>

#include "answers.h"
#include "explorer/engine/memory.h"
#include "filled.h"
#include "host_buffers.h"
#include "null_questions.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// The table's slots, their out-parameters holding something already
// ---------------------------------------------------------------------------------------------

void AskFilledSlots(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    const char* key = question.Key();
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

// Each time they are filled with something else, so that no byte that is written is one that is
// there.
void AskFilledBoxes(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    const char* key = question.Key();
    static const HostBuffers::Bytes EMPTY = HostBuffers::Filled("", '\0');
    static const HostBuffers::Bytes HELD = HostBuffers::Filled("filled before", '\x7f');
    for (const bool isEmpty : {true, false}) {
        HostBuffers box(isEmpty ? EMPTY : HELD);
        int buttons = isEmpty ? 0 : FILLED;
        Answer(answers::RESULT, table.get_messagebox_info(key, box[0], box[1], box[2], &buttons));
        Answer(answers::RESULT, table.get_messagebox_title(key, box[3]));
        Answer(answers::BUTTONS, buttons);
        box.AnswerFirst(4, answers::TEXT);
        HostBuffers popup(isEmpty ? EMPTY : HELD);
        buttons = isEmpty ? 0 : FILLED;
        Answer(answers::RESULT, table.get_disablepopup_info(key, popup[0], popup[1], popup[2],
                                                            popup[3], &buttons, popup[4]));
        Answer(answers::BUTTONS, buttons);
        popup.AnswerFirst(5, answers::MESSAGE);
    }
}

void AskFilledList(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    int count = FILLED;
    ListItem** items = table.get_list_items(question.Key(), &count);
    Answer("count", count);
    if (items == nullptr) {
        Answer(answers::CHOICE);
        return;
    }
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
// The table
// ---------------------------------------------------------------------------------------------

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
        if (text != filledText && text != nullptr) {
            AnswerBlock(text, std::strlen(text) + 1);
        }
        AnswerSlotText(key, text);
    }
}

// ---------------------------------------------------------------------------------------------
// The check functions with other values
// ---------------------------------------------------------------------------------------------

void AskVisibleOfOtherValues(const Subject& subject, const Question& question) {
    for (const int value : OTHER_VALUES) {
        AnswerYesNo(answers::VISIBLE, subject.Entry().checkVisible(question.Key(), value));
    }
}

void AskEnabledOfOtherValues(const Subject& subject, const Question& question) {
    for (const int value : OTHER_VALUES) {
        AnswerYesNo(answers::ENABLED, subject.Entry().checkEnabled(question.Key(), value));
    }
}

void AskOtherForms(const Subject& subject, const Question& question) {
    const char* key = question.Key();
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
    {"visible-of-other-values", AskVisibleOfOtherValues},
    {"enabled-of-other-values", AskEnabledOfOtherValues},
    {"other-forms", AskOtherForms},
};
constexpr Kind OF_THE_TABLE[] = {
    {"table:nulls", AskNullsOfTheTable},
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

void AskWriteOfOtherValues(const Subject& subject, const Question& question) {
    for (const int value : {9, 10, 11, 12, 13, 14, 15, 16, 18}) {
        Answer(answers::RESULT, subject.Table().set_int(question.Key(), value));
    }
}

// Every value that can mean something to some item, and those beside it.
void AddWrites(std::vector<Question>& questions, const Question& like, const std::string& name) {
    for (const int value : {0, 1, 2, 3, 4, 5, 6, 7, 8, 17, -1, INT_MAX, INT_MIN,
                            SI_ACTION_VALUE - 1, SI_ACTION_VALUE, SI_ACTION_VALUE + 1}) {
        Question question = like;
        question.name = "set:" + name + '=' + std::to_string(value);
        question.value = value;
        if (FindIn(questions, question.name) == nullptr) {
            questions.push_back(std::move(question));
        }
    }
    Question question = like;
    question.name = "set-others:" + name;
    question.kind = Asks::kFunction;  // no scenario can hand over several
    question.ask = AskWriteOfOtherValues;
    questions.push_back(std::move(question));
}

struct OddKey {
    const char* name;
    const char* key;
};
// Of no item.
constexpr OddKey ODD_KEYS[] = {
    {"no-such-item", "menu/system/no-such-item"},
    {"part-of-a-key", "menu/system/general-voic"},
    {"orvik-terms", "menu/system/general-voice-voice-settings-orvik-terms"},
    {"tencent-more", "menu/system/general-voice-voice-settings-tencent-more"},
    {"null-key", nullptr},
};

void AddOddKey(std::vector<Question>& questions, const OddKey& odd) {
    Question write = *FindIn(questions, "press:popup");
    write.kind = Asks::kFunction;  // a scenario hands over values of items
    write.key = odd.key != nullptr ? odd.key : "";
    write.isKeyNull = odd.key == nullptr;
    for (const Kind& kind : OF_EACH_ITEM) {
        questions.push_back(OfKey(kind, odd.name, write.key.c_str()));
        questions.back().isKeyNull = write.isKeyNull;
    }
    AddWrites(questions, write, odd.name);
}

std::vector<Question> AllThoroughQuestions() {
    std::vector<Question> questions = Questions();
    for (const Item& item : PageItems()) {
        for (const Kind& kind : OF_EACH_ITEM) {
            questions.push_back(OfKey(kind, item.name, item.key));
            questions.back().item = &item;
        }
        AddWrites(questions, *FindIn(questions, std::string("set:") + item.name + "=1"), item.name);
    }
    for (const OddKey& odd : ODD_KEYS) {
        AddOddKey(questions, odd);
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
