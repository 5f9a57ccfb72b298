// An option that would have no effect is refused, never ignored.
#include "vtv_process.h"

using testing::AllOf;
using testing::HasSubstr;

namespace {

using Words = std::vector<std::string>;

struct Useless {
    const char* name;
    Words arguments;
    const char* says;  // which option it is that cannot be used so
};

void PrintTo(const Useless& useless, std::ostream* out) {
    *out << useless.name;
}

class UselessOptionTest : public VtvTest, public testing::WithParamInterface<Useless> {};

}  // namespace

TEST_P(UselessOptionTest, IsRefused) {
    Ok({"show"});
    const auto before = Contents("tvs/default");
    const Output output = Vtv(GetParam().arguments);
    EXPECT_EQ(output.code, 2) << output.out << output.err;
    EXPECT_EQ(output.out, "");
    EXPECT_THAT(output.err, AllOf(HasSubstr(GetParam().says), HasSubstr("vtv")));
    EXPECT_EQ(Contents("tvs/default"), before);
}

INSTANTIATE_TEST_SUITE_P(
    Vtv, UselessOptionTest,
    testing::Values(
        Useless{"AllOfOneItem", {"show", "voice", "--all"}, "--all"},
        Useless{"AllInJson", {"show", "--all", "--json"}, "--all"},
        Useless{"WatchOfNothing", {"watch", "--count", "0"}, "--count"},
        Useless{"MissingWithoutFeature", {"feature", "--missing"}, "--missing"},
        Useless{"ResetWithoutFeature", {"feature", "--reset"}, "--reset"},
        Useless{
            "ResetInJson", {"feature", "recorder.microphone_type", "--reset", "--json"}, "--json"},
        Useless{"ValueInJson", {"feature", "recorder.microphone_type", "1", "--json"}, "--json"},
        Useless{"RecordOfALook", {"feature", "--record", "x.toml"}, "--record"},
        Useless{"LanguageInJson", {"language", "de_DE", "--json"}, "--json"},
        Useless{"RecordOfTheLanguage", {"language", "--record", "x.toml"}, "--record"},
        Useless{"RecordOfTheVoiceGuide", {"voice-guide", "--record", "x.toml"}, "--record"},
        Useless{"AccountInJson", {"account", "signed-out", "--json"}, "--json"},
        Useless{"NetworkInJson", {"network", "host", "--json"}, "--json"},
        Useless{"ConsentInJson", {"consent", "tnc", "off", "--json"}, "--json"},
        Useless{"RecordOfConsents", {"consent", "--record", "x.toml"}, "--record"},
        Useless{"AddInJson", {"file", "x", "--add", "--json"}, "--json"},
        Useless{"AddWithoutPath", {"file", "--add"}, "--add"},
        Useless{"PathWithoutAdd", {"file", "x"}, "--add"},
        Useless{"ListOfChecksOfAFile", {"validate", PROVIDER, "--list"}, "--list"},
        Useless{"ListOfSomeChecks", {"validate", "--list", "--filter", "x"}, "--list"},
        Useless{"ListInTime", {"validate", "--list", "--timeout", "5"}, "--list"},
        Useless{
            "TwoProvidersToValidate", {"validate", PROVIDER, "--provider", PROVIDER}, "--provider"},
        Useless{"SwitchInJson", {"trace", "on", "--json"}, "--json"},
        Useless{"ExportInJson", {"trace", "--export", "x", "--json"}, "--json"},
        Useless{"ClearInJson", {"trace", "--clear", "--json"}, "--json"},
        Useless{"SwitchAndClear", {"trace", "on", "--clear"}, "--clear"},
        Useless{"RecordOfTheTrace", {"trace", "--record", "x.toml"}, "--record"},
        Useless{"RecordOfFaults", {"fault", "--record", "x.toml"}, "--record"},
        Useless{"RecordOfTheMode", {"app", "mode", "--record", "x.toml"}, "--record"},
        Useless{"ProviderOfACheck", {"run", "x", "--check", "--provider", PROVIDER}, "--check"},
        Useless{"AlwaysWithoutFunction", {"fault", "--always"}, "--always"},
        Useless{"SlowWithoutFunction", {"fault", "--slow", "5"}, "--slow"},
        Useless{"ResultWithoutFunction", {"fault", "--result", "5"}, "--result"},
        Useless{"ClearAlways", {"fault", "vconf_get_int", "--clear", "--always"}, "--clear"},
        Useless{"FaultInJson", {"fault", "vconf_get_int", "--json"}, "--json"},
        Useless{"FunctionsInJson", {"fault", "--functions", "--json"}, "--json"},
        Useless{"FunctionsOfAFunction", {"fault", "vconf_get_int", "--functions"}, "--functions"},
        Useless{"FunctionsOfATv", {"fault", "--functions", "--tv", "default"}, "--functions"},
        Useless{"TvTwice", {"--tv", "default", "show", "--tv", "default"}, "--tv: is given twice"},
        Useless{"TvOfAGroupTwice",
                {"app", "--tv", "default", "list", "--tv", "default"},
                "given twice"},
        Useless{"ProviderTwice",
                {"--provider", PROVIDER, "show", "--provider", PROVIDER},
                "--provider: is given twice"}),
    [](const testing::TestParamInfo<Useless>& tested) { return std::string(tested.param.name); });

