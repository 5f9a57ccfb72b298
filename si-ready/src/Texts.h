// Translations of the provider's string ids.
#pragma once

#include <libintl.h>

// The text in the TV's menu language, or the id itself when the catalogue lacks it. It belongs to
// the catalogue. A null id has no text.
inline const char* Translate(const char* id) {
    if (id == nullptr) {
        return "";
    }
    const char* text = dgettext("si-ready", id);
    return text != nullptr ? text : id;
}
