// The exported questions: is the item shown, can it be selected.
#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "page.h"

using namespace recording;

namespace {

class Dispatch : public Provider {};

std::string Visible(const std::string& item, bool answer) {
    return E(source::VISIBLE, "check_visibility_int",
             "key:" + item + ", status:" + (answer ? "visible" : "invisible"));
}

std::string Enable(const std::string& item, bool answer) {
    return E(source::ENABLE, "check_enable_int",
             "key:" + item + ", status:" + (answer ? "enable" : "disable"));
}

using Rule = bool (*)(const char*, int);

struct Row {
    const char* item;
    Rule visible;
    Rule enabled;
    const char* title;
    const char* help;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.item;
}

constexpr Row ROWS[] = {
    {key::VOICE, check_general_voice_supported, check_general_voice_enable,
     "tr(TV_SID_SETTINGS_VOICE)", "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)"},
    {key::ASSISTANT, check_general_voice_voice_assistant, check_return_true,
     "tr(TV_SID_SETTINGS_VOICE_ASSITANT)", "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)"},
    {key::WAKE_UP, check_general_voice_voice_wake_up, check_general_voice_voice_wake_up_enable,
     "tr(TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP)",
     "tr(TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE)"},
    {key::ALWAYS, check_general_voice_voice_always_wake_up,
     check_general_voice_voice_always_wake_up_enable, "tr(COM_SID_ALWAYS_KR_ORVIK)",
     "tr(TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE)"},
    {key::SCREEN_ON, check_general_voice_voice_screen_on_wake_up,
     check_general_voice_voice_screen_on_wake_up_enable,
     "tr(TV_SID_ORVIK_CDJAN_ONLY_WHEN_SCREEN_ON)",
     "tr(TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE)"},
    {key::HINT, check_general_voice_situational_hint,
     check_general_voice_voice_situational_hint_enable, "tr(TV_SID_SETTINGS_VOICE_HINT)",
     "tr(TV_SID_SETTINGS_CONFIGURE_VOICE_HINTS_BASEDON)"},
    {key::ORVIK, check_general_voice_voice_settings_orvik,
     check_general_voice_voice_settings_orvik_enable, "tr(DREAM_ORV_TMBODY_ORVIK) settings",
     "tr(TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS)"},
    {key::ORVIK_CN, check_general_voice_voice_settings_orvik_cn,
     check_general_voice_voice_settings_orvik_cn_enable, "tr(TV_SID_SETTINGS_ORVIK_VOICE_SETTINGS)",
     "tr(TV_SID_SETTINGS_CONFIGURE_ORVIK_VOICE_SETTINGS)"},
    {key::TENCENT, check_general_voice_voice_settings_tencent,
     check_general_voice_voice_settings_tencent_enable,
     "tr(TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS)",
     "tr(TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS)"},
    {key::ALEXA, check_general_voice_voice_settings_alexa,
     check_general_voice_voice_settings_alexa_enable, "Alexa settings", "Configure Alexa."},
    {key::GOOGLE, check_general_voice_voice_settings_google,
     check_general_voice_voice_settings_google_enable, "Google Assistant settings",
     "Configure Google Assistant."},
    {key::SALUTE, check_general_voice_voice_settings_salute,
     check_general_voice_voice_settings_salute_enable, "Salute settings", "Configure Salute."},
    {key::ONBOARDING, check_general_voice_onboarding_supported,
     check_general_voice_onboarding_enable, "tr(TV_SID_SETTINGS_VOICE)",
     "tr(TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT)"},
};

// TVs on which the rules differ from each other in what they read and say.
void OldTv() {}
void ReadyTv() {
    AgreeToTerms();
    SignIn();
    Feature(feature::VOICE, true);
    Feature(feature::ORVIK, true);
    Feature(feature::MIC, 1);
    Feature(feature::FAR_FIELD, 1);
    Set(setting::MIC, 1);
    Set(setting::FARFIELD, R"({"app.orvik":"on","app.google":"on"})");
    Set(setting::HINT, R"({"app.orvik":"on_user"})");
    Set(setting::TENCENT, R"({"onboarding_completed":1})");
    tv().files = {file::ALEXA, file::GOOGLE, file::SALUTE};
}
void ChinaTv() {
    ReadyTv();
    Feature(feature::CHINA, true);
    Set(setting::FIRST_TIME, true);
    tv().files.clear();
}

void MicrophoneOffTv() {
    ReadyTv();
    Set(setting::MIC, 0);
}

// Visits every TV with every assistant in turn as the current one.
template <typename Visit>
void OnEveryTv(const Visit& visit) {
    for (const auto set : {OldTv, ReadyTv, ChinaTv, MicrophoneOffTv}) {
        for (const char* current : {"app.orvik", "app.alexa", "app.google", "app.salute", "app.sva",
                                    "app.tencent", "other"}) {
            Reset();
            set();
            Set(setting::POLICY, WholePolicy().c_str());
            Set(setting::CURRENT, current);
            MVAList::Initialize();
            visit();
        }
    }
}

Lines AskRule(Rule rule, const char* item) {
    ClearCalls();
    const bool answer = rule(item, 42);
    return Calls() + Lines{answer ? "yes" : "no"};
}

// Each row's question equals its rule, call by call, followed by the record of the answer.
class EveryRow : public Provider, public testing::WithParamInterface<Row> {
  protected:
    void Compare(Rule rule, int (*question)(const char*, int),
                 std::string (*record)(const std::string&, bool)) {
        OnEveryTv([&] {
            ClearCalls();
            const bool answer = rule(GetParam().item, 42);
            const Lines ofRule = Calls();
            ClearCalls();
            EXPECT_EQ(question(GetParam().item, 42), answer ? 1 : 0);
            EXPECT_CALLS(ofRule + Lines{record(GetParam().item, answer)});
        });
    }
};

}  // namespace

