// The watch of the policy may be delivered inside any platform call, the log's and the trace's
// included: no crash, no leak, and the list that stands afterwards is the newest.
#include "questions.h"

using namespace recording;

namespace {

class Watch : public EverySituation {
  protected:
    static Lines Listed() {
        Lines ids;
        for (const VAInfo& assistant : MVAList::GetVAList()) {
            ids.push_back(assistant.appId);
        }
        return ids;
    }
    int CallsOfUndisturbed(const Action& action) {
        // A trace site is registered when it is first used, and calls more then.
        Prepare(action);
        action.run(page);
        Prepare(action);
        FailAny(1 << 30);  // counts from here
        action.run(page);
        return CallCount();
    }
    void DeliverInsideEveryCallOf(const Action& action, const std::string& policy,
                                  const Lines& listed) {
        const int calls = CallsOfUndisturbed(action);
        for (int nth = 1; nth <= calls; ++nth) {
            const std::string what = action.name + ", platform call " + std::to_string(nth);
            Prepare(action);
            bool delivered = false;
            InterruptCall(nth, [&] {
                Publish(setting::POLICY, policy);
                delivered = true;
            });
            const int answer = action.run(page);
            EXPECT_TRUE(delivered) << what;
            EXPECT_TRUE(answer == 0 || answer == 1) << what;
            EXPECT_EQ(Listed(), listed) << what;
            ASSERT_EQ(Debts(), Lines()) << what;
        }
    }
};

// Longer than what a string holds without memory of its own.
const std::string LONG = "com.example.assistant.number-";

}  // namespace

TEST_P(Watch, AnEmptiedPolicyMayArriveInsideEveryPlatformCall) {
    for (const Action& action : Actions()) {
        DeliverInsideEveryCallOf(action, "[]", {});
    }
}

TEST_P(Watch, ALongerPolicyMayArriveInsideEveryPlatformCall) {
    Lines ids;
    std::vector<std::string> assistants;
    for (int i = 1; i <= 9; ++i) {
        ids.push_back(LONG + std::to_string(i));
        assistants.push_back(Assistant(i, i == 2 ? "ORVIK2" : "GVA", ids.back(), "Name"));
    }
    for (const Action& action : Actions()) {
        DeliverInsideEveryCallOf(action, Policy(assistants), ids);
    }
}

// A broken policy changes nothing: also not that an older one is being read.
TEST_P(Watch, ABrokenPolicyThatArrivesInsideAReadingLeavesThePolicyThatIsRead) {
    const Action reading = {"a new policy", [](SIProviderTable*) {
                                Notify(setting::POLICY);
                                return 0;
                            }};
    const std::string policy = Policy({Assistant(1, "GVA", "app.read", "Read")});
    Prepare(reading);
    Set(setting::POLICY, policy.c_str());
    // The third call is the record of the assistant, after the read.
    InterruptCall(3, [] { Publish(setting::POLICY, "[{"); });
    reading.run(page);
    EXPECT_LOGGED(E(source::LIST, "_String2Json", "json parse fail"));
    EXPECT_EQ(Listed(), Lines{"app.read"});
}

ON_EVERY_SITUATION(Watch);

namespace {

class InterruptedWalk : public Provider {
  protected:
    // Six assistants of which the fifth is Orvik and current.
    void SetUp() override {
        Provider::SetUp();
        std::vector<std::string> assistants;
        for (int i = 1; i <= 6; ++i) {
            assistants.push_back(
                Assistant(i, i == 5 ? "ORVIK2" : "GVA", LONG + std::to_string(i), "Name", i == 5));
        }
        Offer(Policy(assistants), (LONG + "5").c_str());
    }
    // The answer when the nth read delivers the policy, and the reads of the current application.
    template <typename Question>
    static auto Interrupted(int nth, const std::string& policy, Question question) {
        ClearCalls();
        InterruptCall(nth, [policy] { Publish(setting::POLICY, policy); });
        return question();
    }
};

}  // namespace

TEST_F(InterruptedWalk, GoesOnOverTheListThatItBeganWith) {
    const std::string wholeList = Stored(setting::POLICY);
    for (const std::string& policy : {std::string("[]"), WholePolicy()}) {
        for (int nth = 1; nth <= 5; ++nth) {
            for (const auto question : {MVAList::IsCurrentVAOrvik, MVAList::IsCurrentVASupportFF}) {
                Publish(setting::POLICY, wholeList);
                EXPECT_TRUE(Interrupted(nth, policy, question)) << nth << ' ' << policy;
                EXPECT_EQ(CallsOf(Current()), Walk(5)) << nth << ' ' << policy;
            }
            Publish(setting::POLICY, wholeList);
            EXPECT_EQ(Interrupted(nth, policy, checknode_int_voice_assistant), 5);
            EXPECT_EQ(CallsOf(Current()), Walk(5)) << nth << ' ' << policy;
        }
    }
}

TEST_F(InterruptedWalk, TheNextWalkIsOverTheNewList) {
    EXPECT_TRUE(Interrupted(2, "[]", MVAList::IsCurrentVAOrvik));
    EXPECT_FALSE(Ask(MVAList::IsCurrentVAOrvik));
    EXPECT_EQ(CallsOf(Current()), Lines());
}
