// vtv run with several scenarios: at once, in order, and on TVs that are thrown away.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "vtv_process.h"

using testing::AllOf;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

std::string WithoutTimes(const std::string& text) {
    static const std::regex time(R"(("seconds" ?: |time=")[0-9.e-]+)");
    return std::regex_replace(text, time, "$1T");
}

class RunTest : public VtvTest {
  protected:
    RunTest() {
        fs::create_directory(Path("temporary"));
        environment["TMPDIR"] = Path("temporary");
        Write("quick.toml", "[[step]]\nsay = \"nothing\"\n");
        Write("failing.toml",
              "[[step]]\nexpect.page.voice = \"hidden\"\n[[step]]\nsay = \"not played\"\n");
        Write("broken.toml", "[[step]]\npres = \"voice\"\n");
        Write("slow.toml", Slow(1));
        Write("very-slow.toml", Slow(300));
    }

    static std::string Slow(int steps) {
        std::string text = "[[step]]\nfault = [{ function = \"vconf_get_bool\", slow = 5 }]\n";
        for (int i = 0; i < steps; ++i) {
            text += "[[step]]\nsay = \"wait\"\n";
        }
        return text;
    }

    Words Run(const Words& names, const Words& more) const {
        Words words = {"run"};
        for (const std::string& name : names) {
            words.push_back(Path(name + ".toml"));
        }
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    // The names of the TVs that there are now, with those of the folders that hold them.
    Words Tvs() const {
        Words names;
        std::error_code ignored;
        for (const fs::directory_entry& run : fs::directory_iterator(Path("temporary"), ignored)) {
            for (const fs::directory_entry& tv : fs::directory_iterator(run, ignored)) {
                names.push_back(tv.path().filename().string());
            }
        }
        return names;
    }

    bool AreThereSoon(const Words& tvs) const {
        for (int i = 0; i < 1000; ++i) {
            const Words names = Tvs();
            if (std::is_permutation(names.begin(), names.end(), tvs.begin(), tvs.end())) {
                return true;
            }
            usleep(5000);
        }
        return false;
    }
};

}  // namespace

TEST_F(RunTest, WhatIsToldOfSeveralAtOnceIsWhatIsToldOfOneAfterTheOther) {
    const std::vector<Words> sets = {{"slow", "quick", "quick", "failing", "quick"},
                                     {"slow", "failing", "broken", "quick", "failing"},
                                     {"slow", "quick"}};
    const int codes[] = {1, 2, 0};
    for (size_t i = 0; i < sets.size(); ++i) {
        for (const Words& more : {Words{}, Words{"--json", "--junit", Path("results.xml")}}) {
            Words one = Run(sets[i], more);
            one.insert(one.end(), {"--jobs", "1"});
            const Output expected = Vtv(one);
            const std::string results = Read("results.xml");
            EXPECT_EQ(expected.code, codes[i]) << expected.out << expected.err;
            for (const Words& jobs : {Words{"-j", "100"}, Words{}}) {
                Words several = Run(sets[i], more);
                several.insert(several.end(), jobs.begin(), jobs.end());
                const Output output = Vtv(several);
                EXPECT_EQ(output.code, expected.code);
                EXPECT_EQ(WithoutTimes(output.out), WithoutTimes(expected.out));
                EXPECT_EQ(output.err, expected.err);
                EXPECT_EQ(WithoutTimes(Read("results.xml")), WithoutTimes(results));
            }
        }
    }
}

TEST_F(RunTest, AsManyArePlayedAtOnceAsWereAskedFor) {
    for (const int jobs : {1, 2, 3}) {
        RunningVtv run(environment, Run({"very-slow", "very-slow", "very-slow"},
                                        {"--jobs", std::to_string(jobs)}));
        Words playing;
        for (int i = 1; i <= jobs; ++i) {
            playing.push_back(std::to_string(i) + "-very-slow");
        }
        EXPECT_TRUE(AreThereSoon(playing)) << jobs;
        usleep(300000);
        EXPECT_EQ(Tvs().size(), playing.size());
        EXPECT_EQ(run.Interrupt(SIGTERM).code, 128 + SIGTERM);
    }
}

TEST_F(RunTest, ANumberOfProcessesThatIsNoneIsWrongUsage) {
    for (const char* jobs : {"-1", "x", "1.5", "", "99999999999"}) {
        const Output output = Vtv(Run({"quick"}, {"--jobs", jobs}));
        EXPECT_EQ(output.code, 2) << jobs;
        EXPECT_THAT(output.err, HasSubstr("--jobs")) << jobs;
        EXPECT_EQ(output.out, "");
    }
    EXPECT_EQ(Vtv(Run({"quick"}, {"--jobs", "2", "--check"})).code, 2);
    Ok(Run({"quick", "quick"}, {"--jobs", "0"}));
}

