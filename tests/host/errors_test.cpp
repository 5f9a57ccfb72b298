// Wrong input of every kind: the exit code, what is said, and that nothing was touched.
#include <algorithm>
#include <functional>

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

void PrintTo(const Mistake& mistake, std::ostream* out) {
    *out << mistake.name;
}

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
                2,
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
        Mistake{"EmptyName", {"new", ""}, 2, "NAME: is empty"},
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
        Mistake{"UnknownFault", {"fault", "vconf_get_weather"}, 3, "vconf_get_weather"},
        Mistake{"NoSuchFault", {"fault", "vconf_get_int", "--clear"}, 3, "no such fault"},
        Mistake{"NoApplicationRuns", {"app", "finish"}, 3, "No application is running"},
        Mistake{"UnknownApplication", {"app", "finish", "org.nowhere"}, 3, "org.nowhere"},
        Mistake{"FinishOfUnknownApplication", {"app", "cancel", "org.nowhere"}, 3, "org.nowhere"},
        Mistake{"UnknownApplicationMode", {"app", "mode", "never"}, 2, "never"},
        Mistake{"ResetOfUnknownFeature", {"feature", "warp.drive", "--reset"}, 3, "warp.drive"},
        Mistake{"LackOfUnknownFeature", {"feature", "warp.drive", "--missing"}, 3, "warp.drive"},
        Mistake{"NoLanguage",
                {"language", "klingon"},
                3,
                "there are no texts in the language \"klingon\"; there are: de"},
        Mistake{"UnknownVoiceGuide", {"voice-guide", "loud"}, 2, "on or off"},
        Mistake{"UnknownOwnerFile", {"file", "nothing", "--remove"}, 3, "nothing"},
        Mistake{"NoOwnerFile", {"file", "/etc/passwd", "--add"}, 2, "below /home/owner"},
        Mistake{"UnknownTvToCompare", {"diff", "default", "nowhere"}, 3, "there is no TV here"},
        Mistake{"UnknownDump", {"import", "/nowhere.json", "x"}, 3, "/nowhere.json"},
        Mistake{"LoadOfNothing", {"load", "/nowhere.json"}, 3, "/nowhere.json"},
        Mistake{"LoadOfAFolder", {"load", "/"}, 2, "this is a folder"},
        Mistake{"NothingFound", {"search", "zzzzzz"}, 1, "nothing on this TV"},
        Mistake{"UnknownProviderToValidate", {"validate", "/nowhere.so"}, 3, "/nowhere.so"},
        Mistake{"UnknownVerb", {"shwo"}, 2, "Did you mean show"},
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

TEST_F(VtvTest, ABrokenJsonFileIsToldWithItsPlace) {
    Write("broken.json", "{\n\"settings\": {");
    for (const char* verb : {"load", "restore"}) {
        const Output output = Vtv({verb, Path("broken.json")});
        EXPECT_EQ(output.code, 2) << verb;
        EXPECT_THAT(output.err, HasSubstr("broken.json:2:14: not JSON: ")) << verb;
    }
}

// What is wrong inside of a file: the file's text, the verb that reads it, and the place that is
// told.
struct BadContent {
    const char* name;
    const char* text;
    std::vector<std::string> verb;  // with the file's name behind it
    const char* place;
};

void PrintTo(const BadContent& content, std::ostream* out) {
    *out << content.name;
}

class BadContentTest : public VtvTest, public testing::WithParamInterface<BadContent> {};

TEST_P(BadContentTest, IsToldWithFileAndLineAndTouchesNothing) {
    Ok({"show"});
    Write("policy.json", "[]");
    const auto before = Contents("tvs/default/settings");
    Write("bad", GetParam().text);
    std::vector<std::string> arguments = GetParam().verb;
    for (std::string& word : arguments) {
        word = word == "POLICY" ? Path("policy.json") : word == "BAD" ? Path("bad") : word;
    }
    const Output output = Vtv(arguments);
    EXPECT_EQ(output.code, 2) << output.err;
    EXPECT_THAT(output.err, HasSubstr(Path("bad") + GetParam().place));
    EXPECT_EQ(Contents("tvs/default/settings"), before);
}

