// What can be asked of a provider, and asking it.
#pragma once

#include <string>
#include <vector>

#include "subject.h"
#include "virtual-tv/model/items.h"

namespace explorer {

using vtv::FindItem;
using vtv::Item;
using vtv::PageItems;

enum class Asks {
    kVisible,
    kEnabled,
    kTitle,
    kHelp,
    kValue,
    kChoices,
    kConfirmation,
    kReason,
    kPopup,
    kWrite,
    kPress,
    kOtherTypes,
    kProperties,
    kFunction,
};

struct Question {
    Asks kind = Asks::kFunction;
    std::string name;  // "visible:voice-wake-up"; for people and files
    // How the question is asked: appends the answer to the TV's record.
    void (*ask)(const Subject& subject, const Question& question) = nullptr;
    std::string key;  // menu key; empty for functions
    bool isKeyNull = false;
    int value = 0;                 // what is written
    const char* symbol = nullptr;  // functions: the mangled name
    const Item* item = nullptr;    // null for functions and odd keys
    // The provider's own function behind it, "check_general_voice_supported"; empty: a table slot.
    std::string function;
    bool writes = false;  // it is meant to have effects

    // Whether it may be asked when there is no table.
    bool IsCheck() const { return kind == Asks::kVisible || kind == Asks::kEnabled; }
    const char* Key() const { return isKeyNull ? nullptr : key.c_str(); }
};

// What a host asks, and every function with rules of its own.
const std::vector<Question>& Questions();
// Those, and what else can be asked: extreme values, null pointers, out-parameters that hold
// something else, the rest of the exports. For comparisons; no host's page needs it.
const std::vector<Question>& ThoroughQuestions();
const Question* FindQuestion(const std::string& name);
// The questions that an argument of a command line means: an item, a key, a question, a function or
// the beginning of a question's name up to its colon ("visible"). Empty when it means none.
std::vector<const Question*> SelectQuestions(const std::string& argument,
                                             const std::vector<Question>& questions = Questions());
// The names of items and functions, of which an argument may have meant one.
std::vector<std::string> QuestionNames();

// Asks within the TV's current run. Exceptions and lost handles become part of the record. What the
// library remembers is left as it comes out.
void AskAsItIs(const Subject& subject, const Question& question);

// Whether the library's one cache is emptied before it is asked.
enum class Languages { kForgotten, kKept };
// The same; leaks become part of the record, too. With an arena it is AskAsItIs(): there, memory is
// looked at afterwards.
void Ask(const Subject& subject, const Question& question,
         Languages languages = Languages::kForgotten);

}  // namespace explorer
