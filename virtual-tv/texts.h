// The third part of the public face: the catalogues of texts, for translators.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtual_tv.h"

namespace vtv {

// Whether a catalogue serves a language: "de" serves "de_AT.UTF-8".
VTV_EXPORT bool HasTexts(const std::string& language);
// The translation of an id in a language, whatever TV is on; absent where no catalogue of that
// language has it. English stands in for a language without any catalogue.
VTV_EXPORT std::optional<std::string> TextIn(const std::string& language, const std::string& id);
// What is wrong with the catalogues that serve a language, one text each.
VTV_EXPORT std::vector<std::string> ProblemsOfTexts(const std::string& language);
// From here on all texts of this process come from LOCALE-DIR/tried/LC_MESSAGES/si-ready.mo,
// whatever the menu language: a translator looks at what is not built yet.
VTV_EXPORT void TryCatalogue(const std::string& localeDir);

}  // namespace vtv
