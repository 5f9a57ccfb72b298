#include "virtual-tv/store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>

#include "child.h"
#include "temporary_folder.h"
#include "tests/environment.h"
#include "virtual-tv/model/limits.h"
#include "virtual-tv/store_files.h"

namespace vtv {
namespace {

class StoreTest : public testing::Test {
  protected:
    StoreTest() : dir(folder / "store"), real(store_file_calls) { Store::Create(dir); }
    ~StoreTest() override { store_file_calls = real; }

    Store Open() { return Store(dir, Store::Durability::kDurable); }
    static Store::Status Read(const Store& store, const std::string& key, Value* value) {
        std::string problem;
        return store.Read(key, value, &problem);
    }
    size_t FileCount() const {
        size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir)) {
            ++count;
        }
        return count;
    }

    TemporaryFolder folder;
    std::string dir;
    const StoreFileCalls real;
};

#define EXPECT_VALUE(store, key, wanted)                         \
    do {                                                         \
        Value found;                                             \
        ASSERT_EQ(Read(store, key, &found), Store::Status::kOk); \
        EXPECT_EQ(found, Value(wanted));                         \
    } while (false)

TEST_F(StoreTest, ValuesOfEveryTypeComeBackAsTheyWere) {
    Store store(dir, Store::Durability::kDurable);
    const std::vector<Value> values = {true,
                                       false,
                                       0,
                                       -1,
                                       INT_MAX,
                                       INT_MIN,
                                       std::string(),
                                       std::string("x"),
                                       std::string("two\nlines\n"),
                                       std::string("Größe 가 语音"),
                                       std::string(100000, 'x'),
                                       std::string("int 5\n7\n")};
    for (const Value& value : values) {
        store.Write("db/key", value);
        EXPECT_VALUE(store, "db/key", value);
        EXPECT_VALUE(Store(dir, Store::Durability::kDurable), "db/key", value);
    }
}

TEST_F(StoreTest, AMissingKeyIsMissingAndLeavesTheValueAlone) {
    Store store(dir, Store::Durability::kDurable);
    Value value = 17;
    EXPECT_EQ(Read(store, "db/none", &value), Store::Status::kMissing);
    EXPECT_EQ(value, Value(17));
}

TEST_F(StoreTest, ARemovedKeyIsMissing) {
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/key", 1);
    EXPECT_TRUE(store.Remove("db/key"));
    EXPECT_FALSE(store.Remove("db/key"));
    Value value;
    EXPECT_EQ(Read(store, "db/key", &value), Store::Status::kMissing);
}

TEST_F(StoreTest, KeysOfAnyBytesAreKeptApart) {
    Store store(dir, Store::Durability::kDurable);
    const std::vector<std::string> keys = {"a/b",  "a%2Fb",  "a%2fb",  "a b",      ".",
                                           "..",   ".tmp-1", ".store", "A/b",      "ä",
                                           "a\nb", "/",      "a/",     "\xff\x01", "%"};
    for (size_t i = 0; i < keys.size(); ++i) {
        store.Write(keys[i], static_cast<int>(i));
    }
    for (size_t i = 0; i < keys.size(); ++i) {
        EXPECT_VALUE(store, keys[i], static_cast<int>(i));
        EXPECT_EQ(Store::DecodeKey(Store::EncodeKey(keys[i])), keys[i]);
    }
    EXPECT_EQ(store.List().size(), keys.size());
}

TEST_F(StoreTest, AnEmptyOrOverlongKeyIsRefusedWithItsReason) {
    Store store(dir, Store::Durability::kDurable);
    for (const std::string& key : {std::string(), std::string(241, 'k'), std::string(81, '/')}) {
        try {
            store.Write(key, 1);
            FAIL() << "accepted a key of " << key.size() << " bytes";
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), ErrorKind::kUsage);
        }
    }
    store.Write(std::string(240, 'k'), 1);
    store.Write(std::string(80, '/'), 1);
    EXPECT_EQ(FileCount(), 3u);  // and the version
}

