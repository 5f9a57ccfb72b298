// Two terminals: one watches, the other writes.
#include <algorithm>

#include "vtv_process.h"

TEST_F(VtvTest, AWatchedPageShowsWhatAnotherProcessChanges) {
    Ok({"show"});
    RunningVtv watching(environment, {"show", "--watch"});
    ASSERT_TRUE(watching.WaitFor("Hidden:"));
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_TRUE(watching.WaitFor("Hands-free Wake-up (voice-wake-up): on -> off"))
        << watching.Text();
    Ok({"account", "signed-out"});
    EXPECT_TRUE(watching.WaitFor("Hands-free Wake-up (voice-wake-up): enabled -> dimmed"))
        << watching.Text();
    EXPECT_EQ(watching.Interrupt().code, 0);
}

TEST_F(VtvTest, AWatchedPageFollowsAPolicyThatIsPublishedMeanwhile) {
    Ok({"show"});
    RunningVtv watching(environment, {"show", "--watch", "--json"});
    ASSERT_TRUE(watching.WaitFor("\"items\""));
    Ok({"policy", "publish", "-"},
       R"([{"VAOrder": 1, "VAId": "ORVIK2", "VAAppId": "com.vantelo.tv.voice-instant-app", "VAName": "Orvik",
            "VAFFSupport": true}])");
    EXPECT_TRUE(
        watching.WaitFor("{\"after\":\"hidden\",\"before\":\"shown\",\"item\":\"voice-assistant\""))
        << watching.Text();
}

TEST_F(VtvTest, AWatchedPageGoesOnThroughAPowerCycle) {
    Ok({"new", "ptt", "--model", "ptt-passthrough-us"});
    Ok({"set", "memory/passthru/connected", "bool", "true", "--tv", "ptt"});
    Ok({"set", "db/menu/voice/passthru", "bool", "true", "--tv", "ptt"});
    Ok({"set", "db/passthru/mic_state", "bool", "true", "--tv", "ptt"});
    RunningVtv watching(environment, {"show", "--watch", "--tv", "ptt"});
    ASSERT_TRUE(watching.WaitFor("voice-wake-up"));
    Ok({"power-cycle", "--tv", "ptt"});
    EXPECT_TRUE(watching.WaitFor("(voice-wake-up): enabled -> dimmed")) << watching.Text();
    Ok({"set", "memory/passthru/connected", "bool", "true", "--tv", "ptt"});
    EXPECT_TRUE(watching.WaitFor("(voice-wake-up): dimmed -> enabled")) << watching.Text();
}

TEST_F(VtvTest, AWatchedPageFollowsSettingsThatArePutBackFromACopy) {
    Ok({"show"});
    RunningVtv watching(environment, {"show", "--watch"});
    ASSERT_TRUE(watching.WaitFor("Hidden:"));
    const std::string settings = Path("tvs/default/settings");
    ASSERT_EQ(std::system(("cp -r " + settings + " " + Path("kept") + " && rm -rf " + settings +
                           " && sleep 0.2 && cp -r " + Path("kept") + " " + settings)
                              .c_str()),
              0);
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_TRUE(watching.WaitFor("(voice-wake-up): on -> off")) << watching.Text();
    EXPECT_EQ(watching.Interrupt().code, 0);
}

TEST_F(VtvTest, ATvThatWasSentWithoutItsEmptyFoldersStartsApplicationsAndIsWatched) {
    Ok({"show"});
    ASSERT_EQ(std::system(("find " + Path("tvs/default") + " -type d -empty -delete").c_str()), 0);
    Ok({"choose", "voice-assistant", "2"});
    ASSERT_EQ(std::system(("rm -rf " + Path("tvs/default/owner")).c_str()), 0);
    RunningVtv watching(environment, {"show", "--watch"});
    ASSERT_TRUE(watching.WaitFor("Hidden:"));
    Ok({"choose", "voice-assistant", "1"});
    EXPECT_TRUE(watching.WaitFor("(voice-assistant): Alexa -> Orvik")) << watching.Text();
    EXPECT_EQ(watching.Interrupt().code, 0);
}

TEST_F(VtvTest, AWatchedKeyIsToldOfEachWriteInOrder) {
    Ok({"show"});
    RunningVtv watching(environment, {"watch", "db/a", "--count", "4"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    Ok({"set", "db/b", "int", "9"});
    Ok({"set", "db/a", "int", "1"});
    ASSERT_TRUE(watching.WaitFor("db/a = 1  was (unset)"));
    Ok({"set", "db/a", "int", "1"});
    ASSERT_TRUE(watching.WaitFor("db/a = 1  was 1")) << watching.Text();
    Ok({"set", "db/a", "string", "x"});
    ASSERT_TRUE(watching.WaitFor("db/a = \"x\"  was 1"));
    Ok({"unset", "db/a"});
    EXPECT_TRUE(watching.WaitFor("db/a = (removed)  was \"x\"\n")) << watching.Text();
    EXPECT_EQ(watching.Text().find("db/b"), std::string::npos);
    EXPECT_EQ(watching.Interrupt().code, 0);
}

TEST_F(VtvTest, AFollowedLogGrowsWithWhatOthersDo) {
    Ok({"show"});
    RunningVtv following(environment,
                         {"log", "--follow", "--function", "setnode_int_voice_wake_up"});
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_TRUE(following.WaitFor("Set Hands-free Wake-up value [0] && Wakeup[off]"))
        << following.Text();
    Ok({"choose", "voice-wake-up", "on"});
    EXPECT_TRUE(following.WaitFor("Set Hands-free Wake-up value [1] && Wakeup[on]"))
        << following.Text();
    EXPECT_EQ(following.Interrupt().code, 0);
}
