// vtv get, set, unset, search, feature, language, ...: the TV around the page, as files on a disk
// keep it.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "vtv_process.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;

TEST_F(VtvTest, ADefaultTvIsMadeAtFirstUse) {
    const Output first = Vtv({"show"});
    EXPECT_EQ(first.code, 0);
    EXPECT_THAT(first.err, HasSubstr("Made the TV " + Path("tvs/default")));
    EXPECT_EQ(Vtv({"show"}).err, "");
    EXPECT_THAT(Ok({"list"}), HasSubstr("default"));
}

TEST_F(VtvTest, APageIsDrawnWithItsTitleItemsAndValues) {
    const std::string page = Ok({"show"});
    for (const char* part :
         {"Far-field TV, Europe", "│ Voice ", "Voice Assistant", "▸ 1 Orvik", "Hands-free Wake-up",
          "voice-wake-up", "Hidden: voice-settings-orvik-cn"}) {
        EXPECT_THAT(page, HasSubstr(part));
    }
}

TEST_F(VtvTest, EveryLineOfThePictureIsAsWideAsItsFrame) {
    for (const char* model : {"farfield-eu", "farfield-cn", "legacy-kr"}) {
        Ok({"new", model, "--model", model});
        const std::string page = Ok({"show", "--tv", model, "--all"});
        std::istringstream lines(page);
        std::string line;
        int framed = 0;
        while (std::getline(lines, line)) {
            const bool inFrame = line.rfind("│", 0) == 0;
            framed += inFrame ? 1 : 0;
            EXPECT_TRUE(!inFrame || line.substr(line.size() - 3) == "│") << line;
        }
        EXPECT_GT(framed, 20);
    }
}

TEST_F(VtvTest, EachTypeIsWrittenAndReadBack) {
    Ok({"set", "db/a", "bool", "true"});
    Ok({"set", "db/b", "int", "-42"});
    Ok({"set", "db/c", "string", "two\nlines"});
    EXPECT_EQ(Ok({"get", "db/a"}), "true\n");
    EXPECT_EQ(Ok({"get", "db/b"}), "-42\n");
    EXPECT_EQ(Ok({"get", "db/c"}), "two\nlines\n");
    EXPECT_EQ(OkJson({"get", "db/b", "--json"})["type"], "int");
}

TEST_F(VtvTest, AnUnsetSettingIsGone) {
    Ok({"set", "db/a", "bool", "true"});
    Ok({"unset", "db/a"});
    EXPECT_EQ(Vtv({"get", "db/a"}).code, 3);
}

TEST_F(VtvTest, AKnownSettingTakesAnotherTypeOnlyByForce) {
    EXPECT_EQ(Vtv({"set", "db/menu/voice/is_k_voice", "int", "1"}).code, 2);
    Ok({"set", "db/menu/voice/is_k_voice", "int", "1", "--force"});
    EXPECT_EQ(Ok({"get", "db/menu/voice/is_k_voice"}), "1\n");
}

TEST_F(VtvTest, APowerCycleEmptiesTheMemoryAndNothingElse) {
    Ok({"set", "memory/a", "int", "1"});
    Ok({"set", "db/a", "int", "1"});
    Ok({"power-cycle"});
    EXPECT_EQ(Vtv({"get", "memory/a"}).code, 3);
    EXPECT_EQ(Ok({"get", "db/a"}), "1\n");
}

TEST_F(VtvTest, SearchFindsKeysValuesAndShownTexts) {
    EXPECT_THAT(Ok({"search", "HANDS-FREE"}), HasSubstr("voice-wake-up"));
    EXPECT_THAT(Ok({"search", "mva_list"}), HasSubstr("db/menu/voice/mva_list"));
    EXPECT_THAT(Ok({"search", "google-assistant"}), HasSubstr("mva_list"));
    EXPECT_EQ(Vtv({"search", "qwertyuiop"}).code, 1);
}

TEST_F(VtvTest, AFeatureIsTriedAndTakenBack) {
    EXPECT_EQ(Item("voice")["enabled"], true);
    Ok({"set", "db/aisound-app/soundsensorflag_prev", "int", "0"});
    EXPECT_EQ(Item("voice")["enabled"], false);
    Ok({"feature", "recorder.microphone_type", "0"});
    EXPECT_EQ(Item("voice")["enabled"], true);
    EXPECT_EQ(Ok({"feature", "recorder.microphone_type"}), "0\n");
    Ok({"feature", "recorder.microphone_type", "--reset"});
    EXPECT_EQ(Item("voice")["enabled"], false);
}

