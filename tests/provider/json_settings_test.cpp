// Settings that hold a JSON object, member by member; placeholders; texts by the kind of device.
#include "page.h"

using namespace recording;

namespace {

constexpr const char* JSON = "db/json";

class JsonSettings : public Provider {
  protected:
    static std::string Read(const std::string& member) {
        ClearCalls();
        return CSIMenuUtil::getValueOfJsonVconf(JSON, member);
    }
    static bool Write(const std::string& member, const std::string& value) {
        ClearCalls();
        return CSIMenuUtil::setVAsValueOfJsonVconf(JSON, member, value);
    }
};

class DeviceTexts : public Provider {
  protected:
    static Lines Kind(bool named) {
        const Lines name = {std::string("system_info_get_custom_string ") + feature::DEVICE_SID};
        return named ? name
                     : name + Lines{FeatureInt(feature::SKELD), FeatureInt(feature::SKELD),
                                    FeatureBool(feature::PROJECTOR), FeatureBool(feature::MONITOR)};
    }
    // A TV of no special kind, on which every feature is read with success.
    void SetUp() override {
        Provider::SetUp();
        Feature(feature::DEVICE_SID, "");
        Feature(feature::SKELD, 0);
        Feature(feature::PROJECTOR, false);
        Feature(feature::MONITOR, false);
    }
};

const std::string READ = GetStr(JSON);
const std::string MISSING =
    E(source::UTIL, "GetVconfStirng", 68, "[FATAL]can not get string from db/json");
const std::string UNREADABLE = E(source::UTIL, "getValueOfJsonVconf", 316, "json parse error");
const std::string UNWRITABLE = E(source::UTIL, "setVAsValueOfJsonVconf", 338, "json parse error");

}  // namespace

TEST_F(JsonSettings, AMemberIsReadAndLogged) {
    Set(JSON, R"({"app.a":"on"})");
    EXPECT_EQ(Read("app.a"), "on");
    EXPECT_CALLS(Member(JSON, "app.a", "on"));
}

TEST_F(JsonSettings, AMissingMemberReadsEmptyWithoutARecord) {
    Set(JSON, R"({"app.a":"on"})");
    EXPECT_EQ(Read("app.b"), "");
    EXPECT_CALLS(Lines{READ});
}

TEST_F(JsonSettings, AnAbsentKeyReadsEmptyWithBothRecords) {
    EXPECT_EQ(Read("app.a"), "");
    EXPECT_CALLS(Lines{READ, MISSING, UNREADABLE});
}

TEST_F(JsonSettings, ABrokenOrEmptyTextReadsEmptyWithARecord) {
    for (const char* text : {"", "{", "{\"app.a\":}", "nonsense", "{\"app.a\":\"on\""}) {
        Set(JSON, text);
        EXPECT_EQ(Read("app.a"), "") << text;
        EXPECT_CALLS(Lines{READ, UNREADABLE});
    }
}

TEST_F(JsonSettings, AScalarMemberReadsAsItsText) {
    const std::pair<const char*, const char*> values[] = {
        {"true", "true"}, {"false", "false"}, {"5", "5"},  {"-12", "-12"},
        {"0.5", "0.5"},   {"null", ""},       {"\"\"", ""}};
    for (const auto& [json, text] : values) {
        Set(JSON, (std::string("{\"app.a\":") + json + "}").c_str());
        EXPECT_EQ(Read("app.a"), text) << json;
        EXPECT_CALLS(Member(JSON, "app.a", text));
    }
}

TEST_F(JsonSettings, AMemberThatIsAnArrayOrObjectReadsEmptyWithoutARecord) {
    for (const char* text : {R"({"app.a":[]})", R"({"app.a":["on"]})", R"({"app.a":{}})",
                             R"({"app.a":{"app.a":"on"}})"}) {
        Set(JSON, text);
        EXPECT_EQ(Read("app.a"), "") << text;
        EXPECT_CALLS(Lines{READ});
    }
}

