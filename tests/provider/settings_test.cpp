// The settings store and the features of the model, as the provider reads them.
#include "page.h"

using namespace recording;

namespace {

class Settings : public Provider {};
class Features : public Provider {};

}  // namespace

TEST_F(Settings, AnIntegerIsRead) {
    Set("db/x", -7);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::VconfGetInt("db/x"); }), -7);
    EXPECT_CALLS(Lines{"vconf_get_int db/x"});
}

TEST_F(Settings, AMissingIntegerReadsMinusOneWithoutARecord) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::VconfGetInt("db/x"); }), -1);
    EXPECT_CALLS(Lines{"vconf_get_int db/x"});
}

TEST_F(Settings, ABoolIsTrueForEveryStoredNumberButZero) {
    for (const int number : {1, -1, 2, 256, 1 << 31}) {
        tv().settings["db/x"] = StoredBool{number};
        EXPECT_TRUE(Ask([] { return CSIMenuUtil::VconfGetBool("db/x"); })) << number;
        EXPECT_CALLS(Lines{"vconf_get_bool db/x"});
    }
    tv().settings["db/x"] = StoredBool{0};
    EXPECT_FALSE(CSIMenuUtil::VconfGetBool("db/x"));
}

TEST_F(Settings, AMissingBoolReadsFalseWithoutARecord) {
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::VconfGetBool("db/x"); }));
    EXPECT_CALLS(Lines{"vconf_get_bool db/x"});
}

TEST_F(Settings, AFailedReadIsNeutralWhateverItsCode) {
    Set("db/i", 7);
    Set("db/b", true);
    for (const int code : {-1, 1, -22}) {
        Fail("vconf_get_int", 1, 1, code);
        Fail("vconf_get_bool", 1, 1, code);
        EXPECT_EQ(CSIMenuUtil::VconfGetInt("db/i"), -1);
        EXPECT_FALSE(CSIMenuUtil::VconfGetBool("db/b"));
    }
}

TEST_F(Settings, ASettingOfAnotherTypeIsAFailedRead) {
    Set("db/x", "text");
    EXPECT_EQ(CSIMenuUtil::VconfGetInt("db/x"), -1);
    EXPECT_FALSE(CSIMenuUtil::VconfGetBool("db/x"));
    Set("db/x", 1);
    EXPECT_EQ(CSIMenuUtil::VconfGetStr("db/x"), "");
}

TEST_F(Settings, AStringIsReadByBothReadersWithoutARecord) {
    Set("db/x", "text");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::VconfGetStr("db/x"); }), "text");
    EXPECT_CALLS(Lines{"vconf_get_str db/x"});
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetVconfStirng("db/x"); }), "text");
    EXPECT_CALLS(Lines{"vconf_get_str db/x"});
}

TEST_F(Settings, AMissingStringIsSilentInOneReaderAndLoggedInTheOther) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::VconfGetStr("db/x"); }), "");
    EXPECT_CALLS(Lines{"vconf_get_str db/x"});
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetVconfStirng("db/x"); }), "");
    EXPECT_CALLS(Lines{"vconf_get_str db/x", E(source::UTIL, "GetVconfStirng", 68,
                                               "[FATAL]can not get string from db/x")});
}

TEST_F(Settings, AStoredEmptyStringIsNoFailure) {
    Set("db/x", "");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetVconfStirng("db/x"); }), "");
    EXPECT_CALLS(Lines{"vconf_get_str db/x"});
}

TEST_F(Settings, WritingABoolLogsTheStoresResult) {
    Ask([] {
        CSIMenuUtil::SetBool("db/x", true);
        return 0;
    });
    EXPECT_CALLS(
        Lines{"vconf_set_bool db/x 1", E(source::UTIL, "SetBool", 526, "nRet:0, key:db/x")});
    EXPECT_EQ(std::get<StoredBool>(tv().settings["db/x"]).number, 1);
    Fail("vconf_set_bool", 1, 1, -5);
    Ask([] {
        CSIMenuUtil::SetBool("db/x", false);
        return 0;
    });
    EXPECT_CALLS(
        Lines{"vconf_set_bool db/x 0", E(source::UTIL, "SetBool", 526, "nRet:-5, key:db/x")});
}

