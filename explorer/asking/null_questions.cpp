#include "null_questions.h"

#include <array>
#include <cstdlib>

#include "answers.h"
#include "filled.h"
#include "host_buffers.h"
#include "question.h"

namespace explorer {

namespace {

constexpr char TEXT_OF_ITEM[] = "list_item_text";
constexpr char VALUE_OF_ITEM[] = "list_item_value";
constexpr char KIND_OF_ITEM[] = "list_item_kind";
constexpr char PROPERTY[] = "provider_property";

const HostBuffers::Bytes& BuffersBefore() {
    static const HostBuffers::Bytes before = HostBuffers::Filled("", '\x7f');
    return before;
}

// Null where it is the one that is left out; of -1 all are.
template <typename T>
T* Unless(int leftOut, int number, T* place) {
    return leftOut < 0 || leftOut == number ? nullptr : place;
}

void AskTexts(const SIProviderTable& table, const char* key) {
    Answer("get_int", table.get_int(key, nullptr));
    Answer("get_display_name", table.get_display_name(key, nullptr));
    Answer("get_help_text", table.get_help_text(key, nullptr));
    Answer(PROPERTY, table.provider_property(key, nullptr));
    bool flag = true;
    char* text = filledText;
    Answer("get_disable_text", table.get_disable_text(key, nullptr, &flag));
    Answer(answers::SHOWN, flag);
    flag = false;
    Answer("get_disable_text", table.get_disable_text(key, nullptr, &flag));
    Answer(answers::SHOWN, flag);
    Answer("get_disable_text", table.get_disable_text(key, &text, nullptr));
    AnswerSlotText(answers::REASON, text);
    Answer("get_disable_text", table.get_disable_text(key, nullptr, nullptr));
}

void AskConfirmationWithout(const SIProviderTable& table, const char* key, int leftOut) {
    HostBuffers buffers(BuffersBefore());
    int buttons = FILLED;
    const auto place = [&](int number) { return Unless(leftOut, number, buffers[number]); };
    Answer("get_messagebox_info", table.get_messagebox_info(key, place(0), place(1), place(2),
                                                            Unless(leftOut, 3, &buttons)));
    Answer(answers::BUTTONS, buttons);
    buffers.AnswerFirst(3, answers::TEXT);
}

void AskPopupWithout(const SIProviderTable& table, const char* key, int leftOut) {
    HostBuffers buffers(BuffersBefore());
    int buttons = FILLED;
    const auto place = [&](int number) { return Unless(leftOut, number, buffers[number]); };
    Answer("get_disablepopup_info",
           table.get_disablepopup_info(key, place(0), place(1), place(2), place(3),
                                       Unless(leftOut, 5, &buttons), place(4)));
    Answer(answers::BUTTONS, buttons);
    buffers.AnswerFirst(5, answers::MESSAGE);
}

void AskItem(const SIProviderTable& table, const ListItem* item) {
    int value = FILLED;
    int kind = FILLED;
    char* text = filledText;
    if (item == nullptr) {
        Answer(TEXT_OF_ITEM, table.list_item_text(nullptr, &text));
        AnswerText(answers::TEXT, text);
        Answer(VALUE_OF_ITEM, table.list_item_value(nullptr, &value));
        Answer(answers::VALUE, value);
        Answer(KIND_OF_ITEM, table.list_item_kind(nullptr, &kind));
        Answer("kind", kind);
    }
    Answer(TEXT_OF_ITEM, table.list_item_text(item, nullptr));
    Answer(VALUE_OF_ITEM, table.list_item_value(item, nullptr));
    Answer(KIND_OF_ITEM, table.list_item_kind(item, nullptr));
}

void AskList(const SIProviderTable& table, const char* key) {
    int count = 0;
    if (ListItem** items = table.get_list_items(key, &count)) {
        for (int i = 0; i < count; ++i) {
            AskItem(table, items[i]);
        }
        table.free_list_items(items, count);
    }
    if (ListItem** items = table.get_list_items(key, nullptr)) {
        table.free_list_items(items, count);
        Answer("get_list_items", true);
    }
}

}  // namespace

void AskNulls(const Subject& subject, const Question& question) {
    const SIProviderTable& table = subject.Table();
    const char* key = question.Key();
    AskTexts(table, key);
    for (int leftOut = -1; leftOut <= 3; ++leftOut) {
        AskConfirmationWithout(table, key, leftOut);
    }
    Answer("get_messagebox_title", table.get_messagebox_title(key, nullptr));
    for (int leftOut = -1; leftOut <= 5; ++leftOut) {
        AskPopupWithout(table, key, leftOut);
    }
    AskList(table, key);
}

void AskNullsOfTheTable(const Subject& subject, const Question&) {
    const SIProviderTable& table = subject.Table();
    AskItem(table, nullptr);
    for (const char* key :
         {"provider/owner", "provider/main-component", "provider/sub-component", "provider/none"}) {
        Answer(PROPERTY, table.provider_property(key, nullptr));
    }
    char* text = filledText;
    Answer(PROPERTY, table.provider_property(nullptr, &text));
    AnswerSlotText(answers::TEXT, text);
    Answer("free_list_items", table.free_list_items(nullptr, 2));
    auto** empty = static_cast<ListItem**>(std::calloc(2, sizeof(ListItem*)));
    Answer("free_list_items", table.free_list_items(empty, 2));
    empty = static_cast<ListItem**>(std::calloc(1, sizeof(ListItem*)));
    Answer("free_list_items", table.free_list_items(empty, -1));
}

}  // namespace explorer
