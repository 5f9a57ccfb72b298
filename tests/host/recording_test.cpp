// vtv ... --record: what is done to a TV becomes a scenario that plays again.
#include "vtv_process.h"

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

// Every verb that records, in an order in which each has something to do.
const std::vector<Words> kRecorded = {
    {"set", "db/comss/cisblock", "int", "0"},
    {"set", "db/comss/cisblock", "string", "x", "--force"},
    {"set", "db/a", "string", "''' \"\"\" \\ \n\t\x7f \u00e4 # = [x]"},
    {"unset", "db/comss/cisblock"},
    {"reset", "db/comss/cisblock", "db/a"},
    {"feature", "recorder.microphone_type", "0"},
    {"feature", "recorder.microphone_type", "--missing"},
    {"feature", "recorder.microphone_type", "--reset"},
    {"language", "de_DE"},
    {"voice-guide", "true"},
    {"voice-guide", "0"},
    {"account", "signed-out"},
    {"account", "signed-in"},
    {"network", "connected"},
    {"consent", "pp", "off"},
    {"consent", "pp", "on"},
    {"file", "share/.voice/alexa_login_success", "--add"},
    {"file", "share/.voice/alexa_login_success", "--remove"},
    {"trace", "on"},
    {"fault", "pkgmgrinfo_appinfo_get_appinfo", "--always", "--result", "-3"},
    {"fault", "connection_profile_check_default_gateway", "--slow", "1"},
    {"fault", "pkgmgrinfo_appinfo_get_appinfo", "--clear"},
    {"fault", "--clear"},
    {"choose", "voice-wake-up", "off"},
    {"press", "voice-wake-up"},
    {"press", "voice-assistant", "--choose", "3", "--ok"},
    {"app", "cancel"},
    {"press", "voice-settings-google", "--ok"},
    {"app", "finish", "com.vantelo.tv.google-assistant"},
    {"app", "mode", "record"},
    {"policy", "publish", "-"},
    {"power-cycle"},
    {"load", "-"},
    {"restore", "-"},
};

// What the verbs read that read the standard input.
const std::map<std::string, std::string> kInputs = {
    {"policy", "[]"},
    {"load", R"({"network": "disconnected", "settings": {"db/comss/countrycode": "FR"}})"},
    {"restore",
     R"({"format": "vtv-snapshot", "settings": {"db/b": 1}, "state": {"consent/pp": true}, "files": []})"},
};

std::set<std::string> MembersIn(const std::string& scenario) {
    std::set<std::string> members;
    const std::regex member("(?:^|\\n)\\s*(?:\\[step\\.)?([a-z-]+)(?: = |\\])");
    for (std::sregex_iterator at(scenario.begin(), scenario.end(), member), end; at != end; ++at) {
        members.insert((*at)[1]);
    }
    return members;
}

Words Split(const std::string& text, const std::regex& separator) {
    return {std::sregex_token_iterator(text.begin(), text.end(), separator, -1),
            std::sregex_token_iterator()};
}

class RecordingTest : public VtvTest {
  protected:
    void RecordAll(const std::string& file) {
        for (Words words : kRecorded) {
            words.insert(words.end(), {"--record", file});
            const auto input = kInputs.find(words.front());
            Ok(words, input != kInputs.end() ? input->second : "");
        }
    }
};

}  // namespace

TEST_F(RecordingTest, WhatEveryVerbRecordsPlaysAgain) {
    RecordAll(Path("all.toml"));
    EXPECT_THAT(Ok({"run", Path("all.toml")}), HasSubstr("1 scenario, 0 failed"));
}

TEST_F(RecordingTest, EveryMemberOfAStepIsRecordedByAVerb) {
    // Written into the beginning of a recording, or for people who write scenarios.
    const std::set<std::string> otherwise = {"say", "state", "launch", "expect", "never"};
    RecordAll(Path("all.toml"));
    const std::set<std::string> recorded = MembersIn(Read("all.toml"));
    Write("wrong.toml", "[[step]]\nxyz = 1\n");
    const std::string told = Vtv({"run", "--check", Path("wrong.toml")}).err;
    const size_t begin = told.find("Known: ") + 7;
    for (const std::string& member :
         Split(told.substr(begin, told.find('.', begin) - begin), std::regex(", "))) {
        EXPECT_TRUE(recorded.count(member) == 1 || otherwise.count(member) == 1) << member;
    }
}

TEST_F(RecordingTest, EveryVerbThatTakesTheOptionIsAmongThoseThatAreTried) {
    std::set<std::string> tried;
    for (const Words& words : kRecorded) {
        tried.insert(words[0]);
        tried.insert(words[0] + " " + words[1 % words.size()]);
    }
    int verbs = 0;
    const auto check = [&](const Words& verb) {
        Words help = verb;
        help.push_back("--help");
        if (Ok(help).find("--record FILE") != std::string::npos) {
            ++verbs;
            EXPECT_EQ(tried.count(verb.size() == 1 ? verb[0] : verb[0] + " " + verb[1]), 1U)
                << verb.back();
        }
    };
    for (const std::string& verb : Split(Ok({"__complete", ""}), std::regex("\n"))) {
        check({verb});
    }
    for (const char* verb : {"finish", "cancel", "mode"}) {
        check({"app", verb});
    }
    check({"policy", "publish"});
    EXPECT_GE(verbs, 18);
}

