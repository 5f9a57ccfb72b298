// vtv run: a scenario is checked whole before anything of it is played.
#include "vtv_process.h"

#include <algorithm>
#include <filesystem>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

struct Mistake {
    const char* step;  // its only line
    const char* says;
};

const std::vector<Mistake> kMistakes = {
    // Names.
    {"pres = \"voice\"", "\"pres\" is unknown in a step. Did you mean press?"},
    {"press = \"voice-wakeup\"", "there is no item \"voice-wakeup\". Did you mean voice-wake-up?"},
    {"hand = { voice-wakeup = 1 }", "Did you mean voice-wake-up?"},
    {"expect.pages = 1", "\"pages\" is unknown in expect. Did you mean page?"},
    {"expect.page.voic = \"hidden\"", "there is no item \"voic\""},
    {"expect.page.voice = { vissible = true }", "\"vissible\" is unknown in an item."},
    {"expect.answer.voice = { boxes = [] }", "\"boxes\" is unknown in an answer."},
    {"expect.box = { titel = \"x\" }", "\"titel\" is unknown in box. Did you mean title?"},
    {"fault = { function = \"vconf_get_int\", alway = true }",
     "\"alway\" is unknown in a fault. Did you mean always?"},
    {"fault = { function = \"vconf_get_itn\" }", "Did you mean vconf_get_int?"},
    {"clear-faults = \"vconf_get_itn\"", "Did you mean vconf_get_int?"},
    {"feature = { nope = 1 }", "the TV has no feature \"nope\""},
    {"feature = { \"com.vantelo/featureconf/nope\" = 1 }", "the TV has no feature"},
    {"feature-missing = \"recorder.microphone_tip\"", "Did you mean recorder.microphone_type?"},
    {"feature-reset = \"recorder.microphone_tip\"", "Did you mean recorder.microphone_type?"},
    {"consent = { tcn = true }", "\"tcn\" is unknown in consent. Known: pp, tnc."},
    {"set.\"bd/comss/cisblock\" = 2", "\"bd/comss/cisblock\" is no settings key"},
    {"unset = \"comss/cisblock\"", "is no settings key"},
    {"expect.setting.\"menu/voice\" = 1", "is no settings key"},
    {"state = { \"acount/signed_in\" = true }", "a TV has no state \"acount/signed_in\""},
    {"expect.state.\"conset/tnc\" = true", "Did you mean \"consent/tnc\"?"},
    {"set.\"db/comss/cisblok\" = 2", "Did you mean db/comss/cisblock? If it is meant: \"force"},
    {"unset = [\"db/a\", \"db/comss/cisblok\"]", "Did you mean db/comss/cisblock?"},
    {"expect.setting.\"db/menu/voice/pasthru\" = true", "Did you mean db/menu/voice/passthru?"},
    {"never.setting.\"db/comss/cisblok\" = 2", "Did you mean db/comss/cisblock?"},
    {"state = { \"feature/nope\" = 3 }", "the TV has no feature \"nope\""},
    {"never.state.\"feature/nope\" = 3", "the TV has no feature \"nope\""},
    {"state = { \"no-feature/recorder.microphone_type\" = true }",
     "Did you mean com.vantelo/featureconf/recorder.microphone_type?"},
    {"expect.state.\"feature/nope\" = \"(missing)\"", "the TV has no feature \"nope\""},
    {"expect.state.\"always_on_voice/nope\" = \"(missing)\"", "no application \"nope\""},
    {"state = { \"always_on_voice/nope\" = 1 }", "the TV has no application \"nope\""},
    {"state = { acount = \"(missing)\" }", "a TV has no state \"acount\""},
    {"state = { model = \"x\" }", "name another one at the beginning of the scenario"},
    {"expect.running = [\"org.nemra.wizrd\"]", "Did you mean org.nemra.wizard?"},
    {"never.running = \"org.nope\"", "the TV has no application \"org.nope\""},
    {"expect.launched = [\"org.nemra.wizrd type=x\"]", "Did you mean org.nemra.wizard?"},
    {"never.launched = \"org.nope type=x\"",
     "\"org.nope type=x (failed: org.nope is not installed)\""},
    {"expect.launched = \"org.nope x=1 (failed: org.nope is not installed) more\"",
     "the TV has no application \"org.nope\""},
    {"expect.launched = [\"\"]", "\"launched\" has an empty text: name an application."},
    {"force = true\nnever.launched = \" type=x\"", "\"launched\" has an empty text"},
    {"expect.running = [\"\"]", "\"running\" has an empty text: name an application."},
    {"finish = \"org.nemra.wizrd\"", "Did you mean org.nemra.wizard?"},
    {"cancel = [\"org.nemra.wizard\", \"x\"]", "the TV has no application \"x\""},
    {"launch = { app = \"x\" }", "the TV has no application \"x\""},
    {"launch = { ap = \"org.nemra.wizard\" }", "\"ap\" is unknown in a launch."},
    // Values.
    {"account = \"in\"", "\"account\" is \"signed-in\" or \"signed-out\", not \"in\"."},
    {"network = \"wifi\"", "\"wifi\" is no network"},
    {"voice-guide = \"maybe\"", "\"voice-guide\" is \"on\" or \"off\", not \"maybe\"."},
    {"applications = \"autos\"", "\"autos\" is no way to start applications"},
    {"language = \"xx_DE\"", "there are no texts in the language \"xx_DE\""},
    {"language = \"de_ger\"", "there are no texts in the language \"de_ger\""},
    {"press = \"voice-wake-up\"\nanswer = \"ok\"", "voice-wake-up asks nothing"},
    {"press = \"voice-assistant\"\nanswer = \"yes\"", "\"answer\" is \"ok\" or \"cancel\""},
    {"press = \"voice-wake-up\"\nchoose = 2", "is a switch: choose \"on\" or \"off\""},
    {"press = \"voice-wake-up\"\nchoose = \"maybe\"", "is a switch: choose \"on\" or \"off\""},
    {"press = \"voice\"\nchoose = 1", "voice has no choices"},
    {"choose = 1", "\"choose\" needs a \"press\""},
    {"answer = \"ok\"", "\"answer\" needs a \"press\""},
    {"expect.refused = true", "\"refused\" needs a \"press\""},
    {"force = true", "\"force\" needs a \"set\""},
    {"fault = { always = true }", "a fault needs \"function\""},
    {"fault = { function = \"access\", slow = 5, always = true }", "leave out \"always\""},
    {"fault = { function = \"access\", slow = 0 }", "write a whole number from 1 to 5000"},
    {"file-add = \"/etc/passwd\"", "is no file below /home/owner"},
    {"file-add = \"../x\"", "is no file below /home/owner"},
    {"file-remove = \"share/\"", "is no file below /home/owner"},
    {"expect.file = \"a/../..\"", "is no file below /home/owner"},
    {"expect.page.voice = \"gone\"", "an item is \"hidden\", \"dimmed\", \"enabled\", or a table."},
    {"expect.page.voice = { value = 1 }", "voice has no value"},
    {"expect.page.voice-wake-up = {}", "\"voice-wake-up\" is empty"},
    {"expect.answer.voice = { value = \"x\" }", "must be a whole number, or \"none\""},
    {"expect.sees = [\"tost\"]", "a press brings no \"tost\". Did you mean toast?"},
    {"expect.sees = \"change\"", "a press brings no \"change\""},
    {"state = { network = \"moon\" }", "\"moon\" is no network"},
    // Types.
    {"say = 1", "\"say\" must be a text in quotes, not a whole number."},
    {"set = 1", "\"set\" must be a table"},
    {"set.\"db/comss/cisblock\" = \"2\"", "is an int on a TV"},
    {"set.\"db/x\" = 1.5", "must be true, false, a whole number or a text in quotes"},
    {"set.\"db/x\" = 1979-05-27", "not a date or time"},
    {"set.\"db/x\" = { a = [1.5] }", "must be true, false, a whole number or a text in quotes"},
    {"set.\"db/x\" = 2147483648", "write a whole number from -2147483648 to 2147483647"},
    {"set.\"db/x\" = -9223372036854775808", "cannot be -9223372036854775808"},
    {"unset = true", "\"unset\" must be a text in quotes, or a list of them"},
    {"unset = []", "\"unset\" names nothing"},
    {"policy = 5", "\"policy\" must be a list of assistants"},
    {"policy = [1]", "\"policy\" must be a list of assistants"},
    {"policy = [{ VAOrdr = 1 }]", "\"VAOrder\" is missing: it must be a whole number"},
    {"policy = [\n    { VAOrder = 2, VAId = \"\", VAAppId = \"\", VAName = \"\", VAFFSupport = "
     "true },\n"
     "    { VAOrder = \"one\" }]",
     "\"VAOrder\" must be a whole number. If it is meant: \"force = true\""},
    {"policy = [\n"
     "    { VAOrder = 1, VAId = \"\", VAAppId = \"\", VAName = \"\", VAFFSupport = true },\n"
     "    { VAOrder = 1, VAId = \"\", VAAppId = \"\", VAName = \"\", VAFFSupport = true }]",
     "\"VAOrder\" 1 is here twice. If it is meant: \"force = true\""},
    {"state = { \"account/signed_in\" = 1 }", "is of type bool, not int"},
    {"feature = { \"recorder.microphone_type\" = true }", "is of type int, not bool"},
    {"feature = { \"recorder.microphone_type\" = 4294967297 }", "cannot be 4294967297"},
    {"account = true", "\"account\" is \"signed-in\" or \"signed-out\", not true or false."},
    {"consent = { tnc = \"yes\" }", "\"tnc\" must be true or false"},
    {"consent = true", "\"consent\" must be a table"},
    {"network = 1", "\"network\" must be a text in quotes"},
    {"language = 5", "\"language\" must be a text in quotes"},
    {"voice-guide = true", "\"voice-guide\" is \"on\" or \"off\", not true or false."},
    {"trace = \"on\"", "\"trace\" must be true or false, without quotes, not a text."},
    {"power-cycle = 1", "\"power-cycle\" must be true or false"},
    {"clear-faults = 1", "\"clear-faults\" must be a text"},
    {"fault = \"access\"", "\"fault\" must be a table"},
    {"fault = [{ function = 1 }]", "\"function\" must be a text in quotes"},
    {"fault = { function = \"access\", always = 1 }", "\"always\" must be true or false"},
    {"fault = { function = \"access\", result = 3000000000 }", "cannot be 3000000000"},
    {"finish = true", "\"finish\" must be a text in quotes, or a list of them"},
    {"hand = { voice-wake-up = true }", "\"voice-wake-up\" must be a whole number"},
    {"hand = { voice-wake-up = 9999999999 }", "cannot be 9999999999"},
    {"press = 1", "\"press\" must be a text in quotes"},
    {"press = \"voice-assistant\"\nchoose = true", "\"choose\" must be a choice's number"},
    {"press = \"voice-assistant\"\nchoose = 4294967297", "cannot be 4294967297"},
    {"expect = \"x\"", "\"expect\" must be a table"},
    {"expect.page = \"x\"", "\"page\" must be a table"},
    {"expect.page.voice = 5", "an item is \"hidden\""},
    {"expect.page.voice = { visible = \"yes\" }", "\"visible\" must be true or false"},
    {"expect.page.voice = { title = 1 }", "\"title\" must be a text in quotes"},
    {"expect.page.voice-assistant = { choices = 1 }", "\"choices\" must be a text"},
    {"expect.page.voice-wake-up = { value = true }", "\"value\" must be a whole number"},
    {"expect.answer = 1", "\"answer\" must be a table"},
    {"expect.answer.voice = \"x\"", "\"voice\" must be a table"},
    {"expect.answer.voice = { popup = [1] }", "\"popup\" must be a list of texts"},
    {"expect.sees = 5", "\"sees\" must be a text"},
    {"expect.box = \"x\"", "\"box\" must be a table"},
    {"expect.popup = { buttons = [1] }", "\"buttons\" must be a list of texts"},
    {"expect.reason = 1", "\"reason\" must be a text"},
    {"press = \"voice\"\nexpect.refused = \"yes\"", "\"refused\" must be true or false"},
    {"expect.failed = true", "\"failed\" must be a text in quotes, or a list of them"},
    {"expect.failed = []", "\"failed\" names nothing"},
    {"expect.launched = 5", "\"launched\" must be a text in quotes, or a list of them"},
    {"expect.launched = [5]", "\"launched\" must be a list of texts"},
    {"expect.toast = true", "\"toast\" must be a text"},
    {"expect.running = 1", "\"running\" must be a text"},
    {"expect.setting.\"db/comss/cisblock\" = \"two\"", "is an int on a TV"},
    {"expect.setting.\"db/x\" = { a = 1 }", "not a table"},
    {"expect.state = 1", "\"state\" must be a table"},
    {"expect.state.\"consent/tnc\" = \"yes\"", "is of type bool, not string"},
    {"expect.file = 1", "\"file\" must be a text"},
    {"expect.log = 1", "\"log\" must be a text"},
    {"expect.log = \"\"", "\"log\" names nothing"},
    {"expect.log-run = []", "\"log-run\" names nothing"},
    {"expect.no-log = []", "\"no-log\" names nothing"},
    {"expect.trace = 1", "\"trace\" must be a text"},
};

