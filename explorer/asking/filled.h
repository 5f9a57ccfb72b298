// What out-parameters hold before a call that usually are 0, null or false.
#pragma once

#include <climits>
#include <cstdlib>

#include "abi/si_provider.h"
#include "answers.h"

namespace explorer {

inline constexpr int FILLED = 77;
inline char filledText[] = "filled before";

inline void AnswerSlotText(const char* about, char* text) {
    AnswerText(about, text);
    if (text != filledText) {
        std::free(text);
    }
}

// Of the checks, which do not look at it; 0 is the usual one.
inline constexpr int OTHER_VALUES[] = {-1,      1,      2, 3, 4, 5, 6, 7, 8, 17, SI_ACTION_VALUE,
                                       INT_MAX, INT_MIN};

}  // namespace explorer