TEST_F(JsonSettings, AValueThatIsNoObjectReadsAsWithoutTheMember) {
    for (const char* text :
         {"[]", R"(["app.a"])", R"([{"app.a":"on"}])", "5", "\"app.a\"", "true", "null"}) {
        Set(JSON, text);
        EXPECT_EQ(Read("app.a"), "") << text;
        EXPECT_CALLS(Lines{READ});
    }
}

TEST_F(JsonSettings, AValueNestedBeyondTheLimitReadsAsWithoutTheMember) {
    Set(JSON, (R"({"app.a":"on","deep":)" + std::string(5000, '[')).c_str());
    EXPECT_EQ(Read("app.a"), "");
    EXPECT_CALLS(Lines{READ});
}

TEST_F(JsonSettings, AMemberNameOfAnyBytesIsFound) {
    Set(JSON, "{\"\":\"empty\",\"a b\\n\\u00e9\":\"odd\"}");
    EXPECT_EQ(Read(""), "empty");
    EXPECT_EQ(Read("a b\n\xC3\xA9"), "odd");
}

TEST_F(JsonSettings, WritingAddsTheMemberAndKeepsTheOthersAsStyledJson) {
    Set(JSON, R"({"app.a":"on"})");
    EXPECT_TRUE(Write("app.b", "off"));
    const std::string styled = "{\n   \"app.a\" : \"on\",\n   \"app.b\" : \"off\"\n}\n";
    EXPECT_CALLS(Lines{
        READ,
        E(source::UTIL, "setVAsValueOfJsonVconf", 345, "[general voice] db/json value = " + styled),
        "vconf_set_str db/json " + styled});
    EXPECT_EQ(Stored(JSON), styled);
}

TEST_F(JsonSettings, WritingReplacesTheMemberAlone) {
    Set(JSON, R"({"app.b":"on","app.a":true,"app.c":[1,{"x":null}]})");
    EXPECT_TRUE(Write("app.a", "off"));
    EXPECT_EQ(Read("app.a"), "off");
    EXPECT_EQ(Read("app.b"), "on");
    EXPECT_NE(Stored(JSON).find("\"x\" : null"), std::string::npos) << Stored(JSON);
    EXPECT_EQ(Stored(JSON).back(), '\n');
}

TEST_F(JsonSettings, WritingIntoAnEmptyObjectAddsTheMember) {
    Set(JSON, "{}");
    EXPECT_TRUE(Write("app.a", "on"));
    EXPECT_EQ(Stored(JSON), "{\n   \"app.a\" : \"on\"\n}\n");
}

TEST_F(JsonSettings, WritingAlwaysStoresAString) {
    Set(JSON, "{}");
    EXPECT_TRUE(Write("app.a", "1"));
    EXPECT_NE(Stored(JSON).find("\"1\""), std::string::npos);
}

TEST_F(JsonSettings, WritingEscapesWhatJsonMust) {
    Set(JSON, "{}");
    EXPECT_TRUE(Write("a\"b", "x\ny"));
    EXPECT_EQ(Read("a\"b"), "x\ny");
}

TEST_F(JsonSettings, WritingKeepsComments) {
    Set(JSON, "{\n   // chosen by the viewer\n   \"app.a\" : \"on\"\n}\n");
    EXPECT_TRUE(Write("app.b", "off"));
    EXPECT_NE(Stored(JSON).find("// chosen by the viewer"), std::string::npos) << Stored(JSON);
}

TEST_F(JsonSettings, WritingIntoAnAbsentKeyWritesNothing) {
    EXPECT_FALSE(Write("app.a", "on"));
    EXPECT_CALLS(Lines{READ, MISSING, UNWRITABLE});
    EXPECT_EQ(Stored(JSON), "(none)");
}

TEST_F(JsonSettings, WritingIntoAnythingButAnObjectWritesNothing) {
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[]"), std::string("5"), std::string("null"),
          std::string("\"text\""), std::string("true"), "{\"deep\":" + std::string(5000, '[')}) {
        Set(JSON, text.c_str());
        EXPECT_FALSE(Write("app.a", "on")) << text.substr(0, 20);
        EXPECT_CALLS(Lines{READ, UNWRITABLE});
        EXPECT_EQ(Stored(JSON), text);
    }
}

