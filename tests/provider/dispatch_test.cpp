// The exported questions: is the item shown, can it be selected.
#include <algorithm>

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
};

constexpr Row ROWS[] = {
    {key::VOICE, check_general_voice_supported, check_general_voice_enable},
    {key::ONBOARDING, check_general_voice_onboarding_supported,
     check_general_voice_onboarding_enable},
    {key::ASSISTANT, check_general_voice_voice_assistant, check_return_true},
    {key::WAKE_UP, check_general_voice_voice_wake_up, check_general_voice_voice_wake_up_enable},
    {key::ALWAYS, check_general_voice_voice_always_wake_up,
     check_general_voice_voice_always_wake_up_enable},
    {key::SCREEN_ON, check_general_voice_voice_screen_on_wake_up,
     check_general_voice_voice_screen_on_wake_up_enable},
    {key::HINT, check_general_voice_situational_hint,
     check_general_voice_voice_situational_hint_enable},
    {key::ORVIK, check_general_voice_voice_settings_orvik,
     check_general_voice_voice_settings_orvik_enable},
    {key::ORVIK_CN, check_general_voice_voice_settings_orvik_cn,
     check_general_voice_voice_settings_orvik_cn_enable},
    {key::TENCENT, check_general_voice_voice_settings_tencent,
     check_general_voice_voice_settings_tencent_enable},
    {key::ALEXA, check_general_voice_voice_settings_alexa,
     check_general_voice_voice_settings_alexa_enable},
    {key::GOOGLE, check_general_voice_voice_settings_google,
     check_general_voice_voice_settings_google_enable},
    {key::SALUTE, check_general_voice_voice_settings_salute,
     check_general_voice_voice_settings_salute_enable},
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

// Each row's question equals its rule, call by call, followed by the record of the answer.
class EveryRow : public Provider, public testing::WithParamInterface<Row> {
  protected:
    void Compare(Rule rule, int (*question)(const char*, int),
                 std::string (*record)(const std::string&, bool)) {
        for (const auto set : {OldTv, ReadyTv, ChinaTv}) {
            for (const char* current : {"app.orvik", "app.alexa", "app.google", "app.salute",
                                        "app.sva", "app.tencent", "other"}) {
                Reset();
                set();
                Offer(WholePolicy(), current);
                MVAList::Initialize();
                ClearCalls();
                const bool answer = rule(GetParam().item, 42);
                const Lines ofRule = Calls();
                ClearCalls();
                EXPECT_EQ(question(GetParam().item, 42), answer ? 1 : 0);
                EXPECT_CALLS(ofRule + Lines{record(GetParam().item, answer)});
            }
        }
    }
};

}  // namespace

TEST_P(EveryRow, VisibilityIsItsRulesAnswer) {
    Compare(GetParam().visible, check_visibility_int, Visible);
}

TEST_P(EveryRow, EnablingIsItsRulesAnswer) {
    Compare(GetParam().enabled, check_enable_int, Enable);
}

TEST_P(EveryRow, HasATitleAndAHelpText) {
    HostText title;
    HostText help;
    page->get_display_name(GetParam().item, title.Out());
    page->get_help_text(GetParam().item, help.Out());
    EXPECT_FALSE(title.IsNull());
    EXPECT_FALSE(help.IsNull());
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

bool HasTest(const std::string& suite, const std::string& test) {
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

}  // namespace

INSTANTIATE_TEST_SUITE_P(Items, EveryRow, testing::ValuesIn(ROWS),
                         [](const testing::TestParamInfo<Row>& row) {
                             return TestName(row.param.item);
                         });

TEST_F(Dispatch, EveryItemHasTestsOfItsVisibilityItsEnablingAndItsTexts) {
    for (const char* item : key::ALL) {
        for (const std::string test :
             {"VisibilityIsItsRulesAnswer", "EnablingIsItsRulesAnswer", "HasATitleAndAHelpText"}) {
            EXPECT_TRUE(HasTest("Items/EveryRow", test + "/" + TestName(item)))
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
              E(source::UTIL, "GetFMSBool", 361, std::string("ERROR:-2, key:") + feature::VOICE),
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
