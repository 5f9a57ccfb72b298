// Every platform call that an entry point makes is failed in turn, once and from then on, and so is
// every allocation: no crash, no leak, the neutral answer.
#include <new>

#include "allocation_faults.h"
#include "questions.h"

using namespace recording;

namespace {

class Faults : public EverySituation {
  protected:
    // An entry point that logged an exception has answered neutrally.
    static void ExpectNeutralAfterException(const std::string& what, int answer) {
        for (const std::string& line : CallsOf("log E ")) {
            if (line.find(" [EXCEPTION]") != std::string::npos &&
                line.find("MVAList") == std::string::npos) {
                EXPECT_EQ(answer, 0) << what << '\n' << line;
            }
        }
    }
};

}  // namespace

TEST_P(Faults, EveryPlatformCallMayFailOnceAndFromThenOn) {
    for (const Action& action : Actions()) {
        Prepare(action);
        FailAny(1 << 30);
        action.run(page);
        const int calls = CallCount();
        for (int nth = 1; nth <= calls; ++nth) {
            for (const int count : {1, FOREVER}) {
                const std::string what = action.name + ", platform call " + std::to_string(nth) +
                                         (count == 1 ? " failed" : " and all after it failed");
                Prepare(action);
                FailAny(nth, count);
                int answer = 0;
                EXPECT_NO_THROW(answer = action.run(page)) << what;
                ClearFaults();
                EXPECT_TRUE(answer == 0 || answer == 1) << what;
                ASSERT_EQ(Debts(), Lines()) << what;
                ExpectNeutralAfterException(what, answer);
            }
        }
    }
}

TEST_P(Faults, EveryAllocationMayFailOnceAndFromThenOn) {
    if (!AllocationFaultsWork()) {
        GTEST_SKIP() << "this process's allocations are replaced by a tool's";
    }
    for (const Action& action : Actions()) {
        Prepare(action);
        ArmAllocationFaults(0);
        action.run(page);
        DisarmAllocationFaults();
        const int allocations = AllocationCount();
        for (int nth = action.firstAllocation; nth <= allocations; ++nth) {
            for (const int count : {1, EVERY_FOLLOWING}) {
                Prepare(action);
                int answer = 0;
                bool threw = false;
                ArmAllocationFaults(nth, count);
                try {
                    answer = action.run(page);
                } catch (const std::bad_alloc&) {
                    threw = true;
                }
                DisarmAllocationFaults();
                const std::string what = action.name + ", allocation " + std::to_string(nth) +
                                         (count == 1 ? " failed" : " and all after it failed");
                EXPECT_FALSE(threw && !action.mayRunOutOfMemory) << what;
                EXPECT_TRUE(answer == 0 || answer == 1) << what;
                ASSERT_EQ(Debts(), Lines()) << what;
                ExpectNeutralAfterException(what, answer);
                EXPECT_TRUE(MVAList::GetVAListSize() == 4 || MVAList::GetVAListSize() == 6)
                    << what << ": " << MVAList::GetVAListSize() << " assistants";
            }
        }
    }
}

ON_EVERY_SITUATION(Faults);
