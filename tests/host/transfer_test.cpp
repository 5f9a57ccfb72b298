// vtv dump, load, import, snapshot, restore, diff: whole TVs in and out of files.
#include "vtv_process.h"

using testing::HasSubstr;

TEST_F(VtvTest, ADumpBecomesATvThatIsAlike) {
    Ok({"new", "cn", "--model", "farfield-cn"});
    Ok({"choose", "voice-wake-up", "off", "--tv", "cn"});
    Ok({"dump", Path("cn.json"), "--tv", "cn"});
    Ok({"import", Path("cn.json"), "copy"});
    EXPECT_EQ(OkJson({"show", "--json", "--tv", "copy"})["items"],
              OkJson({"show", "--json", "--tv", "cn"})["items"]);
    EXPECT_EQ(OkJson({"dump", "--tv", "copy"})["settings"],
              OkJson({"dump", "--tv", "cn"})["settings"]);
    EXPECT_EQ(Vtv({"import", Path("cn.json"), "copy"}).code, 1);
}

TEST_F(VtvTest, ADumpOfARealSetNeedsOnlyWhatItHas) {
    Write("set.json",
          R"({"settings": {"db/comss/countrycode": "DE", "db/menu/voice/is_k_voice": true},
                          "features": {"com.vantelo/featureconf/voice.voice_recognition_support": true,
                                       "com.vantelo/featureconf/warp.drive": 9},
                          "packages": [{"app": "org.example.x", "metadata": {"a": "b", "c": null}}]})");
    Ok({"import", Path("set.json"), "set"});
    EXPECT_EQ(Ok({"get", "db/comss/countrycode", "--tv", "set"}), "DE\n");
    EXPECT_EQ(Ok({"feature", "com.vantelo/featureconf/warp.drive", "--tv", "set"}), "9\n");
    EXPECT_EQ(OkJson({"dump", "--tv", "set"})["packages"][0]["metadata"]["a"], "b");
}

// Whatever its texts hold, the model says what the dump said, and no more.
TEST_F(VtvTest, TheTextsOfADumpAndOfARecordingStayTexts) {
    const std::string command = "\n[[packages]]\napp = \"x\"\ncommand = \"touch owned\"\n";
    int count = 0;
    for (const std::string quotes : {"'''", "\"\"\"", "'", "\"", "\\", "\\\"\"\"", "\r\n'''"}) {
        const std::string text = "a" + quotes + command + "z = " + quotes + "b";
        Json::Value dump;
        dump["title"] = text;
        dump["features"][text] = text;
        dump["packages"][0]["app"] = text;
        dump["packages"][0]["name"] = text;
        dump["packages"][0]["metadata"][text] = text;
        Write("dump.json", Json::writeString(Json::StreamWriterBuilder(), dump));
        const std::string tv = "tv" + std::to_string(++count);
        Ok({"import", Path("dump.json"), tv});
        const Json::Value there = OkJson({"dump", "--tv", tv});
        EXPECT_EQ(there["title"], text);
        EXPECT_EQ(there["packages"], dump["packages"]);
        EXPECT_EQ(there["features"], dump["features"]);

        const std::string scenario = Path(tv + ".toml");
        Ok({"set", "db/x", "string", text, "--tv", tv, "--record", scenario});
        Ok({"set", "db/x", "string", text, "--tv", tv, "--record", scenario});
        Ok({"run", scenario, "--keep", Path("kept" + tv)});
        EXPECT_EQ(Ok({"get", "db/x", "--tv", Path("kept" + tv + "/1-" + tv)}), text + "\n");
    }
}

TEST_F(VtvTest, ATextThatNoFileCanHoldIsRefusedAndNotWritten) {
    Write("dump.json", "{\"packages\": [{\"app\": \"a\", \"name\": \"\xff\"}]}");
    const Output imported = Vtv({"import", Path("dump.json"), "none"});
    EXPECT_EQ(imported.code, 2);
    EXPECT_THAT(imported.err, HasSubstr("no UTF-8"));
    EXPECT_EQ(Vtv({"show", "--tv", "none"}).code, 3);

    Ok({"set", "db/x", "int", "1", "--record", Path("good.toml")});
    const std::string before = Read("good.toml");
    const Output recorded = Vtv({"set", "db/x", "string", "\xff", "--record", Path("good.toml")});
    EXPECT_EQ(recorded.code, 2);
    EXPECT_THAT(recorded.err, HasSubstr("no UTF-8"));
    EXPECT_EQ(Read("good.toml"), before);
}

TEST_F(VtvTest, ABrokenDumpSaysWhatIsWrongAndMakesNothing) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"([])", "the document"},
        {R"({"setings": {}})", "\"setings\" is unknown"},
        {R"({"settings": {"x": 1}})", "\"x\" is no settings key"},
        {R"({"settings": {"db/x": 1.5}})", "\"db/x\""},
        {R"({"packages": [{}]})", "packages"},
        {R"({"consents": {"cookies": true}})", "consents"},
        {R"({"network": "fast"})", "fast"},
        {R"({"format": "vtv-snapshot"})", "format"},
        {R"({"version": 2})", "newer"}};
    for (const auto& [text, says] : cases) {
        Write("broken.json", text);
        const Output output = Vtv({"import", Path("broken.json"), "broken"});
        EXPECT_EQ(output.code, 2) << text;
        EXPECT_THAT(output.err, HasSubstr(says)) << text;
        EXPECT_EQ(Vtv({"show", "--tv", "broken"}).code, 3) << text;
    }
}