TEST_F(RunTest, ATvGoesAsSoonAsItsScenarioIsThrough) {
    for (const char* jobs : {"1", "2"}) {
        RunningVtv run(environment, Run({"quick", "very-slow"}, {"--jobs", jobs}));
        ASSERT_TRUE(run.WaitFor("passed"));
        EXPECT_TRUE(AreThereSoon({"2-very-slow"}));
        EXPECT_EQ(run.Interrupt(SIGTERM).code, 128 + SIGTERM);
    }
}

TEST_F(RunTest, TheTvsOfAllAreKeptWhenAsked) {
    Ok(Run({"quick", "quick", "slow"}, {"--jobs", "2", "--keep", Path("kept")}));
    for (const char* name : {"1-quick", "2-quick", "3-slow"}) {
        EXPECT_TRUE(fs::exists(Path("kept") + "/" + name + "/tv.toml")) << name;
    }
}

TEST_F(RunTest, AProviderThatCannotBeUsedIsToldOnceWithTheCodeOfEveryVerb) {
    for (const char* jobs : {"1", "2"}) {
        const Output output =
            Vtv(Run({"quick", "quick"}, {"--jobs", jobs, "--provider",
                                         std::string(FAKES) + "/libfake-missing_entry_point.so"}));
        EXPECT_EQ(output.code, 4);
        EXPECT_THAT(output.err, HasSubstr("libfake-missing_entry_point.so"));
        EXPECT_EQ(std::count(output.err.begin(), output.err.end(), '\n'), 1) << output.err;
        EXPECT_TRUE(Tvs().empty());
    }
}

// The machine, or the TV's own launcher, does not do what the second one says.
TEST_F(RunTest, OneThatCannotBePlayedIsOneOfTheResultsAndTheOthersArePlayed) {
    Ok({"new", "own"});
    Write("own.toml", Read("tvs/own/tv.toml") +
                          "\n[[packages]]\napp = \"org.nemra.wizard\"\ncommand = \"/bin/none\"\n");
    Write("launches.toml",
          "model = \"own.toml\"\n[[step]]\nsay = \"first\"\n[[step]]\n"
          "launch = { app = \"org.nemra.wizard\" }\n[[step]]\nsay = \"last\"\n");
    const std::string why =
        "launches.toml:5: org.nemra.wizard: failed: org.nemra.wizard is not "
        "started: its command is not allowed";
    for (const char* jobs : {"1", "2"}) {
        const Words names = {"quick", "launches", "failing", "broken", "quick"};
        const Output told = Vtv(Run(names, {"--jobs", jobs}));
        EXPECT_EQ(told.code, 4);
        EXPECT_THAT(told.err, HasSubstr(why));
        EXPECT_THAT(told.out, HasSubstr("ERROR   launches"));
        EXPECT_THAT(told.out,
                    HasSubstr("5 scenarios, 1 failed, 1 broken, 1 could not be played\n"));
        const Output json = Vtv(Run(names, {"--jobs", jobs, "--json", "--junit", Path("r.xml")}));
        EXPECT_EQ(json.code, 4);
        Json::Value results;
        ASSERT_TRUE(Json::Reader().parse(json.out, results));
        ASSERT_EQ(results.size(), names.size());
        EXPECT_THAT(results[1]["error"].asString(), HasSubstr(why));
        EXPECT_FALSE(results[1]["passed"].asBool());
        EXPECT_TRUE(results[4]["passed"].asBool());
        const std::string xml = Read("r.xml");
        EXPECT_THAT(xml, HasSubstr("tests=\"6\" failures=\"1\" errors=\"2\" skipped=\"1\""));
        EXPECT_THAT(xml, HasSubstr("<error message=\"" + Path(why)));
    }
}

// One that ends the process with 0 would pass for a run in which nothing failed.
TEST_F(RunTest, AProviderThatEndsTheProcessIsToldWithTheScenario) {
    for (const char* jobs : {"1", "2"}) {
        for (const char* fake : {"exits_when_created", "calls_exit", "crashes_on_null"}) {
            const Output output = Vtv(Run(
                {"broken", "quick", "quick"},
                {"--jobs", jobs, "--provider", std::string(FAKES) + "/libfake-" + fake + ".so"}));
            if (std::string(fake) == "crashes_on_null") {
                EXPECT_EQ(output.code, 2) << "it is sound where nobody asks it about null";
                continue;
            }
            EXPECT_EQ(output.code, 4) << fake << output.out;
            EXPECT_THAT(output.err, AllOf(HasSubstr("quick.toml: was not played to its end"),
                                          HasSubstr("exit code 0")));
            EXPECT_THAT(output.out, HasSubstr("BROKEN  "));
            EXPECT_THAT(output.out, HasSubstr("3 scenarios, 0 failed, 1 broken, 2 could not"));
            EXPECT_TRUE(Tvs().empty());
        }
    }
}
