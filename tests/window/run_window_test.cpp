// vtv run --window: the same scenarios by the keys of the window, so that both hosts agree.
#include <filesystem>

#include "window_test.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class RunWindowTest : public WindowTest {
  protected:
    // One step on a far-field TV.
    Output Play(const std::string& step, const std::vector<std::string>& more = {}) {
        Write("one.toml", "title = \"one\"\n[[step]]\n" + step);
        std::vector<std::string> words = {"run", "--window", Path("one.toml")};
        words.insert(words.end(), more.begin(), more.end());
        return Vtv(words);
    }
};

}  // namespace

TEST_F(RunWindowTest, EveryFlowOfThePageIsAlsoPlayedByKeys) {
    const JsonDocument results = OkJson({"run", "--window", SCENARIOS, "--json"});
    size_t files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(SCENARIOS)) {
        files += entry.path().extension() == ".toml" ? 1 : 0;
    }
    EXPECT_GT(files, 30);
    EXPECT_EQ(results.size(), files);
    std::vector<std::string> beside;
    for (const Json::Value& result : results) {
        EXPECT_TRUE(result["passed"].asBool()) << result;
        for (const Json::Value& step : result["steps"]) {
            EXPECT_TRUE(step["played"].asBool()) << result["file"];
            for (const Json::Value& one : step["beside"]) {
                beside.push_back(one.asString());
            }
        }
    }
    // All but these presses are keys.
    EXPECT_THAT(beside, ElementsAre(HasSubstr("hand voice-screen-on-wake-up = 1: ")));
}

TEST_F(RunWindowTest, AWrongExpectationFailsThereToo) {
    const char* const kWrong[] = {
        "press = \"voice-assistant\"\nexpect.sees = [\"box\"]\n",
        "press = \"voice-assistant\"\nexpect.sees = []\n",
        "press = \"voice-assistant\"\nchoose = 2\nexpect.sees = [\"box\", \"application\"]\n",
        "press = \"voice-assistant\"\nchoose = 2\nexpect.box = { title = \"Change\" }\n",
        "press = \"voice-assistant\"\nchoose = 2\nexpect.box = { buttons = [\"OK\"] }\n",
        "press = \"voice-assistant\"\nchoose = 2\nanswer = \"ok\"\nexpect.launched = []\n",
        "press = \"voice-assistant\"\nchoose = 2\nanswer = \"cancel\"\n"
        "expect.launched = \"org.nemra.voice-onboarding\"\n",
        "press = \"voice-assistant\"\nchoose = 9\n",
        "press = \"voice-wake-up\"\nexpect.refused = true\n",
        "press = \"voice-wake-up\"\nexpect.page.voice-wake-up = { value = \"on\" }\n",
        "account = \"signed-out\"\npress = \"voice-wake-up\"\n",
        "account = \"signed-out\"\npress = \"voice-wake-up\"\nexpect.reason = \"because\"\n",
        "press = \"voice-settings-alexa\"\n",
        "expect.page.voice-wake-up = \"dimmed\"\n",
        "language = \"de_DE\"\nexpect.page.voice-wake-up = { title = \"Hands-free Wake-up\" }\n",
        "policy = []\nexpect.page.voice-assistant = \"enabled\"\n",
    };
    for (const char* step : kWrong) {
        const Output output = Play(step);
        EXPECT_EQ(output.code, 1) << step << output.out << output.err;
        EXPECT_THAT(output.out, AllOf(HasSubstr("FAILED"), HasSubstr("one.toml:"))) << step;
    }
    EXPECT_EQ(
        Play("press = \"voice-wake-up\"\nexpect.page.voice-wake-up = { value = \"off\" }\n").code,
        0);
}

TEST_F(RunWindowTest, AnotherProvidersPageFails) {
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_EQ(
        Vtv({"run", "--window", std::string(SCENARIOS) + "/choose-alexa.toml", "--provider", fake})
            .code,
        1);
    EXPECT_EQ(Vtv({"run", "--window", std::string(SCENARIOS) + "/choose-alexa.toml"}).code, 0);
}

TEST_F(RunWindowTest, AProviderThatCrashesIsToldWithTheScenario) {
    const Output output =
        Play("press = \"voice-wake-up\"\n",
             {"--provider", std::string(FAKES) + "/libfake-exits_when_created.so"});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, AllOf(HasSubstr("one.toml"), HasSubstr("was not played to its end")));
}

TEST_F(RunWindowTest, WhatNoKeyCanDoIsToldByName) {
    const Output hand = Play("hand = { voice-wake-up = 0 }\n");
    EXPECT_EQ(hand.code, 0) << hand.out;
    EXPECT_THAT(hand.out, HasSubstr("beside the window: hand voice-wake-up = 0: no key"));
    // A press turns a switch over; to make it what it is there is no key.
    const Output on = Play(
        "press = \"voice-wake-up\"\nchoose = \"on\"\n"
        "expect.page.voice-wake-up = { value = \"on\" }\n");
    EXPECT_EQ(on.code, 0) << on.out;
    EXPECT_THAT(on.out, HasSubstr("beside the window: press voice-wake-up to on: "));
    const Output off = Play(
        "press = \"voice-wake-up\"\nchoose = \"off\"\n"
        "expect.page.voice-wake-up = { value = \"off\" }\n");
    EXPECT_EQ(off.code, 0) << off.out;
    EXPECT_THAT(off.out, testing::Not(HasSubstr("beside the window")));
}

TEST_F(RunWindowTest, WhatFailsOfAHandedValueIsToldAlsoWhereAPressFollows) {
    const std::string step =
        "fault = { function = \"vconf_set_str\", always = true }\n"
        "hand = { voice-wake-up = 0 }\npress = \"voice-assistant\"\n";
    EXPECT_THAT(Play(step).out, HasSubstr("not done: "));
    const Output named = Play(step + "expect.failed = \"vconf_set_str\"\n");
    EXPECT_EQ(named.code, 0) << named.out;
}

TEST_F(RunWindowTest, ABoxThatIsLeftOpenIsLeftByTheNextStep) {
    EXPECT_EQ(Play("press = \"voice-assistant\"\nchoose = 2\nexpect.sees = [\"box\"]\n"
                   "[[step]]\npress = \"voice-wake-up\"\n"
                   "expect.page.voice-wake-up = { value = \"off\" }\nexpect.launched = []\n")
                  .code,
              0);
}
