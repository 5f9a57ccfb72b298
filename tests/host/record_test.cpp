// vtv record: all that is done to a TV becomes a scenario.
#include <json/json.h>

#include <filesystem>

#include "vtv_process.h"

namespace fs = std::filesystem;

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

TEST_F(VtvTest, ASnapshotWithoutTheModelsNameIsRestoredByItsRecording) {
    Json::Value snapshot;
    ASSERT_TRUE(Json::Reader().parse(Ok({"snapshot"}), snapshot));
    snapshot["state"].removeMember("model");
    Write("old.json", snapshot.toStyledString());
    Ok({"restore", Path("old.json"), "--record", Path("old.toml")});
    EXPECT_THAT(Read("old.toml"), HasSubstr("model = \"(missing)\""));
    Ok({"run", Path("old.toml")});
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

// The only note that there is.
std::string NoteIn(const std::string& folder) {
    std::string note;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        note = entry.path().filename();
    }
    return note;
}

TEST_F(VtvTest, NothingThatLiesInATvMakesItRecorded) {
    Ok({"show"});
    const std::string tv = Path("tvs/default");
    Write("tvs/default/recording", Path("bait"));
    EXPECT_EQ(Vtv({"record", "status"}).code, 1);
    Ok({"network", "disconnected"});
    EXPECT_FALSE(fs::exists(Path("bait")));
    // Neither is one that was copied, or that lies where one was that is recorded.
    Ok({"record", "start", Path("a.toml")});
    fs::copy(tv, Path("tvs/sent"), fs::copy_options::recursive);
    const std::string before = Read("a.toml");
    Ok({"network", "host", "--tv", "sent"});
    EXPECT_EQ(Read("a.toml"), before);
    fs::rename(tv, Path("tvs/moved"));
    fs::rename(Path("tvs/sent"), tv);
    Ok({"network", "host"});
    EXPECT_EQ(Read("a.toml"), before);
    Ok({"network", "host", "--tv", "moved"});
    EXPECT_NE(Read("a.toml"), before) << "it is the same folder";
}

TEST_F(VtvTest, ATvThatIsRecordedIsRenamedAfterwardsOnly) {
    Write("mine.toml", Read("model.toml") + "title = \"mine\"\n");
    Ok({"new", "mine", "--model", Path("mine.toml")});
    Ok({"record", "start", Path("a.toml"), "--tv", "mine"});
    const Output refused = Vtv({"rename", "mine", "other"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, AllOf(HasSubstr(Path("a.toml")), HasSubstr("vtv record stop")));
    Ok({"network", "disconnected", "--tv", "mine"});
    // Moved by hand, its model is not where the recording has it.
    fs::rename(Path("tvs/mine"), Path("tvs/other"));
    const Output lost = Vtv({"network", "host", "--tv", "other"});
    EXPECT_EQ(lost.code, 2);
    EXPECT_THAT(lost.err, AllOf(HasSubstr("Nothing was done"), HasSubstr("vtv record stop")));
    Ok({"record", "stop", "--tv", "other"});
    Ok({"network", "host", "--tv", "other"});
    Ok({"rename", "other", "mine"});
}

TEST_F(VtvTest, TheRecordingOfATvThatIsRemovedIsForgotten) {
    Ok({"show"});
    Ok({"record", "start", Path("a.toml")});
    EXPECT_NE(NoteIn(Path(".config/vtv/recordings")), "");
    Ok({"remove", "default"});
    EXPECT_EQ(NoteIn(Path(".config/vtv/recordings")), "");
}

TEST_F(VtvTest, ANoteThatIsDamagedOrOfOthersIsNamedWithWhatToDo) {
    Ok({"show"});
    Ok({"record", "start", Path("a.toml")});
    const std::string note = ".config/vtv/recordings/" + NoteIn(Path(".config/vtv/recordings"));
    for (const char* junk : {"", "junk", "\n", "relative/file", "/with\nline"}) {
        Write(note, junk);
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"network", "host"}, {"record", "status"}}) {
            const Output output = Vtv(words);
            EXPECT_EQ(output.code, 4) << junk;
            EXPECT_THAT(output.err, AllOf(HasSubstr(Path(note)), HasSubstr("Remove it")));
        }
        Ok({"get", "db/menu_widget/language"});
    }
    Write(note, Path("a.toml"));
    Ok({"network", "host"});
    fs::permissions(Path(note), fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::add);
    EXPECT_THAT(Vtv({"network", "host"}).err, HasSubstr("chmod go-w " + Path(note)));
    fs::remove(Path(note));
    fs::create_symlink(Path("a.toml"), Path(note));
    EXPECT_EQ(Vtv({"network", "host"}).code, 4);
    fs::remove(Path(note));
    Ok({"network", "host"});
}

TEST_F(VtvTest, JUnitBeginsWithTheTotals) {
    fs::create_directory(Path("set"));
    Write("set/a.toml", "[[step]]\npress = \"voice-wake-up\"\n\n[[step]]\nnetwork = \"host\"\n");
    Write("set/b.toml",
          "[[step]]\nexpect.page.voice = \"hidden\"\n\n[[step]]\nnetwork = \"host\"\n");
    Write("set/c.toml", "[[step]]\npres = 1\n");
    EXPECT_EQ(Vtv({"run", Path("set"), "--junit", Path("out.xml")}).code, 2);
    EXPECT_THAT(Read("out.xml"),
                HasSubstr("<testsuites name=\"vtv run\" tests=\"5\" failures=\"1\" errors=\"1\" "
                          "skipped=\"1\" time=\""));
}
