// The machine around vtv: few descriptors, nothing left to watch with, folders of others, a clock
// that is set.
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;

namespace {

using Words = std::vector<std::string>;

class MachineTest : public VtvTest {
  protected:
    MachineTest() { Ok({"new", "kitchen"}); }

    std::string Tv() const { return Path("tvs/kitchen"); }
    Output Kitchen(Words words) {
        words.insert(words.end(), {"--tv", "kitchen"});
        return Vtv(words);
    }
    // With at most so many open files.
    Output Limited(int files, const Words& words) const {
        std::string line = "ulimit -n " + std::to_string(files) + "; exec env";
        for (const auto& [name, value] : environment) {
            line += " '" + name + "=" + value + "'";
        }
        line += std::string(" '") + VTV + "'";
        for (const std::string& word : words) {
            line += " '" + word + "'";
        }
        const int status =
            std::system(("(" + line + ") >" + Path("out") + " 2>" + Path("err")).c_str());
        return {WEXITSTATUS(status), Read("out"), Read("err")};
    }
    // As on a machine where this is so: see fakes/other_machine.c.
    void BeOn(const std::string& machine) {
        const char* const sanitizer = std::getenv("ASAN_OPTIONS");
        environment["ASAN_OPTIONS"] =
            std::string(sanitizer != nullptr ? sanitizer : "") + ":verify_asan_link_order=0";
        environment["LD_PRELOAD"] = OTHER_MACHINE;
        environment["OTHER_MACHINE"] = machine;
    }
    void BeBack() {
        environment["LD_PRELOAD"] = "";
        environment["OTHER_MACHINE"] = "";
    }
};

}  // namespace

TEST_F(MachineTest, AVerbWithTooFewDescriptorsSaysWhichLimitItIsAndNeverAnswersWrongly) {
    Ok({"set", "db/x", "string", "x", "--tv", "kitchen"});
    const std::vector<Words> verbs = {{"show", "--tv", "kitchen", "--json"},
                                      {"get", "db/x", "--tv", "kitchen"},
                                      {"list", "--json"},
                                      {"list", "--models", "--json"},
                                      {"app", "list", "--tv", "kitchen"},
                                      {"snapshot", "--tv", "kitchen"},
                                      {"set", "db/x", "string", "x", "--tv", "kitchen"}};
    for (const Words& words : verbs) {
        const Output whole = Vtv(words);
        ASSERT_EQ(whole.code, 0) << whole.err;
        int refused = 0;
        for (int files = 8; files <= 88; files += 4) {
            const Output output = Limited(files, words);
            if (output.code == 0) {
                EXPECT_EQ(output.out, whole.out) << words.front() << " with " << files;
                continue;
            }
            ++refused;
            EXPECT_EQ(output.code, 4) << words.front() << " with " << files << output.err;
            EXPECT_THAT(output.err, AllOf(HasSubstr("may have " + std::to_string(files)),
                                          HasSubstr("ulimit -n 1024")));
            EXPECT_EQ(output.out, "");
        }
        EXPECT_GT(refused, 5) << words.front();
        EXPECT_LT(refused, 21) << words.front();
    }
}

TEST_F(MachineTest, ALowLimitThatCanBeRaisedIsNoHindrance) {
    Output output = Limited(1024, {"list"});
    EXPECT_EQ(output.code, 0);
    output.code = std::system((std::string("ulimit -S -n 16; VTV_HOME=") + Path("tvs") + " " + VTV +
                               " list >" + Path("out"))
                                  .c_str());
    EXPECT_EQ(output.code, 0);
    EXPECT_THAT(Read("out"), HasSubstr("kitchen"));
}

TEST_F(MachineTest, WhoCannotWatchSaysWhichSettingToRaise) {
    for (const auto& [machine, setting] : {std::pair("instances", "fs.inotify.max_user_instances"),
                                           std::pair("watches", "fs.inotify.max_user_watches")}) {
        BeOn(machine);
        for (const Words& words : {Words{"watch"},
                                   {"watch", "db/x"},
                                   {"show", "--watch"},
                                   {"show", "--watch", "--json"},
                                   {"log", "--follow"}}) {
            const Output output = Kitchen(words);
            EXPECT_EQ(output.code, 4) << words.front() << " " << machine;
            EXPECT_THAT(output.err, AllOf(HasSubstr(setting), HasSubstr("sysctl -w")))
                << words.front();
        }
        EXPECT_EQ(Kitchen({"show"}).code, 0) << "who does not watch needs none";
        EXPECT_EQ(Kitchen({"set", "db/x", "int", "1"}).code, 0);
        BeBack();
    }
}

