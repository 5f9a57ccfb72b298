// Text of others on a terminal: whatever it holds, it is shown, and steers nothing.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "vtv_process.h"

using testing::HasSubstr;
using testing::Not;

namespace {

using Words = std::vector<std::string>;

// What steers a terminal: a title, a colour that vtv does not use, controls of one byte and of two,
// text that is turned, ends of lines, bytes that are no UTF-8, and a line that looks like vtv's.
const std::string kPoisonText =
    "p\x1b]0;T\a\x1b[35m\r\b\x7f\xc2\x9b"
    "35m\xc2\x85\xe2\x80\xae\xe2\x81\xa6\xe2\x80\xa8\nFORGED";
const std::string kPoison = kPoisonText + "\xff\x9b\xe2\x80 \nFORGED";

// The text as JSON and TOML files have it.
constexpr char kPoisonJson[] =
    R"(p\u001b]0;T\u0007\u001b[35m\r\b\u007f\u009b35m\u0085\u202e\u2066\u2028\nFORGED)";

// What is wrong with what was printed on a terminal; empty when all is well.
std::string HarmIn(const std::string& printed) {
    static const std::regex own("\x1b\\[(?:0m|1m|2m|31m|32m|36m|[0-9]*A|H|J|G|K)");
    const std::string text = std::regex_replace(printed, own, "");
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && c != '\n') || byte == 0x7f) {
            return "the byte " + std::to_string(byte);
        }
    }
    for (const char* harmful : {"\xc2\x9b", "\xc2\x85", "\xe2\x80\xae", "\xe2\x81\xa6",
                                "\xe2\x80\xa8", "\xff", "\x9b", "\xe2\x80 "}) {
        const size_t at = text.find(harmful);
        // "\x9b" may also continue a character.
        if (at != std::string::npos &&
            (std::string(harmful) != "\x9b" || at == 0 || text[at - 1] >= 0)) {
            return "bytes that no text has";
        }
    }
    return text.find("\nFORGED") != std::string::npos ? "a forged line" : "";
}

