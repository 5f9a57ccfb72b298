// vtv wait: one terminal waits, the other does something.
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>

#include "vtv_process.h"

using testing::HasSubstr;

namespace {

using Words = std::vector<std::string>;

// What a condition waits for, and what makes it so.
struct Waiting {
    const char* name;
    const char* condition;
    Words before;
    Words change;
};

void PrintTo(const Waiting& waiting, std::ostream* out) {
    *out << waiting.name;
}

class WaitTest : public VtvTest, public testing::WithParamInterface<Waiting> {};

double SecondsOf(const std::function<void()>& what) {
    const auto begin = std::chrono::steady_clock::now();
    what();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

TEST_P(WaitTest, EndsWhenItIsSoAndNotBefore) {
    Ok({"show"});
    if (!GetParam().before.empty()) {
        Ok(GetParam().before);
    }
    EXPECT_EQ(Vtv({"wait", GetParam().condition, "--timeout", "0.2"}).code, 1);
    RunningVtv waiting(environment, {"wait", GetParam().condition, "--timeout", "20"});
    Ok(GetParam().change);
    EXPECT_EQ(waiting.End().code, 0);
    EXPECT_EQ(Vtv({"wait", GetParam().condition, "--timeout", "0"}).code, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Vtv, WaitTest,
    testing::Values(
        Waiting{"ADimmedItem", "voice-wake-up=disabled", {}, {"account", "signed-out"}},
        Waiting{"AnEnabledItem",
                "voice-wake-up=enabled",
                {"account", "signed-out"},
                {"account", "signed-in"}},
        Waiting{"AHiddenItem", "voice=hidden", {}, {"set", "db/comss/cisblock=2"}},
        Waiting{
            "WhatLiesBelowAHiddenPage", "voice-wake-up=hidden", {}, {"set", "db/comss/cisblock=2"}},
        Waiting{"AShownItem",
                "voice=shown",
                {"set", "db/comss/cisblock=2"},
                {"set", "db/comss/cisblock=0"}},
        Waiting{"ASwitch", "voice-wake-up=off", {}, {"choose", "voice-wake-up", "off"}},
        Waiting{"AChoice",
                "voice-assistant=Alexa",
                {"app", "mode", "record"},
                {"choose", "voice-assistant", "2"}},
        Waiting{"AChoicesNumber",
                "voice-assistant=2",
                {"app", "mode", "record"},
                {"choose", "voice-assistant", "2"}},
        Waiting{"ASetting", "db/comss/cisblock=2", {}, {"set", "db/comss/cisblock=2"}},
        Waiting{"ASettingInMemory",
                "memory/passthru/connected=true",
                {},
                {"set", "memory/passthru/connected=true"}},
        Waiting{
            "ASettingThatGoes", "db/comss/cisblock=(missing)", {}, {"unset", "db/comss/cisblock"}},
        Waiting{"AMember",
                "db/menu/voice/mva_list.0.VAName=Hugo",
                {},
                {"set", "db/menu/voice/mva_list.0.VAName=Hugo"}},
        Waiting{"AFeature",
                "recorder.microphone_type=0",
                {},
                {"feature", "recorder.microphone_type", "0"}},
        Waiting{"TheNetwork", "network=disconnected", {}, {"network", "disconnected"}},
        Waiting{"AConsent", "tnc=off", {}, {"consent", "tnc", "off"}},
        Waiting{"AnApplicationThatStarts",
                "com.vantelo.account-ui=running",
                {"account", "signed-out"},
                {"press", "voice-settings-orvik", "--ok"}}),
    [](const testing::TestParamInfo<Waiting>& tested) { return tested.param.name; });

TEST_F(VtvTest, TheEndOfAnApplicationIsWaitedForHoweverItEnds) {
    Ok({"account", "signed-out"});
    for (const bool isKilled : {false, true}) {
        Ok({"press", "voice-settings-orvik", "--ok"});
        EXPECT_EQ(Vtv({"wait", "com.vantelo.account-ui=ended", "--timeout", "0.2"}).code, 1);
        RunningVtv waiting(environment,
                           {"wait", "com.vantelo.account-ui=ended", "--timeout", "20"});
        const JsonDocument running = OkJson({"app", "list", "--json"});
        ASSERT_EQ(running.size(), 1U);
        if (isKilled) {
            kill(running[0]["pid"].asInt(), SIGKILL);
        } else {
            Ok({"app", "cancel"});
        }
        EXPECT_EQ(waiting.End().code, 0) << isKilled;
    }
}

TEST_F(VtvTest, AWaitThatIsOverEndsWith1AndInTime) {
    Ok({"show"});
    const double seconds = SecondsOf([&] {
        const Output output = Vtv({"wait", "network=disconnected", "--timeout", "1.5"});
        EXPECT_EQ(output.code, 1);
        EXPECT_THAT(output.err, HasSubstr("network=disconnected is not so after 2 s"));
    });
    EXPECT_GE(seconds, 1.4);
    EXPECT_LT(seconds, 10);
    const Output json = Vtv({"wait", "network=disconnected", "--timeout", "0", "--json"});
    EXPECT_THAT(json.out, HasSubstr("\"met\" : false"));
}

TEST_F(VtvTest, AWaitThatIsInterruptedEndsAsShellsSayIt) {
    Ok({"show"});
    for (const char* condition : {"network=disconnected", "voice=hidden"}) {
        for (const int signal : {SIGINT, SIGTERM}) {
            RunningVtv waiting(environment, {"wait", condition});
            // It waits once it has written nothing for a while; before that the signal ends it,
            // too.
            EXPECT_EQ(Vtv({"wait", condition, "--timeout", "0.5"}).code, 1);
            const Output output = waiting.Interrupt(signal);
            EXPECT_EQ(output.code, 128 + signal) << condition;
            EXPECT_THAT(output.err, HasSubstr("ended by a signal"));
        }
    }
}

TEST_F(VtvTest, WhatThereIsNotIsNotWaitedFor) {
    Ok({"show"});
    for (const char* condition : {"voice-wakeup=enabled", "db/nowhere=1", "org.nowhere=running",
                                  "warp.drive=1", "language=klingon"}) {
        EXPECT_EQ(Vtv({"wait", condition, "--timeout", "5"}).code, 3) << condition;
    }
    EXPECT_THAT(Vtv({"wait", "voice-wakeup=enabled"}).err, HasSubstr("Did you mean"));
    for (const char* condition :
         {"voice-wake-up", "voice-wake-up=maybe", "voice=5", "db/comss/cisblock=two",
          "org.nemra.wizard=asleep", "network=fast", "recorder.microphone_type=many"}) {
        EXPECT_EQ(Vtv({"wait", condition, "--timeout", "5"}).code, 2) << condition;
    }
    EXPECT_EQ(Vtv({"wait", "network=connected", "--timeout", "-1"}).code, 2);
}

TEST_F(VtvTest, WaitingTakesNoTimeOfTheProcessor) {
    Ok({"show"});
    RunningVtv waiting(environment, {"wait", "voice=hidden"});
    EXPECT_EQ(Vtv({"wait", "voice=hidden", "--timeout", "1"}).code, 1);
    const auto ticks = [&] {
        std::ifstream stat("/proc/" + std::to_string(waiting.Pid()) + "/stat");
        std::string word;
        long sum = 0;
        for (int field = 1; field <= 15 && stat >> word; ++field) {
            sum += field >= 14 ? std::stol(word) : 0;
        }
        return sum;
    };
    const long before = ticks();
    EXPECT_EQ(Vtv({"wait", "voice=hidden", "--timeout", "2"}).code, 1);
    EXPECT_LE(ticks() - before, 20);  // hundredths of a second; the other one only looked
    EXPECT_EQ(waiting.Interrupt().code, 130);
}

TEST_F(VtvTest, AWaitForATvThatGoesEndsWith4) {
    Ok({"new", "gone"});
    RunningVtv waiting(environment, {"wait", "network=disconnected", "--tv", "gone"});
    EXPECT_EQ(Vtv({"wait", "network=disconnected", "--tv", "gone", "--timeout", "1"}).code, 1);
    Ok({"remove", "gone"});
    EXPECT_EQ(waiting.End().code, 4);
}