TEST_F(JsonSettings, AWriteThatTheStoreRefusesIsNotNoticed) {
    Set(JSON, "{}");
    Fail("vconf_set_str");
    EXPECT_TRUE(Write("app.a", "on"));
    EXPECT_EQ(Stored(JSON), "{}");
}

// --- Placeholders ---

TEST(Replace, FillsThePlaceholderAtEveryPlace) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>> and <<A>>", "X"), "X and X");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>>", ""), "");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>><<A>>", "longer than it was"),
              "longer than it waslonger than it was");
}

TEST(Replace, LeavesATextWithoutPlaceholderAsItIs) {
    for (const char* text : {"", "text", "<<a>>", "<A>", "<<A>", "<<B>>"}) {
        EXPECT_EQ(CSIMenuUtil::Replace(text, "X"), text);
    }
}

TEST(Replace, StartsAgainAtTheBeginningAfterEachReplacement) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<<A>>A>>", ""), "<A>>");
    EXPECT_EQ(CSIMenuUtil::Replace("<<<<A>>A>>", ""), "");
}

TEST(Replace, ComesToAnEndWhenTheTextItselfHoldsThePlaceholder) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>> and <<A>>", "[<<A>>]"), "[<<A>>] and [<<A>>]");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>>", "<<A>>"), "<<A>>");
}

// The plain loop, which would not end, left after a number of steps.
static std::string Steps(std::string text, const std::string& by, int steps) {
    for (int step = 0; step < steps; ++step) {
        text.replace(text.find("<<A>>"), 5, by);
    }
    return text;
}

TEST(Replace, ComesToAnEndWhenTheTextAroundAlwaysCompletesAnotherPlaceholder) {
    for (const auto& [text, by] :
         {std::pair("<<<<A>>", "A>>A>><<<<"), std::pair("<<A>><<A>>", ">>>><<A<<A")}) {
        EXPECT_EQ(CSIMenuUtil::Replace(text, by), Steps(text, by, 1000)) << text;
    }
}

TEST(Replace, LeavesTheRestAsItIsAfterAThousandReplacements) {
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "<<A>>";
    }
    EXPECT_EQ(CSIMenuUtil::Replace(text, "x"), std::string(1000, 'x'));
    EXPECT_EQ(CSIMenuUtil::Replace(text + "<<A>> <<A>>", "x"),
              std::string(1000, 'x') + "<<A>> <<A>>");
}

TEST(Replace, LeavesTheRestAsItIsBeforeItGrowsBeyond65536Bytes) {
    const std::string half(32768, 'x');
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>><<A>>", half), half + half);
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>><<A>>!", half), half + "<<A>>!");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>>", half + half + "x"), "<<A>>");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>>[<<A>>]", "<<A>>" + half), "<<A>>" + half + "[<<A>>]");
}

TEST(Replace, TheLongerFormHasTheLimitsForEachOfItsTwo) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<<<A>> <<B>>", "A>>A>><<<<", "b"),
              Steps("<<<<A>> b", "A>>A>><<<<", 1000));
}

TEST(Replace, TheLongerFormFillsBoth) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<B>> <<A>> <<B>>", "a", "b"), "b a b");
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>> and <<B>>", "a", "b"), "a and b");
}

TEST(Replace, TheLongerFormAlsoFillsThePlaceholderThatTheFirstTextBringsIn) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<A>>", "x<<B>>y", "b"), "xby");
}

TEST(Replace, TheLongerFormLeavesTheFirstPlaceholderThatTheSecondTextBringsIn) {
    EXPECT_EQ(CSIMenuUtil::Replace("<<B>>", "a", "<<A>>"), "<<A>>");
}

// --- The kind of device ---

TEST_F(DeviceTexts, ATvOfNoSpecialKindIsATv) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "REP.DEVICE.TV");
    EXPECT_CALLS(Kind(false));
}