TEST_F(StoreTest, AFileCutOffAnywhereIsToldAsDamagedAndTheOtherKeysStay) {
    Store store(dir, Store::Durability::kDurable);
    for (const Value& value : {Value(true), Value(12345), Value("a longer text\n")}) {
        store.Write("db/good", 1);
        store.Write("db/bad", value);
        const std::string file = dir + "/db%2Fbad";
        const std::string whole = ReadText(file);
        for (size_t size = 0; size < whole.size(); ++size) {
            WriteText(file, whole.substr(0, size));
            Value read = std::string("untouched");
            std::string problem;
            ASSERT_EQ(store.Read("db/bad", &read, &problem), Store::Status::kDamaged) << size;
            EXPECT_NE(problem.find("db%2Fbad"), std::string::npos) << problem;
            EXPECT_EQ(read, Value("untouched"));
        }
        EXPECT_VALUE(store, "db/good", 1);
        const auto list = store.List();
        ASSERT_EQ(list.size(), 2u);
        EXPECT_FALSE(list[0].value);
        EXPECT_FALSE(list[0].problem.empty());
        store.Write("db/bad", value);  // as the text advises
        EXPECT_VALUE(store, "db/bad", value);
    }
}

TEST_F(StoreTest, AForeignFileIsToldAsDamagedAndNotTouched) {
    Store store(dir, Store::Durability::kDurable);
    const std::vector<std::string> contents = {"hello\n",
                                               "int\n5\n",
                                               "int 1\nx\n",
                                               "int 11\n99999999999\n",
                                               "bool 1\n1\n",
                                               "float 3\n1.5\n",
                                               "string 3\nabcd\n",
                                               "string -1\n\n",
                                               "string 99999999999999999999\nx\n",
                                               std::string(5000, '\0')};
    for (const std::string& content : contents) {
        WriteText(dir + "/db%2Fkey", content);
        Value value;
        EXPECT_EQ(Read(store, "db/key", &value), Store::Status::kDamaged) << content;
        EXPECT_EQ(ReadText(dir + "/db%2Fkey"), content);
    }
    // A folder or a link in a file's place.
    unlink((dir + "/db%2Fkey").c_str());
    mkdir((dir + "/db%2Fkey").c_str(), 0777);
    Value value;
    EXPECT_EQ(Read(store, "db/key", &value), Store::Status::kDamaged);
}

TEST_F(StoreTest, AStoreOfANewerVersionIsNeitherReadNorChanged) {
    {
        Store store(dir, Store::Durability::kDurable);
        store.Write("db/key", 1);
    }
    WriteText(dir + "/.store", "2\n");
    Store store(dir, Store::Durability::kDurable);
    EXPECT_NE(store.Problem().find("version 2"), std::string::npos) << store.Problem();
    Value value;
    EXPECT_EQ(Read(store, "db/key", &value), Store::Status::kDamaged);
    EXPECT_THROW(store.Write("db/key", 2), Error);
    EXPECT_THROW(store.Remove("db/key"), Error);
    EXPECT_TRUE(store.List().empty());
    WriteText(dir + "/.store", "1\n");
    EXPECT_VALUE(Store(dir, Store::Durability::kDurable), "db/key", 1);
}

TEST_F(StoreTest, AVersionThatIsMendedIsKnownOnceTheStoreIsOpenedAgain) {
    Store store(dir, Store::Durability::kVolatile);
    for (const bool isNewer : {true, false}) {
        WriteText(dir + "/.store", isNewer ? "2\n" : "1\n");
        store.Reopen();
        EXPECT_EQ(store.IsOfUnknownVersion(), isNewer);
    }
    EXPECT_EQ(store.Problem(), "");
}

TEST_F(StoreTest, AStoreThatCannotBeOpenedForAWhileIsReadAndWrittenLater) {
    Store store(dir, Store::Durability::kVolatile);
    store.Write("k", 1);
    // Root may read everything: a user who is nobody may not.
    const uid_t user = geteuid();
    ASSERT_EQ(chmod(dir.c_str(), 0), 0);
    ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);
    const auto readAgain = [&] {
        store.Reopen();
        Value value;
        Read(store, "k", &value);
    };
    EXPECT_THROW(readAgain(), Unreadable);
    EXPECT_THROW(store.List(), Unreadable);
    ASSERT_EQ(seteuid(user), 0);
    ASSERT_EQ(chmod(dir.c_str(), 0700), 0);
    EXPECT_VALUE(store, "k", 1);
    EXPECT_EQ(store.List().size(), 1U);
    store.Write("k", 2);
    EXPECT_TRUE(store.LastWriting("k"));
}