// A scenario with a step for each of the texts, and the line of each text's last line.
std::string StepsOf(const std::vector<Mistake>& mistakes, std::vector<int>* lines) {
    std::string text;
    for (const Mistake& mistake : mistakes) {
        text += std::string("[[step]]\n") + mistake.step + "\n";
        lines->push_back(static_cast<int>(std::count(text.begin(), text.end(), '\n')));
    }
    return text;
}

}  // namespace

TEST_F(VtvTest, EveryMistakeInAScenarioIsToldAtOnceWithItsLine) {
    std::vector<int> lines;
    Write("s.toml", StepsOf(kMistakes, &lines));
    const Output output = Vtv({"run", "--check", Path("s.toml")});
    EXPECT_EQ(output.code, 2);
    for (size_t i = 0; i < kMistakes.size(); ++i) {
        const std::string place = Path("s.toml") + ":" + std::to_string(lines[i]) + ": ";
        bool isTold = false;
        for (size_t at = output.err.find(place); at != std::string::npos;
             at = output.err.find(place, at + 1)) {
            const std::string line = output.err.substr(at, output.err.find('\n', at) - at);
            isTold = isTold || line.find(kMistakes[i].says) != std::string::npos;
        }
        EXPECT_TRUE(isTold) << kMistakes[i].step << ": " << kMistakes[i].says;
    }
}

