// What is put back on a TV is put back whole, or not at all: every call that fails, and every
// moment at which the process is killed.
#include <unistd.h>

#include <csignal>
#include <map>

#include "planned_calls.h"
#include "tv_fixture.h"

namespace vtv {
namespace {

bool operator==(const Snapshot& a, const Snapshot& b) {
    return a.settings == b.settings && a.state == b.state && a.ownerFiles == b.ownerFiles;
}

class SnapshotTest : public testing::Test {
  public:
    SnapshotTest() {
        systemCalls = store_file_calls;
        plan = Plan();
        Tv::Create(dir, FindModel("farfield-eu"));
        Tv tv(dir);
        tv.AddOwnerFile("share/old/mark");
        tv.Set("db/only/old", "x");
        tv.Set("memory/only/old", 1);
        before = tv.TakeSnapshot();
        after = before;
        after.settings.erase("db/only/old");
        after.settings.erase("memory/only/old");
        after.settings["db/only/new"] = true;
        after.settings["memory/only/new"] = std::string("y");
        after.settings["db/menu_widget/language"] = std::string("de_DE");
        after.state["consent/tnc"] = !std::get<bool>(before.state.at("consent/tnc"));
        after.state["network"] = std::string("disconnected");
        after.ownerFiles = {"share/new/mark", "share/old"};  // a file where a folder was
    }
    ~SnapshotTest() override { store_file_calls = systemCalls; }

    Snapshot Now() const { return Tv(dir).TakeSnapshot(); }
    // How many calls can fail while a snapshot is put back.
    int Calls() {
        const std::string copy = folder / "copy";
        Tv::Create(copy, FindModel("farfield-eu"));
        Tv tv(copy);
        tv.Restore(before);
        plan = Plan();
        store_file_calls = kPlanned;
        tv.Restore(after);
        store_file_calls = systemCalls;
        return plan.calls;
    }
    bool NothingIsLeftBehind() const { return !std::filesystem::exists(dir + "/.changes"); }

    TemporaryFolder folder;
    std::string dir = folder / "tv";
    Snapshot before;
    Snapshot after;
};

TEST_F(SnapshotTest, ComesBackAsItWasTaken) {
    Tv(dir).Restore(after);
    EXPECT_TRUE(Now() == after);
    Tv(dir).Restore(before);
    EXPECT_TRUE(Now() == before);
    EXPECT_TRUE(NothingIsLeftBehind());
}

TEST_F(SnapshotTest, OneThatCannotBePutBackWholeIsRefusedBeforeAnythingChanges) {
    for (const auto& [key, value] :
         std::map<std::string, Value>{{"db/" + std::string(300, 'k'), 1},
                                      {"nowhere/key", 1},
                                      {"db/huge", std::string(size_t{2} * 1024 * 1024, 'x')}}) {
        Snapshot broken = after;
        broken.settings[key] = value;
        ErrorOf(ErrorKind::kUsage, [&] { Tv(dir).Restore(broken); });
        EXPECT_TRUE(Now() == before) << key.substr(0, 20);
    }
    Snapshot broken = after;
    broken.ownerFiles.emplace_back("../outside");
    ErrorOf(ErrorKind::kUsage, [&] { Tv(dir).Restore(broken); });
    EXPECT_TRUE(Now() == before);
    EXPECT_TRUE(NothingIsLeftBehind());
}

TEST_F(SnapshotTest, ACallThatFailsLeavesTheTvAsItWasOrAsItShallBe) {
    const int calls = Calls();
    ASSERT_GT(calls, 40);
    std::map<bool, int> outcomes;
    for (const bool fromThenOn : {false, true}) {
        for (int nth = 1; nth <= calls; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth));
            Tv(dir).Restore(before);
            {
                Tv tv(dir);
                plan = {nth, fromThenOn};
                store_file_calls = kPlanned;
                try {
                    tv.Restore(after);
                } catch (const Error& error) {
                    EXPECT_EQ(error.kind(), ErrorKind::kPlatform);
                }
                store_file_calls = systemCalls;
                ASSERT_GE(plan.calls, nth);
            }
            const Snapshot now = Now();
            ASSERT_TRUE(now == before || now == after);
            ASSERT_TRUE(NothingIsLeftBehind());
            ++outcomes[now == after];
        }
    }
    EXPECT_GT(outcomes[false], 10) << "nothing was taken back";
    EXPECT_GT(outcomes[true], 10) << "nothing was completed";
}