TEST_F(StoreTest, AFolderThatIsNoStoreIsRefused) {
    unlink((dir + "/.store").c_str());
    EXPECT_FALSE(Store(dir, Store::Durability::kDurable).Problem().empty());
    EXPECT_FALSE(Store(folder / "none", Store::Durability::kDurable).Problem().empty());
}

// --- The system refuses ---

int failing = 0;  // number of the call that fails, counted from 1; 0: none
int failure = 0;
int calls = 0;
bool after = false;  // whether the killing comes after the call instead of before
bool killing = false;
StoreFileCalls honest;

bool Refuse() {
    if (++calls != failing) {
        return false;
    }
    if (killing && !after) {
        kill(getpid(), SIGKILL);
    }
    errno = failure;
    return !killing;
}

template <typename Result>
Result Afterwards(Result result) {
    if (killing && after && calls == failing) {
        kill(getpid(), SIGKILL);
    }
    return result;
}

const StoreFileCalls refusing = {
    [](int dir, const char* name, int flags, mode_t mode) {
        return Refuse() ? -1 : Afterwards(honest.openat(dir, name, flags, mode));
    },
    [](int fd, const void* data, size_t size) {
        return Refuse() ? ssize_t{-1} : Afterwards(honest.write(fd, data, size));
    },
    [](int fd) { return Refuse() ? -1 : Afterwards(honest.fsync(fd)); },
    [](int fd) {
        const bool refused = Refuse();
        const int result = honest.close(fd);  // a close that fails has closed
        errno = failure;
        return refused ? -1 : Afterwards(result);
    },
    [](int from, const char* old, int to, const char* name) {
        return Refuse() ? -1 : Afterwards(honest.renameat(from, old, to, name));
    },
    [](int dir, const char* name, int flags) {
        return Refuse() ? -1 : Afterwards(honest.unlinkat(dir, name, flags));
    },
};

void FailCall(int number, int error) {
    failing = number;
    failure = error;
    calls = 0;
    killing = false;
    store_file_calls = refusing;
}

constexpr int kCallsOfAWrite = 6;  // open, write, sync, close, rename, sync of the folder

TEST_F(StoreTest, EachCallOfAWriteThatFailsIsToldAndNothingIsLost) {
    honest = real;
    Store store(dir, Store::Durability::kDurable);
    for (const int error : {ENOSPC, EROFS, EIO, EDQUOT, EACCES}) {
        for (int number = 1; number <= kCallsOfAWrite; ++number) {
            store_file_calls = real;
            store.Write("db/key", "old");
            FailCall(number, error);
            try {
                store.Write("db/key", "new");
                FAIL() << "call " << number << " failed unnoticed";
            } catch (const Error& thrown) {
                EXPECT_EQ(thrown.kind(), ErrorKind::kPlatform);
                EXPECT_NE(std::string(thrown.what()).find("db/key"), std::string::npos)
                    << thrown.what();
                EXPECT_NE(std::string(thrown.what()).find(std::strerror(error)), std::string::npos)
                    << thrown.what();
            }
            store_file_calls = real;
            // Only after the rename is the new value there, and then whole.
            EXPECT_VALUE(store, "db/key", number < kCallsOfAWrite ? "old" : "new");
            EXPECT_EQ(FileCount(), 2u) << "call " << number << " leaves something behind";
        }
    }
}

TEST_F(StoreTest, AWriteMakesExactlyTheCallsThatTheTestsFailInTurn) {
    honest = real;
    Store store(dir, Store::Durability::kDurable);
    FailCall(0, 0);
    store.Write("db/key", 1);
    EXPECT_EQ(calls, kCallsOfAWrite);
}