TEST_F(VtvTest, EachMistakeAloneBreaksAScenario) {
    fs::create_directories(Path("all"));
    for (size_t i = 0; i < kMistakes.size(); ++i) {
        Write("all/" + std::to_string(i) + ".toml", std::string("[[step]]\n") + kMistakes[i].step);
    }
    Json::Value checked;
    ASSERT_TRUE(Json::Reader().parse(Vtv({"run", "--check", Path("all"), "--json"}).out, checked));
    ASSERT_EQ(checked.size(), kMistakes.size());
    for (const Json::Value& one : checked) {
        EXPECT_FALSE(one["sound"].asBool())
            << kMistakes[std::stoul(fs::path(one["file"].asString()).stem().string())].step;
    }
}

TEST_F(VtvTest, WhatNobodyKnowsIsPlayedWhereItIsMeant) {
    const std::vector<std::string> meant = {
        "set.\"db/comss/cisblok\" = 2\nexpect.setting.\"db/comss/cisblok\" = 2",
        "unset = \"db/comss/cisblok\"",
        "policy = [{ VAOrdr = 1 }]",
        "policy = [{ VAOrder = 7, VAId = \"GVA\" }]",
        "state = { \"feature/nope\" = 3, \"always_on_voice/nope\" = 1 }",
        "never.running = \"org.nope\"",
        "never.running = \"org.nope\"\nfile-remove = \"nope\"",
        "never.launched = \"org.nope\""};
    for (const std::string& step : meant) {
        Write("s.toml", "[[step]]\n" + step + "\n");
        EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 2) << step;
        Write("s.toml", "[[step]]\n" + step + "\nforce = true\n");
        Ok({"run", Path("s.toml")});
    }
    // Neither a slip of a known key, nor one that the TV does not have anyway.
    Write("s.toml",
          "[[step]]\nset = { \"db/other/program\" = 1, \"db/menu/voice\" = 1 }\n"
          "policy = \"[7]\"\n"
          "never.launched = \"org.nope (failed: org.nope is not installed)\"\n");
    Ok({"run", Path("s.toml")});
}

