// Output that cannot be written: every verb of every program says so and ends with 4.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "every_verb.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Words = std::vector<std::string>;

constexpr char kPolicy[] =
    R"([{"VAOrder":1,"VAId":"ORVIK2","VAAppId":"com.vantelo.tv.voice-instant-app",
    "VAName":"Orvik","VAFFSupport":true}])";

// Another program does the work of these two, where it is built.
#ifdef WITH_EXPLORER
const Words kExplore = {"check", "--list"};
const Words kImpact = {"POLICY", "POLICY", "--tv", "no-voice", "--quiet"};
#else
const Words kExplore = {"--help"};
const Words kImpact = {"--help"};
#endif

std::string Line(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

class OutputTest : public EveryVerbTest {
  protected:
    OutputTest() {
        Ok({"show"});
        Write("policy.json", kPolicy);
        Write("scenario.toml", "[[step]]\npress = \"voice-wake-up\"\n");
        Ok({"dump", Path("dump.json")});
    }

    // Arguments with which a verb of vtv prints something.
    std::map<std::string, Words> Rows() {
        return {{"account", {}},
                {"app allow", {"--command", "true"}},
                {"app allowed", {}},
                {"app forbid", {"--help"}},
                {"app list", {}},
                {"app mode", {}},
                {"choose", {"voice-wake-up", "off"}},
                {"consent", {}},
                {"copy", {"default", "made"}},
                {"describe", {"db/menu/voice/passthru"}},
                {"diff", {"default", "default", "--json"}},
                {"dump", {}},
                {"explain", {"voice"}},
                {"explore", kExplore},
                {"fault", {"--functions"}},
                {"feature", {}},
                {"file", {"--json"}},
                {"gallery", {"--help"}},
                {"get", {"db/menu_widget/language"}},
                {"impact", kImpact},
                {"import", {Path("dump.json"), "imported"}},
                {"keys", {}},
                {"language", {}},
                {"list", {}},
                {"log", {}},
                {"network", {}},
                {"new", {"made"}},
                {"picture", {"--help"}},
                {"policy show", {}},
                {"press", {"voice-wake-up"}},
                {"record start", {"--help"}},
                {"record status", {"--json"}},
                {"record stop", {"--help"}},
                {"remove", {"imported"}},
                {"rename", {"imported", "made"}},
                {"run", {Path("scenario.toml")}},
                {"search", {"voice"}},
                {"show", {}},
                {"texts", {}},
                {"snapshot", {}},
                {"trace", {}},
                {"validate", {"--list"}},
                {"voice-guide", {}},
                {"wait", {"network=connected", "--json"}},
                {"watch", {"--help"}},
                {"window", {"--help"}}};
    }

    // Verbs that only do something: nothing of theirs can get lost but their help.
    const std::set<std::string> silent = {"app cancel",     "app finish",  "load",
                                          "policy publish", "power-cycle", "reset",
                                          "restore",        "set",         "unset"};
};

}  // namespace

TEST_F(OutputTest, EveryVerbSaysThatTheDiskIsFullOrItsOutputClosed) {
    const std::map<std::string, Words> rows = Rows();
    for (const std::string& verb : Verbs()) {
        ASSERT_EQ(rows.count(verb) + silent.count(verb), 1U)
            << "give vtv " << verb << " a row with which it prints something";
        std::istringstream split(verb);
        Words words{std::istream_iterator<std::string>(split), {}};
        Words help = words;
        help.emplace_back("--help");
        if (rows.count(verb) != 0) {
            words.insert(words.end(), rows.at(verb).begin(), rows.at(verb).end());
            std::replace(words.begin(), words.end(), std::string("POLICY"), Path("policy.json"));
        }
        for (const Words& line : {words, help}) {
            if (line == words && silent.count(verb) != 0) {
                continue;
            }
            for (const auto& [file, reason] :
                 {std::pair("/dev/full", "No space left on device"), {"", "Bad file descriptor"}}) {
                std::filesystem::remove_all(Path("tvs/made"));
                std::filesystem::remove_all(Path("tvs/imported"));
                if (verb == "remove" || verb == "rename") {
                    Ok({"new", "imported"});
                }
                const Output output = RunInto(file, "vtv", line);
                EXPECT_EQ(output.code, 4) << Line(line) << " > " << file << output.err;
                EXPECT_THAT(output.err,
                            EndsWith(std::string("the standard output cannot be written: ") +
                                     reason + "\n"))
                    << Line(line);
            }
        }
    }
}

