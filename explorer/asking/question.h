// What can be asked of a provider, and asking it.
#pragma once

#include <string>
#include <vector>

#include "items.h"
#include "subject.h"

namespace explorer {

struct Question {
    std::string name;  // "visible:voice-wake-up"; for people and files
    // How the question is asked: appends the answer to the TV's record.
    void (*ask)(const Subject& subject, const Question& question) = nullptr;
    std::string key;               // menu key; empty for functions
    int value = 0;                 // what is written
    const char* symbol = nullptr;  // functions: the mangled name
    const Item* item = nullptr;    // null for functions and odd keys
    // The provider's own function behind it, "check_general_voice_supported"; empty: a table slot.
    std::string function;
    bool writes = false;  // it is meant to have effects
};

// Everything that a host can ask, and every function with rules of its own.
const std::vector<Question>& Questions();
const Question* FindQuestion(const std::string& name);
// The questions that an argument of a command line means: an item, a key, a question, a function or
// the beginning of a question's name up to its colon ("visible"). Empty when it means none.
std::vector<const Question*> SelectQuestions(const std::string& argument);
// What an argument may have meant, for an error message.
std::vector<std::string> SimilarNames(const std::string& argument);

// Asks within the TV's current run. Exceptions, leaks and the like become part of the record.
void Ask(const Subject& subject, const Question& question);

}  // namespace explorer