TEST_F(DeviceTexts, WithoutAnyFeatureItIsATv) {
    tv().features.clear();
    EXPECT_EQ(CSIMenuUtil::GetDeviceSID(), "REP.DEVICE.TV");
}

TEST_F(DeviceTexts, ANamedKindIsTakenAsItIsBeforeAllOthers) {
    Feature(feature::DEVICE_SID, "REP.DEVICE.SCREEN");
    Feature(feature::SKELD, 1);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "REP.DEVICE.SCREEN");
    EXPECT_CALLS(Kind(true));
}

TEST_F(DeviceTexts, TheFirstModularVersionIsReadOnce) {
    Feature(feature::SKELD, 1);
    Feature(feature::PROJECTOR, true);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "REP.DEVICE.VANTELO.THE.SKELD");
    EXPECT_CALLS(Kind(true) + Lines{FeatureInt(feature::SKELD)});
}

TEST_F(DeviceTexts, TheSecondModularVersionComesBeforeTheProjectorAndIsReadTwice) {
    Feature(feature::SKELD, 2);
    Feature(feature::PROJECTOR, true);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "TV_SID_MLED_CAOCT_NON_MICRO_LED");
    EXPECT_CALLS(Kind(true) + Lines{FeatureInt(feature::SKELD), FeatureInt(feature::SKELD)});
}

TEST_F(DeviceTexts, AnyOtherModularVersionIsNone) {
    Feature(feature::SKELD, 3);
    EXPECT_EQ(CSIMenuUtil::GetDeviceSID(), "REP.DEVICE.TV");
}

TEST_F(DeviceTexts, AProjectorComesBeforeAMonitor) {
    Feature(feature::PROJECTOR, true);
    Feature(feature::MONITOR, true);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "PJT_SID_TV");
    EXPECT_CALLS(Kind(true) + Lines{FeatureInt(feature::SKELD), FeatureInt(feature::SKELD),
                                    FeatureBool(feature::PROJECTOR)});
}

TEST_F(DeviceTexts, AMonitorIsAMonitor) {
    Feature(feature::MONITOR, true);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetDeviceSID(); }), "REP.DEVICE.TESSA.MONITOR");
    EXPECT_CALLS(Kind(false));
}

TEST_F(DeviceTexts, ATvGetsTheFirstText) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetTextTVScreenOrPJT("ID_TV", "ID_SCREEN", "ID"); }),
              "tr(ID_TV)");
    EXPECT_CALLS(Kind(false) + Lines{Tr("ID_TV")});
}

TEST_F(DeviceTexts, AScreenGetsTheSecondTextAfterTheKindWasAskedTwice) {
    Feature(feature::DEVICE_SID, "REP.DEVICE.SCREEN");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetTextTVScreenOrPJT("ID_TV", "ID_SCREEN", "ID"); }),
              "tr(ID_SCREEN)");
    EXPECT_CALLS(Kind(true) + Kind(true) + Lines{Tr("ID_SCREEN")});
}

TEST_F(DeviceTexts, AnyOtherDeviceGetsTheThirdTextWithItsOwnName) {
    Feature(feature::DEVICE_SID, "ID_BOARD");
    tv().translations["ID"] = "This <<A>> and that <<A>>";
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetTextTVScreenOrPJT("ID_TV", "ID_SCREEN", "ID"); }),
              "This tr(ID_BOARD) and that tr(ID_BOARD)");
    EXPECT_CALLS(Kind(true) + Kind(true) + Lines{Tr("ID")} + Kind(true) + Lines{Tr("ID_BOARD")});
}

TEST_F(DeviceTexts, AProjectorIsNamedInTheThirdText) {
    Feature(feature::PROJECTOR, true);
    tv().translations["ID"] = "Use your <<A>>";
    tv().translations["PJT_SID_TV"] = "projector";
    EXPECT_EQ(CSIMenuUtil::GetTextTVScreenOrPJT("ID_TV", "ID_SCREEN", "ID"), "Use your projector");
}
