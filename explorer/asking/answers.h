// How an answer stands in the TV's record, and the questions of the functions that only other code
// of the TV calls.
#pragma once

#include <vector>

#include "explorer/tv/lazy_tv.h"
#include "question.h"

namespace explorer {

// What an out-parameter holds that nobody writes.
inline constexpr int UNTOUCHED = -77;

void Answer(const char* about, const Said& value = {});
// None for null.
void AnswerText(const char* about, const char* text);
// What is neither 1 nor 0 stays a number.
void AnswerYesNo(const char* about, int answer);
// Gives the list back.
void AnswerList(const Subject& subject, ListItem** items, int count);

void AddFunctionQuestions(std::vector<Question>& questions);
// Of the other exports, for comparisons.
void AddMoreFunctionQuestions(std::vector<Question>& questions);

}  // namespace explorer
