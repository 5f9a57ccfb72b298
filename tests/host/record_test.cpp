// vtv record: all that is done to a TV becomes a scenario.
#include <filesystem>

#include "vtv_process.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST_F(VtvTest, AllThatIsDoneBetweenStartAndStopIsAScenarioThatPasses) {
    Ok({"set", "db/before", "int", "1"});
    Ok({"snapshot", Path("first.json")});
    Ok({"record", "start", Path("all.toml")});
    Ok({"press", "voice-wake-up"});
    Ok({"set", "db/comss/countrycode=FR", "db/comss/cisblock=2"});
    Ok({"reset", "db/comss/cisblock"});
    Ok({"feature", "recorder.microphone_type", "0"});
    Ok({"account", "signed-out"});
    Ok({"press", "voice-settings-orvik", "--ok"});
    Ok({"app", "finish"});
    Ok({"consent", "pp", "off"});
    Ok({"language", "de_DE"});
    Ok({"file", "share/.voice/x", "--add"});
    Ok({"fault", "vconf_get_int", "--slow", "1"});
    Ok({"restore", Path("first.json")});
    Ok({"choose", "voice-wake-up", "off"});
    Ok({"record", "stop"});
    Ok({"set", "db/after", "int", "1"});
    const std::string scenario = Read("all.toml");
    EXPECT_THAT(scenario, AllOf(HasSubstr("db/before"), Not(HasSubstr("db/after"))));
    Ok({"dump", Path("dump.json")});
    // The scenario leads to where the TV is.
    Write("more.toml", scenario +
                           "\n[[step]]\nexpect.setting.\"db/comss/countrycode\" = \"DE\"\n"
                           "expect.state.\"account/signed_in\" = true\n"
                           "expect.state.\"consent/pp\" = true\n"
                           "expect.page.voice-wake-up = { value = 0 }\n");
    Ok({"run", Path("more.toml")});
}

TEST_F(VtvTest, ALoadedDumpIsRecorded) {
    Ok({"new", "other"});
    Ok({"set", "db/comss/countrycode=FR", "--tv", "other"});
    Ok({"unset", "db/menu/voice/mva_list", "--tv", "other"});
    Ok({"feature", "projector_feature_support", "true", "--tv", "other"});
    Ok({"feature", "recorder.microphone_type", "--missing", "--tv", "other"});
    Ok({"network", "disconnected", "--tv", "other"});
    Ok({"dump", Path("other.json"), "--tv", "other"});
    Ok({"feature", "recorder.microphone_type", "0"});
    Ok({"load", Path("other.json"), "--record", Path("load.toml")});
    Write("more.toml",
          Read("load.toml") +
              "\n[[step]]\nexpect.setting.\"db/menu/voice/mva_list\" = \"(missing)\"\n"
              "expect.setting.\"db/comss/countrycode\" = \"FR\"\n"
              "expect.state.network = \"disconnected\"\n"
              "expect.state.\"feature/com.vantelo/featureconf/projector_feature_support\" = true\n"
              "expect.state.\"no-feature/com.vantelo/featureconf/recorder.microphone_type\" = "
              "true\n");
    Ok({"run", Path("more.toml")});
}

TEST_F(VtvTest, ARecordingIsBegunOnceAndEndedOnce) {
    Ok({"show"});
    EXPECT_EQ(Vtv({"record", "status"}).code, 1);
    EXPECT_EQ(Vtv({"record", "stop"}).code, 1);
    Ok({"record", "start", Path("a.toml")});
    EXPECT_THAT(Ok({"record", "status"}), HasSubstr(Path("a.toml")));
    EXPECT_EQ(OkJson({"record", "status", "--json"})["file"], Path("a.toml"));
    EXPECT_EQ(Vtv({"record", "start", Path("b.toml")}).code, 1);
    EXPECT_THAT(Vtv({"record", "start", Path("b.toml")}).err, HasSubstr(Path("a.toml")));
    Ok({"record", "stop"});
    EXPECT_EQ(Vtv({"record", "stop"}).code, 1);
    Ok({"run", Path("a.toml")});
    Ok({"record", "start", Path("a.toml")});
    Ok({"network", "disconnected"});
    Ok({"record", "stop"});
    EXPECT_THAT(Read("a.toml"), HasSubstr("disconnected"));
    Ok({"run", Path("a.toml")});
}

TEST_F(VtvTest, WhatIsNoRecordingIsNotRecordedInto) {
    Ok({"show"});
    Write("mine.toml", "[[step]]\npress = \"voice\"\n");
    EXPECT_EQ(Vtv({"record", "start", Path("mine.toml")}).code, 2);
    EXPECT_EQ(Vtv({"record", "start", Path("nowhere/mine.toml")}).code, 4);
    EXPECT_EQ(Vtv({"record", "status"}).code, 1);
    EXPECT_EQ(Read("mine.toml"), "[[step]]\npress = \"voice\"\n");
}

TEST_F(VtvTest, WhatIsTriedAndACopyAreNotRecorded) {
    Ok({"show"});
    Ok({"record", "start", Path("a.toml")});
    const std::string before = Read("a.toml");
    Ok({"press", "voice-wake-up", "--with", "language=de_DE"});
    Ok({"copy", "default", "copy"});
    Ok({"network", "disconnected", "--tv", "copy"});
    EXPECT_EQ(Read("a.toml"), before);
    Ok({"network", "host", "--record", Path("b.toml")});
    EXPECT_THAT(Read("a.toml"), HasSubstr("host"));
    EXPECT_THAT(Read("b.toml"), HasSubstr("host"));
    Ok({"network", "connected", "--record", Path("a.toml")});
    Ok({"remove", "default"});
}

TEST_F(VtvTest, JUnitBeginsWithTheTotals) {
    std::filesystem::create_directory(Path("set"));
    Write("set/a.toml", "[[step]]\npress = \"voice-wake-up\"\n\n[[step]]\nnetwork = \"host\"\n");
    Write("set/b.toml",
          "[[step]]\nexpect.page.voice = \"hidden\"\n\n[[step]]\nnetwork = \"host\"\n");
    Write("set/c.toml", "[[step]]\npres = 1\n");
    EXPECT_EQ(Vtv({"run", Path("set"), "--junit", Path("out.xml")}).code, 2);
    EXPECT_THAT(Read("out.xml"),
                HasSubstr("<testsuites name=\"vtv run\" tests=\"5\" failures=\"1\" errors=\"1\" "
                          "skipped=\"1\" time=\""));
}
