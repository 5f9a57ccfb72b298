// What an earlier vtv has written is read as it was meant then, and what a later one has written is
// refused: tests/formats holds one of each kind and version of file, docs/formats.md lists them.
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;

namespace {

std::string Sample(const std::string& name) {
    return std::string(FORMATS) + "/" + name;
}

std::string TextOf(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

int NumberIn(const std::string& text, const char* pattern) {
    std::smatch found;
    return std::regex_search(text, found, std::regex(pattern)) ? std::stoi(found[1]) : -1;
}

class FormatsTest : public VtvTest {
  protected:
    void BringTv() {
        fs::create_directories(Path("tvs"));
        fs::copy(Sample("tv-1"), Path("tvs/tv"), fs::copy_options::recursive);
        // Whatever the umask was when the samples were checked out.
        EXPECT_EQ(std::system(("chmod -R go-w " + Path("tvs")).c_str()), 0);
    }
    std::string Get(const std::string& key, const std::string& tv = "tv") {
        return Ok({"get", key, "--tv", tv});
    }
    // What this vtv writes, by the row of docs/formats.md.
    std::map<std::string, int> Today() {
        Ok({"trace", "on"});
        Ok({"press", "voice-wake-up", "--record", Path("recording.toml")});
        Ok({"dump", Path("dump.json")});
        Ok({"import", Path("dump.json"), "imported"});
        Ok({"app", "allow", "--command", "true"});
        const int scenario = NumberIn(Read("recording.toml"), "\nversion = (\\d+)\n");
        return {{"a TV's folder", std::stoi(Read("tvs/default/settings/.store"))},
                {"a TV's model", NumberIn(Read("tvs/imported/tv.toml"), "\nversion = (\\d+)\n")},
                {"a dump", OkJson({"dump"})["version"].asInt()},
                {"a snapshot", OkJson({"snapshot"})["version"].asInt()},
                {"a scenario", scenario},
                {"a recording", scenario},
                {"a TV's trace", Read("tvs/default/trace/events").at(3) - '0'},
                {"the commands that you have allowed",
                 NumberIn(Read(".config/vtv/allowed-commands.json"), "\"version\" : (\\d+)")}};
    }
    using Words = std::vector<std::string>;
};

}  // namespace

TEST_F(FormatsTest, ATvOfVersion1IsReadAsItWasMeant) {
    BringTv();
    EXPECT_EQ(Get("db/sample/text"), "two\nlines, \u00e4\n");
    EXPECT_EQ(Get("db/sample/number"), "-7\n");
    EXPECT_EQ(Get("db/sample/flag"), "true\n");
    EXPECT_EQ(Get("memory/sample/volatile"), "5\n");
    EXPECT_EQ(Get("db/menu_widget/language"), "de_DE\n");
    EXPECT_EQ(Ok({"consent", "--tv", "tv"}), "tnc on\npp off\n");
    EXPECT_EQ(Ok({"account", "--tv", "tv"}), "signed-out\n");
    EXPECT_EQ(Ok({"network", "--tv", "tv"}), "disconnected\n");
    EXPECT_EQ(Ok({"app", "mode", "--tv", "tv"}), "record\n");
    EXPECT_EQ(Ok({"feature", "recorder.microphone_type", "--tv", "tv"}), "3\n");
    EXPECT_THAT(Ok({"file", "--tv", "tv"}), HasSubstr("share/.voice/ga_login_success"));
    EXPECT_THAT(Ok({"fault", "--tv", "tv"}), HasSubstr("vconf_ignore_key_changed"));
    const JsonDocument launches = OkJson({"app", "list", "--launches", "--tv", "tv", "--json"});
    ASSERT_EQ(launches.size(), 1U);
    EXPECT_EQ(launches[0]["app"], "org.nemra.wizard");
    EXPECT_EQ(launches[0]["outcome"], "recorded");
    EXPECT_THAT(Ok({"log", "--tv", "tv"}), HasSubstr("MVAList.cpp"));
    const JsonDocument trace = OkJson({"trace", "--tv", "tv", "--json"});
    ASSERT_GE(trace["events"].size(), 1U);
    EXPECT_EQ(trace["events"][0]["function"], "int checknode_int_voice_wake_up()");
    EXPECT_EQ(Vtv({"show", "--tv", "tv"}).code, 0);
}

TEST_F(FormatsTest, AModelOfVersion1IsReadAsItWasMeant) {
    Ok({"new", "made", "--model", Sample("model-1.toml")});
    EXPECT_EQ(Get("db/comss/countrycode", "made"), "DE\n");
    EXPECT_EQ(Get("db/menu_widget/language", "made"), "fr_FR\n");
    EXPECT_EQ(Ok({"feature", "recorder.microphone_type", "--tv", "made"}), "1\n");
    EXPECT_THAT(Get("db/menu/voice/mva_list", "made"), HasSubstr("\"VAName\":\"Orvik\""));
}

TEST_F(FormatsTest, ADumpOfVersion1IsReadAsItWasMeant) {
    Ok({"import", Sample("dump-1.json"), "imported"});
    EXPECT_EQ(Get("db/sample/text", "imported"), "two\nlines, \u00e4\n");
    EXPECT_EQ(Get("db/sample/number", "imported"), "-7\n");
    EXPECT_EQ(Ok({"consent", "--tv", "imported"}), "tnc on\npp off\n");
    EXPECT_EQ(Ok({"network", "--tv", "imported"}), "disconnected\n");
    EXPECT_EQ(Ok({"feature", "recorder.microphone_type", "--tv", "imported"}), "3\n");
}

TEST_F(FormatsTest, ASnapshotOfVersion1IsReadAsItWasMeant) {
    Ok({"new", "tv", "--model", Sample("model-1.toml")});
    Ok({"restore", Sample("snapshot-1.json"), "--tv", "tv"});
    EXPECT_EQ(Get("db/sample/flag"), "true\n");
    EXPECT_EQ(Get("memory/sample/volatile"), "5\n");
    EXPECT_EQ(Ok({"app", "mode", "--tv", "tv"}), "record\n");
    EXPECT_THAT(Ok({"file", "--tv", "tv"}), HasSubstr("share/.voice/ga_login_success"));
}

TEST_F(FormatsTest, AScenarioAndARecordingOfVersion1ArePlayed) {
    Ok({"run", Sample("scenario-1.toml")});
    fs::copy_file(Sample("recording-1.toml"), Path("recording.toml"));
    Ok({"run", Path("recording.toml")});
    Ok({"set", "db/more", "int", "1", "--record", Path("recording.toml")});
    EXPECT_THAT(Read("recording.toml"), HasSubstr(TextOf(Sample("recording-1.toml"))));
    Ok({"run", Path("recording.toml")});
    // The scenario can fail: what it expects is looked at.
    Write("other.toml",
          std::regex_replace(TextOf(Sample("scenario-1.toml")), std::regex("= -7\n"), "= -8\n"));
    EXPECT_EQ(Vtv({"run", Path("other.toml")}).code, 1);
}

TEST_F(FormatsTest, CommandsThatWereAllowedInVersion1AreAllowed) {
    fs::create_directories(Path(".config/vtv"));
    fs::copy_file(Sample("allowed-commands-1.json"), Path(".config/vtv/allowed-commands.json"));
    EXPECT_EQ(Ok({"app", "allowed"}), "/opt/tools/tool -x\n");
}

TEST_F(FormatsTest, AFileThatNamesNoVersionIsOfVersion1) {
    for (const auto& [sample, verb] : std::vector<std::pair<std::string, Words>>{
             {"dump-1.json", {"load", "FILE"}},
             {"snapshot-1.json", {"restore", "FILE"}},
             {"scenario-1.toml", {"run", "FILE"}},
             {"recording-1.toml", {"run", "FILE"}},
             {"model-1.toml", {"new", "made", "--model", "FILE"}}}) {
        const std::string text = TextOf(Sample(sample));
        const std::string without =
            std::regex_replace(text, std::regex("(,\\s*\"version\" ?: 1|\nversion = 1\n)"), "\n");
        ASSERT_NE(without, text) << sample;
        Write(sample, without);
        Words words = verb;
        std::replace(words.begin(), words.end(), std::string("FILE"), Path(sample));
        Ok({"show"});
        Ok(words);
    }
}

TEST_F(FormatsTest, AFileOfANewerVersionOrOfABrokenOneIsRefusedAndNothingIsDone) {
    Ok({"new", "tv", "--model", Sample("model-1.toml")});
    Ok({"set", "db/before", "int", "1", "--tv", "tv"});
    for (const auto& [sample, verb] : std::vector<std::pair<std::string, Words>>{
             {"dump-1.json", {"load", "FILE", "--tv", "tv"}},
             {"dump-1.json", {"import", "FILE", "made"}},
             {"snapshot-1.json", {"restore", "FILE", "--tv", "tv"}},
             {"scenario-1.toml", {"run", "FILE"}},
             {"scenario-1.toml", {"run", "--check", "FILE"}},
             {"recording-1.toml", {"set", "db/x", "int", "1", "--tv", "tv", "--record", "FILE"}},
             {"model-1.toml", {"new", "made", "--model", "FILE"}}}) {
        const bool json = fs::path(sample).extension() == ".json";
        for (const char* version : {"2", "99", "0", "-1", "1.5", "1.0", "\"1\"", "true", "[1]",
                                    json ? "null" : "{}", "4294967297"}) {
            Write(sample,
                  std::regex_replace(TextOf(Sample(sample)),
                                     std::regex(json ? "\"version\" ?: 1" : "\nversion = 1\n"),
                                     std::string(json ? "\"version\": " : "\nversion = ") +
                                         version + (json ? "" : "\nnobody_knows = 1\n")));
            Words words = verb;
            std::replace(words.begin(), words.end(), std::string("FILE"), Path(sample));
            const Output output = Vtv(words);
            const std::string told = output.out + output.err;
            EXPECT_EQ(output.code, 2) << sample << " " << version << told;
            EXPECT_THAT(told, HasSubstr(Path(sample)));
            if (std::isdigit(static_cast<unsigned char>(*version)) != 0 && *version != '0' &&
                version[1] != '.') {
                EXPECT_THAT(told, AllOf(HasSubstr(std::string("version ") + version),
                                        HasSubstr("newer than this program knows (1)"),
                                        HasSubstr("Use a newer program")));
            } else {
                EXPECT_THAT(told, HasSubstr("must be a whole number from 1 on")) << version;
            }
        }
    }
    EXPECT_EQ(Get("db/before"), "1\n");
    EXPECT_EQ(Vtv({"get", "db/x", "--tv", "tv"}).code, 3);
    EXPECT_FALSE(fs::exists(Path("tvs/made")));
}

TEST_F(FormatsTest, ATvOfANewerVersionOrOfABrokenOneIsRefusedByEveryVerbThatOpensIt) {
    BringTv();
    const std::vector<Words> verbs = {
        {"show"}, {"get", "db/sample/text"}, {"log"},  {"set", "db/x", "int", "1"}, {"app", "list"},
        {"dump"}, {"power-cycle"},           {"watch"}};
    for (const char* store : {"settings", "memory", "state", "faults"}) {
        for (const char* version : {"2\n", "99", "0\n", "-1", "", "1x\n", "one", "99999999999"}) {
            const std::string file = std::string("tvs/tv/") + store + "/.store";
            Write(file, version);
            const auto before = Contents("tvs");
            for (Words words : verbs) {
                words.insert(words.end(), {"--tv", "tv"});
                const Output output = Vtv(words);
                EXPECT_EQ(output.code, 4) << words.front() << " " << version;
                EXPECT_THAT(output.err, HasSubstr(Path(file)));
                EXPECT_THAT(output.err,
                            testing::AnyOf(HasSubstr("newer than this program knows (1)"),
                                           HasSubstr("must be a whole number")));
                EXPECT_TRUE(Contents("tvs") == before) << words.front();
            }
            EXPECT_EQ(Vtv({"copy", "tv", "copy"}).code, 4);
            Write(file, "1\n");
        }
    }
    Ok({"show", "--tv", "tv"});
}

TEST_F(FormatsTest, ATraceAndAListOfCommandsOfANewerVersionAreRefused) {
    BringTv();
    std::string trace = Read("tvs/tv/trace/events");
    ASSERT_EQ(trace.substr(0, 4), "VTR1");
    trace[3] = '2';
    Write("tvs/tv/trace/events", trace);
    const Output newer = Vtv({"trace", "--tv", "tv"});
    EXPECT_EQ(newer.code, 4);
    EXPECT_THAT(newer.err, AllOf(HasSubstr(Path("tvs/tv/trace/events")), HasSubstr("version 2"),
                                 HasSubstr("newer than this program knows (1)")));
    Write("tvs/tv/trace/events", "no trace" + trace);
    EXPECT_EQ(Vtv({"trace", "--tv", "tv"}).code, 4);
    // Added by a newer vtv to what an older one has begun.
    Write("tvs/tv/trace/events", TextOf(Sample("tv-1/trace/events")) + trace);
    EXPECT_EQ(Vtv({"trace", "--tv", "tv"}).code, 4);

    fs::create_directories(Path(".config/vtv"));
    for (const char* version : {"2", "0", "\"1\"", "null"}) {
        Write(".config/vtv/allowed-commands.json",
              std::regex_replace(TextOf(Sample("allowed-commands-1.json")),
                                 std::regex("\"version\" : 1"),
                                 std::string("\"version\" : ") + version));
        EXPECT_EQ(Vtv({"app", "allowed"}).code, 4) << version;
        EXPECT_EQ(Vtv({"app", "allow", "--command", "true"}).code, 4) << version;
    }
}

TEST_F(FormatsTest, EachVersionOfTodayStandsInTheTableAndHasItsSample) {
    // By the first words of a row: "a dump (`vtv dump`, ...)" is of a dump.
    std::map<std::string, int> rows;
    std::istringstream page(TextOf(FORMATS_PAGE));
    for (std::string line; std::getline(page, line);) {
        std::smatch row;
        if (std::regex_match(line, row, std::regex(R"(\| ([^|]*) \|[^|]*\| (\d+) \|)"))) {
            const std::string kind = row[1];
            rows[kind.substr(0, std::min(kind.find(", "), kind.find(" (")))] = std::stoi(row[2]);
        }
    }
    const std::map<std::string, std::string> samples = {
        {"a TV's folder", "tv-%"},
        {"a TV's model", "model-%.toml"},
        {"a dump", "dump-%.json"},
        {"a snapshot", "snapshot-%.json"},
        {"a scenario", "scenario-%.toml"},
        {"a recording", "recording-%.toml"},
        {"a TV's trace", "tv-%/trace/events"},
        {"the commands that you have allowed", "allowed-commands-%.json"}};
    for (const auto& [kind, version] : Today()) {
        EXPECT_EQ(rows[kind], version) << kind;
        for (int each = 1; each <= version; ++each) {
            EXPECT_TRUE(fs::exists(Sample(
                std::regex_replace(samples.at(kind), std::regex("%"), std::to_string(each)))))
                << kind << " of version " << each;
        }
    }
    EXPECT_EQ(rows.size(), samples.size() + 1);
    int newest = 0;
    for (const fs::directory_entry& schema : fs::directory_iterator(SCHEMAS)) {
        const int version = NumberIn(TextOf(schema.path().string()), "\n  \"version\": (\\d+),");
        ASSERT_GE(version, 1) << schema.path();
        newest = std::max(newest, version);
    }
    EXPECT_EQ(rows["what `--json` prints"], newest);
}