// Otherwise a row with its neighbour's rule would go unnoticed, be it that the two differ in
// nothing but the name that they log.
TEST_F(Dispatch, TheTvsOfTheseTestsTellEveryTwoRulesApart) {
    for (const auto rule : {&Row::visible, &Row::enabled}) {
        std::set<std::pair<const char*, const char*>> alike;
        for (const Row& one : ROWS) {
            for (const Row& other : ROWS) {
                if (one.item < other.item) {
                    alike.emplace(one.item, other.item);
                }
            }
        }
        ASSERT_EQ(alike.size(), 13u * 12u / 2);
        OnEveryTv([&] {
            std::map<const char*, Lines> asked;
            for (const Row& row : ROWS) {
                asked[row.item] = AskRule(row.*rule, "any key");
            }
            std::erase_if(
                alike, [&](const auto& pair) { return asked[pair.first] != asked[pair.second]; });
        });
        for (const auto& [one, other] : alike) {
            ADD_FAILURE() << "no TV tells apart whether " << one << " and " << other << " are "
                          << (rule == &Row::visible ? "shown" : "enabled");
        }
    }
}

TEST_P(EveryRow, VisibilityIsItsRulesAnswer) {
    Compare(GetParam().visible, check_visibility_int, Visible);
}

TEST_P(EveryRow, EnablingIsItsRulesAnswer) {
    Compare(GetParam().enabled, check_enable_int, Enable);
}

TEST_P(EveryRow, HasItsTitleAndItsHelpText) {
    Offer(WholePolicy());
    tv().translations["TV_SID_MIX_SETTINGS"] = "<<A>> settings";
    tv().translations["TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS"] = "Configure <<A>>.";
    HostText title;
    HostText help;
    page->get_display_name(GetParam().item, title.Out());
    page->get_help_text(GetParam().item, help.Out());
    EXPECT_EQ(title.Text(), GetParam().title);
    EXPECT_EQ(help.Text(), GetParam().help);
}

TEST_P(EveryRow, ItsKeyWithMoreOrLessIsUnknown) {
    const std::string item = GetParam().item;
    for (const std::string& other :
         {item + "x", item + " ", " " + item, item + "-", std::string(item).replace(0, 1, "M")}) {
        EXPECT_EQ(Ask([&] { return check_visibility_int(other.c_str(), 0); }), 0);
        EXPECT_CALLS(
            Lines{E(source::VISIBLE, "check_visibility_int", "[FATAL]no callback[" + other + "]")});
        EXPECT_EQ(Ask([&] { return check_enable_int(other.c_str(), 0); }), 0);
        EXPECT_CALLS(
            Lines{E(source::ENABLE, "check_enable_int", "[FATAL]no callback[" + other + "]")});
    }
}