TEST_F(VtvTest, TheLanguageChangesTheTexts) {
    EXPECT_EQ(Item("voice-settings-orvik")["title"], "Orvik Settings");
    Ok({"language", "de_DE"});
    EXPECT_EQ(Ok({"language"}), "de_DE\n");
    EXPECT_NE(Item("voice-settings-orvik")["title"], "Orvik Settings");
    EXPECT_TRUE(Item("voice-settings-orvik")["missing_texts"].empty());
}

TEST_F(VtvTest, AccountConsentNetworkAndVoiceGuideAreKept) {
    Ok({"account", "signed-out"});
    Ok({"consent", "pp", "off"});
    Ok({"network", "disconnected"});
    Ok({"voice-guide", "on"});
    EXPECT_EQ(Ok({"account"}), "signed-out\n");
    EXPECT_EQ(Ok({"consent"}), "tnc on\npp off\n");
    EXPECT_EQ(Ok({"network"}), "disconnected\n");
    EXPECT_EQ(Ok({"voice-guide"}), "on\n");
}

TEST_F(VtvTest, TheLogTellsWhatTheProviderDidByFunctionAndPriority) {
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_THAT(
        Ok({"log"}),
        ContainsRegex("E SI-MENU general_voice_dataprovider\\.cpp:[0-9]+ setnode_int_voice_wake_up "
                      "Set Hands-free Wake-up value \\[0\\] && Wakeup\\[off\\]\n"));
    const std::string some = Ok({"log", "--function", "setnode_int_voice_wake_up", "--json"});
    std::istringstream lines(some);
    std::string line;
    int records = 0;
    while (std::getline(lines, line)) {
        Json::Value record;
        ASSERT_TRUE(Json::Reader().parse(line, record)) << line;
        EXPECT_EQ(record["file"], "general_voice_dataprovider.cpp");
        EXPECT_GT(record["line"].asInt(), 0);
        EXPECT_EQ(record["function"], "setnode_int_voice_wake_up");
        ++records;
    }
    EXPECT_GE(records, 1);
    const std::string last = Ok({"log", "-n", "1"});
    EXPECT_EQ(std::count(last.begin(), last.end(), '\n'), 1);
}

TEST_F(VtvTest, TheTraceIsRecordedPrintedAndExported) {
    Ok({"trace", "on"});
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_THAT(Ok({"trace"}),
                ContainsRegex("general_voice_dataprovider\\.cpp:[0-9]+ .*Wakeup\\[off\\]"));
    Ok({"trace", "--export", Path("trace.json")});
    Json::Value json;
    EXPECT_TRUE(Json::Reader().parse(Read("trace.json"), json));
    Ok({"trace", "--clear"});
    EXPECT_TRUE(OkJson({"trace", "--json"})["events"].empty());
}

TEST_F(VtvTest, APressThatCannotBeWrittenIsToldOfAndLosesNothing) {
    Ok({"show"});
    const auto before = Contents("tvs/default/settings");
    for (const char* press : {"choose voice-wake-up off", "press voice-wake-up",
                              "press voice-assistant --choose 2 --ok"}) {
        // No file may grow, whoever runs this; what is printed goes through a pipe.
        const std::string script = "(trap '' XFSZ; ulimit -f 0; VTV_HOME=" + Path("tvs") + " " +
                                   VTV + " " + press + "; echo \"code $?\") 2>&1 | cat > " +
                                   Path("said");
        ASSERT_EQ(std::system(script.c_str()), 0);
        EXPECT_THAT(Read("said"),
                    AllOf(HasSubstr("cannot be written: File too large"),
                          HasSubstr("old value is still there"), EndsWith("code 4\n")))
            << press;
        EXPECT_EQ(Contents("tvs/default/settings"), before) << press;
    }
    Ok({"choose", "voice-wake-up", "off"});
}

TEST_F(VtvTest, ADamagedSettingIsToldOfAndThePageStillOpens) {
    Ok({"show"});
    std::ofstream(Path("tvs/default/settings/db%2Fvoice-app%2Factivate_first_time"))
        << "bool 4\ntr";
    const Output page = Vtv({"show"});
    EXPECT_EQ(page.code, 0);
    EXPECT_THAT(page.out, HasSubstr("Voice Assistant"));
    const Output value = Vtv({"get", "db/voice-app/activate_first_time"});
    EXPECT_EQ(value.code, 4);
    EXPECT_THAT(value.err, HasSubstr("db/voice-app/activate_first_time"));
    EXPECT_THAT(Vtv({"dump"}).err, HasSubstr("vtv: warning: "));
    EXPECT_THAT(Ok({"search", "activate_first_time"}), HasSubstr("it is cut off"));
}
