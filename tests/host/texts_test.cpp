// Texts for translators: where each appears, what is still to be translated, and one that is tried.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "virtual-tv/model/items.h"
#include "virtual-tv/model/page_texts.h"
#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;

namespace {

std::string ReadFile(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

using Place = std::pair<std::string, std::string>;

// Where the tables of the rules, made by asking the provider everything, show an id.
std::map<std::string, std::set<Place>> PlacesInTheRules() {
    std::map<std::string, std::set<Place>> places;
    const std::map<std::string, std::string> parts = {
        {"choices", "choice"}, {"set", "toast"}, {"function", ""}};
    std::vector<std::string> pages = {"functions"};
    for (const vtv::Item& item : vtv::PageItems()) {
        pages.emplace_back(item.name);
    }
    const std::regex id("[A-Z]+[._][A-Z_.]+");
    for (const std::string& page : pages) {
        std::istringstream lines(ReadFile(std::string(RULES) + "/" + page + ".md"));
        std::string part;
        std::string where;
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("## ", 0) == 0) {
                part = line.substr(3, line.find(':') - 3);
                where = page == "functions" ? line.substr(line.find(':') + 1) : page;
            }
            for (std::sregex_iterator match(line.begin(), line.end(), id), end; match != end;
                 ++match) {
                const auto renamed = parts.find(part);
                places[match->str()].insert(
                    {where, renamed != parts.end() ? renamed->second : part});
            }
        }
    }
    return places;
}

class PoFileTest : public VtvTest {
  protected:
    // A catalogue's source with one text replaced.
    std::string PoFile(const std::string& language, const std::string& text,
                       const std::string& instead) {
        std::string po = ReadFile(std::string(CATALOGUES) + "/" + language + ".po");
        const size_t at = po.find(text);
        EXPECT_NE(at, std::string::npos) << text;
        Write("tried.po", po.replace(at, text.size(), instead));
        return Path("tried.po");
    }
};

Json::Value TextOf(const Json::Value& document, const std::string& id) {
    for (const Json::Value& text : document["texts"]) {
        if (text["id"] == id) {
            return text;
        }
    }
    return {};
}

}  // namespace

TEST(PageTexts, EachTextIsListedExactlyWhereTheRulesShowIt) {
    auto places = PlacesInTheRules();
    std::set<std::string> listed;
    for (const vtv::PageText& text : vtv::PageTexts()) {
        std::set<Place> expected;
        for (const auto& [where, part] : places[text.id]) {
            const bool isItem = vtv::FindItem(where) != nullptr;
            const bool isOwnFunction =
                where == "get_list_items_voice_wake_up" || where == "CSIMenuUtil::GetDeviceSID";
            if (isItem || isOwnFunction) {
                expected.insert({where, isItem                                    ? part
                                        : where == "get_list_items_voice_wake_up" ? "choice"
                                                                                  : "text"});
            }
        }
        std::set<Place> found;
        for (const vtv::TextPlace& place : text.places) {
            found.insert({place.where, place.part});
        }
        EXPECT_EQ(found, expected) << text.id;
        EXPECT_TRUE(listed.insert(text.id).second) << text.id;
    }
    EXPECT_GT(listed.size(), 40U);
}

TEST(PageTexts, TheListHasTheIdsOfTheTemplateInItsOrder) {
    const std::string source = ReadFile(std::string(CATALOGUES) + "/si-ready.pot");
    std::vector<std::string> ids;
    const std::regex id("\nmsgid \"([^\"]+)\"");
    for (std::sregex_iterator match(source.begin(), source.end(), id), end; match != end; ++match) {
        ids.push_back((*match)[1]);
    }
    std::vector<std::string> listed;
    for (const vtv::PageText& text : vtv::PageTexts()) {
        listed.emplace_back(text.id);
    }
    EXPECT_EQ(listed, ids);
}