namespace {

// The item's key as a test may be named.
std::string TestName(const std::string& item) {
    std::string name = item.substr(std::string("menu/system/").size());
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

bool WillRun(const std::string& suite, const std::string& test) {
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const testing::TestSuite& tests = *all.GetTestSuite(i);
        for (int j = 0; j < tests.total_test_count(); ++j) {
            if (tests.name() == suite && tests.GetTestInfo(j)->name() == test) {
                return true;
            }
        }
    }
    return false;
}

// The items that the library itself knows: the keys among its texts.
std::set<std::string> ItemsOfTheLibrary() {
    Dl_info library = {};
    dladdr(reinterpret_cast<void*>(&check_visibility_int), &library);
    std::ifstream file(library.dli_fname, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::string beginning = "menu/system/";
    std::set<std::string> items;
    for (std::size_t at = bytes.find(beginning); at != std::string::npos;
         at = bytes.find(beginning, at + 1)) {
        items.insert(bytes.c_str() + at);
    }
    // No item of its own: it shares the popup of Orvik's settings.
    items.erase("menu/system/general-voice-voice-settings-orvik-terms");
    return items;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Items, EveryRow, testing::ValuesIn(ROWS),
                         [](const testing::TestParamInfo<Row>& row) {
                             return TestName(row.param.item);
                         });

TEST_F(Dispatch, EveryItemOfTheLibraryHasTestsOfItsVisibilityItsEnablingAndItsTexts) {
    const std::set<std::string> items = ItemsOfTheLibrary();
    EXPECT_EQ(items, std::set<std::string>(std::begin(key::ALL), std::end(key::ALL)));
    for (const std::string& item : items) {
        for (const std::string test : {"VisibilityIsItsRulesAnswer", "EnablingIsItsRulesAnswer",
                                       "HasItsTitleAndItsHelpText"}) {
            EXPECT_TRUE(WillRun("Items/EveryRow", test + "/" + TestName(item)))
                << item << " has no test " << test;
        }
    }
}

TEST_F(Dispatch, TheTableOfThisTestNamesEveryItem) {
    ASSERT_EQ(std::size(ROWS), 13u);
    for (std::size_t i = 0; i < std::size(ROWS); ++i) {
        EXPECT_STREQ(ROWS[i].item, key::ALL[i]);
    }
}

TEST_F(Dispatch, TheOnboardingsVisibilityAsksItsRuleAndNothingElse) {
    EXPECT_EQ(Ask([] { return check_visibility_int(key::ONBOARDING, 0); }), 0);
    EXPECT_CALLS(
        Lines{FeatureBool(feature::VOICE),
              E(source::UTIL, "GetFMSBool", 361, std::string("ERROR:-22, key:") + feature::VOICE),
              E(source::VISIBLE, "_IsVoiceMenuVisible", "FMS not support"),
              Visible(key::ONBOARDING, false)});
}

TEST_F(Dispatch, TheAssistantIsAlwaysEnabled) {
    for (const int value : {0, 1, -1, 9999}) {
        EXPECT_EQ(Ask([&] { return check_enable_int(key::ASSISTANT, value); }), 1);
        EXPECT_CALLS(
            Lines{E(source::ENABLE, "check_return_true", std::string("key:") + key::ASSISTANT),
                  Enable(key::ASSISTANT, true)});
    }
}

TEST_F(Dispatch, AnUnknownKeyIsHiddenAndDimmed) {
    EXPECT_EQ(Ask([] { return check_enable_int("menu/other", 0); }), 0);
    EXPECT_CALLS(Lines{E(source::ENABLE, "check_enable_int", "[FATAL]no callback[menu/other]")});
    EXPECT_EQ(Ask([] { return check_visibility_int("menu/other", 0); }), 0);
    EXPECT_CALLS(
        Lines{E(source::VISIBLE, "check_visibility_int", "[FATAL]no callback[menu/other]")});
}

TEST_F(Dispatch, ANullKeyIsUnknown) {
    EXPECT_EQ(Ask([] { return check_visibility_int(nullptr, 0); }), 0);
    EXPECT_LOG(Lines{E(source::VISIBLE, "check_visibility_int", "[FATAL]no callback[(null)]")});
    EXPECT_EQ(Ask([] { return check_enable_int(nullptr, 0); }), 0);
    EXPECT_LOG(Lines{E(source::ENABLE, "check_enable_int", "[FATAL]no callback[(null)]")});
}

TEST_F(Dispatch, EveryOtherFormAnswersYesAndLogsNothing) {
    ClearCalls();
    for (const char* item :
         {key::VOICE, key::ORVIK_CN, "menu/other", "", static_cast<const char*>(nullptr)}) {
        for (const bool value : {false, true}) {
            EXPECT_EQ(check_visibility_bool(item, value), 1);
            EXPECT_EQ(check_enable_bool(item, value), 1);
        }
        for (const double value : {0.0, -1.5, 1e300}) {
            EXPECT_EQ(check_visibility_double(item, value), 1);
            EXPECT_EQ(check_enable_double(item, value), 1);
        }
        for (const char* value : {"", "text", static_cast<const char*>(nullptr)}) {
            EXPECT_EQ(check_visibility_string(item, value), 1);
            EXPECT_EQ(check_enable_string(item, value), 1);
        }
    }
    EXPECT_CALLS(Lines{});
}