TEST_F(StoreTest, AWriterKilledAtEachCallLeavesTheOldOrTheNewValue) {
    honest = real;
    for (int number = 1; number <= kCallsOfAWrite; ++number) {
        for (const bool afterCall : {false, true}) {
            store_file_calls = real;
            Store(dir, Store::Durability::kDurable).Write("db/key", "old");
            const int ended = InChild([&] {
                FailCall(number, 0);
                killing = true;
                after = afterCall;
                Store(dir, Store::Durability::kDurable).Write("db/key", "new");
                return 0;
            });
            ASSERT_EQ(ended, -SIGKILL) << "call " << number;
            Store store(dir, Store::Durability::kDurable);
            const bool renamed = number > 5 || (number == 5 && afterCall);
            EXPECT_VALUE(store, "db/key", renamed ? "new" : "old");
            store.RemoveLeftovers();
            EXPECT_EQ(FileCount(), 2u);
        }
    }
}

TEST_F(StoreTest, InterruptedAndPartialWritesAreCompleted) {
    static int turn = 0;
    honest = real;
    store_file_calls.write = [](int fd, const void* data, size_t size) -> ssize_t {
        if (turn++ % 2 == 0) {
            errno = EINTR;
            return -1;
        }
        return honest.write(fd, data, std::min<size_t>(size, 3));
    };
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/key", std::string(1000, 'x') + "end");
    EXPECT_VALUE(store, "db/key", std::string(1000, 'x') + "end");
}

TEST_F(StoreTest, ATemporaryNameThatIsTakenIsPassedOver) {
    static int turns = 0;
    honest = real;
    store_file_calls.openat = [](int at, const char* name, int flags, mode_t mode) {
        if (turns++ == 0) {
            errno = EEXIST;
            return -1;
        }
        return honest.openat(at, name, flags, mode);
    };
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/key", 1);
    EXPECT_EQ(turns, 2);
    EXPECT_VALUE(store, "db/key", 1);
}

TEST_F(StoreTest, LeftoversOfDeadWritersAreRemovedAndThoseOfLivingOnesStay) {
    // Whatever its number means where it is read: a process of a container may have the same.
    WriteText(dir + "/.tmp-" + std::to_string(getpid()) + "-1-1", "x");
    WriteText(dir + "/.tmp-2147483647-1-1", "x");
    Store store(dir, Store::Durability::kDurable);
    EXPECT_TRUE(store.List().empty());
    store.RemoveLeftovers();
    EXPECT_EQ(FileCount(), 1u) << "only the store's own file";

    static Store* reader = nullptr;
    Store other(dir, Store::Durability::kDurable);
    reader = &other;
    store_file_calls.renameat = [](int fromDir, const char* from, int toDir, const char* to) {
        reader->RemoveLeftovers();
        return ::renameat(fromDir, from, toDir, to);
    };
    store.Write("db/key", 1);
    reader = nullptr;
    EXPECT_VALUE(store, "db/key", 1);
}

TEST_F(StoreTest, AWriterWhoseNameWasTakenAwayBeforeItWasLockedTakesAnother) {
    static int turns = 0;
    turns = 0;
    honest = real;
    store_file_calls.openat = [](int at, const char* name, int flags, mode_t mode) {
        const int fd = honest.openat(at, name, flags, mode);
        if (turns++ == 0) {
            renameat(at, name, at, ".elsewhere");
        }
        return fd;
    };
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/key", 1);
    EXPECT_EQ(turns, 2);
    EXPECT_VALUE(store, "db/key", 1);
}

TEST_F(StoreTest, ALeftoverWhoseNameALivingWriterHasTakenIsNotRemoved) {
    honest = real;
    WriteText(dir + "/.tmp-left", "left");
    WriteText(dir + "/living", "living");
    store_file_calls.openat = [](int at, const char* name, int flags, mode_t mode) {
        const int fd = honest.openat(at, name, flags, mode);
        renameat(at, "living", at, name);  // between the look and the lock
        return fd;
    };
    Store(dir, Store::Durability::kDurable).RemoveLeftovers();
    EXPECT_EQ(ReadText(dir + "/.tmp-left"), "living");
}