TEST_F(SnapshotTest, AKillAtAnyMomentLeavesTheTvAsItWasOrAsItShallBe) {
    const int calls = Calls();
    std::map<bool, int> outcomes;
    for (int nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE("killed at call " + std::to_string(nth));
        Tv(dir).Restore(before);
        const int ended = InChild([&] {
            Tv tv(dir);
            plan = {nth, false, true};
            store_file_calls = kPlanned;
            tv.Restore(after);
            return 0;
        });
        ASSERT_EQ(ended, -SIGKILL);
        const Snapshot now = Now();
        ASSERT_TRUE(now == before || now == after);
        ASSERT_TRUE(NothingIsLeftBehind());
        ++outcomes[now == after];
    }
    EXPECT_GT(outcomes[false], 10) << "nothing was taken back";
    EXPECT_GT(outcomes[true], 10) << "nothing was completed";
}

TEST_F(SnapshotTest, AStateThatNoTvHasIsNamedAndReadsAsMissing) {
    const std::string wrong[][2] = {{"state/network", "string 3\nfoo\n"},
                                    {"state/applications", "string 3\nfoo\n"},
                                    {"state/account%2Fsigned_in", "int 1\n1\n"},
                                    {"state/nonsense", "int 1\n1\n"},
                                    {"faults/vconf_get_int", "string 17\nslow 0 2000000000\n"},
                                    {"faults/vconf_get_str", "string 3\nfoo\n"}};
    for (const auto& [name, text] : wrong) {
        WriteText(dir + "/" + name, text);
    }
    Tv tv(dir);
    const std::vector<std::string> problems = tv.Problems();
    ASSERT_EQ(problems.size(), std::size(wrong));
    for (const auto& [name, text] : wrong) {
        const bool isFault = name.rfind("faults", 0) == 0;
        const std::string advice = isFault ? "vtv fault --clear" : "remove the file.";
        EXPECT_EQ(std::count_if(problems.begin(), problems.end(),
                                [&](const std::string& problem) {
                                    return problem.rfind(dir + "/" + name + ": ", 0) == 0 &&
                                           problem.find(advice) != std::string::npos;
                                }),
                  1)
            << name;
    }
    EXPECT_EQ(tv.GetNetwork(), Network::kDisconnected);
    EXPECT_EQ(tv.Applications(), ApplicationMode::kProcess);
    EXPECT_EQ(tv.TakeSnapshot().state.count("network"), 0U);
    EXPECT_TRUE(tv.Faults().empty());
    tv.ClearFaults();
    EXPECT_EQ(tv.Problems().size(), 4U);
}

TEST_F(SnapshotTest, WhoeverOpensTheTvMeanwhileSeesItAsItWasOrAsItShallBe) {
    // The reader starts in the middle of the renames, and has to wait.
    static int middle[2];
    ASSERT_EQ(pipe(middle), 0);
    Child reader([&] {
        char start = 0;
        _exit(read(middle[0], &start, 1) == 1 && Tv(dir).TakeSnapshot() == after ? 0 : 1);
    });
    store_file_calls.unlinkat = [](int at, const char* name, int flags) {
        if (write(middle[1], "x", 1) != 1) {
            abort();
        }
        usleep(20000);
        return systemCalls.unlinkat(at, name, flags);
    };
    Tv(dir).Restore(after);
    EXPECT_EQ(reader.Wait(), 0);
    close(middle[0]);
    close(middle[1]);
}

}  // namespace
}  // namespace vtv