TEST_F(VtvTest, ATvBeforeAVerbThatIsAboutNoneIsRefused) {
    Ok({"show"});
    for (const Words& verb :
         {Words{"list"}, Words{"new", "x"}, Words{"import", "a", "b"}, Words{"copy", "a", "b"},
          Words{"rename", "a", "b"}, Words{"remove", "a"}, Words{"diff", "a", "b"},
          Words{"run", "x"}, Words{"validate"}, Words{"explore", "check", "--list"},
          Words{"impact", "a", "b"}}) {
        Words words = {"--tv", "default"};
        words.insert(words.end(), verb.begin(), verb.end());
        const Output output = Vtv(words);
        EXPECT_EQ(output.code, 2) << verb.front();
        EXPECT_THAT(output.err, HasSubstr("--tv: has no effect here")) << verb.front();
    }
}

TEST_F(VtvTest, AnEmptyWordIsNeverTakenForNone) {
    Ok({"show"});
    const std::vector<Words> lines = {{"show", "--tv", ""},
                                      {"--tv", "", "show"},
                                      {"show", ""},
                                      {"show", "--provider", ""},
                                      {"press", "voice", "--choose", ""},
                                      {"press", "voice", "--record", ""},
                                      {"choose", "voice-wake-up", ""},
                                      {"explain", ""},
                                      {"search", ""},
                                      {"new", ""},
                                      {"new", "x", "--model", ""},
                                      {"copy", "default", ""},
                                      {"rename", "", "x"},
                                      {"remove", ""},
                                      {"import", "", "x"},
                                      {"dump", ""},
                                      {"load", ""},
                                      {"diff", "", "default"},
                                      {"get", ""},
                                      {"set", "", "int", "1"},
                                      {"unset", ""},
                                      {"watch", ""},
                                      {"feature", ""},
                                      {"feature", "recorder.microphone_type", ""},
                                      {"policy", "publish", ""},
                                      {"app", "finish", ""},
                                      {"app", "mode", ""},
                                      {"language", ""},
                                      {"voice-guide", ""},
                                      {"account", ""},
                                      {"network", ""},
                                      {"consent", ""},
                                      {"consent", "tnc", ""},
                                      {"file", "", "--add"},
                                      {"run", ""},
                                      {"run", "x", "--junit", ""},
                                      {"run", "x", "--keep", ""},
                                      {"validate", ""},
                                      {"validate", "--filter", ""},
                                      {"log", "--function", ""},
                                      {"log", "--tag", ""},
                                      {"log", "--priority", ""},
                                      {"trace", ""},
                                      {"trace", "--export", ""},
                                      {"fault", ""},
                                      {"explore", ""}};
    for (const Words& line : lines) {
        const Output output = Vtv(line);
        EXPECT_EQ(output.code, 2) << testing::PrintToString(line) << output.out << output.err;
        EXPECT_EQ(output.out, "") << testing::PrintToString(line);
    }
    EXPECT_EQ(RunInto("/dev/null", "vtv-app", {"--tv", "", "org.nemra.wizard"}).code, 2);
    EXPECT_EQ(RunInto("/dev/null", "vtv-app", {""}).code, 2);
    const Output extra = RunInto("/dev/null", "vtv-app", {"org.nemra.wizard", "foo", "--auto"});
    EXPECT_EQ(extra.code, 2);
    EXPECT_THAT(extra.err, HasSubstr("write KEY=VALUE"));
    Ok({"set", "db/x", "string", ""});
    EXPECT_EQ(Ok({"get", "db/x"}), "\n");
}