// The kernel takes milliseconds to end a watch.
TEST_F(MachineTest, WhoLooksOnceWatchesNothing) {
    BeOn("instances");
    for (const Words& words : {Words{"show"},
                               {"explain", "voice"},
                               {"describe", "db/comss/cisblock"},
                               {"search", "wake"}}) {
        EXPECT_EQ(Kitchen(words).code, 0) << words.front();
    }
    EXPECT_EQ(Vtv({"diff", "kitchen", "kitchen"}).code, 0);
    EXPECT_THAT(Kitchen({"log"}).out, Not(HasSubstr("cannot be watched")));
    Kitchen({"press", "voice-wake-up"});
    EXPECT_THAT(Kitchen({"log"}).out, HasSubstr("cannot be watched")) << "the log does not tell it";
}

// Where a vtv that plays keeps the TV on which it does: what the process has open tells.
class ThrowawayTest : public MachineTest {
  protected:
    ThrowawayTest() {
        std::string text = "[[step]]\nfault = [{ function = \"vconf_get_bool\", slow = 5 }]\n";
        for (int i = 0; i < 300; ++i) {
            text += "[[step]]\nsay = \"wait\"\n";
        }
        Write("slow.toml", text);
        runtime_ = "/dev/shm/vtv-test-runtime-XXXXXX";
        EXPECT_NE(mkdtemp(runtime_.data()), nullptr);
        environment["TMPDIR"] = "";  // as good as not set
        environment["XDG_RUNTIME_DIR"] = runtime_;
    }
    ~ThrowawayTest() override {
        std::error_code ignored;
        fs::remove_all(runtime_, ignored);
    }

    // The folder in which it is, without the end of its name, which is random.
    std::string PlaceOf(const Words& words) {
        RunningVtv vtv(environment, words);
        std::string place;
        for (int i = 0; i < 1000 && place.empty(); ++i) {
            usleep(5000);
            place = OpenPlace();
        }
        vtv.Interrupt(SIGTERM);
        return place;
    }

    const std::string& Runtime() const { return runtime_; }

  private:
    // Of any process that has this test's runtime folder in its environment.
    std::string OpenPlace() const {
        static const std::regex temporary(R"((.*)/vtv-(run|validate)-[0-9a-f]{16}/.*)");
        std::error_code ignored;
        for (const fs::directory_entry& process : fs::directory_iterator("/proc", ignored)) {
            if (!IsOfThisTest(process.path())) {
                continue;
            }
            for (const fs::directory_entry& fd :
                 fs::directory_iterator(process.path() / "fd", ignored)) {
                std::smatch found;
                const std::string file = fs::read_symlink(fd.path(), ignored).string();
                if (std::regex_match(file, found, temporary)) {
                    return found[1];
                }
            }
        }
        return "";
    }
    bool IsOfThisTest(const fs::path& process) const {
        std::ostringstream variables;
        variables << std::ifstream(process / "environ").rdbuf();
        return variables.str().find(runtime_) != std::string::npos;
    }

    std::string runtime_;
};

TEST_F(ThrowawayTest, ATvThatIsThrownAwayIsInMemoryWhereThereIsRoom) {
    const std::vector<Words> verbs = {{"run", Path("slow.toml")}, {"validate"}};
    for (const Words& words : verbs) {
        EXPECT_EQ(PlaceOf(words), Runtime()) << words.front();
        environment["XDG_RUNTIME_DIR"] = Path("there-is-none");
        environment["OF_THIS_TEST"] = Runtime();
        EXPECT_EQ(PlaceOf(words), "/dev/shm") << words.front();
        for (const char* machine : {"full", "disks"}) {
            BeOn(machine);
            EXPECT_EQ(PlaceOf(words), "/tmp") << words.front() << " " << machine;
            environment["XDG_RUNTIME_DIR"] = Runtime();
            EXPECT_EQ(PlaceOf(words), "/tmp") << words.front() << " " << machine;
            BeBack();
        }
    }
    EXPECT_TRUE(fs::is_empty(Runtime()));
}