TEST_F(VtvTest, WhatIsNotThereToBeRemovedFailsWhilePlaying) {
    for (const auto& [step, says] :
         {std::pair("file-remove = \"nope\"", "s.toml:2: nope: there is no such file."),
          std::pair("clear-faults = \"vconf_get_bool\"",
                    "s.toml:2: vconf_get_bool: no such fault")}) {
        Write("s.toml", std::string("[[step]]\n") + step);
        const Output output = Vtv({"run", Path("s.toml")});
        EXPECT_EQ(output.code, 1) << step;
        EXPECT_THAT(output.out, HasSubstr(says));
    }
}

TEST_F(VtvTest, AVersionThatIsNoneHidesNoOtherMistake) {
    for (const std::string version : {"0", "\"1\"", "-7"}) {
        Write("s.toml", "version = " + version + "\n[[step]]\npres = \"voice\"\n");
        const Output output = Vtv({"run", "--check", Path("s.toml")});
        EXPECT_THAT(output.err, HasSubstr("s.toml:1: the version of a scenario must be"));
        EXPECT_THAT(output.err, HasSubstr("s.toml:3: \"pres\" is unknown in a step."));
    }
}

TEST_F(VtvTest, AVerbTakesTheLanguagesThatAScenarioTakes) {
    for (const std::string language : {"de", "de_AT", "pt_BR", "ja_JP", "de_ger", "zh_CN.UTF-8"}) {
        Write("s.toml", "[[step]]\nlanguage = \"" + language + "\"\n");
        const Output check = Vtv({"run", "--check", Path("s.toml")});
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"language", language},
              std::vector<std::string>{"show", "--with", "language=" + language}}) {
            const Output output = Vtv(words);
            EXPECT_EQ(output.code, check.code == 0 ? 0 : 3) << language << output.err;
            const std::string refusal = "there are no texts in the language \"" + language +
                                        "\"; there are: de en es fr ko pt pt_BR ru zh_CN, each";
            EXPECT_EQ(output.err.find(refusal) != std::string::npos, check.code != 0) << output.err;
            EXPECT_EQ(check.err.find(refusal) != std::string::npos, check.code != 0) << check.err;
        }
    }
    EXPECT_THAT(Vtv({"language", "ja_JP"}).err, HasSubstr("vtv set db/menu_widget/language"));
    Ok({"set", "db/menu_widget/language", "ja_JP"});
    EXPECT_EQ(Ok({"language"}), "ja_JP\n");
}