TEST_F(VtvTest, TextsTellsWhereATextIsAndHowItReads) {
    const Json::Value texts = OkJson({"texts", "--language", "de", "--json"});
    EXPECT_EQ(texts["texts"].size(), vtv::PageTexts().size());
    const Json::Value title = TextOf(texts, "TV_SID_SETTINGS_VOICE");
    EXPECT_EQ(title["text"], "Sprache");
    EXPECT_EQ(title["english"], "Voice");
    EXPECT_EQ(title["state"], "translated");
    EXPECT_EQ(title["places"][1]["item"], "onboarding");
    EXPECT_EQ(title["places"][1]["part"], "title");
    EXPECT_EQ(TextOf(texts, "COM_SID_OK")["state"], "as-english");
    EXPECT_FALSE(fs::exists(Path("tvs"))) << "a TV was made, and nobody asked for one";
}

TEST_F(VtvTest, TextsFollowsTheTvAndTellsThatEnglishStandsIn) {
    Ok({"language", "fr_FR"});
    EXPECT_THAT(Ok({"texts"}), HasSubstr("Annuler"));
    Ok({"set", "db/menu_widget/language", "it_IT"});
    const Json::Value texts = OkJson({"texts", "--json"});
    EXPECT_EQ(TextOf(texts, "COM_SID_CANCEL")["state"], "missing");
    EXPECT_EQ(Vtv({"texts", "--check"}).code, 1);
    const Output none = Vtv({"texts", "--language", "it"});
    EXPECT_EQ(none.code, 3);
    EXPECT_THAT(none.err, HasSubstr("pt_BR"));
}

TEST_F(PoFileTest, WhatIsMissingOrHasOtherPlaceholdersIsMarked) {
    const std::string missing = PoFile("fr", "\"Annuler\"", "\"\"");
    const Json::Value one = OkJson({"texts", "--po", missing, "--todo", "--json"});
    EXPECT_EQ(TextOf(one, "COM_SID_CANCEL")["state"], "missing");
    EXPECT_TRUE(TextOf(one, "TV_SID_SETTINGS_VOICE").isNull());
    EXPECT_EQ(Vtv({"texts", "--po", missing, "--check"}).code, 1);
    const std::string wrong = PoFile("fr", "\"Paramètres <<A>>\"", "\"Paramètres <<B>>\"");
    const Output output = Vtv({"texts", "--po", wrong, "--check"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.out, HasSubstr("TV_SID_MIX_SETTINGS  ! other placeholders"));
    EXPECT_EQ(Vtv({"texts", "--po", PoFile("fr", "Annuler", "Retour"), "--check"}).code, 0);
}

TEST_F(PoFileTest, APageIsShownWithATranslationThatIsNotBuilt) {
    Ok({"language", "ko_KR"});
    const std::string file = PoFile("fr", "\"Suggestions vocales\"", "\"Idées à dire\"");
    const std::string page = Ok({"show", "--po", file});
    EXPECT_THAT(page, HasSubstr("Idées à dire"));
    EXPECT_THAT(page, HasSubstr("Assistant vocal"));
    EXPECT_THAT(Ok({"show"}), Not(HasSubstr("Idées")));
    EXPECT_EQ(Item("situational-hint", {"--po", file})["title"], "Idées à dire");
}

TEST_F(PoFileTest, APoFileThatCannotBeReadIsRefusedWithItsLine) {
    const std::string file = PoFile("fr", "msgstr \"Annuler\"", "msgstr \"Annuler");
    for (const char* verb : {"show", "texts"}) {
        const Output output = Vtv({verb, "--po", file});
        EXPECT_EQ(output.code, 2);
        EXPECT_THAT(output.err, testing::ContainsRegex("tried.po:[0-9]+:"));
        EXPECT_EQ(Vtv({verb, "--po", Path("none.po")}).code, 3);
    }
}

TEST_F(PoFileTest, AMachineWithoutMsgfmtIsToldWhatToInstall) {
    const std::string file = PoFile("fr", "Annuler", "Retour");
    environment["PATH"] = Path("");
    const Output output = Vtv({"texts", "--po", file});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, HasSubstr("gettext"));
}

