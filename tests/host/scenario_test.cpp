// vtv run: scenarios that pass, fail, are broken, and are recorded.
#include "vtv_process.h"

#include <algorithm>
#include <filesystem>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

std::vector<std::string> Scenarios() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(SCENARIOS)) {
        names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ScenarioTest : public VtvTest, public testing::WithParamInterface<std::string> {};

}  // namespace

TEST_P(ScenarioTest, Passes) {
    Ok({"run", std::string(SCENARIOS) + "/" + GetParam() + ".toml"});
}

INSTANTIATE_TEST_SUITE_P(Flow, ScenarioTest, testing::ValuesIn(Scenarios()),
                         [](const testing::TestParamInfo<std::string>& tested) {
                             std::string name = tested.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(Scenarios, AreAtLeastTwentyFive) {
    EXPECT_GE(Scenarios().size(), 25U);
}

TEST_F(VtvTest, AFailedExpectationIsToldWithLineAndDifference) {
    Write("s.toml",
          "title = \"t\"\n\n[[step]]\nsay = \"look\"\nexpect.page.voice-wake-up = { value = "
          "\"off\" }\n\n"
          "[[step]]\npress = \"voice-wake-up\"\n");
    const Output output = Vtv({"run", Path("s.toml"), "--junit", Path("r.xml")});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.out,
                HasSubstr("s.toml:5: voice-wake-up value: expected \"off\", found \"on\""));
    EXPECT_THAT(output.out, HasSubstr("step 1: look"));
    const std::string xml = Read("r.xml");
    EXPECT_THAT(xml, HasSubstr("tests=\"2\" failures=\"1\" skipped=\"1\""));
    EXPECT_THAT(xml, HasSubstr("expected &quot;off&quot;, found &quot;on&quot;"));
    EXPECT_THAT(xml, HasSubstr("<skipped/>"));
}

// Each kind of expectation, wrong on purpose: one that could not fail would be no expectation.
TEST_F(VtvTest, EveryKindOfExpectationCanFail) {
    const std::vector<std::string> wrong = {
        "expect.page.voice = \"hidden\"",
        "expect.page.voice-wake-up = { visible = false }",
        "expect.page.voice-wake-up = { enabled = false }",
        "expect.page.voice-wake-up = { value = 0 }",
        "expect.page.voice-wake-up = { title = \"x\" }",
        "expect.page.voice-wake-up = { help = \"x\" }",
        "expect.page.voice-wake-up = { reason = \"x\" }",
        "expect.page.voice-wake-up = { popup = \"x\" }",
        "expect.page.voice-assistant = { choices = [\"x\"] }",
        "expect.sees = [\"toast\"]",
        "expect.box = { title = \"x\" }",
        "expect.popup = { title = \"x\" }",
        "expect.reason = \"x\"",
        "expect.launched = \"org.nemra.wizard\"",
        "expect.toast = \"x\"",
        "expect.setting.\"db/comss/cisblock\" = 7",
        "expect.setting.\"db/nowhere\" = 7",
        "expect.running = \"org.nemra.wizard\"",
        "expect.log = \"never written\"",
        "expect.no-log = \"key:\"",
        "expect.trace = \"x\"",
        "expect.file = \"x\"",
        "press = \"voice-settings-google\"",
        "press = \"voice-wake-up\"\nexpect.refused = true",
        "press = \"voice-assistant\"\nchoose = 2\nexpect.box = { message = \"x\" }",
        "press = \"voice-assistant\"\nchoose = 9"};
    for (const std::string& step : wrong) {
        Write("s.toml", "[[step]]\n" + step + "\n");
        EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1) << step;
    }
}

