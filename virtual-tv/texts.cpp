// Texts: which catalogue of "si-ready" answers dgettext(), by the TV's menu language. The language
// counts for one look-up at a time: whatever else the process says, such as why a file cannot be
// opened, stays in the language of its user.
#include "texts.h"

#include <libintl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <set>

#include "serve.h"
#include "store.h"
#include "tv_impl.h"
#include "virtual-tv/model/text_file.h"

// gettext's own: moving it makes the next look-up read LANGUAGE again.
extern "C" int _nl_msg_cat_cntr;

namespace vtv {

namespace fs = std::filesystem;

namespace {

constexpr char kDomain[] = "si-ready";
constexpr char kLanguage[] = "LANGUAGE";
constexpr char kTried[] = "tried";  // the name of a catalogue that is tried, whatever its language

constexpr size_t kLongestText = size_t{64} * 1024;

// Those that answer, best first: "de_DE:de".
std::string catalogues;
// The files that the C library has read: they answer whatever becomes of them.
std::set<std::string> loaded;
// Where they lie: the folder of a catalogue that is tried, or empty.
std::string triedFolder;

std::string LocaleDir() {
    return triedFolder.empty() ? DataDir() + "/locale" : triedFolder;
}

std::string FileOf(const std::string& language) {
    return LocaleDir() + "/" + language + "/LC_MESSAGES/" + kDomain + ".mo";
}

// Also one that is there and is no file that can be opened.
bool HasCatalogue(const std::string& language) {
    const std::string file = FileOf(language);
    struct stat info{};
    if (stat(file.c_str(), &info) == 0) {
        return true;
    }
    if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) {
        return false;
    }
    Unreadable::ThrowIf(errno, file);
    return true;
}

// "de_AT.UTF-8" is served by de_AT, then by de.
std::vector<std::string> CataloguesFor(const std::string& language) {
    const std::string country = language.substr(0, language.find_first_of(".@"));
    const std::string base = country.substr(0, country.find('_'));
    std::vector<std::string> found;
    for (const std::string& name : {country, base}) {
        if (!name.empty() && HasCatalogue(name) && (found.empty() || found.front() != name)) {
            found.push_back(name);
        }
    }
    return found;
}

// A language without any catalogue is shown in English.
std::vector<std::string> CataloguesOrEnglish(const std::string& language) {
    std::vector<std::string> found = CataloguesFor(triedFolder.empty() ? language : kTried);
    return found.empty() ? CataloguesFor("en") : found;
}

constexpr std::uint32_t kMagic = 0x950412de;

// A number of a compiled catalogue, whose machine may have had the other order of bytes.
std::uint32_t NumberAt(const std::string& catalogue, size_t at) {
    const auto littleEndian = [&](size_t place) {
        std::array<unsigned char, 4> b{};
        std::memcpy(b.data(), catalogue.data() + place, b.size());
        return b[0] | b[1] << 8U | b[2] << 16U | std::uint32_t{b[3]} << 24U;
    };
    const std::uint32_t number = littleEndian(at);
    return littleEndian(0) == kMagic ? number : __builtin_bswap32(number);
}

// What a compiled catalogue must be for the C library to read it safely: it looks at a header only,
// and finds texts wherever the file says that they are.
std::string FaultOf(const std::string& catalogue) {
    constexpr size_t kHeader = 28;
    if (catalogue.size() < kHeader) {
        return catalogue.empty() ? "it is empty" : "it ends within its header";
    }
    const auto number = [&](size_t at) { return NumberAt(catalogue, at); };
    if (number(0) != kMagic) {
        return "it is no compiled catalogue";
    }
    if (number(4) >> 16U > 1) {
        return "it is of a version that nobody knows";
    }
    const std::uint64_t size = catalogue.size();
    for (const size_t table : {8 + 4, 8 + 8}) {
        const std::uint64_t begin = number(table);
        if (begin + std::uint64_t{8} * number(8) > size) {
            return "it ends within its tables";
        }
        for (std::uint64_t i = 0; i < number(8); ++i) {
            const std::uint64_t end =
                std::uint64_t{number(begin + 8 * i)} + number(begin + 8 * i + 4);
            if (end >= size || catalogue[end] != '\0') {
                return "it ends within its texts, or they are damaged";
            }
        }
    }
    return "";
}

// The first id of a sound catalogue; null for one without texts.
const char* FirstId(const std::string& catalogue) {
    return NumberAt(catalogue, 8) == 0
               ? nullptr
               : catalogue.c_str() + NumberAt(catalogue, NumberAt(catalogue, 12) + 4);
}

// A catalogue's bytes, and why it answers nothing: empty for one that does.
struct Catalogue {
    std::string bytes;
    std::string problem;
    bool unread = false;  // by the machine: it is there, and may be sound
};

std::string WithRemedy(const std::string& language, const std::string& reason) {
    return reason + (reason.back() == '.' ? "" : ".") +
           " The page shows ids in place of its texts. Install vtv again, or make the catalogue "
           "anew: msgfmt -o " +
           FileOf(language) + " " + language + ".po";
}

Catalogue ReadCatalogue(const std::string& language) {
    const std::string file = FileOf(language);
    Catalogue catalogue;
    try {
        catalogue.bytes = ReadTextFile(file);
        if (const std::string fault = FaultOf(catalogue.bytes); !fault.empty()) {
            catalogue.problem =
                WithRemedy(language, file + ": this catalogue of texts is damaged: " + fault);
        }
    } catch (const Error& error) {
        catalogue.problem = WithRemedy(language, error.what());
        catalogue.unread = error.kind() == ErrorKind::kPlatform && access(file.c_str(), R_OK) == 0;
    }
    return catalogue;
}

// gettext looks at LANGUAGE in every locale but "C"; C.UTF-8 exists on every system.
locale_t TheLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, "C.UTF-8", nullptr);
    return locale;
}