TEST_F(VtvTest, NothingOfABrokenScenarioIsPlayed) {
    Write("s.toml", "[[step]]\nset.\"db/a\" = 1\n\n[[step]]\nexpect.launched = 5\n");
    EXPECT_EQ(Vtv({"run", Path("s.toml"), "--keep", Path("kept")}).code, 2);
    EXPECT_FALSE(fs::exists(Path("kept/1-s")));
}

TEST_F(VtvTest, WhatIsNoScenarioAtAllIsToldWithItsLine) {
    const std::vector<std::pair<std::string, std::string>> broken = {
        {"a = 1\na = 2", "s.toml:2: this is no TOML"},
        {"\xff", "s.toml:1: this is no TOML"},
        {"", "a scenario needs steps"},
        {"step = 1", "s.toml:1: a scenario needs steps"},
        {"step = []", "s.toml:1: a scenario needs steps"},
        {"step = [1]", "s.toml:1: a step must be a table"},
        {"[[step]]\n\n[[step]]\nsay = \"x\"", "s.toml:1: the step is empty"},
        {"title = 1\n[[step]]\nsay = \"x\"", "s.toml:1: \"title\" must be a text"},
        {"[steps]\n[[step]]\nsay = \"x\"",
         "\"steps\" is unknown in a scenario. Did you mean step?"},
        {"model = 1\n[[step]]\nsay = \"x\"", "s.toml:1: \"model\" must be a text"},
        {"model = \"farfield-uk\"\n[[step]]\nsay = \"x\"", "Did you mean farfield-"},
        {"model = \"nowhere.toml\"\n[[step]]\nsay = \"x\"", "there is no TV model"}};
    for (const auto& [text, says] : broken) {
        Write("s.toml", text);
        const Output output = Vtv({"run", "--check", Path("s.toml")});
        EXPECT_EQ(output.code, 2) << text;
        EXPECT_THAT(output.err, HasSubstr(says)) << text;
    }
}