// On this TV the page is visible, and the onboarding entry is not.
TEST_F(VtvTest, WhatIsNeverToBeIsOnlyAFailureWhenAllOfItIsSo) {
    const std::string is = "never.answer.voice = { visible = true }\n";
    const std::string is_too = "never.answer.onboarding = { visible = false }\n";
    const std::string is_not = "never.answer.voice-wake-up = { title = \"x\" }\n";
    const std::pair<std::string, int> steps[] = {
        {is, 1}, {is_not, 0}, {is + is_too, 1}, {is + is_not, 0}, {is_not + is_too, 0}};
    for (const auto& [step, code] : steps) {
        Write("s.toml", "[[step]]\n\n" + step);
        const Output output = Vtv({"run", Path("s.toml")});
        EXPECT_EQ(output.code, code) << step << output.out;
        EXPECT_EQ(output.out.find("s.toml:3: all that \"never\" names is so") != std::string::npos,
                  code == 1)
            << step << output.out;
    }
    // Beside what is expected, each for itself.
    Write("s.toml", "[[step]]\nexpect.page.voice = \"hidden\"\n" + is_not);
    EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1);
    // And with a press, whose refusal is a failure all the same.
    Write("s.toml", "[[step]]\npress = \"voice-settings-google\"\n" + is_not);
    EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1);
}

TEST_F(VtvTest, ABrokenScenarioIsToldWithFileAndLine) {
    const std::vector<std::pair<std::string, std::string>> broken = {
        {"title = ", "s.toml:1: this is no TOML"},
        {"title = \"x\"", "a scenario needs steps"},
        {"[[step]]\npres = \"voice\"", "s.toml:2: \"pres\" is unknown in a step"},
        {"[[step]]\npress = \"voice-wakeup\"",
         "s.toml:2: there is no item \"voice-wakeup\". Did you mean voice-wake-up?"},
        {"[[step]]\n\nchoose = 1", "s.toml:3: \"choose\" needs a \"press\""},
        {"[[step]]\npress = \"voice\"\nanswer = \"yes\"", "s.toml:3: \"answer\" is"},
        {"[[step]]\nexpect.pages = 1", "s.toml:2: \"pages\" is unknown in expect"},
        {"[[step]]\nexpect.page.voice = \"gone\"", "s.toml:2: an item is"},
        {"[[step]]\nnever.pages = 1", "s.toml:2: \"pages\" is unknown in never"},
        {"[[step]]\n\nnever = {}", "s.toml:3: \"never\" is empty"},
        {"[[step]]\nnever = 5", "s.toml:2: \"never\" must be a table"}};
    for (const auto& [text, says] : broken) {
        Write("s.toml", text);
        const Output output = Vtv({"run", Path("s.toml")});
        EXPECT_EQ(output.code, 2) << text;
        EXPECT_THAT(output.err, HasSubstr(says)) << text;
    }
}

TEST_F(VtvTest, ARefusedPressIsRecordedAsRefused) {
    Ok({"account", "signed-out"});
    EXPECT_EQ(Vtv({"press", "voice-wake-up", "--record", Path("mine.toml")}).code, 1);
    EXPECT_THAT(Read("mine.toml"), HasSubstr("refused = true"));
    Ok({"run", Path("mine.toml")});
}

namespace {

constexpr char kChooseAlexa[] = "press = \"voice-assistant\"\nchoose = 2\nanswer = \"ok\"";

std::string Failing(const std::string& function, const std::string& use) {
    return "fault = { function = \"" + function + "\", always = true }\n" + use;
}

// What a step asks the TV for, which it cannot do, and what is told of that.
struct Undone {
    std::string step;
    std::string says;
};
const std::vector<Undone> kUndone = {
    {Failing("vconf_set_str", "press = \"voice-wake-up\""), "vconf_set_str failed"},
    {Failing("aul_launch_app",
             "press = \"voice-settings-google\"\nanswer = \"ok\"\n"
             "set.\"db/multi-assistant/default_assistant_appid\" = "
             "\"com.vantelo.tv.google-assistant\""),
     "aul_launch_app failed"},
    {Failing("app_control_send_launch_request",
             "file-add = \"share/.voice/alexa_login_success\"\n"
             "set.\"db/menu/voice/assistant_farfield\" = { \"com.vantelo.tv.alexa\" = \"on\" }\n" +
                 std::string(kChooseAlexa)),
     "app_control_send_launch_request failed"},
    {kChooseAlexa, "org.nemra.voice-onboarding could not be started: failed: "},
};

constexpr char kCommand[] =
    "\n[[packages]]\napp = \"org.nemra.voice-onboarding\"\ncommand = \"/bin/none\"\n";

}  // namespace

