// Verbs that take long and are ended by a signal: they keep what they found and leave nothing
// behind.
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "tests/caught_signal.h"
#include "vtv_process.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

class SignalTest : public VtvTest {
  protected:
    SignalTest() {
        fs::create_directory(Path("temporary"));
        environment["TMPDIR"] = Path("temporary");
        Write("quick.toml", "[[step]]\nsay = \"nothing\"\n");
        std::string slow = "[[step]]\nfault = [{ function = \"vconf_get_bool\", slow = 5 }]\n";
        for (int i = 0; i < 300; ++i) {
            slow += "[[step]]\nsay = \"wait\"\n";
        }
        Write("slow.toml", slow);
    }

    // Whether so many slow scenarios have come to their first slow step, within half a minute.
    bool AreSlowSoon(int wanted) const {
        int slow = 0;
        for (int i = 0; i < 3000 && slow < wanted; ++i) {
            usleep(10000);
            slow = 0;
            std::error_code gone;
            for (fs::recursive_directory_iterator file(Path("temporary"), gone), end;
                 !gone && file != end; file.increment(gone)) {
                slow += file->path().filename() == "vconf_get_bool" ? 1 : 0;
            }
        }
        return slow == wanted;
    }

    // Whoever cleans up behind a process that was killed needs a moment.
    bool IsCleanSoon() const {
        for (int i = 0; i < 500 && !fs::is_empty(Path("temporary")); ++i) {
            usleep(20000);
        }
        return fs::is_empty(Path("temporary"));
    }
};

}  // namespace

TEST_F(SignalTest, ARunThatIsEndedWritesItsResultsAndRemovesItsTvs) {
    for (const int signal : kSignals) {
        RunningVtv run(environment,
                       {"run", Path("quick.toml"), Path("slow.toml"), Path("quick.toml"), "--junit",
                        Path("results.xml"), "--jobs", "1"});
        ASSERT_TRUE(run.WaitFor("passed"));
        ASSERT_TRUE(AreSlowSoon(1));
        const Output output = run.Interrupt(signal);
        EXPECT_EQ(output.code, 128 + signal);
        EXPECT_THAT(output.out, AllOf(HasSubstr("passed  quick"), HasSubstr("stopped slow"),
                                      HasSubstr("2 scenarios, 0 failed")));
        EXPECT_THAT(output.err, HasSubstr("ended by a signal ("));
        EXPECT_THAT(output.err, HasSubstr("after 1 of 3 scenarios"));
        EXPECT_THAT(Read("results.xml"),
                    AllOf(HasSubstr("name=\"quick\""), HasSubstr("name=\"slow\""),
                          HasSubstr("<skipped/>"), HasSubstr("</testsuites>")));
        EXPECT_TRUE(fs::is_empty(Path("temporary")));
        fs::remove(Path("results.xml"));
    }
}

TEST_F(SignalTest, ARunOfSeveralAtOnceThatIsEndedTellsOfAllThatWereBegun) {
    for (const int signal : kSignals) {
        RunningVtv run(environment, {"run", Path("quick.toml"), Path("slow.toml"),
                                     Path("quick.toml"), Path("slow.toml"), Path("quick.toml"),
                                     "--json", "--junit", Path("results.xml"), "--jobs", "2"});
        ASSERT_TRUE(AreSlowSoon(2));
        const Output output = run.Interrupt(signal);
        EXPECT_EQ(output.code, 128 + signal);
        EXPECT_THAT(output.err, HasSubstr("after 2 of 5 scenarios"));
        Json::Value json;
        ASSERT_TRUE(Json::Reader().parse(output.out, json)) << output.out;
        ASSERT_EQ(json.size(), 4U) << output.out;
        for (const Json::Value& result : json) {
            EXPECT_EQ(result["passed"].asBool(), result["title"] == "quick") << output.out;
        }
        EXPECT_THAT(Read("results.xml"),
                    AllOf(HasSubstr("<skipped/>"), HasSubstr("</testsuites>")));
        EXPECT_TRUE(fs::is_empty(Path("temporary")));
        fs::remove(Path("results.xml"));
    }
}

TEST_F(SignalTest, ASecondSignalEndsARunAtOnceAndItsTvsAreRemovedAllTheSame) {
    for (const char* jobs : {"1", "2"}) {
        RunningVtv run(environment, {"run", Path("quick.toml"), Path("slow.toml"), "--jobs", jobs});
        ASSERT_TRUE(run.WaitFor("passed"));
        kill(run.Pid(), SIGTERM);
        usleep(1000);
        EXPECT_GE(run.Interrupt(SIGTERM).code, 128);
        EXPECT_TRUE(IsCleanSoon());
    }
}

TEST_F(SignalTest, ARunThatIsKilledLeavesNoTvs) {
    for (const char* jobs : {"1", "3"}) {
        RunningVtv run(environment, {"run", Path("quick.toml"), Path("slow.toml"),
                                     Path("slow.toml"), "--jobs", jobs});
        ASSERT_TRUE(run.WaitFor("passed"));
        EXPECT_FALSE(fs::is_empty(Path("temporary")));
        EXPECT_EQ(run.Interrupt(SIGKILL).code, 128 + SIGKILL);
        EXPECT_TRUE(IsCleanSoon());
    }
}

TEST_F(SignalTest, AValidationThatIsKilledAtAnyMomentLeavesNoFolder) {
    for (int i = 0; i < 40; ++i) {
        RunningVtv validation(environment, {"validate", "--filter", "list"});
        usleep(static_cast<useconds_t>(1500 * i));
        EXPECT_EQ(validation.Interrupt(SIGKILL).code, 128 + SIGKILL);
    }
    EXPECT_TRUE(IsCleanSoon());
}

TEST_F(SignalTest, AValidationThatIsEndedShowsWhatItFound) {
    for (const int signal : kSignals) {
        RunningVtv validation(environment, {"validate"});
        ASSERT_TRUE(WaitUntilCaught(validation.Pid(), signal));
        usleep(500000);
        const Output output = validation.Interrupt(signal);
        EXPECT_EQ(output.code, 128 + signal);
        EXPECT_THAT(output.out, ContainsRegex(" checks?, 0 failed"));
        EXPECT_TRUE(IsCleanSoon());
    }
}

#ifdef WITH_EXPLORER
TEST_F(SignalTest, AnExplorationThatIsEndedShowsWhatItFound) {
    for (const int signal : kSignals) {
        RunningVtv table(environment, {"explore", "table", "-q", "--jobs", "1", "set"});
        ASSERT_TRUE(WaitUntilCaught(table.Pid(), signal));
        usleep(200000);
        const Output output = table.Interrupt(signal);
        EXPECT_EQ(output.code, 128 + signal) << output.err;
        EXPECT_THAT(output.err, HasSubstr("interrupted; what was found so far is shown"));
        EXPECT_THAT(output.out, HasSubstr("set:voice-assistant=1"));
    }
}
#endif
