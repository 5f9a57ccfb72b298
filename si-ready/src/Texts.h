// Translations of the provider's string ids.
#pragma once

#include <libintl.h>

#include <string>

// The text in the TV's menu language, or the id itself when the catalogue lacks it.
inline std::string Translate(const char* id) {
    const char* text = dgettext("si-ready", id);
    if (text != nullptr) {
        return text;
    }
    return id != nullptr ? id : "";
}