TEST_F(VtvTest, AModelThatTheMachineCannotReadIsNoFaultOfTheScenario) {
    // It opens as a plain file, and each read of its beginning fails as a broken disk does.
    Write("s.toml", "model = \"/proc/self/mem\"\n[[step]]\nsay = \"x\"");
    const Output output = Vtv({"run", "--check", Path("s.toml")});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, HasSubstr("/proc/self/mem: cannot be read: Input/output error"));
}

TEST_F(VtvTest, EverythingThatAStepCanHavePassesTheCheck) {
    Write("s.toml", R"toml(title = "t"
model = "farfield-eu"
[[step]]
say = "x"
set = { "db/a" = 1, "db/b" = { c = [9007199254740993] }, "db/comss/cisblock" = "two" }
force = true
unset = ["db/c"]
policy = "[]"
state = { "account/signed_in" = true, "always_on_voice/any.app" = 1, "feature/x" = 1 }
feature = { "recorder.microphone_type" = 1 }
feature-missing = "com.vantelo/featureconf/product.product_type"
feature-reset = ["product.product_type"]
account = "signed-out"
consent = { tnc = true, pp = false }
network = "host"
language = "de_DE"
voice-guide = "on"
file-add = "share/.voice/x"
file-remove = ["a", "b"]
applications = "record"
trace = true
clear-faults = ["access"]
fault = [{ function = "access", always = true, result = -5 }, { function = "vconf_get_int", slow = 1 }]
power-cycle = true
launch = { app = "org.nemra.wizard", extras = { type = "x" } }
finish = "org.nemra.wizard"
cancel = ["com.vantelo.account-ui"]
hand = { voice-wake-up = 9999 }
press = "menu/system/general-voice-voice-assistant"
choose = "Anything"
answer = "cancel"
expect.page.voice = { visible = true, enabled = true, title = "", help = "", reason = "", popup = "" }
expect.page.voice-assistant = { value = "x", choices = [] }
expect.page.voice-wake-up = { value = 1 }
expect.page.onboarding = "hidden"
expect.answer.voice = { visible = false, enabled = true, value = "none", title = "x", help = "", reason = "", choices = [], box = [], popup = ["x"] }
expect.sees = ["choices", "box", "reason", "popup", "application", "toast", "elsewhere", "nothing"]
expect.box = { title = "", message = "", buttons = [] }
expect.popup.title = "x"
expect.reason = "x"
expect.refused = false
expect.failed = ["x"]
expect.launched = []
expect.toast = "x"
expect.running = []
expect.setting = { "db/comss/cisblock" = "two", "db/none" = "(missing)" }
expect.state = { "consent/tnc" = "(missing)" }
expect.file = "x"
expect.log = "x"
expect.log-run = ["x"]
expect.no-log = ["x"]
expect.trace = "x"
)toml");
    EXPECT_THAT(Ok({"run", "--check", Path("s.toml")}), HasSubstr("1 scenario, 0 broken"));
}

