// vtv press, choose, explain, app: what a viewer does, across processes.
#include "vtv_process.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<std::string> Sees(const Json::Value& result) {
    std::vector<std::string> kinds;
    for (const Json::Value& sight : result["sees"]) {
        if (sight["kind"] != "change") {
            kinds.push_back(sight["kind"].asString());
        }
    }
    return kinds;
}

}  // namespace

TEST_F(VtvTest, PressingASwitchTurnsItOver) {
    EXPECT_EQ(Item("voice-wake-up")["value"], 1);
    Ok({"press", "voice-wake-up"});
    EXPECT_EQ(Item("voice-wake-up")["value"], 0);
    Ok({"press", "menu/system/general-voice-voice-wake-up"});
    EXPECT_EQ(Item("voice-wake-up")["value"], 1);
}

TEST_F(VtvTest, PressingTheListOpensItsChoices) {
    const Json::Value result = OkJson({"press", "voice-assistant", "--json"});
    EXPECT_THAT(Sees(result), ElementsAre("choices"));
    EXPECT_EQ(result["sees"][0]["choices"].size(), 3U);
    EXPECT_THAT(Ok({"press", "voice-assistant"}), HasSubstr("add --choose N"));
}

TEST_F(VtvTest, AChoiceIsConfirmedFirst) {
    EXPECT_THAT(Sees(OkJson({"press", "voice-assistant", "--choose", "2", "--json"})),
                ElementsAre("box"));
    EXPECT_EQ(Item("voice-assistant")["value"], 1);
    EXPECT_THAT(Sees(OkJson({"press", "voice-assistant", "--choose", "2", "--cancel", "--json"})),
                ElementsAre("box"));
    EXPECT_EQ(Item("voice-assistant")["value"], 1);
    EXPECT_THAT(Sees(OkJson({"press", "voice-assistant", "--choose", "alexa", "--ok", "--json"})),
                ElementsAre("box", "application"));
    EXPECT_EQ(Item("voice-assistant")["value"], 2);
}

TEST_F(VtvTest, ADimmedItemOffersItsPopupAndTheButtonActs) {
    Ok({"press", "voice-assistant", "--choose", "3", "--ok"});
    Ok({"app", "cancel"});
    EXPECT_EQ(Item("voice-settings-google")["enabled"], false);
    const Json::Value result = OkJson({"press", "voice-settings-google", "--ok", "--json"});
    EXPECT_THAT(Sees(result), ElementsAre("popup", "application"));
    EXPECT_EQ(result["sees"][1]["launch"]["app"], "com.vantelo.tv.google-assistant");
    Ok({"app", "finish"});
    EXPECT_EQ(Item("voice-settings-google")["enabled"], true);
    EXPECT_EQ(Ok({"file"}), "share/.voice/ga_login_success\n");
}

TEST_F(VtvTest, ChooseTakesTextsNumbersAndSwitches) {
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_EQ(Item("voice-wake-up")["value"], 0);
    Ok({"choose", "voice-wake-up", "1"});
    EXPECT_EQ(Item("voice-wake-up")["value"], 1);
    Ok({"choose", "voice-assistant", "Google Assistant"});
    EXPECT_EQ(Item("voice-assistant")["value"], 3);
}

TEST_F(VtvTest, ADimmedItemRefusesAValueWithItsReason) {
    Ok({"new", "ptt", "--model", "ptt-passthrough-us"});
    Ok({"set", "memory/passthru/connected", "bool", "false", "--tv", "ptt"});
    const Output output = Vtv({"choose", "voice-wake-up", "on", "--tv", "ptt"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.err, HasSubstr("is dimmed: This setting cannot be changed."));
}

TEST_F(VtvTest, WhatRunsIsListedAndEndsWithAPowerCycle) {
    Ok({"press", "voice-assistant", "--choose", "2", "--ok"});
    const Json::Value running = OkJson({"app", "list", "--json"});
    ASSERT_EQ(running.size(), 1U);
    EXPECT_EQ(running[0]["app"], "org.nemra.voice-onboarding");
    EXPECT_EQ(running[0]["extras"]["type"], "ONBOARDING_SETUP");
    Ok({"power-cycle"});
    EXPECT_TRUE(OkJson({"app", "list", "--json"}).empty());
    EXPECT_EQ(OkJson({"app", "list", "--launches", "--json"}).size(), 1U);
}

TEST_F(VtvTest, ExplainNamesTheReasonForADimmedItem) {
    Ok({"account", "signed-out"});
    EXPECT_THAT(Ok({"explain", "voice-wake-up"}),
                HasSubstr("Hands-free Wake-up is dimmed: signed out\n"));
}

TEST_F(VtvTest, ExplainNamesTheReasonForAHiddenItem) {
    Ok({"set", "db/comss/cisblock", "int", "2"});
    EXPECT_THAT(Ok({"explain", "voice"}),
                HasSubstr("Voice is hidden: the content hub is blocked\n"));
    Ok({"set", "db/comss/cisblock", "int", "0"});
    Ok({"consent", "tnc", "off"});
    EXPECT_THAT(Ok({"explain", "voice"}),
                HasSubstr("Voice is hidden: the terms are not agreed to\n"));
    EXPECT_THAT(
        Ok({"explain", "voice-settings-google"}),
        HasSubstr("is hidden: the current assistant is com.vantelo.tv.voice-instant-app\n"));
}

TEST_F(VtvTest, ExplainNamesTheListWhereTheListSettledIt) {
    Ok({"feature", "voice.voice_recognition_orvik_support", "false"});
    Ok({"policy", "publish", "-"}, "[]");
    EXPECT_THAT(Ok({"explain", "voice"}),
                HasSubstr("Voice is hidden: the policy offers no assistant\n"));
    EXPECT_THAT(Ok({"explain", "voice-assistant"}),
                HasSubstr("is hidden: the policy offers no assistant\n"));
    EXPECT_THAT(Ok({"explain", "voice-always-wake-up"}),
                HasSubstr("is hidden: the policy offers no assistant\n"));
}

TEST_F(VtvTest, ExplainNamesTheReasonForAValue) {
    EXPECT_THAT(Ok({"explain", "voice-always-wake-up"}),
                HasSubstr("Always is off: always-on voice is off\n"));
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_THAT(Ok({"explain", "voice-always-wake-up"}),
                HasSubstr("is dimmed: db/menu/voice/assistant_farfield has \"off\" for"));
}

TEST_F(VtvTest, ExplainListsTheReadsOfEachAnswerInOrder) {
    Ok({"account", "signed-out"});
    const Json::Value json = OkJson({"explain", "voice-wake-up", "--json"});
    const Json::Value& reads = json["questions"][1]["reads"];
    ASSERT_EQ(json["questions"][1]["question"], "enabled");
    ASSERT_EQ(reads.size(), 3U);
    EXPECT_EQ(reads[0]["subject"], "db/multi-assistant/default_assistant_appid");
    EXPECT_EQ(reads[1]["subject"], "com.vantelo/featureconf/cn_ai_service_supported");
    EXPECT_EQ(reads[2]["function"], "sso_get_login_state");
    EXPECT_EQ(reads[2]["value"], 0);
}

TEST_F(VtvTest, AnotherProviderAnswersForThePage) {
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_EQ(Item("voice-assistant", {"--provider", fake})["title"], "Assistant");
    const Json::Value item = Item("voice-wake-up", {"--provider", fake});
    EXPECT_EQ(item["missing_texts"][0], "title");
    EXPECT_THAT(Ok({"show", "--provider", fake}), HasSubstr("! not translated: title"));
}