TEST_F(Settings, WritingAStringLogsTheStoresResultAndTheValue) {
    Ask([] {
        CSIMenuUtil::SetString("db/x", "text");
        return 0;
    });
    EXPECT_CALLS(Lines{"vconf_set_str db/x text",
                       E(source::UTIL, "SetString", 520, "nRet:0, key:db/x, value:text")});
    EXPECT_EQ(Stored("db/x"), "text");
    Fail("vconf_set_str", 1, 1, -5);
    Ask([] {
        CSIMenuUtil::SetString("db/x", "other");
        return 0;
    });
    EXPECT_LOG(Lines{E(source::UTIL, "SetString", 520, "nRet:-5, key:db/x, value:other")});
    EXPECT_EQ(Stored("db/x"), "text");
}

TEST_F(Settings, TheCurrentAssistantIsReadSilently) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetCurrentVAAppID(); }), "");
    EXPECT_CALLS(Walk(1));
    Set(setting::CURRENT, "app");
    EXPECT_EQ(CSIMenuUtil::GetCurrentVAAppID(), "app");
}

TEST_F(Settings, CountryAndLanguageAreReadWithARecordWhenMissing) {
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetCountryCode(); }), "");
    EXPECT_CALLS(
        Lines{GetStr(setting::COUNTRY), E(source::UTIL, "GetVconfStirng", 68,
                                          "[FATAL]can not get string from db/comss/countrycode")});
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetOsdLanguage(); }), "");
    EXPECT_CALLS(Lines{GetStr(setting::LANGUAGE),
                       E(source::UTIL, "GetVconfStirng", 68,
                         "[FATAL]can not get string from db/menu_widget/language")});
    Set(setting::COUNTRY, "KR");
    Set(setting::LANGUAGE, "ko_KR");
    EXPECT_EQ(CSIMenuUtil::GetCountryCode(), "KR");
    EXPECT_EQ(CSIMenuUtil::GetOsdLanguage(), "ko_KR");
}

// --- Features ---

TEST_F(Features, AStringIsRead) {
    Feature("f", "text");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSString("f"); }), "text");
    EXPECT_CALLS(Lines{"system_info_get_custom_string f"});
}

TEST_F(Features, AStringThatCannotBeReadIsEmptyAndLogged) {
    FeatureFails("f", -22);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSString("f"); }), "");
    EXPECT_CALLS(
        Lines{"system_info_get_custom_string f", E(source::UTIL, "GetFMSString", 393, "ret:-22")});
}

TEST_F(Features, ANullStringReadWithSuccessIsAnErrorWithResultZero) {
    tv().features["f"] = NullText();
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSString("f"); }), "");
    EXPECT_CALLS(
        Lines{"system_info_get_custom_string f", E(source::UTIL, "GetFMSString", 393, "ret:0")});
}

TEST_F(Features, AnEmptyStringIsNoError) {
    Feature("f", "");
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSString("f"); }), "");
    EXPECT_CALLS(Lines{"system_info_get_custom_string f"});
}

TEST_F(Features, AnIntegerIsReadOrMinusOneAndLogged) {
    Feature("f", 12);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSInt("f"); }), 12);
    EXPECT_CALLS(Lines{"system_info_get_custom_int f"});
    FeatureFails("f", -3);
    EXPECT_EQ(Ask([] { return CSIMenuUtil::GetFMSInt("f"); }), -1);
    EXPECT_CALLS(Lines{"system_info_get_custom_int f",
                       E(source::UTIL, "GetFMSInt", 376, "ERROR:-3, key:f")});
}

