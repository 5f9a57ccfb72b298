// Every platform call that an entry point makes is failed in turn, once and from then on, and so is
// every allocation: no crash, no leak, the neutral answer.
#include <new>
#include <set>

#include "allocation_faults.h"
#include "platform_functions.h"
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

// Without a call there is nothing to fail.
bool AsksTheTv(const Action& action) {
    return action.name != "the other questions" && action.name != "provider_property" &&
           action.name != "get_int general-voice";
}

// A name as the recording platform has it: without namespace and arguments.
std::string BareName(const std::string& function) {
    const std::size_t start = function.starts_with("ht::") ? 4 : 0;
    return function.substr(start, function.find('(') - start);
}

}  // namespace

TEST_P(Faults, EveryPlatformCallMayFailOnceAndFromThenOn) {
    for (const Action& action : Actions()) {
        // The first time a site of the trace is new, which takes calls of its own.
        Prepare(action);
        action.run(page);
        Prepare(action);
        FailAny(1 << 30);
        action.run(page);
        const int calls = CallCount();
        EXPECT_EQ(calls > 0, AsksTheTv(action)) << action.name;
        for (int nth = 1; nth <= calls; ++nth) {
            for (const int count : {1, FOREVER}) {
                const std::string what = action.name + ", platform call " + std::to_string(nth) +
                                         (count == 1 ? " failed" : " and all after it failed");
                Prepare(action);
                FailAny(nth, count);
                int answer = 0;
                EXPECT_NO_THROW(answer = action.run(page)) << what;
                EXPECT_GE(FailedCallCount(), 1) << what << ", as it should have";
                ClearFaults();
                EXPECT_TRUE(answer == 0 || answer == 1) << what;
                ASSERT_EQ(Debts(), Lines()) << what;
                ExpectNeutralAfterException(what, answer);
            }
        }
    }
}

// What no action ever calls has never failed.
class FaultsOfEveryCall : public AnySituation {};

TEST_F(FaultsOfEveryCall, NoPlatformCallIsLeftOut) {
    std::set<std::string> called;
    for (const Situation& situation : SITUATIONS) {
        for (const Action& action : Actions()) {
            Prepare(situation, action);
            FailAny(1 << 30);
            action.run(page);
            called.insert(FunctionsCalled().begin(), FunctionsCalled().end());
        }
    }
    ClearFaults();
    std::set<std::string> expected = {"TCStorage::PrepareCallBuffer"};
    for (const std::string& function : PLATFORM_FUNCTIONS) {
        expected.insert(BareName(function));
    }
    expected.erase("TIStorageManagerState::enabled");
    // Once in the life of a process, when a site of the trace is new: trace_test.cpp.
    for (const char* once :
         {"TIStorageManager::NewLocationId", "TSDemangler::Demangle", "TCStorage::SaveLocation"}) {
        expected.erase(once);
        called.erase(once);
    }
    EXPECT_EQ(called, expected);
}

// The list of assistants is in memory, and a TV without microphones does not dim an entry for
// theirs.
TEST_F(FaultsOfEveryCall, WhenAllFailNothingIsAnsweredWithYesButWhatNeedsNoTv) {
    const std::set<std::string> yes = {"check_visibility_int general-voice-voice-assistant",
                                       "check_enable_int general-voice",
                                       "check_enable_int general-voice-onboarding",
                                       "check_enable_int general-voice-voice-assistant",
                                       "get_list_items",
                                       "the other questions"};
    for (const Situation& situation : SITUATIONS) {
        std::set<std::string> answered;
        for (const Action& action : Actions()) {
            Prepare(situation, action);
            FailAny(1);
            if (action.run(page) != 0) {
                answered.insert(action.name);
            }
            ClearFaults();
        }
        EXPECT_EQ(answered, yes) << situation.name;
    }
}

TEST_P(Faults, EveryAllocationMayFailOnceAndFromThenOn) {
    ASSERT_TRUE(AllocationFaultsWork()) << "a tool has replaced this process's allocations";
    int total = 0;
    for (const Action& action : Actions()) {
        Prepare(action);
        ArmAllocationFaults(0);
        action.run(page);
        DisarmAllocationFaults();
        const int allocations = AllocationCount();
        total += allocations;
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
    EXPECT_GT(total, 0) << "no allocation was seen, so that none has failed";
}

ON_EVERY_SITUATION(Faults);