TEST_F(RecordingTest, ARecordingBeginsWhereTheTvIs) {
    Ok({"press", "voice-assistant", "--choose", "3", "--ok"});
    Ok({"app", "mode", "auto"});
    Ok({"feature", "product.product_type", "--missing"});
    Ok({"fault", "pkgmgrinfo_appinfo_get_appinfo", "--always"});
    Ok({"set", "db/menu/voice/passthru", "int", "7", "--force"});
    Ok({"file", "share/.voice/alexa_login_success", "--add"});
    Ok({"unset", "db/comss/countrycode"});
    Ok({"press", "voice-settings-google", "--record", Path("later.toml")});
    Ok({"app", "finish", "--record", Path("later.toml")});
    Ok({"fault", "--clear", "--record", Path("later.toml")});
    Ok({"press", "voice-settings-google", "--record", Path("later.toml")});
    Ok({"run", Path("later.toml"), "--keep", Path("kept")});
    EXPECT_EQ(Ok({"app", "mode", "--tv", Path("kept/1-later")}), "auto\n");
    EXPECT_EQ(Ok({"get", "db/menu/voice/passthru", "--tv", Path("kept/1-later")}), "7\n");
    EXPECT_EQ(Vtv({"get", "db/comss/countrycode", "--tv", Path("kept/1-later")}).code, 3);
}

TEST_F(RecordingTest, ATvOfAnOwnModelIsRecordedWithItsModel) {
    Write("farfield-eu.toml", "title = \"Bears a known name\"\ncountry = \"FR\"\n");
    Ok({"new", "own", "--model", Path("farfield-eu.toml")});
    Ok({"network", "disconnected", "--tv", "own", "--record", Path("own-record.toml")});
    Ok({"run", Path("own-record.toml"), "--keep", Path("kept")});
    EXPECT_EQ(Ok({"get", "db/comss/countrycode", "--tv", Path("kept/1-own-record")}), "FR\n");
}

TEST_F(RecordingTest, NothingIsDoneWhereItCannotBeRecorded) {
    Ok({"show"});
    fs::create_directories(Path("folder"));
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    fs::create_symlink(Path("fifo"), Path("link"));
    Write("text", "Dear diary\n");
    const std::string mark = "# A recording: vtv --record may add to it.\n";
    Write("other.toml", mark + "model = \"farfield-cn\"\n[[step]]\nsay = \"x\"\n");
    Write("broken.toml", mark + "[[step]]\nsay = \"x\"\nacount = 1\n");
    Write("closed.toml", mark + "step = [{ say = \"x\" }]\n");
    const std::vector<std::pair<std::string, int>> places = {
        {Path("folder"), 2},     {Path("fifo"), 2},        {Path("link"), 2},
        {"/dev/full", 2},        {"/dev/null", 2},         {Path("text"), 2},
        {Path("other.toml"), 2}, {Path("broken.toml"), 2}, {Path("closed.toml"), 2},
        {Path("none/x.toml"), 4}};
    for (const auto& [place, code] : places) {
        const Output output = Vtv({"press", "voice-wake-up", "--record", place});
        EXPECT_EQ(output.code, code) << place << output.err;
        EXPECT_THAT(output.err, HasSubstr(place)) << place;
        EXPECT_EQ(Item("voice-wake-up")["value"], 1) << place;
    }
    EXPECT_EQ(Read("text"), "Dear diary\n");
    EXPECT_EQ(Read("closed.toml"), mark + "step = [{ say = \"x\" }]\n");
}

TEST_F(RecordingTest, WhatNoScenarioCanHaveIsNotDone) {
    Ok({"show"});
    EXPECT_EQ(Vtv({"set", "db/a", "string", "\xff", "--record", Path("r.toml")}).code, 2);
    EXPECT_EQ(Vtv({"get", "db/a"}).code, 3);
    EXPECT_EQ(Vtv({"language", "ja_JP", "--record", Path("r.toml")}).code, 3);
    EXPECT_EQ(Ok({"language"}), "en_GB\n");
    EXPECT_FALSE(fs::exists(Path("r.toml")));
}

TEST_F(RecordingTest, WhatAScenarioWouldTakeForASlipIsRecordedAsMeant) {
    Ok({"set", "db/comss/cisblok", "int", "2"});
    Ok({"set", "db/menu/voice/pasthru", "bool", "true", "--record", Path("r.toml")});
    Ok({"unset", "db/menu/voice/pasthru", "--record", Path("r.toml")});
    Ok({"load", "-", "--record", Path("r.toml")},
       R"({"always_on_voice": {"org.none": 1}, "settings": {"db/comss/cisblok": 3}})");
    Ok({"run", Path("r.toml"), "--keep", Path("kept")});
    EXPECT_EQ(Ok({"get", "db/comss/cisblok", "--tv", Path("kept/1-r")}), "3\n");
    EXPECT_EQ(Vtv({"get", "db/menu/voice/pasthru", "--tv", Path("kept/1-r")}).code, 3);
}

TEST_F(RecordingTest, WhatFailedIsNotRecorded) {
    EXPECT_EQ(Vtv({"unset", "db/none", "--record", Path("r.toml")}).code, 3);
    EXPECT_FALSE(fs::exists(Path("r.toml")));
    Ok({"account", "signed-out", "--record", Path("r.toml")});
    const std::string before = Read("r.toml");
    EXPECT_EQ(Vtv({"choose", "voice-wake-up", "off", "--record", Path("r.toml")}).code, 1);
    EXPECT_EQ(Read("r.toml"), before);
}

TEST_F(RecordingTest, AScenarioWrittenByHandIsGoneOnWithWhereItSaysSo) {
    Write("mine.toml",
          "# A recording: vtv --record may add to it.\n[[step]]\nsay = \"by "
          "hand\"\nexpect.page.voice = \"enabled\"");
    Ok({"press", "voice-wake-up", "--record", Path("mine.toml")});
    Ok({"run", Path("mine.toml")});
    EXPECT_THAT(Read("mine.toml"), HasSubstr("press = \"voice-wake-up\""));
}
