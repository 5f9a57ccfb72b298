// vtv press, choose, explain, app: what a viewer does, across processes.
#include "vtv_process.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

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
    const std::string told = Ok({"explain", "voice-wake-up"});
    EXPECT_THAT(told, HasSubstr("Hands-free Wake-up is dimmed: "));
    EXPECT_THAT(told, HasSubstr("signed out"));
    EXPECT_THAT(told, HasSubstr("it would be enabled with "));
    EXPECT_THAT(told, HasSubstr("the account signed in"));
}

TEST_F(VtvTest, ExplainNamesTheReasonForAHiddenItem) {
    Ok({"set", "db/comss/cisblock", "int", "2"});
    EXPECT_THAT(Ok({"explain", "voice"}),
                HasSubstr("Voice is hidden: the content hub is blocked; it would show with "
                          "db/comss/cisblock=0\n"));
    Ok({"set", "db/comss/cisblock", "int", "0"});
    EXPECT_THAT(
        Ok({"explain", "voice-settings-google"}),
        HasSubstr("is hidden: the current assistant is com.vantelo.tv.voice-instant-app; it would "
                  "show with com.vantelo.tv.google-assistant as the current assistant\n"));
}

TEST_F(VtvTest, ExplainSaysFirstThatThePageItselfIsHidden) {
    Ok({"consent", "tnc", "off"});
    Ok({"consent", "pp", "off"});
    EXPECT_THAT(Ok({"explain", "voice-wake-up"}),
                StartsWith("Hands-free Wake-up is not on the page: the page itself is hidden "
                           "because the terms are not agreed; it would show with consent tnc and "
                           "pp\n"));
    const Json::Value json = OkJson({"explain", "voice-wake-up", "--json"});
    EXPECT_EQ(json["reachable"], false);
    EXPECT_EQ(json["barrier"]["item"], "voice");
    EXPECT_EQ(json["barrier"]["otherwise"][0]["changes"].size(), 2U);
    EXPECT_EQ(Item("voice-wake-up")["reachable"], false);
}

TEST_F(VtvTest, ExplainNamesThePolicyWhereThePolicySettledIt) {
    Ok({"feature", "voice.voice_recognition_orvik_support", "false"});
    Ok({"policy", "publish", "-"}, "[]");
    const std::string told = Ok({"explain", "voice"});
    EXPECT_THAT(told, HasSubstr("Voice is hidden: "));
    EXPECT_THAT(told, HasSubstr("the policy offers no assistant"));
    EXPECT_THAT(told, HasSubstr("the TV does not support Orvik"));
    EXPECT_THAT(told, HasSubstr("the policy that the model came with"));
}

TEST_F(VtvTest, ExplainNamesTheReasonForAValue) {
    EXPECT_THAT(Ok({"explain", "voice-always-wake-up"}),
                HasSubstr("Always is off: always-on voice is off; it would be on with always-on "
                          "voice on\n"));
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_THAT(Ok({"explain", "voice-always-wake-up"}),
                HasSubstr("db/menu/voice/assistant_farfield has \"off\" for"));
}

TEST_F(VtvTest, ExplainNamesTheRuleAndItsSource) {
    EXPECT_THAT(Ok({"explain", "voice-wake-up"}),
                HasSubstr("check_general_voice_voice_wake_up_enable in "
                          "si-ready/src/general_voice_enablechecker.cpp"));
    const Json::Value json = OkJson({"explain", "voice-wake-up", "--json"});
    EXPECT_EQ(json["questions"][2]["rule"]["function"], "checknode_int_voice_wake_up");
}

