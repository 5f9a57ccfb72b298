#include "virtual-tv/watcher.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>

#include <fstream>

#include "child.h"
#include "temporary_folder.h"
#include "virtual-tv/store.h"

namespace vtv {
namespace {

constexpr uint32_t kWrites = IN_MOVED_TO | IN_DELETE;

class WatcherTest : public testing::Test {
  protected:
    WatcherTest() : dir(Make(folder / "store")), store(dir, Store::Durability::kVolatile) {}
    static std::string Make(const std::string& dir) {
        Store::Create(dir);
        return dir;
    }
    Watcher::Id Count(const std::string& key, int* count) {
        return watcher.Watch(dir, kWrites, Store::EncodeKey(key),
                             [count](const std::string&) { ++*count; });
    }
    int ReadInt(const std::string& key) {
        Value value;
        std::string problem;
        return store.Read(key, &value, &problem) == Store::Status::kOk ? std::get<int>(value) : -1;
    }
    bool Readable() {
        pollfd source{watcher.Fd(), POLLIN, 0};
        return poll(&source, 1, 0) == 1;
    }

    TemporaryFolder folder;
    std::string dir;
    Store store;
    Watcher watcher;
};

TEST_F(WatcherTest, EveryWriteOfAnotherProcessCallsBackOnceAndAnUninvolvedWatcherStaysSilent) {
    int involved = 0, uninvolved = 0;
    Count("db/key", &involved);
    Count("db/other", &uninvolved);
    Child writer([&] {
        Store own(dir, Store::Durability::kVolatile);
        for (int i = 0; i < 1000; ++i) {
            own.Write("db/key", 7);  // the value stays: a write is a write
        }
    });
    writer.Wait();
    while (watcher.Dispatch() > 0) {
    }
    EXPECT_EQ(involved, 1000);
    EXPECT_EQ(uninvolved, 0);
}

TEST_F(WatcherTest, CallbacksComeInTheOrderOfTheWrites) {
    std::string order;
    for (const std::string key : {"a", "b", "c"}) {
        watcher.Watch(dir, kWrites, Store::EncodeKey(key),
                      [&order, key](const std::string&) { order += key; });
    }
    for (const char key : std::string("abcacbbca")) {
        store.Write(std::string(1, key), 1);
    }
    watcher.Dispatch();
    EXPECT_EQ(order, "abcacbbca");
}

TEST_F(WatcherTest, ACallbackNeverSeesAValueThatIsOlderThanItsWrite) {
    int last = 0;
    bool backwards = false;
    watcher.Watch(dir, kWrites, Store::EncodeKey("n"), [&](const std::string&) {
        const int now = ReadInt("n");
        backwards = backwards || now < last;
        last = now;
    });
    Child writer([&] {
        Store own(dir, Store::Durability::kVolatile);
        for (int i = 1; i <= 500; ++i) {
            own.Write("n", i);
        }
    });
    while (last < 500) {
        pollfd source{watcher.Fd(), POLLIN, 0};
        ASSERT_EQ(poll(&source, 1, 10000), 1) << "the last write was never told, at " << last;
        watcher.Dispatch();
    }
    EXPECT_FALSE(backwards);
}

TEST_F(WatcherTest, TheDescriptorIsReadableWhileThereIsSomethingToTellAndOnlyThen) {
    int count = 0;
    Count("k", &count);
    EXPECT_FALSE(Readable());
    store.Write("k", 1);
    EXPECT_TRUE(Readable());
    watcher.Dispatch();
    EXPECT_FALSE(Readable());
    EXPECT_EQ(count, 1);
}

TEST_F(WatcherTest, AWriteBeforeTheRegistrationIsNotTold) {
    int first = 0, second = 0;
    Count("k", &first);
    store.Write("k", 1);
    Count("k", &second);
    EXPECT_TRUE(Readable());  // the first one's event waits
    store.Write("k", 2);
    while (watcher.Dispatch() > 0) {
    }
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 1);
}

TEST_F(WatcherTest, ARemovalCallsBack) {
    store.Write("k", 1);
    int count = 0;
    Count("k", &count);
    store.Remove("k");
    watcher.Dispatch();
    EXPECT_EQ(count, 1);
}

TEST_F(WatcherTest, AWatchCanRemoveItselfAndOthersInItsCallback) {
    int first = 0, second = 0;
    Watcher::Id firstId = 0, secondId = 0;
    firstId = watcher.Watch(dir, kWrites, "k", [&](const std::string&) {
        ++first;
        watcher.Unwatch(firstId);
        watcher.Unwatch(secondId);
    });
    secondId = Count("k", &second);
    store.Write("k", 1);
    store.Write("k", 2);
    while (watcher.Dispatch() > 0) {
    }
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST_F(WatcherTest, AWatchAddedInACallbackHearsOfLaterWritesOnly) {
    int added = 0;
    bool done = false;
    watcher.Watch(dir, kWrites, "k", [&](const std::string&) {
        if (!done) {
            done = true;
            Count("k", &added);
        }
    });
    store.Write("k", 1);
    watcher.Dispatch();
    EXPECT_EQ(added, 0);
    store.Write("k", 2);
    watcher.Dispatch();
    EXPECT_EQ(added, 1);
}

TEST_F(WatcherTest, WritingTheWatchedKeyInItsCallbackIsToldNextTimeAndDoesNotGoOnForever) {
    int count = 0;
    watcher.Watch(dir, kWrites, "k", [&](const std::string&) {
        ++count;
        store.Write("k", count);
    });
    store.Write("k", 0);
    EXPECT_EQ(watcher.Dispatch(), 1);
    EXPECT_TRUE(Readable());
    EXPECT_EQ(watcher.Dispatch(), 1);
    EXPECT_EQ(count, 2);
}

TEST_F(WatcherTest, DispatchInACallbackLeavesTheRestToTheOuterOne) {
    std::string order;
    watcher.Watch(dir, kWrites, "", [&](const std::string& name) {
        order += name;
        EXPECT_EQ(watcher.Dispatch(), 0);
        order += ".";
    });
    store.Write("a", 1);
    store.Write("b", 1);
    watcher.Dispatch();
    EXPECT_EQ(order, "a.b.");
}

TEST_F(WatcherTest, AnExceptionOfACallbackComesOutAndTheNextEventsAreStillTold) {
    int told = 0;
    watcher.Watch(dir, kWrites, "a", [](const std::string&) { throw std::runtime_error("no"); });
    Count("b", &told);
    store.Write("a", 1);
    store.Write("b", 1);
    EXPECT_THROW(watcher.Dispatch(), std::runtime_error);
    EXPECT_TRUE(Readable());
    watcher.Dispatch();
    EXPECT_EQ(told, 1);
}

TEST_F(WatcherTest, AnExceptionOfOneCallbackKeepsNoOtherFromHearingOfTheSame) {
    int first = 0, last = 0;
    Count("a", &first);
    watcher.Watch(dir, kWrites, "a", [](const std::string&) { throw std::runtime_error("no"); });
    Count("a", &last);
    store.Write("a", 1);
    EXPECT_THROW(watcher.Dispatch(), std::runtime_error);
    watcher.Dispatch();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 1);
}

TEST_F(WatcherTest, AnExceptionOfOneCallbackKeepsNoOtherFromFollowingAnotherFolder) {
    int told = 0;
    store.Write("a", 1);
    watcher.Watch(dir, kWrites, "", [](const std::string&) { throw std::runtime_error("no"); });
    Count("a", &told);
    std::filesystem::rename(dir, dir + ".away");
    Make(dir);
    EXPECT_THROW(watcher.Follow(dir), std::runtime_error);
    EXPECT_EQ(told, 1) << "it is gone";
    Store(dir, Store::Durability::kVolatile).Write("a", 2);
    EXPECT_THROW(watcher.Dispatch(), std::runtime_error);
    EXPECT_EQ(told, 2);
}

TEST_F(WatcherTest, AFolderThatIsMadeAgainCanBeWatchedAgain) {
    int told = 0;
    const std::string other = folder / "other";
    for (int i = 1; i <= 2; ++i) {
        std::filesystem::create_directory(other);
        watcher.Watch(other, IN_CREATE, "", [&](const std::string&) { ++told; });
        WriteText(other + "/file", "");
        watcher.Dispatch();
        EXPECT_EQ(told, i);
        std::filesystem::remove_all(other);
        watcher.Dispatch();
    }
}

TEST_F(WatcherTest, AfterAnOverflowEveryChangedKeyIsToldAndNoOther) {
    int limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    ASSERT_GT(limit, 0);
    store.Write("early", 1);
    store.Write("late", 1);
    store.Write("rewritten", 1);
    store.Write("gone", 1);
    store.Write("still", 1);
    int early = 0, late = 0, rewritten = 0, gone = 0, still = 0, made = 0;
    Count("early", &early);
    Count("late", &late);
    Count("rewritten", &rewritten);
    Count("gone", &gone);
    Count("still", &still);
    Count("made", &made);
    store.Write("early", 2);
    int filler = 0;
    Count("filler", &filler);
    for (int i = 0; i < limit + 10; ++i) {
        store.Write("filler", i);
    }
    // The queue is full: nothing of this is told by an event of its own.
    store.Write("late", 2);
    store.Write("rewritten", 1);  // the same value
    store.Remove("gone");
    store.Write("made", 1);
    // A new watch takes what the queue holds, so that there is room again: the next write has an
    // event of its own, behind the overflow.
    int behind = 0;
    Count("behind", &behind);
    store.Write("behind", 1);
    store.Write("late", 3);
    while (watcher.Dispatch() > 0) {
    }
    EXPECT_EQ(early, 1);
    EXPECT_EQ(late, 1);
    EXPECT_EQ(rewritten, 1);
    EXPECT_EQ(gone, 1);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(behind, 1);
    EXPECT_EQ(still, 0);
    EXPECT_GE(filler, limit / 2 - 10);
    // And it goes on as before.
    store.Write("still", 2);
    watcher.Dispatch();
    EXPECT_EQ(still, 1);
}

}  // namespace
}  // namespace vtv