TEST_F(Features, ABoolIsReadOrFalseAndLogged) {
    Feature("f", true);
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::GetFMSBool("f"); }));
    EXPECT_CALLS(Lines{"system_info_get_custom_bool f"});
    Feature("f", false);
    EXPECT_FALSE(CSIMenuUtil::GetFMSBool("f"));
    FeatureFails("f", -4);
    EXPECT_FALSE(Ask([] { return CSIMenuUtil::GetFMSBool("f"); }));
    EXPECT_CALLS(Lines{"system_info_get_custom_bool f",
                       E(source::UTIL, "GetFMSBool", 361, "ERROR:-4, key:f")});
}

TEST_F(Features, OnAModelWithoutFeaturesEveryNamedFlagIsFalse) {
    EXPECT_FALSE(CSIMenuUtil::isBuiltInMicSupported());
    EXPECT_FALSE(CSIMenuUtil::IsFarFieldFMSSupported());
    EXPECT_FALSE(CSIMenuUtil::FlagLFDProductModel());
    EXPECT_FALSE(CSIMenuUtil::IsPassthruSupportModel());
    EXPECT_FALSE(CSIMenuUtil::isChina());
    EXPECT_CALLS(Lines{
        FeatureInt(feature::MIC),
        E(source::UTIL, "GetFMSInt", 376, std::string("ERROR:-22, key:") + feature::MIC),
        FeatureInt(feature::FAR_FIELD),
        E(source::UTIL, "GetFMSInt", 376, std::string("ERROR:-22, key:") + feature::FAR_FIELD),
        FeatureInt(feature::PRODUCT),
        E(source::UTIL, "GetFMSInt", 376, std::string("ERROR:-22, key:") + feature::PRODUCT),
        FeatureBool(feature::PASSTHRU),
        E(source::UTIL, "GetFMSBool", 361, std::string("ERROR:-22, key:") + feature::PASSTHRU),
        FeatureBool(feature::CHINA),
        E(source::UTIL, "GetFMSBool", 361, std::string("ERROR:-22, key:") + feature::CHINA)});
}

TEST_F(Features, OnlyProductTypeFourIsSignage) {
    for (const int type : {-1, 0, 3, 5, 40}) {
        Feature(feature::PRODUCT, type);
        EXPECT_FALSE(CSIMenuUtil::FlagLFDProductModel()) << type;
    }
    Feature(feature::PRODUCT, 4);
    EXPECT_TRUE(CSIMenuUtil::FlagLFDProductModel());
}

TEST_F(Features, EveryMicrophoneTypeAboveZeroIsABuiltInMicrophone) {
    for (const int type : {-1, 0}) {
        Feature(feature::MIC, type);
        EXPECT_FALSE(CSIMenuUtil::isBuiltInMicSupported()) << type;
    }
    for (const int type : {1, 2, 100}) {
        Feature(feature::MIC, type);
        EXPECT_TRUE(CSIMenuUtil::isBuiltInMicSupported()) << type;
    }
}

TEST_F(Features, EveryFarFieldTypeAboveZeroIsFarField) {
    for (const int type : {-1, 0}) {
        Feature(feature::FAR_FIELD, type);
        EXPECT_FALSE(CSIMenuUtil::IsFarFieldFMSSupported()) << type;
    }
    for (const int type : {1, 2, 100}) {
        Feature(feature::FAR_FIELD, type);
        EXPECT_TRUE(CSIMenuUtil::IsFarFieldFMSSupported()) << type;
    }
}

TEST_F(Features, PassThroughAndChinaAreTheirFlags) {
    for (const bool flag : {false, true}) {
        Feature(feature::PASSTHRU, flag);
        Feature(feature::CHINA, flag);
        EXPECT_EQ(CSIMenuUtil::IsPassthruSupportModel(), flag);
        EXPECT_EQ(CSIMenuUtil::isChina(), flag);
    }
}

TEST_F(Features, AFeatureIsReadAfreshEachTime) {
    Feature(feature::CHINA, false);
    EXPECT_FALSE(CSIMenuUtil::isChina());
    Feature(feature::CHINA, true);
    EXPECT_TRUE(CSIMenuUtil::isChina());
}