TEST_F(ThrowawayTest, TheTemporaryFolderThatTheUserHasSetIsTaken) {
    fs::create_directory(Path("mine"));
    environment["TMPDIR"] = Path("mine");
    for (const Words& words : {Words{"run", Path("slow.toml")}, Words{"validate"}}) {
        EXPECT_EQ(PlaceOf(words), Path("mine"));
    }
    EXPECT_TRUE(fs::is_empty(Path("mine")));
    environment["TMPDIR"] = Path("there-is-none");
    const Output output = Vtv({"run", Path("slow.toml")});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, HasSubstr(Path("there-is-none")));
}

TEST_F(ThrowawayTest, ATvThatIsThrownAwayIsNotMadeToOutliveThePower) {
    Write("quick.toml", "[[step]]\nset.\"db/a\" = 1\npress = \"voice-wake-up\"\n");
    BeOn("unsynced");
    Ok({"run", Path("quick.toml")});
    Ok({"validate", "--filter", "list"});
    EXPECT_EQ(Vtv({"run", Path("quick.toml"), "--keep", Path("kept")}).code, 4);
    EXPECT_EQ(Kitchen({"set", "db/a", "int", "1"}).code, 4);
}

TEST_F(MachineTest, ATvInWhichOthersCanWriteIsRefused) {
    const auto before = Contents("tvs");
    for (const std::string& folder : {Tv(), Path("tvs")}) {
        for (const mode_t mode : {0775, 0757, 0777, 0770}) {
            ASSERT_EQ(chmod(folder.c_str(), mode), 0);
            for (const Words& words : {Words{"show"},
                                       {"get", "db/x"},
                                       {"set", "db/x", "int", "1"},
                                       {"app", "list"},
                                       {"log"}}) {
                const Output output = Kitchen(words);
                EXPECT_EQ(output.code, 4) << folder << words.front();
                EXPECT_THAT(output.err,
                            AllOf(HasSubstr(folder + ": others can write into this folder"),
                                  HasSubstr("chmod go-w " + folder)));
            }
            EXPECT_TRUE(Contents("tvs") == before);
            ASSERT_EQ(std::system(("chmod go-w " + folder).c_str()), 0);
            EXPECT_EQ(Kitchen({"show"}).code, 0) << "the command that was told does not help";
            ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
            Ok({"remove", "kitchen", "--force"});
            Ok({"new", "kitchen"});
        }
    }
}

// What opens the TV is refused, and the command that was told helps.
TEST_F(MachineTest, NothingInATvMayBeWrittenByOthers) {
    for (const char* name : {"settings", "apps", "owner", "owner/share", "log", "tv.toml",
                             "settings/.store", "switches"}) {
        const std::string path = Tv() + "/" + name;
        Ok({"press", "voice-wake-up", "--tv", "kitchen"});
        const fs::perms before = fs::status(path).permissions();
        for (const auto more : {fs::perms::group_write, fs::perms::others_write}) {
            fs::permissions(path, before | more | fs::perms::sticky_bit);
            for (const Words& words :
                 {Words{"show"}, {"set", "db/x", "int", "1"}, {"get", "db/x"}}) {
                const Output output = Kitchen(words);
                EXPECT_EQ(output.code, 4) << path << words.front();
                EXPECT_THAT(output.err, AllOf(HasSubstr(path + ": others can write into this f"),
                                              HasSubstr("chmod -R go-w " + Tv())));
            }
            ASSERT_EQ(std::system(("chmod -R go-w " + Tv()).c_str()), 0);
            EXPECT_EQ(Kitchen({"show"}).code, 0) << path;
        }
        fs::permissions(path, before);
    }
}