TEST_F(OutputTest, ATvSurvivesAnOutputThatIsClosed) {
    const auto before = Contents("tvs/default/settings");
    EXPECT_EQ(RunInto("", "vtv", {"show"}).code, 4);
    EXPECT_EQ(RunInto("", "vtv", {"log"}).code, 4);
    EXPECT_EQ(Contents("tvs/default/settings"), before);
    EXPECT_EQ(RunInto("", "vtv", {"set", "db/x", "int", "1"}).code, 0);
    EXPECT_EQ(Ok({"get", "db/x"}), "1\n");
}

TEST_F(OutputTest, HelpAndVersionAndCompletionSaySo) {
    for (const Words& line : {Words{"--help"}, Words{"--version"}, Words{}, Words{"__complete", ""},
                              Words{"app", "--help"}, Words{"policy", "--help"}}) {
        EXPECT_EQ(RunInto("/dev/full", "vtv", line).code, 4) << Line(line);
    }
    EXPECT_EQ(RunInto("/dev/full", "vtv", {"__man", "/nowhere"}).code, 4);
    for (const char* program : {"vtv", "vtv-app", "vtv-explore"}) {
        EXPECT_EQ(RunInto("/dev/null", program, {"--version"}).code, 0) << program;
        EXPECT_EQ(RunInto("/dev/full", program, {"--version"}).code, 4) << program;
    }
}

TEST_F(OutputTest, NoIsNoAnswerWhenItCouldNotBeRead) {
    EXPECT_EQ(Vtv({"search", "zzzzzz", "--json"}).code, 1);
    EXPECT_EQ(RunInto("/dev/full", "vtv", {"search", "zzzzzz", "--json"}).code, 4);
    Ok({"new", "other", "--model", "farfield-cn"});
    EXPECT_EQ(Vtv({"diff", "default", "other"}).code, 1);
    EXPECT_EQ(RunInto("/dev/full", "vtv", {"diff", "default", "other"}).code, 4);
}

TEST_F(OutputTest, AnApplicationWhoseScreenNobodySeesDoesNothing) {
    const std::string tv = Path("tvs/default");
    Ok({"consent", "tnc", "off"});
    for (const char* file : {"/dev/full", ""}) {
        const Output output = RunInto(file, "vtv-app", {"--tv", tv, "org.nemra.wizard"});
        EXPECT_EQ(output.code, 4);
        EXPECT_THAT(output.err, StartsWith("vtv-app: the standard output cannot be written: "));
    }
    EXPECT_THAT(Ok({"consent"}), HasSubstr("tnc off"));
    EXPECT_EQ(RunInto("/dev/full", "vtv-app", {"--help"}).code, 4);
    EXPECT_EQ(RunInto("/dev/null", "vtv-app", {"--tv", tv, "--auto", "org.nemra.wizard"}).code, 0);
    EXPECT_THAT(Ok({"consent"}), HasSubstr("tnc on"));
}

