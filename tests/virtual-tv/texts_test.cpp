// Texts: the menu language chooses the catalogue, and the catalogues have exactly the page's ids.
#include <libintl.h>
#include <sys/resource.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include <algorithm>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "platform/settings_store.h"
#include "tv_fixture.h"
#include "virtual-tv/texts.h"

namespace {

constexpr char kTitle[] = "TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP";

class TextsTest : public TvTest {};

// The ids and translations of a catalogue's source.
std::map<std::string, std::string> Catalogue(const std::string& language) {
    std::map<std::string, std::string> texts;
    const std::string source = ReadText(SOURCE_DIR "/virtual-tv/po/" + language + ".po");
    const std::regex entry("\nmsgid \"([^\"]+)\"\nmsgstr \"((?:[^\"\\\\]|\\\\.)*)\"");
    for (std::sregex_iterator match(source.begin(), source.end(), entry), end; match != end;
         ++match) {
        texts[(*match)[1]] = (*match)[2];
    }
    return texts;
}

std::set<std::string> IdsOfTheProvider() {
    std::set<std::string> ids;
    const std::regex id(
        "\"((?:TV_SID|COM_SID|COM_TV_SID|COM_ICON|PJT_SID|DREAM)_[A-Z0-9_]+|REP\\.DEVICE\\.[A-Z.]+)"
        "\"");
    for (const auto& entry : std::filesystem::directory_iterator(SOURCE_DIR "/si-ready/src")) {
        const std::string source = ReadText(entry.path().string());
        for (std::sregex_iterator match(source.begin(), source.end(), id), end; match != end;
             ++match) {
            ids.insert((*match)[1]);
        }
    }
    return ids;
}

// As the build knows them.
std::vector<std::string> SourceLanguages() {
    std::vector<std::string> languages;
    std::istringstream lines(ReadText(SOURCE_DIR "/virtual-tv/po/LINGUAS"));
    for (std::string line; std::getline(lines, line);) {
        languages.push_back(line);
    }
    return languages;
}
const std::vector<std::string> kLanguages = SourceLanguages();

TEST_F(TextsTest, EachCatalogueHasExactlyTheIdsOfTheProvider) {
    const auto used = IdsOfTheProvider();
    ASSERT_GT(used.size(), 40u);
    for (const std::string& language : kLanguages) {
        const auto catalogue = Catalogue(language);
        for (const std::string& id : used) {
            EXPECT_EQ(catalogue.count(id), 1u) << language << " lacks " << id;
        }
        for (const auto& [id, text] : catalogue) {
            EXPECT_EQ(used.count(id), 1u) << language << " has " << id << ", which nothing uses";
            EXPECT_FALSE(text.empty()) << language << " does not translate " << id;
        }
    }
}

TEST_F(TextsTest, PlaceholdersAreTheSameInEveryLanguage) {
    const auto placeholders = [](const std::string& text) {
        std::multiset<std::string> found;
        const std::regex placeholder("<<[A-Z]>>|%[a-z]");
        for (std::sregex_iterator match(text.begin(), text.end(), placeholder), end; match != end;
             ++match) {
            found.insert(match->str());
        }
        return found;
    };
    const auto english = Catalogue("en");
    for (const std::string& language : kLanguages) {
        for (const auto& [id, text] : Catalogue(language)) {
            EXPECT_EQ(placeholders(text), placeholders(english.at(id))) << language << ": " << id;
        }
    }
}

TEST_F(TextsTest, GettextFindsNothingWrongWithACatalogue) {
    for (const std::string& language : kLanguages) {
        const std::string file = SOURCE_DIR "/virtual-tv/po/" + language + ".po";
        const std::string check = "msgfmt --check --output-file=/dev/null " + file;
        EXPECT_EQ(std::system(check.c_str()), 0) << language;
        EXPECT_NE(ReadText(file).find("\"Language: " + language + "\\n\""), std::string::npos)
            << language;
    }
}

// The name that comes in place of <<A>> may begin with any sound and be of any gender: a word that
// would have to change before or behind it (de Alexa, d'Orvik; Orvik을, Alexa를) does not stand
// there.
TEST_F(TextsTest, NoWordBesideAPlaceholderHasToChangeWithTheName) {
    const std::map<std::string, std::regex> wrong = {
        {"fr", std::regex("(^| )([cdjlmnst]['’]|[ld]es?|la|du|au|aux|que|jusque) ?<<[A-Z]>>",
                          std::regex::icase)},
        {"es", std::regex("(^| )(el|la|del|al|y|o) <<[A-Z]>>", std::regex::icase)},
        {"pt", std::regex("(^| )(o|a|do|da|no|na|ao|à|pelo|pela) <<[A-Z]>>", std::regex::icase)},
        {"pt_BR", std::regex("(^| )(o|a|do|da|no|na|ao|à|pelo|pela) <<[A-Z]>>", std::regex::icase)},
        {"de",
         std::regex("(^| )(der|die|das|den|dem|des) <<[A-Z]>>|<<[A-Z]>>s ", std::regex::icase)},
        {"en", std::regex("(^| )an? <<[A-Z]>>", std::regex::icase)},
        {"ru", std::regex("(^| )(с|со|в|во|к|ко|о|об) <<[A-Z]>>")},
        {"ko", std::regex("<<[A-Z]>>(을|를|은|는|이|가|과|와|으로|로)( |$|[.,])")}};
    const std::set<std::string> unchanging = {"zh_CN"};
    const std::pair<const char*, const char*> caught[] = {
        {"fr", "Paramètres de <<A>>"},  {"fr", "Paramètres d'<<A>>"},  {"fr", "Le <<A>>"},
        {"es", "Ajustes del <<A>>"},    {"pt", "Definições do <<A>>"}, {"de", "<<A>>s Stimme"},
        {"en", "Use an <<A>> account"}, {"ko", "<<A>>를 설정합니다"}};
    for (const auto& [language, text] : caught) {
        EXPECT_TRUE(std::regex_search(text, wrong.at(language))) << text;
    }
    for (const std::string& language : kLanguages) {
        ASSERT_EQ(wrong.count(language) + unchanging.count(language), 1U)
            << "say what may not stand there in " << language;
        if (unchanging.count(language) == 1) {
            continue;
        }
        for (const auto& [id, text] : Catalogue(language)) {
            EXPECT_FALSE(std::regex_search(text, wrong.at(language)))
                << language << ": " << id << ": " << text;
        }
    }
}

// On a TV whose policy does not name the assistant, the title is what the placeholder leaves: a
// host can tell it by the space.
TEST_F(TextsTest, ASpaceStandsBetweenAPlaceholderAndTheRestOfATitle) {
    for (const std::string& language : kLanguages) {
        const std::string title = Catalogue(language).at("TV_SID_MIX_SETTINGS");
        EXPECT_TRUE(title.rfind("<<A>> ", 0) == 0 || title.ends_with(" <<A>>")) << title;
    }
}

TEST_F(TextsTest, TheCatalogueOfEveryLanguageIsInstalled) {
    const std::vector<std::string> installed = vtv::Tv::Languages();
    for (const std::string& language : kLanguages) {
        EXPECT_NE(std::find(installed.begin(), installed.end(), language), installed.end())
            << language;
    }
}

TEST_F(TextsTest, TheMenuLanguageChooses) {
    TurnOn();
    const std::map<std::string, std::string> expected = {
        {"en_US", "Hands-free Wake-up"},    {"de_DE", "Freihändig aktivieren"},
        {"de_AT", "Freihändig aktivieren"}, {"zh_CN", "免提唤醒"},
        {"zh_CN.UTF-8", "免提唤醒"},        {"ko_KR", "핸즈프리 호출"},
        {"pt_PT", "Ativação mãos-livres"},  {"pt_AO", "Ativação mãos-livres"},
        {"pt_BR", "Ativação por voz"}};
    for (const auto& [language, text] : expected) {
        tv->SetLanguage(language);
        EXPECT_EQ(dgettext("si-ready", kTitle), text) << language;
        EXPECT_EQ(vtv::Text(kTitle), text);
    }
}

TEST_F(TextsTest, ALanguageWithoutACatalogueIsShownInEnglish) {
    TurnOn();
    tv->SetLanguage("it_IT");
    EXPECT_EQ(vtv::Text(kTitle), "Hands-free Wake-up");
    tv->SetLanguage("");
    EXPECT_EQ(vtv::Text(kTitle), "Hands-free Wake-up");
}

TEST_F(TextsTest, AMissingIdIsShownAsItself) {
    TurnOn();
    tv->SetLanguage("de_DE");
    EXPECT_EQ(vtv::Text("TV_SID_NO_SUCH_TEXT"), "TV_SID_NO_SUCH_TEXT");
}

TEST_F(TextsTest, AChangeByThePlatformCallOrAnotherProcessIsFollowed) {
    TurnOn();
    const std::string dir = tv->Dir();
    vconf_set_str("db/menu_widget/language", "fr_FR");
    EXPECT_EQ(vtv::Text("COM_SID_CANCEL"), "Annuler");
    InChild([&] {
        vtv::Tv(dir).SetLanguage("es_ES");
        return 0;
    });
    tv->Dispatch();
    EXPECT_EQ(vtv::Text("COM_SID_CANCEL"), "Cancelar");
}

// The page's buffers hold what people read; a catalogue that somebody sent may hold anything.
TEST_F(TextsTest, ATranslationThatIsLongerThanAnyPageHasRoomForIsShownAsItsId) {
    TurnOn();
    const std::string catalogue = folder / "locale/xx/LC_MESSAGES";
    std::filesystem::create_directories(catalogue);
    constexpr size_t kLongest = size_t{64} * 1024;
    WriteText(folder / "xx.po", "msgid \"FITS\"\nmsgstr \"" + std::string(kLongest, 'f') +
                                    "\"\nmsgid \"TOO_LONG\"\nmsgstr \"" +
                                    std::string(kLongest + 1, 'l') + "\"\n");
    const std::string make = "msgfmt -o " + catalogue + "/si-ready.mo " + (folder / "xx.po");
    ASSERT_EQ(std::system(make.c_str()), 0);
    setenv("VTV_DATA", folder.Path().c_str(), 1);
    tv->SetLanguage("xx");
    EXPECT_EQ(vtv::Text("FITS"), std::string(kLongest, 'f'));
    EXPECT_EQ(vtv::Text("TOO_LONG"), "TOO_LONG");
    unsetenv("VTV_DATA");
}

// Whether a TV says that the machine failed to read the catalogue of "xx", which is made by that
// command, when it looks for a text there.
bool SaysThatItIsUnread(const TemporaryFolder& folder, const std::string& dir,
                        const std::string& makeCatalogue, const std::function<void()>& trouble) {
    const std::string catalogue = folder / "locale/xx/LC_MESSAGES/si-ready.mo";
    std::filesystem::create_directories(folder / "locale/xx/LC_MESSAGES");
    EXPECT_EQ(std::system((makeCatalogue + " " + catalogue).c_str()), 0);
    return InChild([&] {
               setenv("VTV_DATA", folder.Path().c_str(), 1);
               vtv::Tv tv(dir);
               vtv::PowerOn(tv);
               trouble();
               vtv::TextIn("xx", "A");
               return vtv::Tv::MachineFailure().find(catalogue) != std::string::npos ? 1 : 0;
           }) == 1;
}

void LackDescriptors() {
    const rlimit none{3, 3};
    setrlimit(RLIMIT_NOFILE, &none);
}

// A page of ids, made because a file could not be read at that moment, is no answer.
TEST_F(TextsTest, ACatalogueThatTheMachineCannotReadNowIsSaidToBeUnread) {
    const std::string dir = TurnOn().Dir();
    WriteText(folder / "xx.po", "msgid \"A\"\nmsgstr \"a\"\n");
    const std::string make = "msgfmt " + (folder / "xx.po") + " -o";
    EXPECT_TRUE(SaysThatItIsUnread(folder, dir, make, LackDescriptors));
    EXPECT_FALSE(SaysThatItIsUnread(folder, dir, make, [] {}));
    EXPECT_FALSE(SaysThatItIsUnread(folder, dir, "cp /dev/null", [] {})) << "read, and damaged";
}

// Its ids are not sorted, so that the C library does not find them, though all of its parts are in
// place.
TEST_F(TextsTest, ACatalogueThatTheCLibraryDoesNotTakeIsSaidToBeUnread) {
    std::string bytes;
    const auto add = [&](std::uint32_t number) {
        for (int byte = 0; byte < 4; ++byte) {
            bytes += static_cast<char>(number >> (8U * byte));
        }
    };
    constexpr std::uint32_t kIds = 28, kTexts = kIds + 3 * 8, kFirst = kTexts + 3 * 8;
    for (const std::uint32_t number : {0x950412deU, 0U, 3U, kIds, kTexts, 0U, kFirst}) {
        add(number);
    }
    for (std::uint32_t text = 0; text < 6; ++text) {
        add(1);
        add(kFirst + 2 * text);
    }
    for (const char* text : {"c", "b", "a", "C", "B", "A"}) {
        bytes.append(text, 2);
    }
    WriteText(folder / "xx.mo", bytes);
    EXPECT_TRUE(SaysThatItIsUnread(folder, TurnOn().Dir(), "cp " + (folder / "xx.mo"), [] {}));
}

// The C library's own texts in two languages that no machine has installed.
class UserLanguageTest : public TextsTest {
  protected:
    UserLanguageTest() {
        for (const std::string language : {"de", "ko"}) {
            const std::string catalogue = locales_.Path() + "/" + language + "/LC_MESSAGES";
            std::filesystem::create_directories(catalogue);
            WriteText(catalogue + "/libc.po",
                      "msgid \"\"\nmsgstr \"Content-Type: text/plain; "
                      "charset=UTF-8\\n\"\n\nmsgid \"No such file or "
                      "directory\"\nmsgstr \"nichts da, " +
                          language + "\"\n");
            EXPECT_EQ(
                std::system(
                    ("msgfmt -o " + catalogue + "/libc.mo " + catalogue + "/libc.po").c_str()),
                0);
        }
        bindtextdomain("libc", locales_.Path().c_str());
        unsetenv("LANGUAGE");
        setlocale(LC_ALL, "C.UTF-8");  // as a program does whose user has a locale
    }
    ~UserLanguageTest() override {
        bindtextdomain("libc", "/usr/share/locale");
        unsetenv("LANGUAGE");
        setlocale(LC_ALL, "C");
    }