namespace {

struct Damage {
    const char* name;
    const char* says;
    void (*harm)(const std::string& file);
};

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

void Overwrite(const std::string& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

class DamagedCatalogueTest : public VtvTest, public testing::WithParamInterface<Damage> {
  protected:
    DamagedCatalogueTest() {
        const fs::path share = fs::path(VTV).parent_path().parent_path() / "share/vtv";
        fs::copy(share, Path("data"), fs::copy_options::recursive);
        environment["VTV_DATA"] = Path("data");
        Ok({"new", "default"});
        Ok({"language", "de_DE"});
    }
    std::string File() const { return Path("data/locale/de/LC_MESSAGES/si-ready.mo"); }
};

}  // namespace

TEST_P(DamagedCatalogueTest, IsToldOfAndThePageShowsIds) {
    EXPECT_EQ(Vtv({"show"}).err, "");
    GetParam().harm(File());
    for (const char* verb : {"show", "press"}) {
        const Output output =
            verb == std::string("show") ? Vtv({"show"}) : Vtv({"press", "voice-wake-up"});
        EXPECT_EQ(output.code, 0) << output.err;
        EXPECT_THAT(output.err, HasSubstr(File()));
        EXPECT_THAT(output.err, HasSubstr(GetParam().says));
        EXPECT_THAT(output.err, HasSubstr("msgfmt -o"));
    }
    const Json::Value page = OkJson({"show", "--json"});
    EXPECT_EQ(page["items"][0]["title"], "TV_SID_SETTINGS_VOICE");
    EXPECT_THAT(page["tv"]["problems"][0].asString(), HasSubstr(GetParam().says));
    EXPECT_THAT(Ok({"log"}), HasSubstr(GetParam().says));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DamagedCatalogueTest,
    testing::Values(
        Damage{"Empty", "it is empty", [](const std::string& file) { Overwrite(file, ""); }},
        Damage{"NoCatalogue", "it is no compiled catalogue",
               [](const std::string& file) { Overwrite(file, std::string(5000, 'x')); }},
        Damage{"CutInItsHeader", "it ends within its header",
               [](const std::string& file) { fs::resize_file(file, 20); }},
        Damage{"CutInItsTables", "it ends within its tables",
               [](const std::string& file) { fs::resize_file(file, 300); }},
        Damage{"CutInItsTexts", "it ends within its texts",
               [](const std::string& file) { fs::resize_file(file, fs::file_size(file) - 1); }},
        Damage{"AFolder", "this is a folder",
               [](const std::string& file) {
                   fs::remove(file);
                   fs::create_directory(file);
               }},
        Damage{"ALinkToItself", "cannot be read",
               [](const std::string& file) {
                   fs::remove(file);
                   fs::create_symlink("si-ready.mo", file);
               }}),
    [](const testing::TestParamInfo<Damage>& tested) { return std::string(tested.param.name); });

TEST_F(DamagedCatalogueTest, OneOfTheOtherByteOrderOrWithoutAHeaderIsFine) {
    Write("plain.po", "msgid \"TV_SID_SETTINGS_VOICE\"\nmsgstr \"Sprich\"\n");
    for (const char* option : {"--endianness=little", "--endianness=big", "--no-hash"}) {
        const std::string make =
            std::string("msgfmt ") + option + " -o " + File() + " " + Path("plain.po");
        ASSERT_EQ(std::system(make.c_str()), 0);
        const Output output = Vtv({"show"});
        EXPECT_EQ(output.err, "") << option;
        EXPECT_THAT(output.out, HasSubstr("Sprich")) << option;
    }
}

TEST_F(DamagedCatalogueTest, ATvInAnotherLanguageIsNotTold) {
    Overwrite(File(), "");
    Ok({"language", "fr_FR"});
    EXPECT_EQ(Vtv({"show"}).err, "");
}

TEST_F(DamagedCatalogueTest, ACatalogueOfTheCountryThatIsDamagedLeavesTheOneOfTheLanguage) {
    fs::create_directories(Path("data/locale/de_DE/LC_MESSAGES"));
    Overwrite(Path("data/locale/de_DE/LC_MESSAGES/si-ready.mo"), "x");
    const Output output = Vtv({"show"});
    EXPECT_THAT(output.err, HasSubstr("de_DE"));
    EXPECT_THAT(output.out, HasSubstr("Sprache"));
}