class TerminalTest : public VtvTest {
  protected:
    // A TV of which everything that can hold text holds poison.
    void Poison() {
        Write("dump.json", std::string(R"({"title": ")") + kPoisonJson +
                               R"(", "packages": [{"app": "com.poison", "name": ")" + kPoisonJson +
                               R"(", "metadata": {}}], "settings": {"db/poison": ")" + kPoisonJson +
                               R"("}})");
        Ok({"show"});
        Ok({"import", Path("dump.json"), "imported"});
        Ok({"set", "db/poison", "string", kPoisonText});
        Ok({"set", "db/raw", "string", kPoison});
        Ok({"set", "db/" + kPoison, "string", kPoison});
        Ok({"policy", "publish", "-", "--force"}, Policy());
        Ok({"set", "db/menu/voice/mva_list", "string", Policy(), "--force"});
        Ok({"app", "mode", "record"});
        Ok({"trace", "on"});
        Vtv({"file", "share/" + kPoison, "--add"});
        Ok({"press", "voice-wake-up"});
        std::ofstream log(Path("tvs/default/log/tv.log"), std::ios::app);
        log << "2026-01-01T00:00:00.000000Z 1 4 P\x1b[35mTAG f.cpp: fun\x1b[35mction(3) > "
               "p\x1b[35m\r\xff\\n"
               "FORGED\n";
        Write("scenario.toml", std::string("title = \"") + kPoisonJson + "\"\n[[step]]\nsay = \"" +
                                   kPoisonJson + "\"\nexpect.setting.\"db/poison\" = \"" +
                                   kPoisonJson + "\"\n");
        Write("broken.toml", std::string("\"") + kPoisonJson + "\" = 1\n");
        Write("broken.json", "{\"settings\": {\"" + kPoison + "\": 1}}");
        Write("policy.json", Policy());
        Write("poison.po", "msgid \"TV_SID_SETTINGS_VOICE\"\nmsgstr \"x\\033[35m\\nFORGED\"\n");
        Ok({"new", "other"});
    }

    static std::string Policy() {
        return std::string(R"([{"VAOrder":1,"VAId":"ORVIK2","VAAppId":")"
                           R"(com.vantelo.tv.voice-instant-app","VAName":")") +
               kPoisonJson + R"(","VAFFSupport":true},{"VAOrder":2,"VAId":"B)" + kPoisonJson +
               R"(","VAAppId":")" + kPoisonJson + R"(","VAName":")" + kPoisonJson +
               R"(","VAFFSupport":true}])";
    }

    // Every verb of the program, with what makes it print text of others: answers and refusals.
    std::map<std::string, std::vector<Words>> Rows() const {
        const std::string file = Path("none/" + kPoison);
        return {
            {"account", {{}, {kPoison}}},
            {"app",
             {{"list"},
              {"list", "--launches"},
              {"allowed"},
              {"allow", kPoison},
              {"mode", kPoison},
              {"finish", kPoison},
              {"cancel", kPoison},
              {"forbid", kPoison}}},
            {"choose", {{"voice-assistant", kPoison}, {kPoison, "1"}}},
            {"consent", {{}, {kPoison, "on"}}},
            {"copy", {{"default", kPoison}, {kPoison, "x"}}},
            {"diff", {{"default", "other"}, {"default", kPoison}}},
            {"dump", {{}, {file}, {"/dev/stdout"}, {"-"}}},
            {"explain", {{"voice-assistant"}, {"voice-wake-up"}, {kPoison}}},
            {"explore", {{kPoison}, {"table", kPoison}}},
            {"fault", {{}, {kPoison}}},
            {"feature", {{}, {kPoison}}},
            {"file", {{}, {"share/" + kPoison, "--add"}}},
            {"gallery", {{"--models", kPoison, "x"}, {"--jobs", kPoison, "x"}}},
            {"get", {{"db/poison"}, {"db/raw"}, {"db/raw", "--json"}, {"db/none" + kPoison}}},
            {"impact", {{Path("policy.json"), file}, {file, file}}},
            {"import", {{Path("broken.json"), "new"}, {file, "new"}}},
            {"language", {{}, {kPoison}}},
            {"list", {{}, {"--json"}, {"--models"}}},
            {"load", {{Path("broken.json")}, {file}}},
            {"log", {{}, {"--json"}, {"--priority", kPoison}}},
            {"network", {{}, {kPoison}}},
            {"new", {{"new", "--model", kPoison}, {file}}},
            {"picture", {{"--press", kPoison}, {"--text", kPoison}}},
            {"policy",
             {{"show"}, {"show", "--json"}, {"publish", file}, {"publish", Path("broken.json")}}},
            {"power-cycle", {{kPoison}}},
            {"press", {{"voice-assistant"}, {"voice-wake-up"}, {kPoison}}},
            {"record",
             {{"start", file}, {"status"}, {"status", "--json"}, {"stop"}, {"start", kPoison}}},
            {"remove", {{kPoison + "x"}}},
            {"rename", {{kPoison, kPoison + "y"}, {kPoison, "x"}}},
            {"restore", {{Path("broken.json")}, {file}}},
            {"run",
             {{Path("scenario.toml")},
              {Path("scenario.toml"), "--json"},
              {Path("broken.toml")},
              {"--check", Path("broken.toml")},
              {file}}},
            {"describe", {{"db/poison"}, {"db/raw"}, {"db/x" + kPoison}}},
            {"keys", {{}, {"--json"}, {kPoison}}},
            {"reset", {{"db/none" + kPoison}}},
            {"search", {{"p"}, {"p", "--json"}, {kPoison + "x"}}},
            {"set", {{"db/x", kPoison, "1"}, {"db/x", "int", kPoison}, {kPoison, "int", "1"}}},
            {"show",
             {{},
              {"--all"},
              {"--json"},
              {"--tv", "imported"},
              {"--po", Path("poison.po")},
              {"voice-assistant"},
              {kPoison}}},
            {"snapshot", {{}, {file}}},
            {"texts",
             {{},
              {"--json"},
              {"--po", Path("poison.po")},
              {"--po", file},
              {"--language", kPoison}}},
            {"trace", {{}, {"--json"}, {"--export", file}, {kPoison}}},
            {"unset", {{"db/none" + kPoison}}},
            {"validate", {{file}, {"--filter", kPoison}}},
            {"voice-guide", {{}, {kPoison}}},
            {"wait", {{"db/none=" + kPoison}, {kPoison + "=1"}, {"voice=" + kPoison}}},
            {"watch", {{"--count", kPoison}}},
            {"window", {{"--display", kPoison}, {"--tv", kPoison}}},
            {kPoison, {{}}},
            {"--" + kPoison, {{}}},
            {"__complete", {{"get", ""}, {"unset", "db/"}, {"show", "--tv", ""}}},
        };
    }
};

std::string Line(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        line += " " + word;
    }
    return line;
}

}  // namespace