    static std::string Reason() { return std::strerror(ENOENT); }

  private:
    TemporaryFolder locales_;
};

TEST_F(UserLanguageTest, AGermanTvLetsTheMachineSpeakAsItsUserDoes) {
    TurnOn();
    for (const char* language : {"de_DE", "ko_KR", "en_GB"}) {
        tv->SetLanguage(language);
        vtv::Text(kTitle);
        EXPECT_EQ(Reason(), "No such file or directory") << language;
        EXPECT_EQ(std::getenv("LANGUAGE"), nullptr) << language;
    }
    tv->SetLanguage("de_DE");
    EXPECT_STREQ(dgettext("si-ready", kTitle), "Freihändig aktivieren");
}

TEST_F(UserLanguageTest, AKoreanUserOfAGermanTvReadsReasonsInKorean) {
    setenv("LANGUAGE", "ko", 1);
    TurnOn();
    tv->SetLanguage("de_DE");
    EXPECT_EQ(vtv::Text(kTitle), "Freihändig aktivieren");
    EXPECT_EQ(Reason(), "nichts da, ko");
    EXPECT_STREQ(std::getenv("LANGUAGE"), "ko");
    EXPECT_STREQ(dgettext("libc", "No such file or directory"), "nichts da, ko");
}

}  // namespace
