// Texts: which catalogue of "si-ready" answers dgettext(), by the TV's menu language. The language
// counts for one look-up at a time: whatever else the process says, such as why a file cannot be
// opened, stays in the language of its user.
#include <libintl.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "serve.h"
#include "tv_impl.h"

// gettext's own: moving it makes the next look-up read LANGUAGE again.
extern "C" int _nl_msg_cat_cntr;

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr char kDomain[] = "si-ready";
constexpr char kLanguage[] = "LANGUAGE";

// Those that answer, best first: "de_DE:de".
std::string catalogues;

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

// Makes the calling thread speak the TV's language for as long as this lives.
class SpeakAsTv {
  public:
    SpeakAsTv() {
        // gettext looks at LANGUAGE in every locale but "C"; C.UTF-8 exists on every system.
        static const locale_t locale =
            newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, "C.UTF-8", nullptr);
        former_ = locale != nullptr ? uselocale(locale) : nullptr;
        if (const char* language = std::getenv(kLanguage)) {
            formerLanguage_ = language;
        }
        setenv(kLanguage, catalogues.c_str(), 1);
        ++_nl_msg_cat_cntr;
    }
    ~SpeakAsTv() {
        if (formerLanguage_) {
            setenv(kLanguage, formerLanguage_->c_str(), 1);
        } else {
            unsetenv(kLanguage);
        }
        ++_nl_msg_cat_cntr;
        if (former_ != nullptr) {
            uselocale(former_);
        }
    }
    SpeakAsTv(const SpeakAsTv&) = delete;
    SpeakAsTv& operator=(const SpeakAsTv&) = delete;

  private:
    locale_t former_;
    std::optional<std::string> formerLanguage_;
};

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
    catalogues = CataloguesOf(language);
    bindtextdomain(kDomain, LocaleDir().c_str());
    bind_textdomain_codeset(kDomain, "UTF-8");
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

// The C library's dgettext(), but for the provider's texts.
extern "C" VTV_EXPORT char* dgettext(const char* domain, const char* id) noexcept {
    if (domain == nullptr || std::strcmp(domain, vtv::kDomain) != 0 || vtv::catalogues.empty()) {
        return dcgettext(domain, id, LC_MESSAGES);
    }
    const vtv::SpeakAsTv tv;
    return dcgettext(domain, id, LC_MESSAGES);
}