TEST_F(TerminalTest, NoVerbLetsTextOfOthersSteerTheTerminal) {
    Poison();
    const std::map<std::string, std::vector<Words>> rows = Rows();
    std::istringstream verbs(Ok({"__complete", ""}));
    for (std::string verb; std::getline(verbs, verb);) {
        EXPECT_EQ(rows.count(verb), 1U) << "give vtv " << verb << " a row";
    }
    int shown = 0;
    for (const auto& [verb, lines] : rows) {
        for (Words words : lines) {
            words.insert(words.begin(), verb);
            const Output output = OnTerminal("vtv", words);
            EXPECT_EQ(HarmIn(output.out), "") << Line(words) << "\n" << output.out;
            EXPECT_LT(output.code, 128) << Line(words);
            shown += output.out.find("\\u001b") != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_GT(shown, 50);  // the poison came through, and was shown
}

TEST_F(TerminalTest, WhoWatchesIsSafeToo) {
    Poison();
    Ok({"show"});
    for (const Words& words :
         {Words{"watch", "--count", "1"}, {"watch", "--count", "1", "--json"}}) {
        const pid_t writer = fork();
        if (writer == 0) {
            for (int i = 0; i < 100; ++i) {
                usleep(50000);
                Vtv({"set", "db/" + kPoison, "string", kPoison});
            }
            _exit(0);
        }
        const Output output = OnTerminal("vtv", words);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        EXPECT_THAT(output.out, HasSubstr("\\u001b")) << Line(words);
        EXPECT_EQ(HarmIn(output.out), "") << Line(words) << output.out;
    }
}

TEST_F(TerminalTest, AnApplicationIsSafeToo) {
    Ok({"show"});
    const Output output =
        OnTerminal("vtv-app", {"--tv", Path("tvs/default"), "--", "org.nemra.alert-syspopup",
                               "timeout=1", "text=" + kPoison});
    EXPECT_EQ(HarmIn(output.out), "") << output.out;
    EXPECT_EQ(HarmIn(OnTerminal("vtv-app", {"--tv", kPoison, kPoison}).out), "");
}

#ifdef WITH_EXPLORER
TEST_F(TerminalTest, TheExplorerIsSafeToo) {
    for (const Words& words : {Words{kPoison},
                               {"table", kPoison},
                               {"check", kPoison},
                               {"check", "--provider", kPoison},
                               {"diff", kPoison, kPoison},
                               {"impact", kPoison, kPoison},
                               {"sequences", "--tv", kPoison},
                               {"depends", kPoison},
                               {"table", "-o", "none/" + kPoison, "-q", "help:voice"}}) {
        const Output output = OnTerminal("vtv-explore", words);
        EXPECT_THAT(output.out, HasSubstr("\\u001b")) << Line(words) << output.out;
        EXPECT_EQ(HarmIn(output.out), "") << Line(words) << "\n" << output.out;
    }
}
#endif

TEST_F(TerminalTest, ColoursStillWork) {
    Ok({"show"});
    EXPECT_THAT(OnTerminal("vtv", {"show"}).out, HasSubstr("\x1b[1m"));
    environment["NO_COLOR"] = "1";
    EXPECT_THAT(OnTerminal("vtv", {"show"}).out, Not(HasSubstr("\x1b")));
}

TEST_F(TerminalTest, APipeGetsTheExactValueFromGetAndVisibleTextFromAllElse) {
    Poison();
    EXPECT_EQ(Ok({"get", "db/raw"}), kPoison + "\n");
    for (const Words& words : {Words{"search", "p"},
                               {"log"},
                               {"show", "--all"},
                               {"policy", "show"},
                               {"press", "voice-assistant"}}) {
        const std::string text = Ok(words);
        EXPECT_THAT(text, HasSubstr("\\u001b")) << Line(words);
        EXPECT_EQ(HarmIn(text), "") << Line(words) << text;
    }
}

TEST_F(TerminalTest, EveryRecordIsOneLine) {
    Poison();
    const size_t records = OkJson({"search", "db/raw", "--json"}).size();
    const std::string text = Ok({"search", "db/raw"});
    EXPECT_EQ(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')), records);
}

TEST_F(TerminalTest, JsonStaysJsonAndHasTheSameText) {
    Poison();
    const std::string printed = Ok({"get", "db/poison", "--json"});
    EXPECT_EQ(HarmIn(printed), "") << printed;
    const std::string onTerminal = OnTerminal("vtv", {"get", "db/poison", "--json"}).out;
    EXPECT_EQ(onTerminal, printed);
    EXPECT_EQ(OkJson({"get", "db/poison", "--json"})["value"].asString() + "\n",
              Ok({"get", "db/poison"}));
    // A byte that is no UTF-8 cannot be in JSON.
    EXPECT_THAT(Ok({"get", "db/raw", "--json"}), HasSubstr("\\ufffd"));
}

TEST_F(TerminalTest, ADumpIsTheSameInAPipeAsInAFile) {
    Poison();
    Ok({"dump", Path("file.json")});
    EXPECT_EQ(Ok({"dump"}), Read("file.json"));
    Ok({"load", Path("file.json"), "--tv", "other"});
    EXPECT_EQ(Ok({"get", "db/raw", "--tv", "other"}), kPoison + "\n");
}