// A document is taken whole or not at all: what is wrong with its last word leaves everything
// alone.
TEST_F(VtvTest, ADocumentThatCannotBeTakenWholeChangesNothing) {
    Ok({"set", "db/only/here", "string", "x"});
    Ok({"snapshot", Path("before.json")});
    const std::string longKey = "db/" + std::string(300, 'k');
    const std::string longFeature = "com.vantelo/" + std::string(300, 'f');
    const std::string longText(size_t{2} * 1024 * 1024, 't');
    const std::vector<std::string> broken = {
        R"("settings": {"db/a": 1, ")" + longKey + R"(": 1})",
        R"("settings": {"db/a": 1, "db/b": ")" + longText + R"("})",
        R"("settings": {"db/a": 1, "db/menu_widget/language": 5})",
        R"("settings": {"db/a": 1, "db/menu/voice/passthru": "yes"})",
        R"("settings": {"db/a": 1}, "features": {")" + longFeature + R"(": true})",
        R"("settings": {"db/a": 1}, "features": {"voice.voice_recognition_support": true})",
        R"("settings": {"db/a": 1}, "always_on_voice": {")" + std::string(300, 'a') + R"(": 1})",
        R"("settings": {"db/a": 1}, "always_on_voice": {"x": "1"})",
        R"("settings": {"db/a": 1}, "files": ["../x"])",
        R"("settings": {"db/a": 1}, "network": "sometimes")",
        R"("settings": {"db/a": 1}, "consents": {"other": true})",
    };
    for (const std::string& document : broken) {
        Write("broken.json", "{" + document + "}");
        EXPECT_EQ(Vtv({"load", Path("broken.json")}).code, 2) << document.substr(0, 100);
        EXPECT_EQ(Vtv({"import", Path("broken.json"), "none"}).code, 2) << document.substr(0, 100);
    }
    Json::Value snapshot = static_cast<const Json::Value&>(OkJson({"snapshot"}));
    snapshot["settings"].removeMember("db/only/here");
    snapshot["settings"][longKey] = 1;
    Write("broken.json", snapshot.toStyledString());
    EXPECT_EQ(Vtv({"restore", Path("broken.json")}).code, 2);

    Ok({"snapshot", Path("after.json")});
    EXPECT_EQ(Read("after.json"), Read("before.json"));
    EXPECT_EQ(Vtv({"show", "--tv", "none"}).code, 3);
    for (const auto& [file, text] : Contents("tvs")) {
        EXPECT_EQ(file.find("none"), std::string::npos) << file << " was left behind";
    }
}

TEST_F(VtvTest, LoadChangesWhatTheDocumentHasAndLeavesTheRest) {
    Ok({"account", "signed-out"});
    Write("some.json", R"({"network": "disconnected", "features":
                           {"com.vantelo/featureconf/voice.voice_recognition_support": true}})");
    Ok({"load", Path("some.json")});
    EXPECT_EQ(Ok({"network"}), "disconnected\n");
    EXPECT_EQ(Ok({"account"}), "signed-out\n");
    EXPECT_EQ(Vtv({"feature", "recorder.microphone_type"}).code, 3);
}

TEST_F(VtvTest, ASnapshotBringsEverythingBack) {
    Ok({"snapshot", Path("before.json")});
    const Json::Value before = OkJson({"dump"});
    Ok({"press", "voice-assistant", "--choose", "3", "--ok"});
    Ok({"app", "finish"});
    Ok({"feature", "recorder.microphone_type", "0"});
    Ok({"account", "signed-out"});
    Ok({"set", "db/new", "int", "1"});
    EXPECT_NE(OkJson({"dump"}), before);
    Ok({"restore", Path("before.json")});
    EXPECT_EQ(OkJson({"dump"}), before);
}

TEST_F(VtvTest, ASnapshotThatIsNotWholeIsRefused) {
    Write("half.json", R"({"format": "vtv-snapshot", "version": 1, "settings": {}})");
    const Output output = Vtv({"restore", Path("half.json")});
    EXPECT_EQ(output.code, 2);
    EXPECT_THAT(output.err, HasSubstr("is no whole snapshot"));
}

TEST_F(VtvTest, DiffNamesWhatDiffersAndEndsAccordingly) {
    Ok({"new", "a"});
    Ok({"new", "b"});
    EXPECT_EQ(Vtv({"diff", "a", "b"}).code, 0);
    Ok({"choose", "voice-wake-up", "off", "--tv", "b"});
    const Output output = Vtv({"diff", "a", "b"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.out, HasSubstr("setting db/menu/voice/assistant_farfield"));
    EXPECT_THAT(output.out, HasSubstr("item voice-wake-up value\n  - on\n  + off\n"));
}

TEST_F(VtvTest, APolicyIsShownAndPublishedAndABrokenOneRefused) {
    EXPECT_THAT(Ok({"policy", "show"}), HasSubstr("▸ 1  Orvik"));
    const std::string policy = Ok({"policy", "show", "--json"});
    for (const std::string& broken : {std::string("{}"), std::string("[1]"),
                                      std::string(R"([{"VAOrder": 2, "VAId": "GVA", "VAAppId": "a",
                                                               "VAName": "b", "VAFFSupport": true}])")}) {
        Write("policy.json", broken);
        EXPECT_EQ(Vtv({"policy", "publish", Path("policy.json")}).code, 2) << broken;
        EXPECT_EQ(Ok({"policy", "show", "--json"}), policy) << broken;
    }
    Write("policy.json", "[]");
    Ok({"policy", "publish", Path("policy.json")});
    EXPECT_EQ(Ok({"policy", "show"}), "The policy offers no assistant.\n");
}