TEST_F(MachineTest, NothingInATvMayBeAnotherUsers) {
    BeOn("");
    for (const char* name : {"settings", "apps", "tv.toml", "state/.store"}) {
        const std::string path = Tv() + "/" + name;
        struct stat status{};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        environment["FOREIGN_FILE"] = std::to_string(status.st_ino);
        const Output output = Kitchen({"show"});
        EXPECT_EQ(output.code, 4) << path;
        const std::string user = getpwuid(geteuid())->pw_name;
        EXPECT_THAT(output.err, AllOf(HasSubstr(path + ": this f"), HasSubstr("belongs to"),
                                      HasSubstr("chown -R '" + user + "' " + Tv())));
        environment["FOREIGN_FILE"] = "";
        EXPECT_EQ(Kitchen({"show"}).code, 0);
    }
}

// Above the folder of the TVs: whoever can replace one there puts another TV in this one's place.
TEST_F(MachineTest, NobodyElseCanReplaceAFolderOnTheWayToATv) {
    environment["VTV_HOME"] = Path("deep/down/tvs");
    Ok({"new", "kitchen"});
    for (const char* name : {"deep", "deep/down"}) {
        ASSERT_EQ(chmod(Path(name).c_str(), 0757), 0);
        const Output output = Kitchen({"show"});
        EXPECT_EQ(output.code, 4) << name;
        EXPECT_THAT(output.err,
                    AllOf(HasSubstr(Path(name) + ": others can write into this folder"),
                          HasSubstr("chmod go-w " + Path(name)), HasSubstr("VTV_HOME")));
        fs::create_directory_symlink(Path("deep/down/tvs/kitchen"), Path("link"));
        EXPECT_EQ(Vtv({"show", "--tv", Path("link")}).code, 4) << "by whatever name";
        fs::remove(Path("link"));
        ASSERT_EQ(chmod(Path(name).c_str(), 01777), 0);
        EXPECT_EQ(Kitchen({"show"}).code, 0) << "as below /tmp";
        ASSERT_EQ(chmod(Path(name).c_str(), 0755), 0);
    }
    if (geteuid() == 0) {
        ASSERT_EQ(chown(Path("deep").c_str(), 65533, 65533), 0);
        EXPECT_THAT(
            Kitchen({"show"}).err,
            AllOf(HasSubstr(Path("deep") + ": this folder belongs to"), HasSubstr("VTV_HOME")));
        ASSERT_EQ(chown(Path("deep").c_str(), 0, 65533), 0);
        ASSERT_EQ(chmod(Path("deep").c_str(), 0775), 0);
        EXPECT_EQ(Kitchen({"show"}).code, 4) << "another group";
    }
}

TEST_F(MachineTest, WhoIsAloneInTheGroupMayLetItWriteIntoAFolderOnTheWayToATv) {
    environment["VTV_HOME"] = Path("deep/tvs");
    Ok({"new", "kitchen"});
    ASSERT_EQ(chown(Path("deep").c_str(), geteuid(), getpwuid(geteuid())->pw_gid), 0);
    ASSERT_EQ(chmod(Path("deep").c_str(), 0775), 0);
    BeOn("shared");
    EXPECT_EQ(Kitchen({"show"}).code, 4) << "a group with others in it";
    BeOn("alone");
    EXPECT_EQ(Kitchen({"show"}).code, 0) << "a group of one's own";
}

TEST_F(MachineTest, AFolderInWhichNobodyCanReplaceAnothersFilesMayHoldTvs) {
    ASSERT_EQ(chmod(Path("tvs").c_str(), 01777), 0);
    EXPECT_EQ(Kitchen({"show"}).code, 0);
    ASSERT_EQ(chmod(Tv().c_str(), 01777), 0);
    EXPECT_EQ(Kitchen({"show"}).code, 4) << "in the TV's own folder others could add files";
}

TEST_F(MachineTest, ATvOfAnotherUserIsRefused) {
    const bool root = geteuid() == 0;
    for (const std::string& folder : {Tv(), Path("tvs")}) {
        if (root) {
            ASSERT_EQ(chown(folder.c_str(), 65533, 65533), 0);
        } else {
            BeOn("user");
        }
        const Output output = Kitchen({"show"});
        EXPECT_EQ(output.code, 4);
        EXPECT_THAT(output.err, AllOf(HasSubstr("this folder belongs to"),
                                      HasSubstr(root ? "sudo -u" : "sudo chown -R")));
        EXPECT_THAT(output.err, HasSubstr(root ? folder : Path("tvs")));
        BeBack();
        if (root) {
            ASSERT_EQ(chown(folder.c_str(), 0, 0), 0);
        }
        EXPECT_EQ(Kitchen({"show"}).code, 0);
    }
}

