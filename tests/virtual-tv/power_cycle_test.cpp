// The plug is pulled while others write.
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <list>
#include <memory>

#include "tests/environment.h"
#include "tv_fixture.h"

namespace vtv {
namespace {

constexpr int kWriters = 3;

// What a writer was told is written: the last number of each kind.
struct Acknowledged {
    int kept = 0;
    int volatileOne = 0;
};
using AllAcknowledged = std::array<Acknowledged, kWriters>;

std::string KeyOf(const char* kind, int writer) {
    return std::string(kind) + "/cycle/" + std::to_string(writer);
}

[[noreturn]] void WriteForever(const std::string& dir, int writer, volatile Acknowledged* told) {
    Tv tv(dir);
    for (int number = 1;; ++number) {
        tv.Set(KeyOf("db", writer), number);
        told->kept = number;
        tv.Set(KeyOf("memory", writer), number);
        told->volatileOne = number;
    }
}

// Ends them also where the test does early.
class Writers {
  public:
    Writers(const std::string& dir, AllAcknowledged* told) {
        for (int writer = 0; writer < kWriters; ++writer) {
            all_.emplace_back([&] { WriteForever(dir, writer, &(*told)[writer]); });
        }
    }
    ~Writers() {
        for (Child& writer : all_) {
            writer.Kill();
        }
    }
    Writers(const Writers&) = delete;
    Writers& operator=(const Writers&) = delete;

  private:
    std::list<Child> all_;
};

bool HaveAllWritten(const AllAcknowledged& told, int times) {
    return std::all_of(told.begin(), told.end(),
                       [&](const Acknowledged& one) { return one.volatileOne >= times; });
}

// VTV_POWER_CYCLES=500 for a longer run.
TEST_F(TvTest, APowerCycleForgetsWhatWasInMemoryAndNothingElseWhateverOthersWrite) {
    TurnOn();
    void* const shared = mmap(nullptr, sizeof(AllAcknowledged), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto* const told = new (shared) AllAcknowledged();
    auto writers = std::make_unique<Writers>(tv->Dir(), told);
    while (!HaveAllWritten(*told, 1)) {
        usleep(1000);
    }
    const unsigned cycles = NumberFromEnvironment("VTV_POWER_CYCLES", 50);
    // On a busy disk a writer may get its turn once in many cycles.
    for (unsigned cycle = 0; (cycle < cycles || !HaveAllWritten(*told, 10)) && !HasFailure();
         ++cycle) {
        SCOPED_TRACE("cycle " + std::to_string(cycle));
        const AllAcknowledged before = *told;
        tv->PowerCycle();
        for (int writer = 0; writer < kWriters; ++writer) {
            const std::optional<Value> kept = tv->Get(KeyOf("db", writer));
            ASSERT_TRUE(kept.has_value());
            EXPECT_GE(std::get<int>(*kept), before[writer].kept);
            const std::optional<Value> inMemory = tv->Get(KeyOf("memory", writer));
            EXPECT_TRUE(!inMemory || std::get<int>(*inMemory) > before[writer].volatileOne);
        }
    }
    writers.reset();
    EXPECT_EQ(tv->Problems(), std::vector<std::string>());
    munmap(shared, sizeof(AllAcknowledged));
}

}  // namespace
}  // namespace vtv