TEST_F(StoreTest, WritersInTwoProcessNamespacesTakeDifferentNames) {
    NEEDS_PROCESS_NAMESPACES();
    honest = real;
    for (const char* of : {"one", "two"}) {
        Child writer([&] {
            EnterProcessNamespace();
            return InChild([&] {
                static std::string names = dir + "/" + of;
                store_file_calls.openat = [](int at, const char* name, int flags, mode_t mode) {
                    WriteText(names, name);
                    return honest.openat(at, name, flags, mode);
                };
                Store(dir, Store::Durability::kDurable).Write("db/key", 1);
                return 0;
            });
        });
        ASSERT_EQ(writer.Wait(), 0);
    }
    EXPECT_NE(ReadText(dir + "/one"), ReadText(dir + "/two"));
}

TEST_F(StoreTest, AKeyThatIsWrittenAllTheTimeIsInEveryList) {
    // In memory, where a file that is replaced while its folder is listed may be listed not at all;
    // and more keys than the system lists at once, with names of this length.
    constexpr int kMany = 500;
    const auto keyOf = [](int i) {
        return "db/" + std::string(100, 'x') + std::to_string(i % kMany);
    };
    const TemporaryFolder memory("/dev/shm");
    const std::string inMemory = memory / "store";
    Store::Create(inMemory);
    Store store(inMemory, Store::Durability::kVolatile);
    for (int i = 0; i < kMany; ++i) {
        store.Write(keyOf(i), i);
    }
    Child writer([&] {
        Store other(inMemory, Store::Durability::kVolatile);
        for (int i = 0; access((inMemory + "/done").c_str(), F_OK) != 0; ++i) {
            other.Write(keyOf(i), i);
        }
    });
    for (int i = 0; i < 200 && !HasFailure(); ++i) {
        EXPECT_EQ(store.List().size(), static_cast<size_t>(kMany)) << "list " << i;
    }
    WriteText(inMemory + "/done", "");
    EXPECT_EQ(writer.Wait(), 0);
}

TEST_F(StoreTest, WritesSurviveAReaderInAnotherProcessNamespace) {
    NEEDS_PROCESS_NAMESPACES();
    Child reader([&] {
        EnterProcessNamespace();
        InChild([&] {
            Store inside(dir, Store::Durability::kDurable);
            WriteText(dir + "/started", "");
            while (access((dir + "/done").c_str(), F_OK) != 0) {
                inside.RemoveLeftovers();
            }
            return 0;
        });
    });
    Store store(dir, Store::Durability::kDurable);
    while (access((dir + "/started").c_str(), F_OK) != 0) {
        usleep(1000);
    }
    store_file_calls.renameat = [](int fromDir, const char* from, int toDir, const char* to) {
        usleep(500);  // as long as a disk takes
        return ::renameat(fromDir, from, toDir, to);
    };
    for (int i = 0; i < 400; ++i) {
        EXPECT_NO_THROW(store.Write("db/key", i));
    }
    WriteText(dir + "/done", "");
    EXPECT_EQ(reader.Wait(), 0);
    EXPECT_VALUE(store, "db/key", 399);
}

TEST_F(StoreTest, AValueThatIsLongerThanAnyIsRefusedAndReadAsDamage) {
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/long", std::string(kLargestValue, 'x'));
    try {
        store.Write("db/long", std::string(kLargestValue + 1, 'y'));
        ADD_FAILURE() << "it was written";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::kUsage);
    }
    Value value;
    ASSERT_EQ(Read(store, "db/long", &value), Store::Status::kOk);
    EXPECT_TRUE(value == Value(std::string(kLargestValue, 'x')));

    const std::string size = std::to_string(10 * kLargestValue);
    WriteText(dir + "/db%2Fhuge",
              "string " + size + "\n" + std::string(10 * kLargestValue, 'z') + "\n");
    std::string problem;
    EXPECT_EQ(store.Read("db/huge", &value, &problem), Store::Status::kDamaged);
    EXPECT_NE(problem.find("larger than any value"), std::string::npos) << problem;
}

