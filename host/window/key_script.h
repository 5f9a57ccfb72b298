// A file of keys: what is pressed, one line after the other, and what is waited for.
//
//     down               a key: up, down, left, right, ok, back, home, keys, voice-guide, ...
//     show               prints what is seen
//     wait 0.5           goes on after so many seconds
//     until toast: No    goes on when what is seen has this in it; fails after 20 seconds
//     gone toast:        goes on when it has it no more
//     picture FILE.png   what it looks like; only without a display
//
// An empty line, and one that begins with "#", is no step.
#pragma once

#include <string>
#include <vector>

namespace window {

struct KeyStep {
    enum class What { kKey, kShow, kWait, kUntil, kGone, kPicture };
    What what;
    std::string text;  // what the toolkit calls the key; what is waited for; the file
    double seconds = 0;
    std::string where;  // "FILE:LINE"
};

// None for a line without a step. Throws vtv::Error (kUsage).
std::vector<KeyStep> ReadStep(const std::string& line, const std::string& where);
// All of a file. Throws kUsage, and what reading a file throws.
std::vector<KeyStep> ReadSteps(const std::string& file);

}  // namespace window
