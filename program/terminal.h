// What the terminal of whoever reads the output can show: colours, columns, and which letters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace program {

// Whether words are coloured: as it was asked for, else on a terminal where NO_COLOR is not set.
enum class Colour { kAuto, kAlways, kNever };
void SetColour(Colour colour);
bool IsColoured();

// How wide a line may be: $COLUMNS, else the terminal's width; 0 where neither tells.
size_t Columns();
// How many lines the terminal has; 0 where the standard output is none.
size_t Rows();

// Reads which letters the user's locale has: called once, by program::Begin().
void ReadCodeset();
// Whether it has all of them.
bool IsUtf8();
// A text of which every letter can be shown: what the user's locale lacks is replaced, "…" by
// "...", "╭" by "+", "é" by "e", what has nothing like it by "?". Takes and gives UTF-8.
std::string Representable(std::string_view text);
// The same as the user's terminal expects it.
std::string InCodeset(std::string_view text);
// What could not be shown, in words with what to do; empty when everything could.
std::string LettersLost();

}  // namespace program
