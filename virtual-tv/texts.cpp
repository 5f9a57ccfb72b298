// Texts: which catalogue of "si-ready" answers dgettext(), by the TV's menu language.
#include <libintl.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>

#include "serve.h"
#include "tv_impl.h"

// gettext's own: moving it makes the next look-up read LANGUAGE again.
extern "C" int _nl_msg_cat_cntr;

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr char kDomain[] = "si-ready";

std::string LocaleDir() {
    return DataDir() + "/locale";
}

bool HasCatalogue(const std::string& language) {
    std::error_code error;
    return fs::exists(LocaleDir() + "/" + language + "/LC_MESSAGES/" + kDomain + ".mo", error);
}

// "de_AT.UTF-8" is served by de_AT or de; a language without any catalogue is shown in English.
std::string CataloguesOf(const std::string& language) {
    const std::string country = language.substr(0, language.find_first_of(".@"));
    const std::string base = country.substr(0, country.find('_'));
    return HasCatalogue(country) || HasCatalogue(base) ? country + ":" + base : "en";
}

}  // namespace

std::vector<std::string> Tv::Languages() {
    std::vector<std::string> languages;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(LocaleDir(), error)) {
        const std::string language = entry.path().filename().string();
        if (HasCatalogue(language)) {
            languages.push_back(language);
        }
    }
    std::sort(languages.begin(), languages.end());
    return languages;
}

void BindTexts(const std::string& language) {
    // gettext looks at LANGUAGE in every locale but "C"; C.UTF-8 exists on every system.
    setlocale(LC_CTYPE, "C.UTF-8");
    setlocale(LC_MESSAGES, "C.UTF-8");
    setenv("LANGUAGE", CataloguesOf(language).c_str(), 1);
    bindtextdomain(kDomain, LocaleDir().c_str());
    bind_textdomain_codeset(kDomain, "UTF-8");
    ++_nl_msg_cat_cntr;
}

std::string Text(const std::string& id) {
    return dgettext(kDomain, id.c_str());
}

std::string Tv::Language() const {
    Value value;
    std::string problem;
    if (impl_->settings.Read(kLanguageKey, &value, &problem) == Store::Status::kOk &&
        std::holds_alternative<std::string>(value)) {
        return std::get<std::string>(value);
    }
    return "en_US";
}

void Tv::SetLanguage(const std::string& language) {
    Set(kLanguageKey, language);
}

}  // namespace vtv