TEST_F(VtvTest, EveryScenarioOfTheHousePassesTheCheck) {
    EXPECT_THAT(Ok({"run", "--check", SCENARIOS}), HasSubstr(", 0 broken"));
}

TEST_F(VtvTest, ABrokenScenarioOfAFolderDoesNotKeepTheOthersFromRunning) {
    fs::create_directories(Path("set/deeper"));
    Write("set/a-broken.toml", "[[step]]\npres = 1\n");
    Write("set/b-passes.toml", "[[step]]\nexpect.page.voice = \"enabled\"\n");
    Write("set/deeper/c-fails.toml", "[[step]]\nexpect.page.voice = \"hidden\"\n");
    const Output output = Vtv({"run", Path("set"), "--junit", Path("r.xml")});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("a-broken.toml:2: \"pres\" is unknown"));
    EXPECT_THAT(output.out, HasSubstr("BROKEN  a-broken"));
    EXPECT_THAT(output.out, HasSubstr("passed  b-passes"));
    EXPECT_THAT(output.out, HasSubstr("FAILED  c-fails"));
    EXPECT_THAT(output.out, HasSubstr("3 scenarios, 1 failed, 1 broken"));
    EXPECT_THAT(Read("r.xml"), HasSubstr("errors=\"1\""));
    EXPECT_THAT(Read("r.xml"), HasSubstr("<error message=\"" + Path("set/a-broken.toml")));
    fs::remove(Path("set/a-broken.toml"));
    EXPECT_EQ(Vtv({"run", Path("set")}).code, 1);
    fs::remove(Path("set/deeper/c-fails.toml"));
    EXPECT_EQ(Vtv({"run", Path("set")}).code, 0);
}

TEST_F(VtvTest, ModelsAndTvsInAFolderAreNoScenarios) {
    fs::create_directories(Path("set"));
    Write("set/own.toml", "title = \"Own\"\n[features]\n\"recorder.microphone_type\" = 0\n");
    Write("set/s.toml", "model = \"own.toml\"\n[[step]]\nsay = \"x\"\n");
    Ok({"run", Path("set"), "--keep", Path("set/kept")});
    EXPECT_THAT(Ok({"run", Path("set")}), HasSubstr("1 scenario, 0 failed"));
}

TEST_F(VtvTest, WhatIsNotThereIsToldBeforeAnythingIsPlayed) {
    Write("s.toml", "[[step]]\nsay = \"x\"\n");
    const Output output = Vtv({"run", Path("s.toml"), Path("none.toml")});
    EXPECT_EQ(output.code, 3);
    EXPECT_EQ(output.out, "");
    fs::create_directories(Path("empty"));
    EXPECT_EQ(Vtv({"run", Path("empty")}).code, 2);
    EXPECT_EQ(Vtv({"run", "--check", "/dev/null"}).code, 2);
    EXPECT_EQ(Vtv({"run", "--check", Path("s.toml"), "--keep", Path("k")}).code, 2);
}

TEST_F(VtvTest, AModelOfAScenarioIsFoundFromItsFolder) {
    fs::create_directories(Path("there/models"));
    Write("there/models/own.toml",
          "title = \"Own\"\n[features]\n\"voice.voice_recognition_support\" = 1\n");
    Write("there/s.toml", "model = \"models/own.toml\"\n[[step]]\nsay = \"x\"\nacount = 1\n");
    const Output output = Vtv({"run", Path("there/s.toml")});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("models/own.toml:3: "));
    EXPECT_THAT(output.err, HasSubstr("s.toml:4: \"acount\" is unknown"));
    Write("there/models/own.toml", "title = \"Own\"\n");
    Write("there/s.toml", "model = \"models/own.toml\"\n[[step]]\nexpect.state.model = \"own\"\n");
    Ok({"run", Path("there/s.toml")});
}

TEST_F(VtvTest, AnExpectationOfAPressFailsWhereNothingIsPressed) {
    for (const char* expect : {"expect.sees = []", "expect.reason = []"}) {
        Write("s.toml", std::string("[[step]]\n") + expect + "\n");
        EXPECT_EQ(Vtv({"run", Path("s.toml")}).code, 1) << expect;
    }
}