INSTANTIATE_TEST_SUITE_P(
    Vtv, BadContentTest,
    testing::Values(
        BadContent{
            "DumpWithUnknownMember", "{\n\"x\": 1}", {"load", "BAD"}, ":2:6: \"x\" is unknown"},
        BadContent{
            "DumpWithUnknownNetwork", "{\n\n\"network\": \"fast\"}", {"load", "BAD"}, ":3:12: "},
        BadContent{"DumpWithNoKey", "{\"settings\": {\n\"x\": 1}}", {"load", "BAD"}, ":2:6: "},
        BadContent{"DumpWithWrongValue",
                   "{\"settings\": {\n\"db/x\": 1.5}}",
                   {"import", "BAD", "new"},
                   ":2:9: \"db/x\" must be"},
        BadContent{"DumpWithFeatureOfAnotherType",
                   "{\"features\": {\n\"com.vantelo/featureconf/recorder.microphone_type\": true}}",
                   {"load", "BAD"},
                   ":2:53: The feature"},
        BadContent{"DumpWithForeignFile",
                   "{\"files\": [\n\"../../etc/passwd\"]}",
                   {"load", "BAD"},
                   ":2:1: "},
        BadContent{"DumpWithMemberTwice",
                   "{\"signed_in\": true,\n\"signed_in\": false}",
                   {"load", "BAD"},
                   ":2:1: not JSON"},
        BadContent{"DumpThatIsEmpty", "", {"load", "BAD"}, ":1:1: not JSON"},
        BadContent{
            "SnapshotThatIsADump", "{\n\"format\": \"vtv-dump\"}", {"restore", "BAD"}, ":2:11: "},
        BadContent{"SnapshotWithForeignFile",
                   "{\"format\": \"vtv-snapshot\", \"settings\": {}, \"state\": {},\n"
                   "\"files\": [\"/etc/x\"]}",
                   {"restore", "BAD"},
                   ":2:11: "},
        BadContent{"PolicyThatIsNone", "\n{}", {"policy", "publish", "BAD"}, ":2:1: a policy is"},
        BadContent{"PolicyThatIsNoJson", "[\n,", {"policy", "publish", "BAD"}, ":2:1: not JSON"},
        BadContent{"ModelThatIsNoToml", "title = 1\n=", {"new", "x", "--model", "BAD"}, ":2: "},
        BadContent{"ModelWithUnknownFeature",
                   "[features]\n\"warp.drive\" = 1\n",
                   {"new", "x", "--model", "BAD"},
                   ":2: there is no feature"},
        BadContent{"ScenarioThatIsNoToml", "\n=", {"run", "BAD"}, ":2: "},
        BadContent{"ScenarioWithUnknownItem",
                   "[[step]]\npress = \"voice-wakeup\"\n",
                   {"run", "BAD"},
                   ":2: "}),
    [](const testing::TestParamInfo<BadContent>& tested) {
        return std::string(tested.param.name);
    });

TEST_F(VtvTest, AWriteThatThePlatformRefusesIsNamed) {
    Ok({"show"});
    Ok({"fault", "vconf_set_str", "--always"});
    const Output output = Vtv({"choose", "voice-wake-up", "off"});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, HasSubstr("vconf_set_str failed, as it was told to"));
    EXPECT_EQ(Item("voice-wake-up")["value"], 1);
}

#ifdef WITH_EXPLORER

