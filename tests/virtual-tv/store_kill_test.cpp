// Writers are killed at random moments; what they had been told was written must be there.
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <random>

#include "child.h"
#include "temporary_folder.h"
#include "tests/environment.h"
#include "virtual-tv/store.h"

namespace vtv {
namespace {

constexpr int kKeys = 4;

// VTV_KILLS=10000 for a longer run.
int Kills() {
    return static_cast<int>(NumberFromEnvironment("VTV_KILLS", 500));
}

std::string KeyOf(int number) {
    return "db/kill/" + std::to_string(number % kKeys);
}
// Long enough for a torn value to show.
std::string ValueOf(int number) {
    return std::to_string(number) + ":" + std::string(2000, static_cast<char>('a' + number % 26));
}

// Writes ever greater numbers and tells each one that was acknowledged.
[[noreturn]] void WriteForever(const std::string& dir, int first, int report) {
    Store store(dir, Store::Durability::kDurable);
    for (int number = first;; ++number) {
        store.Write(KeyOf(number), ValueOf(number));
        if (write(report, &number, sizeof number) != sizeof number) {
            _exit(1);
        }
    }
}

// How long a write takes on this disk, so that the kills meet writes and not only the fork.
long NanosecondsOfAWrite(const std::string& dir) {
    Store store(dir, Store::Durability::kDurable);
    constexpr int kWrites = 20;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kWrites; ++i) {
        store.Write("db/warm", ValueOf(i));
    }
    const auto end = std::chrono::steady_clock::now();
    store.Remove("db/warm");
    return static_cast<long>(std::chrono::nanoseconds(end - begin).count() / kWrites);
}

// In a group of its own, so that one signal ends it and what it starts.
class Writer {
  public:
    explicit Writer(const std::function<void()>& write)
        : child_([&] {
              setpgid(0, 0);
              write();
          }) {
        setpgid(child_.Pid(), child_.Pid());  // whoever is first
    }
    void Kill() {
        kill(-child_.Pid(), SIGKILL);
        child_.Wait();
    }

  private:
    Child child_;
};

void InAnotherProcessNamespace(const std::function<void()>& write) {
    EnterProcessNamespace();
    InChild([&] {
        write();
        return 0;
    });
}

void InOurs(const std::function<void()>& write) {
    write();
}

void KillWriters(void (*where)(const std::function<void()>&)) {
    std::mt19937 random(Seed());
    SCOPED_TRACE(SeedNote());
    TemporaryFolder folder;
    const std::string dir = folder / "store";
    Store::Create(dir);

    const long longest = std::min(4 * NanosecondsOfAWrite(dir) + 2000000, 40000000L);
    int acknowledged = 0;
    for (int round = 0; round < Kills(); ++round) {
        int report[2];
        ASSERT_EQ(pipe(report), 0);
        Writer writer([&] { where([&] { WriteForever(dir, acknowledged + 1, report[1]); }); });
        close(report[1]);
        timespec moment{0, std::uniform_int_distribution<long>(0, longest)(random)};
        nanosleep(&moment, nullptr);
        writer.Kill();
        // To its end, which comes when all who could write are gone.
        for (int number; read(report[0], &number, sizeof number) == sizeof number;) {
            acknowledged = number;
        }
        close(report[0]);

        Store store(dir, Store::Durability::kDurable);
        for (int back = 0; back < kKeys && acknowledged - back > 0; ++back) {
            const int number = acknowledged - back;
            Value value;
            std::string problem;
            ASSERT_EQ(store.Read(KeyOf(number), &value, &problem), Store::Status::kOk) << problem;
            // The write that was under way may have come through.
            const bool old = value == Value(ValueOf(number));
            const bool next =
                value == Value(ValueOf(number + kKeys)) && number + kKeys == acknowledged + 1;
            ASSERT_TRUE(old || next)
                << KeyOf(number) << " after " << acknowledged << " in round " << round;
        }
        store.RemoveLeftovers();
    }
    std::cout << Kills() << " kills, " << acknowledged << " acknowledged writes, none lost\n";
    EXPECT_GT(acknowledged, Kills() / 4) << "the writers were killed before they wrote anything";
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir)) {
        ++files;
    }
    EXPECT_EQ(files, size_t{kKeys} + 1) << "temporary files are left behind";
}

TEST(StoreKillTest, AKilledWriterLosesNothingThatWasAcknowledged) {
    KillWriters(InOurs);
}

TEST(StoreKillTest, AKilledWriterInAnotherProcessNamespaceLosesNothingEither) {
    NEEDS_PROCESS_NAMESPACES();
    KillWriters(InAnotherProcessNamespace);
}

}  // namespace
}  // namespace vtv
