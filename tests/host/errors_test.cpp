// Wrong input of every kind: the exit code, what is said, and that nothing was touched.
#include "vtv_process.h"

using testing::HasSubstr;
using testing::Not;

namespace {

struct Mistake {
    const char* name;
    std::vector<std::string> arguments;
    int code;
    const char* says;
};

class ErrorsTest : public VtvTest, public testing::WithParamInterface<Mistake> {};

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
        Mistake{"MissingArgument", {"set", "db/x"}, 2, "TYPE is required"},
        Mistake{"UnknownKey", {"get", "db/nowhere"}, 3, "db/nowhere: the TV has no such setting"},
        Mistake{"NoKey", {"get", "nowhere"}, 2, "\"nowhere\" is no settings key"},
        Mistake{"ItemAsKey", {"get", "voice-wake-up"}, 3, "vtv show voice-wake-up"},
        Mistake{"UnsetUnknownKey", {"unset", "db/nowhere"}, 3, "db/nowhere"},
        Mistake{"UnknownType", {"set", "db/x", "float", "1"}, 2, "\"float\" is no type"},
        Mistake{"NoNumber", {"set", "db/x", "int", "1x"}, 2, "1x"},
        Mistake{"NumberTooLarge", {"set", "db/x", "int", "99999999999"}, 2, "99999999999"},
        Mistake{"NoBoolean", {"set", "db/x", "bool", "maybe"}, 2, "maybe"},
        Mistake{"SetNoKey", {"set", "x", "int", "1"}, 2, "\"x\" is no settings key"},
        Mistake{"WrongTypeOfAKnownKey",
                {"set", "db/menu/voice/passthru", "int", "1"},
                1,
                "is a bool on a TV"},
        Mistake{"UnknownItem", {"choose", "voice-wakeup", "on"}, 3, "Did you mean voice-wake-up"},
        Mistake{"PartOfAnItem", {"show", "google"}, 3, "Did you mean voice-settings-google?"},
        Mistake{"UnknownItemToPress",
                {"press", "parental-lock"},
                3,
                "There is no item \"parental-lock\" on the Voice page. vtv show --all lists"},
        Mistake{"UnknownItemToExplain", {"explain", "x"}, 3, "There is no item \"x\""},
        Mistake{"UnknownChoice",
                {"choose", "voice-assistant", "9"},
                2,
                "1 (Orvik), 2 (Alexa), 3 (Google Assistant)"},
        Mistake{"NoValue", {"choose", "voice-wake-up", "maybe"}, 2, "on or off"},
        Mistake{"ItemWithoutValue", {"choose", "voice-settings-orvik", "1"}, 1, "has no value"},
        Mistake{"ItemWithoutChoices",
                {"press", "voice-settings-orvik", "--choose", "1"},
                2,
                "has no choices"},
        Mistake{"HiddenItem", {"press", "voice-settings-google"}, 1, "is not on the page now"},
        Mistake{"OkAndCancel", {"press", "voice-assistant", "--ok", "--cancel"}, 2, "--cancel"},
        Mistake{"UnknownTv", {"show", "--tv", "nowhere"}, 3, "there is no TV here"},
        Mistake{"UnknownModel",
                {"new", "a", "--model", "nothing"},
                3,
                "There is no TV model \"nothing\". Name a file"},
        Mistake{"MistypedModel",
                {"new", "a", "--model", "farfeld-eu"},
                3,
                "Did you mean \"farfield-eu\"?"},
        Mistake{"EmptyName", {"new", ""}, 2, "the name is empty"},
        Mistake{"TvIsThere", {"new", "default"}, 1, "there is a TV already"},
        Mistake{"UnknownProvider",
                {"show", "--provider", "/nowhere.so"},
                3,
                "there is no such provider library"},
        Mistake{"NoProvider",
                {"show", "--provider", "/etc/passwd"},
                4,
                "cannot be loaded as a provider"},
        Mistake{"UnknownPolicyFile", {"policy", "publish", "/nowhere.json"}, 3, "/nowhere.json"},
        Mistake{"UnknownFeature", {"feature", "warp.drive"}, 3, "warp.drive"},
        Mistake{"WrongFeatureType", {"feature", "recorder.microphone_type", "many"}, 2, "many"},
        Mistake{"UnknownConsent", {"consent", "cookies", "on"}, 2, "cookies"},
        Mistake{"UnknownNetwork", {"network", "fast"}, 2, "fast"},
        Mistake{"UnknownAccount", {"account", "maybe"}, 2, "signed-in or signed-out"},
        Mistake{"UnknownFault", {"fault", "vconf_get_weather"}, 2, "vconf_get_weather"},
        Mistake{"NoSuchFault", {"fault", "vconf_get_int", "--clear"}, 3, "no such fault"},
        Mistake{"NoApplicationRuns", {"app", "finish"}, 3, "No application is running"},
        Mistake{"UnknownApplication", {"app", "finish", "org.nowhere"}, 3, "org.nowhere"},
        Mistake{"UnknownPriority", {"log", "--priority", "loud"}, 2, "loud"},
        Mistake{"UnknownScenario", {"run", "/nowhere.toml"}, 3, "there is no such scenario"},
        Mistake{"UnknownCheck",
                {"validate", PROVIDER, "--filter", "nothing-like-it"},
                3,
                "There is no check"},
        Mistake{"RestoreOfNothing", {"restore", "/nowhere.json"}, 3, "/nowhere.json"}),
    [](const testing::TestParamInfo<Mistake>& tested) { return std::string(tested.param.name); });

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