TEST_F(VtvTest, ExplainLeavesTheTvAsItWas) {
    Ok({"consent", "tnc", "off"});
    const auto settings = Contents("tvs/default/settings");
    const auto state = Contents("tvs/default/state");
    ASSERT_FALSE(settings.empty());
    Ok({"explain", "voice-wake-up"});
    EXPECT_EQ(Contents("tvs/default/settings"), settings);
    EXPECT_EQ(Contents("tvs/default/state"), state);
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

TEST_F(VtvTest, AnOptionThatMeansNothingForTheItemIsRefusedBeforeAnythingHappens) {
    Ok({"show"});
    const auto settings = Contents("tvs/default/settings");
    const std::vector<std::vector<std::string>> meaningless = {
        {"voice-wake-up", "--cancel"},
        {"voice-wake-up", "--ok"},
        {"voice-wake-up", "--choose", "off"},
        {"voice-wake-up", "--choose", ""},
        {"voice-settings-orvik", "--ok"},
        {"voice-settings-orvik", "--choose", "1"},
        {"voice", "--cancel"},
        {"voice-assistant", "--ok"},
        {"voice-assistant", "--cancel"},
        {"voice-assistant", "--choose", ""},
        {"voice-assistant", "--choose", "9"},
        {"voice-assistant", "--choose", "9", "--ok"},
        {"voice-assistant", "--choose", "Salute", "--ok"},
    };
    for (std::vector<std::string> arguments : meaningless) {
        arguments.insert(arguments.begin(), "press");
        const Output output = Vtv(arguments);
        EXPECT_EQ(output.code, 2) << testing::PrintToString(arguments);
        const bool isEmpty = arguments.back().empty();
        EXPECT_THAT(output.err, HasSubstr(isEmpty ? "--choose: is empty" : arguments[1]))
            << testing::PrintToString(arguments);
        EXPECT_EQ(output.out, "") << testing::PrintToString(arguments);
    }
    EXPECT_EQ(Contents("tvs/default/settings"), settings);
    EXPECT_TRUE(OkJson({"app", "list", "--launches", "--json"}).empty());
}

TEST_F(VtvTest, AChoiceThatDoesNotExistIsRefusedAlsoWhereTheListCannotBeReached) {
    Ok({"consent", "tnc", "off"});
    EXPECT_EQ(Vtv({"press", "voice-assistant", "--choose", "9"}).code, 2);
    EXPECT_EQ(Vtv({"press", "voice-assistant", "--choose", "2"}).code, 1);
    EXPECT_EQ(Vtv({"press", "voice-wake-up", "--ok"}).code, 2);
    EXPECT_EQ(Vtv({"press", "voice-wake-up"}).code, 1);
}

TEST_F(VtvTest, AWriteThatWasToldToFailIsAFailureLikeAnyOther) {
    struct Case {
        const char* call;
        std::vector<std::string> press;
    };
    const std::vector<Case> cases = {
        {"vconf_set_str", {"press", "voice-wake-up"}},
        {"vconf_set_str", {"choose", "voice-wake-up", "off"}},
        {"AOVSystemDataSetAOVMode", {"press", "voice-always-wake-up"}},
        {"AOVSystemDataSetAOVMode", {"choose", "voice-always-wake-up", "on"}},
        {"vconf_set_str", {"press", "voice-assistant", "--choose", "3", "--ok"}},
        {"aul_launch_app", {"press", "voice-assistant", "--choose", "3", "--ok"}},
        {"bundle_add_str", {"press", "voice-assistant", "--choose", "2", "--ok"}},
    };
    for (const Case& one : cases) {
        Ok({"fault", one.call});
        std::vector<std::string> press = one.press;
        press.emplace_back("--json");
        const Output output = Vtv(press);
        Ok({"fault", "--clear"});
        EXPECT_EQ(output.code, 4) << testing::PrintToString(press);
        EXPECT_THAT(output.err, HasSubstr(std::string(one.call) + " failed, as it was told to"))
            << testing::PrintToString(press);
        Json::Value json;
        ASSERT_TRUE(Json::Reader().parse(output.out, json)) << output.out;
        EXPECT_THAT(json["failures"][0].asString(), HasSubstr(one.call));
    }
}

TEST_F(VtvTest, AReadThatWasToldToFailIsNoFailureOfAPress) {
    Ok({"fault", "connection_profile_check_default_gateway"});
    EXPECT_TRUE(OkJson({"press", "voice-wake-up", "--json"})["failures"].empty());
}

TEST_F(VtvTest, AnotherProviderAnswersForThePage) {
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_EQ(Item("voice-assistant", {"--provider", fake})["title"], "Assistant");
    const Json::Value item = Item("voice-wake-up", {"--provider", fake});
    EXPECT_EQ(item["missing_texts"][0], "title");
    EXPECT_THAT(Ok({"show", "--provider", fake}), HasSubstr("! not translated: title"));
}
