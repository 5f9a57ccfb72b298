// Text of others as it meets a terminal: nothing in it steers the terminal, turns what stands
// beside it, or looks like a line of its own.
//
// Shown as in JSON: \u001b for a control character, \u202e for one that turns text, \n in what must
// stay one line; \xff for a byte that is no UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace program {

// What is one line stays one: newlines and tabs are shown as well.
std::string OneLine(const std::string& text);

// The first character that is not seen, or looks like the space that it is not, with its place:
// "character 3, U+200B". Empty when there is none.
std::string FirstUnseen(const std::string& text);

// A control sequence of this program's own, "[2m" without its escape character. It has its effect
// only where it is printed, and only this process can write one: its mark is random.
std::string Control(const std::string& sequence);

enum class Form {
    kText,   // newlines and tabs are layout
    kJson,   // stays JSON; a byte that is no UTF-8 becomes U+FFFD
    kExact,  // as it is
};

// A whole text in that form, for a file or for a format that is printed exactly.
std::string Shown(const std::string& text, Form form);

// What is printed, piece by piece; a character may begin in one and end in the next.
class VisibleText {
  public:
    std::string Next(std::string_view piece, Form form);
    // What was begun and never ended.
    std::string End();

  private:
    std::string unfinished_;
};

}  // namespace program