TEST_F(VtvTest, WhatTheTvCouldNotDoFailsTheStepUnlessItIsMeant) {
    Ok({"new", "own"});
    Write("own.toml", Read("tvs/own/tv.toml") + kCommand);
    for (const auto& [step, says] : kUndone) {
        const std::string text = "model = \"own.toml\"\n[[step]]\n" + step + "\n";
        Write("s.toml", text);
        const Output output = Vtv({"run", Path("s.toml")});
        EXPECT_EQ(output.code, 1) << step << output.out;
        EXPECT_THAT(output.out, HasSubstr("not done: " + says)) << step;
        Write("s.toml", text + "expect.failed = \"" + says + "\"\n");
        Ok({"run", Path("s.toml")});
        for (const std::string other : {"\"nothing\"", "[\"failed\", \"nothing\"]"}) {
            Write("s.toml", text + "expect.failed = " + other + "\n");
            EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1) << step << other;
        }
    }
    // A value that is handed over is nobody's press: what comes of it is judged where it is named.
    const std::string hand =
        "[[step]]\n" + Failing("vconf_set_str", "hand = { voice-wake-up = 0 }");
    Write("s.toml", hand + "\nexpect.failed = \"vconf_set_str\"\n");
    Ok({"run", Path("s.toml")});
    Write("s.toml", hand + "\nexpect.failed = \"vconf_set_bool\"\n");
    EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1);
    Write("s.toml", "[[step]]\npress = \"voice-wake-up\"\nexpect.failed = \"x\"\n");
    EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1) << "nothing has failed";
}

TEST_F(VtvTest, APressOfWhichTheTvCouldNotDoAllIsRecordedAsSuch) {
    const std::string file = Path("mine.toml");
    Ok({"fault", "vconf_set_str", "--always", "--record", file});
    EXPECT_EQ(Vtv({"press", "voice-wake-up", "--record", file}).code, 4);
    EXPECT_EQ(Vtv({"choose", "voice-wake-up", "off", "--record", file}).code, 4);
    Ok({"fault", "--clear", "--record", file});
    Ok({"press", "voice-wake-up", "--record", file});
    Ok({"run", file});
    EXPECT_THAT(Read("mine.toml"), HasSubstr("failed = "));
}

TEST_F(VtvTest, ARecordingPlaysAgain) {
    const std::string file = Path("mine.toml");
    Ok({"choose", "voice-wake-up", "off"});
    Ok({"press", "voice-assistant", "--choose", "3", "--ok", "--record", file});
    Ok({"app", "finish", "--record", file});
    Ok({"press", "voice-settings-google", "--record", file});
    Ok({"network", "disconnected", "--record", file});
    Ok({"set", "db/menu/voice/is_k_voice", "bool", "true", "--record", file});
    Ok({"power-cycle", "--record", file});
    EXPECT_THAT(Read("mine.toml"), HasSubstr("com.vantelo.tv.google-assistant Login=1"));
    Ok({"run", file});
}

TEST_F(VtvTest, AFolderThatCannotKeepTheTvsIsNamed) {
    Write("s.toml", "[[step]]\nsay = \"x\"\n");
    const Output output = Vtv({"run", Path("s.toml"), "--keep", "/dev/full"});
    EXPECT_EQ(output.code, 4);
    EXPECT_EQ(output.err,
              "vtv: /dev/full: the TVs cannot be kept there: Not a directory. Name a folder that "
              "can be made.\n");
}

TEST_F(VtvTest, TheTvsOfARunAreKeptWhenAsked) {
    Write("s.toml", "[[step]]\nset.\"db/a\" = 1\n");
    Ok({"run", Path("s.toml"), "--keep", Path("kept")});
    EXPECT_EQ(Ok({"get", "db/a", "--tv", Path("kept/1-s")}), "1\n");
}