TEST_F(VtvTest, AWatchedItemIsToldOfAlone) {
    Ok({"show"});
    RunningVtv watching(environment, {"show", "voice-wake-up", "--watch", "--json"});
    ASSERT_TRUE(watching.WaitFor("\"voice-wake-up\""));
    EXPECT_EQ(watching.Text().find("\"items\""), std::string::npos);
    Ok({"account", "signed-out"});
    EXPECT_TRUE(watching.WaitFor("\"dimmed\"")) << watching.Text();
    EXPECT_EQ(watching.Text().find("voice-settings"), std::string::npos) << watching.Text();
}

#ifdef WITH_EXPLORER

INSTANTIATE_TEST_SUITE_P(
    VtvExplore, UselessOptionTest,
    testing::Values(
        Useless{
            "ListOfInvariantsInParts", {"explore", "check", "--list", "--shard", "1/2"}, "--list"},
        Useless{
            "LinesWithoutLogs", {"explore", "diff", "a", "b", "--lines", "--no-logs"}, "--lines"},
        Useless{
            "ProviderOfDiff", {"explore", "--provider", PROVIDER, "diff", "a", "b"}, "--provider"},
        Useless{"ProviderOfMerge", {"explore", "--provider", PROVIDER, "merge", "a"}, "--provider"},
        Useless{"ImpactInTwoForms", {"impact", "a", "b", "--json", "--html"}, "--json"},
        Useless{"TableInTwoForms", {"explore", "table", "--json", "--html"}, "--json"},
        Useless{"TableInTwoOtherForms", {"explore", "table", "--html", "--markdown"}, "--html"},
        Useless{"DocsInJson", {"explore", "table", "--docs", "x", "--json"}, "--json"},
        Useless{"DocsIntoAFile", {"explore", "table", "--docs", "x", "-o", "y"}, "--docs"},
        Useless{"ListOfInvariantsInJson", {"explore", "check", "--list", "--json"}, "--list"},
        Useless{"BriefInJson", {"explore", "diff", "a", "b", "--brief", "--json"}, "--brief"},
        Useless{"SourceOfAnItem", {"explore", "depends", "voice", "--source"}, "--source"},
        Useless{"SourceInJson", {"explore", "depends", "--source", "--json"}, "--source"}),
    [](const testing::TestParamInfo<Useless>& tested) { return std::string(tested.param.name); });

TEST_F(VtvTest, AnEmptyWordIsNeverTakenForNoneByAnExplorationEither) {
    for (const Words& line : {Words{"explore", "table", ""}, Words{"explore", "table", "-o", ""},
                              Words{"explore", "check", "--shard", ""}, Words{"impact", "", "x"},
                              Words{"impact", "x", "y", "--tv", ""}}) {
        const Output output = Vtv(line);
        EXPECT_EQ(output.code, 2) << testing::PrintToString(line) << output.out << output.err;
        EXPECT_EQ(output.out, "") << testing::PrintToString(line);
    }
}

#endif