TEST_F(OutputTest, AFileThatCannotBeWrittenIsToldWithItsReason) {
    Ok({"trace", "on"});
    for (const std::string file : {"/dev/full", "/nowhere/out"}) {
        const std::string reason =
            file == "/dev/full" ? "No space left on device" : "No such file or directory";
        for (const Words& line :
             {Words{"dump", file}, Words{"snapshot", file}, Words{"trace", "--export", file},
              Words{"run", Path("scenario.toml"), "--junit", file}}) {
            const Output output = Vtv(line);
            EXPECT_EQ(output.code, 4) << Line(line);
            EXPECT_THAT(output.err, HasSubstr(file + ": cannot be written: " + reason))
                << Line(line);
        }
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(OutputTest, WhoWatchesStopsWhenTheOutputFails) {
    for (const Words& verb : {Words{"watch"}, Words{"log", "--follow"}, Words{"show", "--watch"}}) {
        const pid_t writer = fork();
        if (writer == 0) {
            for (int i = 0; i < 100; ++i) {
                usleep(100000);
                Vtv({"choose", "voice-wake-up", i % 2 == 0 ? "off" : "on"});
            }
            _exit(0);
        }
        const Output output = RunInto("/dev/full", "vtv", verb);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        EXPECT_EQ(output.code, 4) << Line(verb);
        EXPECT_THAT(output.err, HasSubstr("No space left on device")) << Line(verb);
    }
}

TEST_F(OutputTest, AReaderThatGoesAwayEndsAVerbQuietly) {
    const std::string gone = Path("gone");
    const std::string vtv =
        std::string("exec env VTV_HOME=") + Path("tvs") + " timeout 20 " + VTV + " ";
    for (const std::string verb : {"dump", "log --follow", "show --watch", "watch"}) {
        for (const std::string disposition : {"default", "ignore"}) {
            // The verb begins when nobody can read any more.
            Write("pipe.sh", "rm -f " + gone + "\n{ until [ -e " + gone +
                                 " ]; do sleep 0.01; done; " + vtv + verb + " 2>" + Path("errors") +
                                 "; } | { exec 0<&-; touch " + gone + "; }\necho ${PIPESTATUS[0]}");
            ASSERT_EQ(std::system(("env --" + disposition + "-signal=PIPE bash " + Path("pipe.sh") +
                                   " >" + Path("code"))
                                      .c_str()),
                      0);
            const bool quiet = disposition == "default";
            EXPECT_EQ(Read("code"), quiet ? "141\n" : "4\n") << verb;
            EXPECT_EQ(Read("errors").find("standard output") == std::string::npos, quiet)
                << verb << Read("errors");
        }
    }
}

#ifdef WITH_EXPLORER

TEST_F(OutputTest, EveryExplorationSaysSo) {
    const std::map<std::string, Words> rows = {
        {"check", {"--list"}},
        {"depends", {"-q", "enabled:voice"}},
        {"diff", {"--brief", "-q", PROVIDER, PROVIDER, "--only", "help:voice"}},
        {"impact", {"-q", Path("policy.json"), Path("policy.json"), "--tv", "no-voice"}},
        {"merge", {"--help"}},   // of parts that were made before
        {"replay", {"--help"}},  // plays nothing in a program with a sanitizer
        {"sequences", {"-q", "--depth", "0", "--tv", "no-voice"}},
        {"table", {"-q", "help:voice"}}};
    std::istringstream explorations(Ok({"__complete", "explore", ""}));
    int tried = 0;
    for (std::string verb; std::getline(explorations, verb); ++tried) {
        ASSERT_EQ(rows.count(verb), 1U) << "give vtv explore " << verb << " a row";
        Words line = {verb};
        line.insert(line.end(), rows.at(verb).begin(), rows.at(verb).end());
        for (const Words& words : {line, Words{verb, "--help"}}) {
            const Output full = RunInto("/dev/full", "vtv-explore", words);
            EXPECT_EQ(full.code, 4) << Line(words);
            EXPECT_THAT(full.err, HasSubstr("No space left on device")) << Line(words);
            EXPECT_EQ(RunInto("", "vtv-explore", words).code, 4) << Line(words);
        }
    }
    EXPECT_EQ(tried, 8);
    EXPECT_EQ(RunInto("/dev/full", "vtv-explore", {"--help"}).code, 4);
    const Output file =
        RunInto("/dev/null", "vtv-explore", {"table", "-q", "help:voice", "-o", "/dev/full"});
    EXPECT_EQ(file.code, 4);
    EXPECT_THAT(file.err, HasSubstr("/dev/full: cannot be written: No space left on device"));
}

#endif
