// Wrong input of every kind: the exit code, what is said, and that nothing was touched.
#include "vtv_process.h"

using testing::HasSubstr;
using testing::Not;

namespace {

struct Case {
    const char* name;
    std::vector<std::string> arguments;
    int code;
    const char* says;
};

class ErrorsTest : public VtvTest, public testing::WithParamInterface<Case> {};

}  // namespace

TEST_P(ErrorsTest, IsToldAndTouchesNothing) {
    Ok({"show"});
    const auto before = Contents("tvs/default/settings");
    const Output output = Vtv(GetParam().arguments);
    EXPECT_EQ(output.code, GetParam().code) << output.err;
    EXPECT_THAT(output.err, HasSubstr(GetParam().says));
    EXPECT_THAT(output.err, Not(HasSubstr("terminate called")));
    EXPECT_EQ(Contents("tvs/default/settings"), before);
}

INSTANTIATE_TEST_SUITE_P(
    Vtv, ErrorsTest,
    testing::Values(
        Case{"UnknownVerb", {"shwo"}, 2, "There is no verb \"shwo\""},
        Case{"MissingArgument", {"set", "db/x"}, 2, "TYPE is required"},
        Case{"UnknownOption", {"show", "--colour"}, 2, "--colour"},
        Case{"TooManyArguments", {"get", "db/x", "db/y"}, 2, "db/y"},
        Case{"UnknownKey", {"get", "db/nowhere"}, 3, "db/nowhere: the TV has no such setting"},
        Case{"NoKey", {"get", "nowhere"}, 2, "\"nowhere\" is no settings key"},
        Case{"ItemAsKey", {"get", "voice-wake-up"}, 3, "vtv show voice-wake-up"},
        Case{"UnsetUnknownKey", {"unset", "db/nowhere"}, 3, "db/nowhere"},
        Case{"UnknownType", {"set", "db/x", "float", "1"}, 2, "\"float\" is no type"},
        Case{"NoNumber", {"set", "db/x", "int", "1x"}, 2, "1x"},
        Case{"NumberTooLarge", {"set", "db/x", "int", "99999999999"}, 2, "99999999999"},
        Case{"NoBoolean", {"set", "db/x", "bool", "maybe"}, 2, "maybe"},
        Case{"SetNoKey", {"set", "x", "int", "1"}, 2, "\"x\" is no settings key"},
        Case{"WrongTypeOfAKnownKey",
             {"set", "db/menu/voice/passthru", "int", "1"},
             1,
             "is a bool on a TV"},
        Case{"UnknownItem", {"choose", "voice-wakeup", "on"}, 3, "Did you mean voice-wake-up"},
        Case{"UnknownItemToPress",
             {"press", "parental-lock"},
             3,
             "There is no item \"parental-lock\""},
        Case{"UnknownItemToExplain", {"explain", "x"}, 3, "There is no item \"x\""},
        Case{"UnknownChoice",
             {"choose", "voice-assistant", "9"},
             2,
             "1 (Orvik), 2 (Alexa), 3 (Google Assistant)"},
        Case{"NoValue", {"choose", "voice-wake-up", "maybe"}, 2, "on or off"},
        Case{"ItemWithoutValue", {"choose", "voice-settings-orvik", "1"}, 1, "has no value"},
        Case{"ItemWithoutChoices",
             {"press", "voice-settings-orvik", "--choose", "1"},
             2,
             "has no choices"},
        Case{"HiddenItem", {"press", "voice-settings-google"}, 1, "is not on the page now"},
        Case{"OkAndCancel", {"press", "voice-assistant", "--ok", "--cancel"}, 2, "--cancel"},
        Case{"UnknownTv", {"show", "--tv", "nowhere"}, 3, "there is no TV here"},
        Case{"UnknownModel",
             {"new", "a", "--model", "nothing"},
             3,
             "There is no TV model \"nothing\""},
        Case{"TvIsThere", {"new", "default"}, 1, "there is a TV already"},
        Case{"UnknownProvider",
             {"show", "--provider", "/nowhere.so"},
             3,
             "there is no such provider library"},
        Case{"NoProvider",
             {"show", "--provider", "/etc/passwd"},
             4,
             "cannot be loaded as a provider"},
        Case{"UnknownPolicyFile", {"policy", "publish", "/nowhere.json"}, 3, "/nowhere.json"},
        Case{"UnknownFeature", {"feature", "warp.drive"}, 3, "warp.drive"},
        Case{"WrongFeatureType", {"feature", "recorder.microphone_type", "many"}, 2, "many"},
        Case{"UnknownConsent", {"consent", "cookies", "on"}, 2, "cookies"},
        Case{"UnknownNetwork", {"network", "fast"}, 2, "fast"},
        Case{"UnknownAccount", {"account", "maybe"}, 2, "signed-in or signed-out"},
        Case{"UnknownFault", {"fault", "vconf_get_weather"}, 2, "vconf_get_weather"},
        Case{"NoSuchFault", {"fault", "vconf_get_int", "--clear"}, 3, "no such fault"},
        Case{"NoApplicationRuns", {"app", "finish"}, 3, "No application is running"},
        Case{"UnknownApplication", {"app", "finish", "org.nowhere"}, 3, "org.nowhere"},
        Case{"UnknownPriority", {"log", "--priority", "loud"}, 2, "loud"},
        Case{"UnknownScenario", {"run", "/nowhere.toml"}, 3, "there is no such scenario"},
        Case{"UnknownCheck",
             {"validate", PROVIDER, "--filter", "nothing-like-it"},
             3,
             "There is no check"},
        Case{"RestoreOfNothing", {"restore", "/nowhere.json"}, 3, "/nowhere.json"}),
    [](const testing::TestParamInfo<Case>& tested) { return std::string(tested.param.name); });