// As a store that somebody sent has them: nobody has written them here.
void PutKeys(const std::string& dir, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        std::ofstream(dir + "/k" + std::to_string(i)) << "int 1\n1\n";
    }
}

TEST_F(StoreTest, MoreKeysThanAnyListHasAreNotListedButReadWrittenAndRemoved) {
    PutKeys(dir, kMostEntries + 5000);
    Store store(dir, Store::Durability::kVolatile);
    try {
        store.List();
        FAIL() << "it lists them";
    } catch (const HasTooMany& error) {
        EXPECT_EQ(error.kind(), ErrorKind::kUsage);
        EXPECT_EQ(error.what(),
                  dir +
                      ": 15000 keys are too many: at most 10000. Remove those that you do not "
                      "need, or make the TV anew.");
    }
    EXPECT_VALUE(store, "k0", 1);
    store.Write("k0", 2);
    EXPECT_VALUE(store, "k0", 2);
    EXPECT_TRUE(store.Remove("k0"));
    EXPECT_THROW(store.Write("k0", 3), HasTooMany) << "there are still too many";
    store.RemoveAll();
    EXPECT_TRUE(store.List().empty());
}

TEST_F(StoreTest, AFullStoreTakesNoNewKeyUntilOneIsGone) {
    PutKeys(dir, kMostEntries - 1);
    Store store(dir, Store::Durability::kVolatile);
    EXPECT_EQ(store.List().size(), kMostEntries - 1);
    store.Write("last", 1);
    store.Write("last", 2);
    try {
        store.Write("another", 1);
        FAIL() << "it takes another";
    } catch (const HasTooMany& error) {
        EXPECT_NE(std::string(error.what()).find("10001 keys are too many"), std::string::npos);
    }
    EXPECT_TRUE(store.Remove("k7"));
    store.Write("another", 1);
    EXPECT_EQ(store.List().size(), kMostEntries);
}

TEST_F(StoreTest, AKeyIsListedOnceWhateverFilesOthersPutBesideIt) {
    Store store(dir, Store::Durability::kDurable);
    store.Write("db/key", 1);
    WriteText(dir + "/db%2fkey", "int 1\n2\n");  // no name that the store gives
    WriteText(dir + "/%64b%2Fkey", "int 1\n3\n");
    ASSERT_EQ(store.List().size(), 1u);
    EXPECT_EQ(store.List()[0].value, Value(1));
}

// A dull model runs beside the store and must never differ from it.
TEST_F(StoreTest, RandomStepsAgreeWithAMap) {
    std::mt19937 random(Seed());
    std::map<std::string, Value> model;
    auto store = std::make_unique<Store>(dir, Store::Durability::kVolatile);
    const auto pick = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
    for (int step = 0; step < 5000; ++step) {
        SCOPED_TRACE(SeedNote() + ", step " + std::to_string(step));
        const std::string key = "db/" + std::string(1, static_cast<char>('/' + pick(12)));
        switch (pick(8)) {
            case 0:
                ASSERT_EQ(store->Remove(key), model.erase(key) > 0);
                break;
            case 1:
                store = std::make_unique<Store>(dir, Store::Durability::kVolatile);
                break;
            case 2: {
                const auto list = store->List();
                ASSERT_EQ(list.size(), model.size());
                auto expected = model.begin();
                for (const Setting& setting : list) {
                    ASSERT_EQ(setting.key, expected->first);
                    ASSERT_EQ(setting.value, expected->second);
                    ++expected;
                }
                break;
            }
            case 3:
            case 4: {
                Value value;
                const bool there = Read(*store, key, &value) == Store::Status::kOk;
                ASSERT_EQ(there, model.count(key) > 0);
                ASSERT_TRUE(!there || value == model[key]);
                break;
            }
            default: {
                Value value = pick(2) == 0;
                if (pick(3) == 0) {
                    value = pick(INT_MAX);
                } else if (pick(2) == 0) {
                    value =
                        std::string(static_cast<size_t>(pick(9000)), static_cast<char>(pick(256)));
                }
                store->Write(key, value);
                model[key] = value;
            }
        }
    }
}

}  // namespace
}  // namespace vtv
