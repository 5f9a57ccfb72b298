#include "answers.h"

#include "explorer/engine/memory.h"

namespace explorer {

void Answer(const char* about, const Said& value) {
    tv().Append(Entry::kAnswer, about, value);
}

void AnswerText(const char* about, const char* text) {
    const PlatformMemory own;
    Answer(about, text == nullptr ? Said() : Said(text));
}

void AnswerYesNo(const char* about, int answer) {
    Answer(about, answer == 1 || answer == 0 ? Said(answer == 1) : Said(answer));
}

void AnswerList(const Subject& subject, ListItem** items, int count) {
    if (items == nullptr) {
        Answer(answers::CHOICE);
        return;
    }
    for (int i = 0; i < count; ++i) {
        char* text = nullptr;
        int value = UNTOUCHED;
        subject.Table().list_item_text(items[i], &text);
        subject.Table().list_item_value(items[i], &value);
        const PlatformMemory own;
        Answer(answers::CHOICE, Numbered{value, text != nullptr ? text : "(null)"});
    }
    subject.Table().free_list_items(items, count);
}

}  // namespace explorer
