// TVs are copied, renamed and removed whole, or not at all: while others write, at every call that
// fails, and at every moment at which the process is killed.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <iostream>
#include <map>
#include <thread>

#include "planned_calls.h"
#include "tv_fixture.h"
#include "virtual-tv/whole_folder.h"
#include "virtual-tv/whole_tvs.h"

namespace fs = std::filesystem;

namespace vtv {
namespace {

class WholeTvsTest : public testing::Test {
  public:
    WholeTvsTest() {
        systemCalls = store_file_calls;
        plan = Plan();
        fs::create_directory(home);
        Tv::Create(one, FindModel("farfield-eu"));
        Tv tv(one);
        tv.Set("db/kept", "x");
        tv.Set("memory/lost", 1);
        tv.SetConsent("tnc", false);
        tv.AddOwnerFile("share/deep/mark");
        tv.AddOwnerFile(".hidden");
        tv.SetFault({"vconf_get_int", Fault::Kind::kAlways, -7, 0});
        is = tv.TakeSnapshot();
    }
    ~WholeTvsTest() override { store_file_calls = systemCalls; }

    // Opens it: what cannot be opened, or is something else than it was made to be, is no TV.
    bool IsWhole(const std::string& dir) const {
        const Tv tv(dir);
        const Snapshot now = tv.TakeSnapshot();
        return now.settings == is.settings && now.state == is.state &&
               now.ownerFiles == is.ownerFiles && tv.Problems().empty() &&
               tv.Faults().size() == 1 && tv.Faults()[0].result == -7;
    }
    // The names of all that lies where the TVs are, once the next one has looked there.
    std::vector<std::string> Names() const {
        TvsIn(home);
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(home)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    bool IsListed(const std::string& dir) const {
        const std::vector<std::string> dirs = TvsIn(home);
        return std::find(dirs.begin(), dirs.end(), dir) != dirs.end();
    }
    // What each call of an act does that fails, or at which the process is killed.
    template <typename Act, typename Check>
    void AtEveryCall(Act act, Check check) {
        plan = Plan();
        store_file_calls = kPlanned;
        act();
        store_file_calls = systemCalls;
        const int count = plan.calls;
        ASSERT_GT(count, 0);
        check();
        for (const bool fromThenOn : {false, true}) {
            for (int nth = 1; nth <= count; ++nth) {
                SCOPED_TRACE("call " + std::to_string(nth));
                plan = {nth, fromThenOn};
                store_file_calls = kPlanned;
                try {
                    act();
                } catch (const Error& error) {
                    EXPECT_EQ(error.kind(), ErrorKind::kPlatform) << error.what();
                }
                store_file_calls = systemCalls;
                check();
            }
        }
        for (int nth = 1; nth <= count; ++nth) {
            SCOPED_TRACE("killed at call " + std::to_string(nth));
            ASSERT_EQ(InChild([&] {
                          plan = {nth, false, true};
                          store_file_calls = kPlanned;
                          act();
                          return 0;
                      }),
                      -SIGKILL);
            check();
        }
    }

    TemporaryFolder folder;
    std::string home = folder / "tvs";
    std::string one = home + "/one";
    std::string two = home + "/two";
    Snapshot is;
};

TEST_F(WholeTvsTest, AFolderThatCannotBeLookedAtHidesNoTv) {
    const std::string closed = home + "/closed";
    fs::create_directory(closed);
    ASSERT_EQ(chmod(closed.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    setenv("VTV_HOME", home.c_str(), 1);
    const int failed = InChild([&] {
        if (geteuid() == 0 && seteuid(12345) != 0) {
            return 3;
        }
        try {
            fs::current_path(home);
            return TvPath("closed") != home + "/closed"      ? 1
                   : TvsIn(home) != std::vector{closed, one} ? 2
                                                             : 0;
        } catch (const Error& error) {
            std::cerr << error.what() << '\n';
            return 4;
        }
    });
    unsetenv("VTV_HOME");
    EXPECT_EQ(failed, 0);
}

TEST_F(WholeTvsTest, ACopyIsWhatTheTvIsWithoutWhatHappenedOnIt) {
    {
        Tv tv(one);
        tv.SetApplications(ApplicationMode::kRecord);
        tv.LaunchApplication("org.nemra.wizard", {});
        tv.Log(4, "something happened");
        is = tv.TakeSnapshot();
    }
    WriteText(one + "/settings/.tmp-1-1-1", "half of a value");
    WriteText(one + "/apps/77.json", "{}");
    WriteText(one + "/notes.txt", "somebody's own");
    fs::create_directories(one + "/.changes/staged/written/settings");
    CopyTv(one, two);
    for (const char* name : {"/.changes", "/notes.txt", "/apps/77.json", "/apps/.lock",
                             "/settings/.tmp-1-1-1", "/launches.jsonl", "/log/tv.log"}) {
        EXPECT_FALSE(fs::exists(two + name)) << name;
    }
    EXPECT_TRUE(IsWhole(two));
    const Tv copied(two);
    EXPECT_EQ(copied.GetModel().name, "farfield-eu");
    Tv(two).Set("db/kept", "another");
    EXPECT_EQ(Tv(one).Get("db/kept"), Value("x"));
}

TEST_F(WholeTvsTest, ACopyCompletesWhatWasDecidedOnTheOther) {
    Snapshot restored = is;
    restored.settings["db/decided"] = true;
    ASSERT_EQ(InChild([&] {
                  Tv tv(one);
                  store_file_calls = kPlanned;
                  store_file_calls.renameat = [](int fromDir, const char* from, int toDir,
                                                 const char* to) {
                      const int done = systemCalls.renameat(fromDir, from, toDir, to);
                      if (std::string(to) == "decided") {
                          raise(SIGKILL);
                      }
                      return done;
                  };
                  tv.Restore(restored);
                  return 0;
              }),
              -SIGKILL);
    CopyTv(one, two);
    EXPECT_EQ(Tv(two).Get("db/decided"), Value(true));
    is = restored;
    EXPECT_TRUE(IsWhole(two));
}

TEST_F(WholeTvsTest, ACopyTakenWhileOthersWriteHasEveryWriteThatWasAcknowledgedBefore) {
    // In memory, where a file that is replaced while its folder is listed may be missing in the
    // list.
    const char* const temporary = getenv("TMPDIR");
    const std::string before = temporary != nullptr ? temporary : "/tmp";
    setenv("TMPDIR", "/dev/shm", 1);
    const TemporaryFolder fast;
    setenv("TMPDIR", before.c_str(), 1);
    const std::string from = fast / "from";
    const std::string to = fast / "to";
    CopyTv(one, from);
    constexpr int kManyKeys = 500;  // more than the system lists at once, with names of this length
    const auto key = [](int i) { return "memory/" + std::string(100, 'k') + std::to_string(i); };
    void* const shared = mmap(nullptr, sizeof(int) * kManyKeys, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto* const acknowledged = static_cast<std::atomic<int>*>(shared);
    {
        Tv tv(from);
        for (int i = 0; i < kManyKeys; ++i) {
            tv.Set(key(i), 0);
        }
    }
    Child writer([&] {
        Tv tv(from);
        for (int value = 1;; ++value) {
            for (int i = 0; i < kManyKeys; ++i) {
                tv.Set(key(i), value);
                acknowledged[i] = value;
            }
        }
    });
    for (int copies = 0; copies < 30 && !HasFailure(); ++copies) {
        const std::vector<int> least(acknowledged, acknowledged + kManyKeys);
        CopyTv(from, to);
        const std::vector<int> most(acknowledged, acknowledged + kManyKeys);
        const Tv copy(to);
        EXPECT_TRUE(copy.Problems().empty());
        for (int i = 0; i < kManyKeys && !HasFailure(); ++i) {
            const std::optional<Value> value = copy.Get(key(i));
            if (!value) {
                ADD_FAILURE() << key(i) << " is not in copy " << copies;
                break;
            }
            EXPECT_GE(std::get<int>(*value), least[static_cast<size_t>(i)]);
            EXPECT_LE(std::get<int>(*value), most[static_cast<size_t>(i)] + 1);
        }
        fs::remove_all(to);
    }
    writer.Kill();
    writer.Wait();
    munmap(shared, sizeof(int) * kManyKeys);
}

TEST_F(WholeTvsTest, ACopyThatFailsOrIsKilledLeavesNothingOrAWholeTv) {
    std::map<bool, int> outcomes;
    AtEveryCall([&] { CopyTv(one, two); },
                [&] {
                    const bool made = IsListed(two);
                    ASSERT_TRUE(!made || IsWhole(two));
                    ASSERT_TRUE(IsWhole(one));
                    ASSERT_EQ(Names(), made ? std::vector<std::string>({"one", "two"})
                                            : std::vector<std::string>({"one"}));
                    ++outcomes[made];
                    fs::remove_all(two);
                });
    EXPECT_GT(outcomes[false], 100);
    EXPECT_GT(outcomes[true], 1);
}

TEST_F(WholeTvsTest, ARenameThatFailsOrIsKilledLeavesTheOldNameOrTheNew) {
    std::map<bool, int> outcomes;
    AtEveryCall([&] { RenameTv(one, two); },
                [&] {
                    const bool moved = IsListed(two);
                    ASSERT_EQ(Names(), std::vector<std::string>({moved ? "two" : "one"}));
                    ASSERT_TRUE(IsWhole(moved ? two : one));
                    ++outcomes[moved];
                    if (moved) {
                        fs::rename(two, one);
                    }
                });
    EXPECT_GT(outcomes[false], 1);
    EXPECT_GT(outcomes[true], 1);
}

TEST_F(WholeTvsTest, ARemovalThatFailsOrIsKilledLeavesTheWholeTvOrNothing) {
    std::map<bool, int> outcomes;
    CopyTv(one, folder / "kept");
    AtEveryCall([&] { RemoveTv(one, false); },
                [&] {
                    const bool there = IsListed(one);
                    ASSERT_EQ(Names(), there ? std::vector<std::string>({"one"})
                                             : std::vector<std::string>());
                    ASSERT_TRUE(!there || IsWhole(one));
                    ++outcomes[there];
                    if (!there) {
                        CopyTv(folder / "kept", one);
                    }
                });
    EXPECT_GT(outcomes[false], 1);
    EXPECT_GT(outcomes[true], 1);
}

TEST_F(WholeTvsTest, ARemovalThatIsKilledWhileItDeletesIsCompletedByTheNext) {
    for (int i = 0; i < 4000; ++i) {
        WriteText(one + "/owner/share/" + std::to_string(i), "");
    }
    const auto leftover = [&] {
        for (const fs::directory_entry& entry : fs::directory_iterator(home)) {
            if (IsAsideName(entry.path().filename().string())) {
                return entry.path().string();
            }
        }
        return std::string();
    };
    {
        Child removing([&] { RemoveTv(one, false); });
        while (leftover().empty()) {
            std::this_thread::yield();
        }
        EXPECT_EQ(TvsIn(home), std::vector<std::string>()) << "what is being removed is listed";
        removing.Kill();
    }
    ASSERT_FALSE(leftover().empty()) << "it was through already";
    EXPECT_EQ(Names(), std::vector<std::string>());
}

TEST_F(WholeTvsTest, WhatAnotherProcessIsMakingIsNoLeftover) {
    static int made[2];
    static int looked[2];
    ASSERT_EQ(pipe(made) | pipe(looked), 0);
    Child maker([&] {
        Tv::Create(two, ReadText(FindModel("farfield-eu")), "x.toml", [](Tv&) {
            char go = 0;
            if (write(made[1], "x", 1) != 1 || read(looked[0], &go, 1) != 1) {
                abort();
            }
        });
    });
    char ready = 0;
    ASSERT_EQ(read(made[0], &ready, 1), 1);
    EXPECT_EQ(TvsIn(home), std::vector<std::string>({one}));
    EXPECT_EQ(Names().size(), 2U) << "it was taken for a leftover";
    ASSERT_EQ(write(looked[1], "x", 1), 1);
    EXPECT_EQ(maker.Wait(), 0);
    EXPECT_EQ(Names(), std::vector<std::string>({"one", "two"}));
    for (const int fd : {made[0], made[1], looked[0], looked[1]}) {
        close(fd);
    }
}

TEST_F(WholeTvsTest, AFolderIsMadeHoweverOftenOthersTakeItForALeftover) {
    std::atomic<bool> done{false};
    std::thread remover([&] {
        while (!done) {
            RemoveLeftFolders(home);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        EXPECT_NO_THROW(NewFolder(home + "/next"));
    }
    done = true;
    remover.join();
}

TEST_F(WholeTvsTest, ARemovalFollowsNoLink) {
    const std::string outside = folder / "outside";
    fs::create_directories(outside + "/apps");
    WriteText(outside + "/precious", "mine");
    WriteText(outside + "/apps/77.json", "{}");
    for (const char* name : {"/settings/db%2Flink", "/owner/share/link", "/.lock"}) {
        fs::remove(one + name);
        fs::create_symlink(outside + "/precious", one + name);
    }
    fs::create_directory_symlink(outside, one + "/owner/folder");
    fs::remove_all(one + "/apps");
    fs::create_directory_symlink(outside + "/apps", one + "/apps");
    ErrorOf(ErrorKind::kUsage, [&] { CopyTv(one, two); });
    EXPECT_EQ(Names(), std::vector<std::string>({"one"}));
    RemoveTv(one, true);
    EXPECT_EQ(Names(), std::vector<std::string>());
    EXPECT_EQ(ReadText(outside + "/precious"), "mine");
    EXPECT_EQ(ReadText(outside + "/apps/77.json"), "{}");
    EXPECT_FALSE(fs::exists(outside + "/apps/.lock"));
}

TEST_F(WholeTvsTest, AFileThatBecomesALinkWhileItIsCopiedIsNotFollowed) {
    const std::string secret = folder / "secret";
    WriteText(secret, "secret");
    Child swapper([&] {
        for (;;) {
            fs::create_symlink(secret, folder / "link");
            fs::rename(folder / "link", one + "/owner/.hidden");
            WriteText(folder / "plain", "");
            fs::rename(folder / "plain", one + "/owner/.hidden");
        }
    });
    for (int i = 0; i < 100; ++i) {
        try {
            CopyTv(one, two);
            EXPECT_EQ(ReadText(two + "/owner/.hidden"), "");
            fs::remove_all(two);
        } catch (const Error&) {  // it was seen as a link
            EXPECT_FALSE(fs::exists(two));
        }
    }
    swapper.Kill();
}

TEST_F(WholeTvsTest, AnotherUsersLeftoverAndAFolderOfALikeNameStay) {
    for (const char* name :
         {"/.vtv-new-x-1", "/.vtv-removed-1", "/.vtv-new-1-1x", "/.vtv-new-1-1"}) {
        fs::create_directory(home + name);
        WriteText(home + name + "/file", "x");
    }
    EXPECT_EQ(Names(),
              std::vector<std::string>({".vtv-new-1-1x", ".vtv-new-x-1", ".vtv-removed-1", "one"}));
    EXPECT_NE(ErrorOf(ErrorKind::kUsage, [&] { CopyTv(one, home + "/.vtv-new-1-1"); })
                  .find("Choose another"),
              std::string::npos);
}

}  // namespace
}  // namespace vtv
