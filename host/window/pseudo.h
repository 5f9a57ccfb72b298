// English texts as no language has them: to see what happens to longer ones, and to mirrored ones.
#pragma once

#include <string>

namespace window {

// A .po file of the provider's texts, each by two fifths longer and with accents; placeholders
// stay.
std::string LongerEnglish();

}  // namespace window
