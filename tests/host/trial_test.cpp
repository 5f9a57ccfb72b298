// --with: a value is tried, and nothing of the TV changes.
#include <chrono>
#include <filesystem>
#include <thread>

#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST_F(VtvTest, WhatIsTriedIsShown) {
    EXPECT_EQ(Item("voice")["visible"], true);
    EXPECT_EQ(Item("voice", {"--with", "db/comss/cisblock=2"})["visible"], false);
    EXPECT_EQ(Item("voice", {"--with", "tnc=off"})["visible"], false);
    EXPECT_EQ(Item("voice", {"--with", "consent/pp=off"})["visible"], false);
    EXPECT_EQ(Item("voice-wake-up", {"--with", "account=signed-out"})["enabled"], false);
    EXPECT_EQ(Item("voice", {"--with", "recorder.microphone_type=0", "--with",
                             "db/aisound-app/soundsensorflag_prev=0"})["enabled"],
              true);
    EXPECT_EQ(Item("voice", {"--with", "db/aisound-app/soundsensorflag_prev=0"})["enabled"], false);
    EXPECT_NE(Item("voice-settings-orvik", {"--with", "language=de_DE"})["title"],
              "Orvik Settings");
    EXPECT_EQ(
        Item("voice-wake-up",
             {"--with",
              "db/menu/voice/assistant_farfield.com.vantelo.tv.voice-instant-app=off"})["value"],
        0);
    EXPECT_EQ(Item("voice-assistant", {"--with", "db/menu/voice/mva_list=(missing)"})["visible"],
              false);
    EXPECT_EQ(Item("voice", {"--with", "voice.voice_recognition_support=(missing)"})["visible"],
              false);
}

TEST_F(VtvTest, NothingOfTheTvChangesWhateverIsTried) {
    Ok({"app", "mode", "auto"});
    Ok({"set", "db/comss/cisblock", "int", "0"});
    Write("tvs/default/settings/db%2Fbroken", "bool 4\ntr");
    Vtv({"show"});
    const auto before = Contents("tvs/default");
    const std::vector<std::string> tried = {
        "--with", "db/comss/countrycode=FR", "--with", "network=disconnected",
        "--with", "account=signed-in",       "--with", "recorder.microphone_type=2",
        "--with", "voice-guide=on"};
    for (std::vector<std::string> verb : std::vector<std::vector<std::string>>{
             {"show"},
             {"show", "voice"},
             {"show", "--json"},
             {"explain", "voice-wake-up"},
             {"press", "voice-wake-up"},
             {"press", "voice-assistant", "--choose", "2", "--ok"},
             {"press", "voice-settings-orvik"}}) {
        verb.insert(verb.end(), tried.begin(), tried.end());
        const Output output = Vtv(verb);
        EXPECT_EQ(output.code, 0) << verb[0] << output.err;
        EXPECT_TRUE(Contents("tvs/default") == before) << verb[0];
    }
    EXPECT_EQ(OkJson({"app", "list", "--json"}).size(), 0U);
}

TEST_F(VtvTest, APressOnWhatIsTriedTellsWhatAViewerWouldSee) {
    EXPECT_THAT(Ok({"press", "voice-settings-orvik", "--ok", "--with", "account=signed-out"}),
                AllOf(HasSubstr("Sign In"), HasSubstr("opens:   com.vantelo.account-ui"),
                      HasSubstr("(tried with account=signed-out; nothing was written)")));
    EXPECT_THAT(Ok({"press", "voice-wake-up", "--with", "language=de_DE"}), HasSubstr("on -> off"));
    EXPECT_EQ(Item("voice-wake-up")["value"], 1);
}

TEST_F(VtvTest, APressOnWhatIsTriedStartsNoApplication) {
    Write("app", "#!/bin/sh\n: >> " + Path("started") + "\n");
    fs::permissions(Path("app"), fs::perms::owner_all);
    environment["VTV_APP"] = Path("app");
    const auto isStartedWithin = [&](int milliseconds) {
        for (int i = 0; i < milliseconds / 10 && !fs::exists(Path("started")); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return fs::remove(Path("started"));
    };
    Ok({"account", "signed-out"});
    Ok({"press", "voice-settings-orvik", "--ok"});
    EXPECT_TRUE(isStartedWithin(10000));
    Ok({"press", "voice-settings-orvik", "--ok", "--with", "account=signed-out"});
    EXPECT_FALSE(isStartedWithin(300));
    EXPECT_EQ(OkJson({"app", "list", "--launches", "--json"}).size(), 1U);
}

TEST_F(VtvTest, AnExplanationOfWhatIsTriedNamesItAsTheReason) {
    EXPECT_THAT(Ok({"explain", "voice-wake-up", "--with", "account=signed-out"}),
                HasSubstr("dimmed: signed out"));
    EXPECT_THAT(Ok({"explain", "voice-wake-up"}), Not(HasSubstr("dimmed: signed out")));
}

TEST_F(VtvTest, TheTvThatWasMeantIsNamedAndNotItsCopy) {
    const JsonDocument shown = OkJson({"show", "--with", "tnc=off", "--json"});
    EXPECT_EQ(shown["tv"]["dir"], Path("tvs/default"));
    EXPECT_THAT(Ok({"show", "--with", "tnc=off"}), HasSubstr(" default · Far-field TV"));
}

TEST_F(VtvTest, WhatCannotBeTriedIsRefused) {
    Ok({"show"});
    EXPECT_EQ(Vtv({"show", "--with", "warp=1"}).code, 3);
    EXPECT_THAT(Vtv({"show", "--with", "acount=signed-out"}).err, HasSubstr("Did you mean"));
    EXPECT_EQ(Vtv({"show", "--with", "db/comss/cisblock=two"}).code, 2);
    EXPECT_EQ(Vtv({"show", "--with", "recorder.microphone_type=many"}).code, 2);
    EXPECT_EQ(Vtv({"show", "--with", "network=fast"}).code, 2);
    EXPECT_EQ(Vtv({"show", "--with", "tnc"}).code, 2);
    EXPECT_EQ(Vtv({"show", "--with", "tnc=off", "--watch"}).code, 2);
    EXPECT_EQ(Vtv({"press", "voice", "--with", "tnc=off", "--record", Path("x.toml")}).code, 2);
    EXPECT_EQ(Vtv({"show", "--with", "db/nowhere=(missing)"}).code, 3);
}
