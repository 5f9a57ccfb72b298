// Translations of the provider's string ids.
#pragma once

#include <libintl.h>

// The text in the TV's menu language, or the id itself when the catalogue lacks it. It belongs to
// the catalogue.
inline const char* Translate(const char* id) {
    const char* text = dgettext("si-ready", id);
    if (text != nullptr) {
        return text;
    }
    return id != nullptr ? id : "";
}