INSTANTIATE_TEST_SUITE_P(
    VtvExplore, ErrorsTest,
    testing::Values(
        Mistake{
            "UnknownModelOfSequences", {"explore", "sequences", "--tv", "nothing"}, 3, "nothing"},
        Mistake{"UnknownExploration", {"explore", "chekc"}, 2, "no exploration"},
        Mistake{"UnknownInvariant", {"explore", "check", "nothing"}, 3, "nothing"},
        Mistake{"UnknownQuestion", {"explore", "table", "-q", "nothing"}, 3, "nothing"},
        Mistake{"UnknownDependent", {"explore", "depends", "-q", "nothing"}, 3, "nothing"},
        Mistake{"UnknownInput", {"explore", "depends", "--reverse", "db/nothing"}, 3, "db/nothing"},
        Mistake{"UnknownInvariantOfSequences",
                {"explore", "sequences", "--invariant", "nothing"},
                3,
                "nothing"},
        Mistake{"UnknownBuild", {"explore", "diff", PROVIDER, "/nowhere.so"}, 3, "/nowhere.so"},
        Mistake{"NoBuild", {"explore", "diff", PROVIDER, "/etc/passwd"}, 4, "/etc/passwd"},
        Mistake{"UnknownQuestionOfDiff",
                {"explore", "diff", PROVIDER, PROVIDER, "--only", "nothing"},
                3,
                "nothing"},
        Mistake{"UnknownPolicy", {"impact", "/nowhere.json", "/nowhere.json"}, 3, "/nowhere.json"}),
    [](const testing::TestParamInfo<Mistake>& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(VtvExplore, BadContentTest,
                         testing::Values(BadContent{"PolicyOfImpact",
                                                    "[\n5]",
                                                    {"impact", "POLICY", "BAD"},
                                                    ":2:1: an assistant"},
                                         BadContent{"ModelOfSequences",
                                                    "title = \"x\"\n=",
                                                    {"explore", "sequences", "--tv", "BAD"},
                                                    ":2: "}),
                         [](const testing::TestParamInfo<BadContent>& tested) {
                             return std::string(tested.param.name);
                         });

#endif

TEST_F(VtvTest, MoreThanAnyTvHasIsRefusedAtOnceWithItsNumberAndTheLimit) {
    Ok({"show"});
    const auto repeated = [](int count, const std::function<std::string(int)>& entry) {
        std::string text;
        for (int i = 1; i <= count; ++i) {
            text += entry(i);
        }
        return text;
    };
    const auto list = [&](int count, const std::function<std::string(int)>& entry) {
        std::string text = repeated(count, [&](int i) { return entry(i) + ","; });
        text.pop_back();
        return text;
    };
    const auto assistant = [](int i) {
        return R"({"VAOrder":)" + std::to_string(i) +
               R"(,"VAId":"X","VAAppId":"x","VAName":"x","VAFFSupport":true})";
    };
    const auto setting = [](int i) { return "\"db/x" + std::to_string(i) + "\":1"; };
    struct Row {
        const char* what;
        int most;
        std::string file;
        std::vector<std::string> verb;
        std::function<std::string(int)> text;
    };
    const std::vector<Row> rows = {
        {"assistants",
         1000,
         "p.json",
         {"policy", "publish", "FILE"},
         [&](int n) { return "[" + list(n, assistant) + "]"; }},
        {"assistants",
         1000,
         "m.toml",
         {"new", "made", "--model", "FILE"},
         [&](int n) {
             return repeated(n, [](int i) {
                 return "[[assistants]]\norder = " + std::to_string(i) +
                        "\nid = \"ALEXA\"\napp = \"a\"\nname = \"n\"\n";
             });
         }},
        {"settings",
         10000,
         "d.json",
         {"load", "FILE"},
         [&](int n) { return "{\"settings\": {" + list(n, setting) + "}}"; }},
        {"files",
         10000,
         "f.json",
         {"load", "FILE"},
         [&](int n) {
             return "{\"files\": [" +
                    list(n, [](int i) { return "\"f" + std::to_string(i) + "\""; }) + "]}";
         }},
        {"entries of \"step\"", 10000, "s.toml", {"run", "--check", "FILE"}, [&](int n) {
             return repeated(n, [](int) { return "[[step]]\nunset = \"db/x\"\n"; });
         }}};
    for (const Row& row : rows) {
        std::vector<std::string> verb = row.verb;
        std::replace(verb.begin(), verb.end(), std::string("FILE"), Path(row.file));
        for (const int count : {row.most + 1, 100000}) {
            Write(row.file, row.text(count));
            const auto before = Contents("tvs/default/settings");
            const Output output = Vtv(verb);
            EXPECT_EQ(output.code, 2) << row.file;
            EXPECT_THAT(output.out + output.err,
                        HasSubstr(std::to_string(count) + " " + row.what +
                                  " are too many: at most " + std::to_string(row.most)));
            EXPECT_THAT(output.out + output.err, HasSubstr(Path(row.file) + ":1"));
            EXPECT_TRUE(Contents("tvs/default/settings") == before);
        }
        if (row.most == 1000) {
            Write(row.file, row.text(row.most));
            EXPECT_EQ(Vtv(verb).code, 0) << "as many as may be: " << row.file;
        }
    }
}

TEST_F(VtvTest, ATvWithMoreThanAnyListHasIsUsedKeyByKeyAndListedByNobody) {
    Ok({"snapshot", Path("snapshot.json")});
    Ok({"dump", Path("dump.json")});
    const size_t own = Contents("tvs/default/settings").size() - 1;  // but the version
    for (size_t i = own; i <= 10000; ++i) {
        Write("tvs/default/settings/db%2Fx" + std::to_string(i), "int 1\n1\n");
    }
    const std::string folder = Path("tvs/default/settings");
    for (const std::vector<std::string>& verb :
         std::vector<std::vector<std::string>>{{"keys"},
                                               {"search", "x777"},
                                               {"dump", Path("d.json")},
                                               {"snapshot", Path("s.json")},
                                               {"restore", Path("snapshot.json")},
                                               {"load", Path("dump.json")},
                                               {"reset", "--all"},
                                               {"watch", "--count", "1"},
                                               {"set", "db/another", "int", "1"}}) {
        const Output output = Vtv(verb);
        EXPECT_EQ(output.code, 2) << verb.front() << output.out;
        EXPECT_THAT(output.err, HasSubstr(folder + ": 1000")) << verb.front();
        EXPECT_THAT(output.err, HasSubstr("keys are too many: at most 10000. Remove those"));
    }
    EXPECT_EQ(Ok({"get", "db/x777"}), "1\n");
    Ok({"set", "db/x777", "int", "2"});
    Ok({"show"});
    EXPECT_THAT(Ok({"log"}), HasSubstr("are too many"));
    Ok({"unset", "db/x777"});
    const Output output = Vtv({"keys"});
    EXPECT_THAT(output.err, HasSubstr(Path("tvs/default") + ": 10001 settings are too many"))
        << "with those in memory";
    Ok({"unset", "db/x778"});
    Ok({"keys"});
}

TEST_F(VtvTest, ATvWithMoreFilesThanAnyIsNotOpened) {
    Ok({"show"});
    for (int i = 0; i <= 100000; ++i) {
        Write("tvs/default/apps/" + std::to_string(i), "");
    }
    const Output output = Vtv({"get", "db/comss/cisblock"});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr(Path("tvs/default") +
                                      ": this holds more files and folders than any TV: at most "
                                      "100000. Remove"));
}