TEST_F(VtvTest, ABrokenModelIsToldWithFileAndLineAndLeavesNoTv) {
    Write("model.toml", "title = \"x\"\n\n[features]\n\"voice.voice_recognition_suport\" = true\n");
    const Output output = Vtv({"new", "broken", "--model", Path("model.toml")});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("model.toml:4: "));
    EXPECT_THAT(output.err, HasSubstr("voice.voice_recognition_support"));
    EXPECT_EQ(Vtv({"show", "--tv", "broken"}).code, 3);
}

TEST_F(VtvTest, ABrokenJsonFileIsToldWithItsName) {
    Write("broken.json", "{\"settings\": {");
    for (const char* verb : {"load", "restore"}) {
        const Output output = Vtv({verb, Path("broken.json")});
        EXPECT_EQ(output.code, 2) << verb;
        EXPECT_THAT(output.err, HasSubstr("broken.json: is not JSON")) << verb;
    }
}

TEST_F(VtvTest, AWriteThatThePlatformRefusesEndsWithTheAnswerNo) {
    Ok({"show"});
    Ok({"fault", "vconf_set_str", "--always"});
    const Output output = Vtv({"choose", "voice-wake-up", "off"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.err, HasSubstr("did not take the value: it is still on"));
}

TEST_F(VtvTest, HelpTeachesEachVerb) {
    const std::string help = Ok({"--help"});
    for (const char* verb :
         {"show",     "press",       "choose",  "explain",  "new",     "list", "get",
          "set",      "unset",       "watch",   "search",   "policy",  "app",  "feature",
          "language", "voice-guide", "account", "network",  "consent", "file", "power-cycle",
          "dump",     "load",        "import",  "snapshot", "restore", "diff", "run",
          "validate", "log",         "trace",   "fault"}) {
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + verb + " ")) << verb;
        EXPECT_THAT(Ok({verb, "--help"}), HasSubstr("Examples:")) << verb;
    }
}

TEST_F(VtvTest, NoColourReachesAPipe) {
    EXPECT_THAT(Ok({"show"}), Not(HasSubstr("\033")));
}
