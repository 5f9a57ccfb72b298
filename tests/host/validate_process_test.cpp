// vtv validate and libraries that harm their process: no accident passes, and nothing stays behind.
#include "vtv_process.h"

#include <elf.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

std::string FakeFile(const std::string& name) {
    return std::string(FAKES) + "/libfake-" + name + ".so";
}

bool Runs(const std::string& pid) {
    return !pid.empty() && fs::exists("/proc/" + pid);
}

// With a temporary folder of its own, to see what is left in it.
class ValidateProcessTest : public VtvTest {
  protected:
    ValidateProcessTest() {
        fs::create_directory(Path("tmp"));
        environment["TMPDIR"] = Path("tmp");
        environment["FAKE_PID_FILE"] = Path("pid");
    }
    void ExpectNothingLeft() const {
        EXPECT_TRUE(fs::is_empty(Path("tmp"))) << fs::directory_iterator(Path("tmp"))->path();
    }
    bool WaitForFile(const std::string& name) const {
        for (int i = 0; i < 2000 && Read(name).empty(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return !Read(name).empty();
    }
};

struct Accident {
    const char* fake;
    const char* why;
};

void PrintTo(const Accident& accident, std::ostream* out) {
    *out << accident.fake;
}

class AccidentTest : public ValidateProcessTest, public testing::WithParamInterface<Accident> {};

}  // namespace

TEST_P(AccidentTest, IsNoPassAndLeavesNothingBehind) {
    const bool hangs = std::string(GetParam().why).find("2 seconds") != std::string::npos;
    const Output output = Vtv({"validate", FakeFile(GetParam().fake), "--filter", "creates-a-table",
                               "--timeout", hangs ? "2" : "60"});
    EXPECT_EQ(output.code, 1) << output.out << output.err;
    EXPECT_THAT(output.out, HasSubstr("FAILED  creates-a-table"));
    EXPECT_THAT(output.out, HasSubstr(GetParam().why));
    ExpectNothingLeft();
    EXPECT_FALSE(Runs(Read("pid")));
}

INSTANTIATE_TEST_SUITE_P(
    Validate, AccidentTest,
    testing::Values(
        Accident{"exits_when_loaded", "ended the process with 0 before the check was done"},
        Accident{"exits_when_created", "ended the process with 0 before the check was done"},
        Accident{"exits_when_unloaded", "ended the process with 0 before the check was done"},
        Accident{"calls_exit", "ended the process with 0 before the check was done"},
        Accident{"ends_at_exit", "ended the process with 0 before the check was done"},
        Accident{"becomes_true", "ended the process with 0 before the check was done"},
        Accident{"says_passed", "ended the process with 0 before the check was done"},
        Accident{"closes_all", "before the check was done"},
        Accident{"forks", "came back to the host"},
        Accident{"starts_process", "left a process of its own running"},
        Accident{"starts_daemon", "left a process of its own running"},
        Accident{"hangs_unalarmed", "did not come to an end in 2 seconds"},
        Accident{"hangs_when_loaded", "did not come to an end in 2 seconds"},
        Accident{"stops_itself", "did not come to an end in 2 seconds"},
        Accident{"ends_its_group", "crashed: Killed"},
        Accident{"ends_its_watcher", "ended or stopped the process that watched it"},
        Accident{"litters", "crashed: Aborted"}),
    [](const testing::TestParamInfo<Accident>& tested) { return std::string(tested.param.fake); });

TEST_F(ValidateProcessTest, AHangInTheConstructorIsWaitedForOnlyOnce) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Vtv({"validate", FakeFile("hangs_when_loaded"), "--timeout", "1"}).code, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(ValidateProcessTest, ALibraryThatCannotBeLoadedIsOneError) {
    Write("text.so", "no library\n");
    Write("empty.so", "");
    fs::copy_file(PROVIDER, Path("other.so"));
    std::fstream(Path("other.so")).seekp(EI_CLASS).put(ELFCLASS32);
    for (const std::string& file : {Path("text.so"), Path("empty.so"), Path("other.so"), Path(""),
                                    FakeFile("missing_entry_point"), FakeFile("unserved_call")}) {
        const Output output = Vtv({"validate", file});
        EXPECT_EQ(output.code, 4) << file;
        EXPECT_EQ(output.out, "") << file;
        EXPECT_EQ(std::count(output.err.begin(), output.err.end(), '\n'), 1) << output.err;
        const Output json = Vtv({"validate", file, "--json"});
        EXPECT_EQ(json.code, 4) << file;
        Json::Value document;
        ASSERT_TRUE(Json::Reader().parse(json.out, document)) << json.out;
        EXPECT_EQ("vtv: " + document["error"].asString() + "\n", json.err);
    }
    EXPECT_THAT(Vtv({"validate", FakeFile("missing_entry_point")}).err,
                HasSubstr("check_enable_bool"));
    EXPECT_THAT(Vtv({"validate", FakeFile("unserved_call")}).err, HasSubstr("vconf_get_weather"));
    ExpectNothingLeft();
}

TEST_F(ValidateProcessTest, WithoutATvToCheckOnNothingIsSaidOfTheProvider) {
    environment["VTV_DATA"] = Path("nowhere");
    const Output output = Vtv({"validate", PROVIDER});
    EXPECT_EQ(output.code, 4);
    EXPECT_EQ(output.out, "");
    EXPECT_THAT(output.err, HasSubstr(Path("nowhere/tvs") + ": the models of TVs cannot be read"));
    ExpectNothingLeft();
}

TEST_F(ValidateProcessTest, InterruptedItTellsWhatItFoundAndLeavesNothingBehind) {
    RunningVtv running(environment, {"validate", FakeFile("starts_process"), "--timeout", "60"});
    ASSERT_TRUE(WaitForFile("pid"));
    const Output output = running.Interrupt();
    EXPECT_EQ(output.code, 128 + SIGINT);
    EXPECT_THAT(output.out, ContainsRegex("[0-9]+ checks?, "));
    EXPECT_THAT(output.err, HasSubstr("ended by a signal (Interrupt) after "));
    ExpectNothingLeft();
    EXPECT_FALSE(Runs(Read("pid")));
}

TEST_F(ValidateProcessTest, WithoutAReaderItLeavesNothingBehind) {
    const std::string line = std::string(VTV) + " validate " + FakeFile("sound") + " | head -1";
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    EXPECT_EQ(std::system(("bash -o pipefail -c '" + line + " >/dev/null' 2>/dev/null").c_str()),
              W_EXITCODE(128 + SIGPIPE, 0));
    unsetenv("TMPDIR");
    ExpectNothingLeft();
}

TEST_F(ValidateProcessTest, KilledItLeavesNothingBehindEither) {
    {
        RunningVtv running(environment, {"validate", FakeFile("hangs_unalarmed")});
        // The folder of the run, and in it that of a check: somebody is there to remove them.
        const auto folders = [&] {
            std::error_code gone;  // while it is looked at
            int count = 0;
            for (fs::recursive_directory_iterator entry(Path("tmp"), gone), end;
                 !gone && entry != end; entry.increment(gone)) {
                ++count;
            }
            return count;
        };
        for (int i = 0; i < 2000 && folders() < 2; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_GE(folders(), 2);
    }  // SIGKILL
    for (int i = 0; i < 1000 && !fs::is_empty(Path("tmp")); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ExpectNothingLeft();
}