// Makes the calling thread speak the TV's language for as long as this lives.
class SpeakAsTv {
  public:
    SpeakAsTv() {
        former_ = uselocale(TheLocale());
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
        uselocale(former_);
    }
    SpeakAsTv(const SpeakAsTv&) = delete;
    SpeakAsTv& operator=(const SpeakAsTv&) = delete;

  private:
    locale_t former_;
    std::optional<std::string> formerLanguage_;
};

// The C library reads a catalogue at the first look-up, once for the whole process, and says
// nothing when it cannot.
bool IsFoundIn(const std::string& language, const Catalogue& catalogue) {
    const char* const id = FirstId(catalogue.bytes);
    if (id == nullptr) {
        return true;
    }
    catalogues = language;
    const SpeakAsTv tv;
    return dcgettext(kDomain, id, LC_MESSAGES) != id;  // the id itself stands for no text
}

// Whether the catalogue answers. One that is damaged is left alone: the page then shows the ids
// themselves.
bool Load(const std::string& language) {
    if (loaded.count(FileOf(language)) != 0) {
        return true;
    }
    Catalogue catalogue = ReadCatalogue(language);
    if (catalogue.problem.empty() && !IsFoundIn(language, catalogue)) {
        catalogue.problem = WithRemedy(
            language, FileOf(language) + ": the C library cannot read this catalogue of texts");
        catalogue.unread = true;
    }
    if (catalogue.unread) {
        NoteMachineFailure(catalogue.problem);
    }
    if (!catalogue.problem.empty()) {
        return false;
    }
    loaded.insert(FileOf(language));
    return true;
}

std::string SoundCatalogues(const std::string& language) {
    std::string sound;
    for (const std::string& name : CataloguesOrEnglish(language)) {
        if (Load(name)) {
            sound += (sound.empty() ? "" : ":") + name;
        }
    }
    return sound.empty() ? "C" : sound;
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

bool HasTexts(const std::string& language) {
    return !CataloguesFor(language).empty();
}

void TryCatalogue(const std::string& localeDir) {
    triedFolder = localeDir;
}

void BindTexts(const std::string& language) {
    if (TheLocale() == nullptr) {
        throw Error(ErrorKind::kPlatform,
                    "The locale C.UTF-8, in which a TV speaks, cannot be loaded "
                    "(/usr/lib/locale/C.utf8, of the package libc-bin): " +
                        std::string(std::strerror(errno)) + ".");
    }
    bindtextdomain(kDomain, LocaleDir().c_str());
    bind_textdomain_codeset(kDomain, "UTF-8");
    catalogues = SoundCatalogues(language);
}

std::string Text(const std::string& id) {
    return dgettext(kDomain, id.c_str());
}

std::optional<std::string> TextIn(const std::string& language, const std::string& id) {
    const std::string former = catalogues;
    BindTexts(language);
    const char* const text = dgettext(kDomain, id.c_str());
    std::optional<std::string> found;
    if (text != id.c_str()) {  // the id itself stands for none
        found = text;
    }
    catalogues = former;
    return found;
}

std::vector<std::string> ProblemsOfTexts(const std::string& language) {
    std::vector<std::string> problems;
    for (const std::string& name : CataloguesOrEnglish(language)) {
        std::string problem = loaded.count(FileOf(name)) != 0 ? "" : ReadCatalogue(name).problem;
        if (!problem.empty()) {
            problems.push_back(std::move(problem));
        }
    }
    return problems;
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
    char* text = dcgettext(domain, id, LC_MESSAGES);
    // A page has room for what people read; a catalogue that somebody sent may hold anything.
    return strnlen(text, vtv::kLongestText + 1) <= vtv::kLongestText ? text : const_cast<char*>(id);
}