TEST_F(MachineTest, NobodyElseWritesIntoATvWhateverTheUmaskIs) {
    const mode_t before = umask(0);
    Ok({"new", Path("deep/down/tv")});
    Ok({"file", "share/deep/mark", "--add", "--tv", Path("deep/down/tv")});
    Ok({"copy", Path("deep/down/tv"), Path("deep/down/copy")});
    Ok({"press", "voice-wake-up", "--tv", Path("deep/down/copy")});
    umask(before);
    int seen = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Path("deep"))) {
        struct stat info{};
        ASSERT_EQ(stat(entry.path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & (S_IWGRP | S_IWOTH), 0U) << entry.path();
        ++seen;
    }
    EXPECT_GT(seen, 50);
}

TEST_F(MachineTest, ApplicationsAreListedAsTheyWereStartedWhateverTheClockSaid) {
    Ok({"choose", "voice-assistant", "2", "--tv", "kitchen"});
    const JsonDocument first = OkJson({"app", "list", "--tv", "kitchen", "--json"});
    ASSERT_EQ(first.size(), 1U);
    // It was started while the clock was years ahead.
    const std::string file = "tvs/kitchen/apps/" + first[0]["pid"].asString() + ".json";
    Write(file, std::regex_replace(Read(file), std::regex("\"since\" : \\d+"),
                                   "\"since\" : 7258118400000000"));
    Ok({"consent", "tnc", "off", "--tv", "kitchen"});
    Ok({"press", "onboarding", "--tv", "kitchen"});
    const JsonDocument both = OkJson({"app", "list", "--tv", "kitchen", "--json"});
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0]["app"], first[0]["app"]);
    EXPECT_EQ(both[1]["app"], "org.nemra.wizard");
}

TEST_F(MachineTest, RecordsAreShownInTheirOrderWhateverTheirTimes) {
    {
        std::ofstream log(Path("tvs/kitchen/log/tv.log"), std::ios::app);
        log << "9999-12-31T23:59:59.000000Z 1 E TAG from the future\n"
               "1969-12-31T23:59:59.000000Z 1 E TAG from the past\n";
        std::ofstream launches(Path("tvs/kitchen/launches.jsonl"), std::ios::app);
        for (const char* time : {"7258118400000000", "9223372036854775807", "-1", "-1000001"}) {
            launches << R"({"app":"org.nemra.wizard","extras":[],"operation":"","outcome":)"
                     << R"("recorded","pid":0,"time":)" << time << R"(,"via":"aul"})" << '\n';
        }
    }
    RunningVtv following(environment, {"log", "--follow", "--tv", "kitchen"});
    Ok({"choose", "voice-wake-up", "off", "--tv", "kitchen"});
    EXPECT_TRUE(following.WaitFor("Wakeup[off]")) << "what is written now is older than the last";
    following.Interrupt();
    const std::string log = Ok({"log", "--tv", "kitchen", "--lines", "100000"});
    EXPECT_LT(log.find("from the future"), log.find("from the past"));
    EXPECT_LT(log.find("from the past"), log.find("Wakeup[off]"));
    const JsonDocument launches =
        OkJson({"app", "list", "--launches", "--tv", "kitchen", "--json"});
    ASSERT_EQ(launches.size(), 4U);
    EXPECT_EQ(launches[0]["time"], "2200-01-01T00:00:00.000000Z");
    EXPECT_EQ(launches[2]["time"], "1969-12-31T23:59:59.999999Z");
    EXPECT_EQ(launches[3]["time"], "1969-12-31T23:59:58.999999Z");
    EXPECT_THAT(Ok({"app", "list", "--launches", "--tv", "kitchen"}),
                testing::MatchesRegex("([0-9][0-9]:[0-9][0-9]:[0-9][0-9] org.nemra.wizard  "
                                      "recorded\n)+"));
}
